// `kx convert`: text files from one form to another.
#pragma once

namespace kx {

int run_convert(int argc, char **argv);

} // namespace kx
