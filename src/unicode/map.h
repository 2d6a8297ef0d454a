// Unicode to KX characters and back, one UTF-16 code unit at a time.
#pragma once

#include "frame/kx_char.h"

namespace kxstr::unicode {

// The double-byte characters go through the system's ANSI code page, when that is a double-byte one. The caller asks
// for it once per character (platform::ansi_code_page()).
KxChar to_kx(std::uint16_t unit, std::uint32_t ansi_code_page) noexcept;
std::uint16_t from_kx(KxChar ch, std::uint32_t ansi_code_page) noexcept;

// Counted strings: units convert until a 0 has been stored or a limit (in units) is reached, no-mapping values
// included. Return the units stored, the 0 among them.
std::uint32_t string_to_kx(const std::uint16_t *source, std::uint32_t source_limit, KxChar *destination,
                           std::uint32_t destination_limit) noexcept;
std::uint32_t string_from_kx(const KxChar *source, std::uint32_t source_limit, std::uint16_t *destination,
                             std::uint32_t destination_limit) noexcept;

} // namespace kxstr::unicode
