// `--version`: what runs here, and what it goes by.
#pragma once

namespace kx {

extern const char *const kVersion; // "1.0.0"

// Version, compiler, kernels, and each setting of the platform with where it came from.
void print_version();

} // namespace kx
