// Code pages and Unicode without KX between: the published mapping of a page, both ways, from the library's own tables
// on every system. A page that has none goes by its KX table. The bytes below 0x80 are themselves.
#pragma once

#include "simd/kernels.h"
#include "text/rules.h"

namespace kxstr::text {

// Whether there is one, so that every code of the page is a character of its own.
bool has_published_mapping(const CodePage &page) noexcept;
// The unit of a byte or double-byte code, or kNone.
std::uint16_t unit_of_code(const CodePage &page, std::uint16_t code) noexcept;
// The code of a unit in a double-byte page, or kNone.
std::uint16_t double_byte_code_of(const CodePage &page, std::uint16_t unit) noexcept;
// 0x80 for every lead byte, in a table of 256; all 0 for a single-byte page.
void fill_leads(const CodePage &page, std::uint8_t *leads) noexcept;

// Both of all 65,536 codes and units of a double-byte page, built at the first use and kept; null while another thread
// builds it.
const std::uint16_t *units_of_codes(const CodePage &page) noexcept;
const std::uint16_t *codes_of_units(const CodePage &page) noexcept;

// Of a single-byte page.
void fill_units(const CodePage &page, simd::MapPage &units) noexcept;
// False where a byte below 0x80 is a character beyond, which has no place there.
bool fill_utf8(const simd::MapPage &units, simd::Utf8Page &utf8) noexcept;
void fill_bytes(const simd::MapPage &units, simd::ByteOfUnits &bytes) noexcept;

// A Vietnamese letter as letter and tone, which page 1258 has under codes of their own. Both 0 for other characters.
struct LetterAndTone {
    std::uint16_t letter, tone;
};
LetterAndTone vietnamese_parts(std::uint16_t unit) noexcept;

} // namespace kxstr::text
