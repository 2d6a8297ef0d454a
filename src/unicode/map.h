// Unicode to KX characters and back, one UTF-16 code unit at a time.
#pragma once

#include "frame/kx_char.h"

namespace kxstr::unicode {

// The double-byte characters go through the system's ANSI code page, when that is a double-byte one. The caller asks
// for it once per character (platform::ansi_code_page()).
KxChar to_kx(std::uint16_t unit, std::uint32_t ansi_code_page) noexcept;
std::uint16_t from_kx(KxChar ch, std::uint32_t ansi_code_page) noexcept;

} // namespace kxstr::unicode
