// One character between a native code and a KX character, by a code page descriptor.
#pragma once

#include "core/kx_char.h"

namespace kxstr::codepage {

// `code`: a byte, or a double-byte code with its lead byte high. Double-byte codes convert on a double-byte system
// only.
KxChar to_kx(const KxCodePage &page, std::uint16_t code, bool double_byte_system) noexcept;

// The byte or double-byte code of `ch`, or kNone.
std::uint16_t from_kx(const KxCodePage &page, KxChar ch, bool double_byte_system) noexcept;

} // namespace kxstr::codepage
