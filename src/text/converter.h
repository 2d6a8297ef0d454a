// Whole texts between code pages, Unicode and KX text, in pieces: what stands behind KxTextConverter.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <kxstr/text.h>
#include <span>

#include "text/exact.h"
#include "text/scalars.h"
#include "text/shared_pages.h"

namespace kxstr::text {

enum class Kind : std::uint8_t { single_byte, double_byte, utf8, utf16, kx };

struct Side {
    Kind kind;
    ByteOrder order; // of the units of UTF-16 and KX text
    CodePage page;   // of a code page and of KX text

    bool is_code_page() const noexcept { return kind == Kind::single_byte || kind == Kind::double_byte; }
};

// What a map has for a unit: the units or native codes to be written, of which the second may be none (0). `first` is
// KX_NONE for a unit that ends the work, as a character without an equivalent.
struct Mapped {
    std::uint16_t first = KX_NONE, second = 0;
};

// A conversion reads units (UTF-16 without pairs, or native codes, or KX characters), gives each way to another by
// table or rule, and writes those; a few pairs of forms go by kernels of their own without the units between.
struct Converter {
    Side from, to;
    bool exact;    // no KX: the units are UTF-16
    bool same;     // the units stay whatever they are: KX text to KX text of the same page
    bool by_bytes; // a single-byte page to UTF-8 by `utf8`
    bool composes; // Unicode or page 1258 to KX text: a letter and its marks are one character where KX has it
    bool replaces; // what does not convert gives way to `substitute`, which may be empty
    std::uint8_t substitute_size;
    std::uint8_t substitute[4];

    RuleOfPages rule;    // what makes one unit the other, unless `exact`, `same` or by a map
    const Mapped *map;   // of the caller (set_map), or null
    SharedPages *shared; // or null
    const simd::MapPage *pages[0x100];

    std::uint8_t leads[0x100];           // of a double-byte page that is read
    const std::uint16_t *units_of_codes; // of such a page, exact; or null
    const std::uint16_t *codes_of_units; // of one that is written, exact; or null
    simd::MapPage units;                 // of a single-byte page that is read: what its bytes become
    simd::Utf8Page utf8;                 // the same in UTF-8, for `by_bytes`
    simd::MapPage letters;               // of such a page with marks towards KX text: what its bytes are in Unicode
    simd::ByteOfUnits bytes;             // of a single-byte page that is written, exact or with marks
};

bool prepare(Converter &converter, const KxTextForm &from, const KxTextForm &to, std::uint32_t flags) noexcept;
bool set_substitute(Converter &converter, std::uint32_t character) noexcept;
std::uint32_t convert(Converter &converter, std::span<const std::uint8_t> source, bool last,
                      std::span<std::uint8_t> destination, KxTextResult &result) noexcept;

// A letter and its marks stay two characters, also towards KX text.
void keep_marks_apart(KxTextConverter &converter) noexcept;

// Makes an exact conversion one by a map instead, of the 65,536 units or native codes that may be read. It must live as
// long as the converter, and may change; what it says about a single-byte page is asked here only, and there two units
// count as none. A character then takes up to twice the room.
void set_map(KxTextConverter &converter, const Mapped *map) noexcept;

// Bytes of the character that begins the source, of which it holds all. It is one that converts.
std::size_t size_of_first(const KxTextConverter &converter, std::span<const std::uint8_t> source) noexcept;

} // namespace kxstr::text
