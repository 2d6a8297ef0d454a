// Unicode to KX characters and back, one UTF-16 code unit at a time.
#pragma once

#include <cstddef>
#include <span>

#include "core/kx_char.h"

namespace kxstr::unicode {

// The double-byte characters go through the system's ANSI code page, when that is a double-byte one
// (platform::ansi_code_page()).
KxChar to_kx(std::uint16_t unit, std::uint32_t ansi_code_page) noexcept;
std::uint16_t from_kx(KxChar ch, std::uint32_t ansi_code_page) noexcept;

// Whole texts: units convert until a 0 has been stored or the source ends, no-mapping values included; source and
// destination may be the same. The code page is asked for once. Return the units stored, the 0 among them.
std::size_t to_kx(std::span<const std::uint16_t> source, KxChar *destination) noexcept;
std::size_t from_kx(std::span<const KxChar> source, std::uint16_t *destination) noexcept;

} // namespace kxstr::unicode
