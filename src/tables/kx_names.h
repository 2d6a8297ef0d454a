// Names of the KX characters. For the kx tool only; the library does not carry them.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <kxstr/types.h>
#include <string_view>

namespace kxstr::tables {

// The first name's number of each set, and one past the last.
extern const std::array<std::uint16_t, 16> kKxNameStarts;
// Where each name starts in all names one after another; it ends where the next one starts.
extern const std::array<std::uint32_t, 2371> kKxNameOffsets;
// The names of each set, one after another.
extern const std::array<const char *, 15> kKxNamePools;

// The name of a character of sets 1 to 11, 13 and 14; empty for any other.
inline std::string_view kx_name(KxChar ch) noexcept {
    const std::size_t set = ch >> 8;
    if (set + 1 >= kKxNameStarts.size()) return {};
    const std::size_t name = kKxNameStarts[set] + (ch & 0xFFu);
    if (name >= kKxNameStarts[set + 1]) return {};
    const std::uint32_t start = kKxNameOffsets[name];
    return {kKxNamePools[set] + (start - kKxNameOffsets[kKxNameStarts[set]]), kKxNameOffsets[name + 1] - start};
}

} // namespace kxstr::tables
