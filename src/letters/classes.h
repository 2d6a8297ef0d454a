// Character classes: alphabetic, digit, space, or a caller's own.
#pragma once

#include <kxstr/letters.h>

#include "core/kx_char.h"

namespace kxstr::letters {

constexpr bool found_in_table(KxChar ch, const KxIndexRange *table) noexcept {
    for (; table->set <= set_of(ch); ++table) {
        if (table->set == set_of(ch) && table->first <= index_of(ch) && index_of(ch) <= table->last) return true;
    }
    return false;
}

bool is_alpha(KxChar ch) noexcept;
bool is_space(KxChar ch) noexcept;

// Digits of other sets than ASCII do not count.
constexpr bool is_digit(KxChar ch) noexcept {
    return ch >= '0' && ch <= '9';
}

} // namespace kxstr::letters
