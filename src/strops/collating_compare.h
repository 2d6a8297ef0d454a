// The comparison of two characters by coltbl, which orders strings and single characters alike.
#pragma once

#include "strops/case.h"
#include "strops/collation_sequence.h"

namespace kxstr::strops {

enum class Case : bool { kIgnored, kCounts };

// Negative, 0 or positive. Case decides only between characters of the same value, lowercase first; those without any
// value go by their lowercase codes.
inline int compare_characters(KxChar a, KxChar b, Case letter_case) noexcept {
    const KxChar lower_a = to_lower(a);
    const KxChar lower_b = to_lower(b);
    if (lower_a != lower_b) {
        const int value_a = coltbl_value(lower_a);
        const int value_b = coltbl_value(lower_b);
        if (value_a != value_b) return value_a - value_b;
        if (value_a == kNoValue) return lower_a - lower_b;
    }
    if (letter_case == Case::kIgnored) return 0;
    return static_cast<int>(lower_a != a) - static_cast<int>(lower_b != b);
}

} // namespace kxstr::strops
