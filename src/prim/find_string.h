// One 16-bit string in another.
#pragma once

#include "core/kx_char.h"

namespace kxstr::prim {

// The first place in `text` where `wanted` occurs, or null. `wanted` is not empty. Takes time in proportion to the two
// lengths, whatever the strings are, and no memory.
const KxChar *find_string(const KxChar *text, const KxChar *wanted) noexcept;

} // namespace kxstr::prim
