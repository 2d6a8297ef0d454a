// `kx sort`: lines in the order of a language.
#pragma once

namespace kx {

int run_sort(int argc, char **argv);

} // namespace kx
