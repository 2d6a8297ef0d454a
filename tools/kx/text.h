// What the tool takes from the library's rules of text, and what it adds: the system's code page and country.
#pragma once

#include <cstdint>

#include "text/rules.h"

namespace kx {

using kxstr::text::CodePage;
using kxstr::text::is_double_byte;
using kxstr::text::kDoubleByteSystem;
using kxstr::text::page_of_kx_number;
using kxstr::text::page_of_windows_number;
using kxstr::text::unicode_of_kx;

// The ANSI code page of the system; where the library does not know that, 1252.
CodePage system_page();

// Puts a country (1 to 4, or 0 for none) in the place of the system's, which the library asks for once and keeps.
void set_country(std::uint8_t id);

} // namespace kx
