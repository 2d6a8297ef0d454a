// Names of Unicode characters beside those of kx_names.h. For the kx tool only; the library does not carry them.
#pragma once

#include <array>
#include <cstdint>

namespace kxstr::tables {

struct UnicodeName {
    std::uint16_t unicode;
    const char *name;
};

extern const std::array<UnicodeName, 783> kUnicodeNames; // ascending

} // namespace kxstr::tables
