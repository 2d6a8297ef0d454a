// `kx dump`: a document stream, code by code.
#pragma once

namespace kx {

int run_dump(int argc, char **argv);

} // namespace kx
