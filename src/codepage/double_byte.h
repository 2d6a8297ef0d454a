// The double-byte code pages: arithmetic rules instead of tables. A double-byte code has its lead byte in bits 15..8.
#pragma once

#include "core/kx_char.h"

namespace kxstr::codepage {

// Whether the code page has a rule: 932, 934, 936, 938, 949 and 950.
bool has_double_byte_rule(std::uint32_t code_page) noexcept;

// The KX character of a double-byte code, or kNone. A code page without a rule gives kNone.
KxChar double_byte_to_kx(std::uint32_t code_page, std::uint16_t code) noexcept;

// The double-byte code of a KX character, or kNone. It accepts more characters than double_byte_to_kx produces, and
// those may give a code that is not of the code page; no accepted character gives 0xFFFF itself.
std::uint16_t kx_to_double_byte(std::uint32_t code_page, KxChar ch) noexcept;

} // namespace kxstr::codepage
