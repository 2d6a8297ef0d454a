// The comparison of two characters by coltbl, which orders strings and single characters alike.
#pragma once

#include <array>

#include "collate/collation_sequence.h"
#include "letters/case.h"

namespace kxstr::collate {

enum class Case : bool { kIgnored, kCounts };

// Negative, 0 or positive. Case decides only between characters of the same value, lowercase first; those without any
// value go by their lowercase codes.
inline int compare_characters(KxChar a, KxChar b, Case letter_case) noexcept {
    const KxChar lower_a = letters::to_lower(a);
    const KxChar lower_b = letters::to_lower(b);
    if (lower_a != lower_b) {
        const int value_a = coltbl_value(lower_a);
        const int value_b = coltbl_value(lower_b);
        if (value_a != value_b) return value_a - value_b;
        if (value_a == kNoValue) return lower_a - lower_b;
    }
    if (letter_case == Case::kIgnored) return 0;
    return static_cast<int>(lower_a != a) - static_cast<int>(lower_b != b);
}

inline constexpr auto kLowerAscii = [] {
    std::array<std::uint8_t, 0x100> lower{};
    for (unsigned ch = 0; ch != lower.size(); ++ch)
        lower[ch] = static_cast<std::uint8_t>(ch >= 'A' && ch <= 'Z' ? ch | 0x20 : ch);
    return lower;
}();

// The order of two characters by their values alone where that is quickly told: of ASCII, with different values, either
// of them a text's terminator, which comes before every character. 0: ask compare_characters. Without a jump that hangs
// on the characters, since most comparisons of texts end here.
inline int compare_quickly(KxChar a, KxChar b) noexcept {
    const KxCollationEntry &ascii = coltbl[0]; // unless a host has rearranged the table
    if (set_of(a | b) != kAsciiSet || ascii.set != kAsciiSet || ascii.block == nullptr) return 0;
    const std::uint8_t *const block = ascii.block;
    unsigned without_value = 0;
    const auto value_of = [&](unsigned ch) {
        const unsigned offset = unsigned{kLowerAscii[ch]} - block[0];
        const unsigned has_value = offset < block[1] ? ~0u : 0;
        without_value |= ch & ~has_value;
        return static_cast<int>(block[(2 + offset) & has_value] | ~has_value);
    };
    const int difference = value_of(a) - value_of(b);
    return without_value == 0 && block[0] != 0 ? difference : 0;
}

} // namespace kxstr::collate
