// Slow, plain versions of the single-character conversions.
#pragma once

#include "reference/data_files.h"

namespace kxstr::reference {

inline constexpr unsigned kNone = 0xFFFF;

// The double-byte code pages, by counting through their codes. kNone where there is nothing.
unsigned double_byte_to_kx(unsigned page, unsigned code);
unsigned kx_to_double_byte(unsigned page, unsigned kx);

// `page` has empty maps for a code page without tables.
unsigned native_to_kx(const Page &page, unsigned code, bool double_byte_system);
unsigned kx_to_native(const Page &page, unsigned kx, bool double_byte_system);

} // namespace kxstr::reference
