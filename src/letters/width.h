// Single-width and double-width forms of KX characters, and the two kana.
#pragma once

#include "core/kx_char.h"

namespace kxstr::letters {

// The half-width sound marks, which follow the katakana that they modify.
inline constexpr KxChar kVoicingMark = 0x0B3D;
inline constexpr KxChar kHalfVoicingMark = 0x0B3E;

// The double-width form. Where a half-width katakana and the mark at `next` (may be null) are one double-width
// character, gives that and stores 0 at `next`.
KxChar to_double(KxChar ch, KxChar *next) noexcept;

// The single-width form; the sound mark that belongs behind it, or 0, goes to `mark`. With a null `mark` a katakana
// with a mark comes back as one combined code: bit 6 of its index for the voicing mark, bit 7 for the other.
KxChar to_single(KxChar ch, KxChar *mark) noexcept;

KxChar to_hiragana(KxChar ch) noexcept;
KxChar to_katakana(KxChar ch) noexcept;

// A double-width letter is a capital where its single-width form is one.
bool is_upper(KxChar ch) noexcept;

} // namespace kxstr::letters
