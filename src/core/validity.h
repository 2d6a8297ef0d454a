// Which 16-bit values are KX characters.
#pragma once

#include <array>

#include "core/kx_char.h"

namespace kxstr::core {

struct IndexRange {
    std::uint8_t first;
    std::uint8_t last;
};

// First and last valid index of each table-driven set, by set number.
inline constexpr std::array<IndexRange, 15> kSetRanges{{
    {0x20, 0x7E}, // ASCII
    {0x00, 0xF1}, // Latin letters with diacritics
    {0x00, 0x90}, // accents and other marks
    {0x00, 0x57}, // box drawing
    {0x00, 0x65}, // typographic symbols
    {0x00, 0xFE}, // iconic symbols
    {0x00, 0xED}, // mathematical symbols and arrows
    {0x00, 0xE4}, // further mathematical symbols
    {0x00, 0xDA}, // Greek
    {0x00, 0x7A}, // Hebrew
    {0x00, 0xF9}, // Cyrillic
    {0x00, 0x3E}, // half-width katakana
    {0x00, 0xFE}, // native bytes without another KX character
    {0x00, 0xC3}, // Arabic
    {0x00, 0xDB}, // further Arabic script
}};

constexpr bool is_valid(KxChar ch, bool double_byte_system) noexcept {
    // 0xFF stands for 0 in both halves: strings escaped for transport hold no zero bytes.
    const std::uint8_t set = set_of(ch) == 0xFF ? std::uint8_t{0} : set_of(ch);
    const std::uint8_t index = index_of(ch) == 0xFF ? std::uint8_t{0} : index_of(ch);
    if (set < kSetRanges.size()) return kSetRanges[set].first <= index && index <= kSetRanges[set].last;
    return double_byte_system && kFirstDoubleByteSet <= set && set <= kLastDoubleByteSet;
}

} // namespace kxstr::core
