// The comparison of two characters by coltbl, which orders strings and single characters alike.
#pragma once

#include "collate/collation_sequence.h"
#include "letters/case.h"
#include "simd/block_order.h"

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

// The values of ASCII, as the kernels take them; null where a host has rearranged the table.
inline const std::uint8_t *ascii_block() noexcept {
    const KxCollationEntry &ascii = coltbl[0];
    if (ascii.set != kAsciiSet || ascii.block == nullptr) [[unlikely]]
        return nullptr;
    return ascii.block[0] == simd::kFirstInBlock && ascii.block[1] == simd::kCountInBlock ? ascii.block : nullptr;
}

} // namespace kxstr::collate
