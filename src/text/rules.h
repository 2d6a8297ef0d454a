// One character between a code page, KX text and Unicode. These are the library's conversions plus what a converter of
// whole texts needs: line ends stay line ends, and every byte of a code page has a unit in KX text. docs/convert.md
// tells the choices.
#pragma once

#include <cstdint>
#include <kxstr/types.h>

namespace kxstr::text {

// A code page under both of its numbers.
struct CodePage {
    std::uint32_t kx_number;
    std::uint32_t windows_number;
    const KxCodePage *own = nullptr; // a descriptor with tables of the caller's own, or null

    bool operator==(const CodePage &) const = default;
};
CodePage page_of_kx_number(std::uint32_t number) noexcept;
CodePage page_of_windows_number(std::uint32_t number) noexcept;

// East Asian characters are some whatever the system: a converter names its code pages.
inline constexpr bool kDoubleByteSystem = true;

bool is_double_byte(const CodePage &page) noexcept;
bool is_lead_byte(const CodePage &page, std::uint8_t byte) noexcept;

// What the bytes 9, 10, 12 and 13 are in KX text: the codes of its lines, or the glyphs that a DOS page has for them.
enum class LineEnds : bool { codes, glyphs };

// All results are KX_NONE where there is no equivalent. A code is a byte, or a double-byte code with its lead byte
// high.
//
// The East Asian sets of KX text and the native bytes in the upper halves of sets 0 and 12 mean something only together
// with a code page, the page of the text.
KxChar kx_of_code(const CodePage &page, std::uint16_t code, LineEnds ends = LineEnds::codes) noexcept;
KxChar kx_of_unicode(const CodePage &text_page, std::uint16_t unit, LineEnds ends = LineEnds::codes) noexcept;
std::uint16_t unicode_of_kx(const CodePage &text_page, KxChar ch) noexcept;
// The code of a character of a text of `text_page` in another page, or in the same.
std::uint16_t code_of_kx(const CodePage &page, const CodePage &text_page, KxChar ch,
                         LineEnds ends = LineEnds::codes) noexcept;
// The same character in a text of another page.
KxChar kx_of_kx(const CodePage &page, const CodePage &text_page, KxChar ch, LineEnds ends = LineEnds::codes) noexcept;

} // namespace kxstr::text
