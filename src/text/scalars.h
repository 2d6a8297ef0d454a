// Unicode characters in UTF-8 and UTF-16, one at a time: what stands at the start of some bytes, and the bytes of a
// character.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "platform/utf16.h"

namespace kxstr::text {

struct Scalar {
    enum Kind { character, malformed, incomplete } kind;
    std::size_t length; // bytes
    std::uint32_t value;
};

enum class ByteOrder { low_first, high_first };

inline constexpr std::uint32_t kLastScalar = 0x10FFFF;

using kxstr::is_surrogate;

// Not for empty spans. Malformed bytes are taken in the largest piece that could have begun a character, as the Unicode
// Standard recommends.
Scalar read_utf8(std::span<const std::uint8_t> bytes) noexcept;
Scalar read_utf16(std::span<const std::uint8_t> bytes, ByteOrder order) noexcept;

// Return the number of bytes, at most 4. Not for surrogates.
std::size_t write_utf8(std::uint32_t character, std::uint8_t *bytes) noexcept;
std::size_t write_utf16(std::uint32_t character, std::uint8_t *bytes, ByteOrder order) noexcept;

inline std::uint16_t load_unit(const std::uint8_t *bytes, ByteOrder order) noexcept {
    const unsigned low = bytes[order == ByteOrder::low_first ? 0 : 1];
    const unsigned high = bytes[order == ByteOrder::low_first ? 1 : 0];
    return static_cast<std::uint16_t>(low | (high << 8));
}
inline void store_unit(std::uint16_t unit, std::uint8_t *bytes, ByteOrder order) noexcept {
    bytes[order == ByteOrder::low_first ? 0 : 1] = static_cast<std::uint8_t>(unit);
    bytes[order == ByteOrder::low_first ? 1 : 0] = static_cast<std::uint8_t>(unit >> 8);
}

} // namespace kxstr::text
