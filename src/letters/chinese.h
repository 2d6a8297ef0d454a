// KX characters of the two Chinese double-byte character sets, into each other.
#pragma once

#include "core/kx_char.h"

namespace kxstr::letters {

// A character of another set, or without a counterpart, comes back unchanged.
KxChar big5_to_gb(KxChar ch) noexcept;
KxChar gb_to_big5(KxChar ch) noexcept;

} // namespace kxstr::letters
