// Single characters between the KX 5 and the KX 6 generation, which number some sets differently.
#pragma once

#include "core/kx_char.h"

namespace kxstr::forms {

// The KX 5 character, or kNone.
KxChar kx6_to_kx5(KxChar ch) noexcept;

// One KX 6 character, or a katakana letter and its voicing mark.
struct Kx6Characters {
    KxChar first;
    KxChar mark; // 0: there is none
};
Kx6Characters kx5_to_kx6(KxChar ch) noexcept;

} // namespace kxstr::forms
