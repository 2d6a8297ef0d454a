// `kx strip`: the text of a document stream.
#pragma once

namespace kx {

int run_strip(int argc, char **argv);

} // namespace kx
