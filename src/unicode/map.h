// Unicode to KX characters and back, one UTF-16 code unit at a time.
#pragma once

#include <cstddef>

#include "core/kx_char.h"

namespace kxstr::unicode {

// The double-byte characters go through the system's ANSI code page, when that is a double-byte one
// (platform::ansi_code_page()).
KxChar to_kx(std::uint16_t unit, std::uint32_t ansi_code_page) noexcept;
std::uint16_t from_kx(KxChar ch, std::uint32_t ansi_code_page) noexcept;

// Whole texts: units convert until a 0 has been stored or `limit` are, no-mapping values included; source and
// destination may be the same. The code page is asked for once. Give the units before the 0.
std::size_t to_kx(const std::uint16_t *source, std::size_t limit, KxChar *destination) noexcept;
std::size_t from_kx(const KxChar *source, std::size_t limit, std::uint16_t *destination) noexcept;

} // namespace kxstr::unicode
