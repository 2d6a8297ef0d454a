#include "text/rules.h"

#include <array>
#include <kxstr/codepage.h>

#include "codepage/convert.h"
#include "codepage/descriptor.h"
#include "codepage/double_byte.h"
#include "core/kx_char.h"
#include "platform/system.h"
#include "unicode/map.h"

namespace kxstr::text {
namespace {

constexpr std::array<std::uint32_t, 4> kDoubleBytePages{932, 949, 936, 950};

KxCodePage descriptor_of(const CodePage &page) noexcept {
    if (page.own != nullptr) return *page.own;
    KxCodePage descriptor{};
    codepage::set_code_page(descriptor, page.kx_number, codepage::kBothDirections);
    return descriptor;
}

constexpr bool is_plain_set(KxChar ch) noexcept {
    return set_of(ch) == kAsciiSet || set_of(ch) == kNativeByteSet;
}
// A byte of the text's code page that has no other KX character.
constexpr bool is_native_byte(KxChar ch) noexcept {
    return is_plain_set(ch) && index_of(ch) >= 0x80;
}
constexpr bool is_east_asian(KxChar ch) noexcept {
    return kFirstDoubleByteSet <= set_of(ch) && set_of(ch) <= kLastDoubleByteSet;
}

constexpr std::uint16_t join(const platform::NativeBytes &native) noexcept {
    switch (native.count) {
    case 1: return native.bytes[0];
    case 2: return static_cast<std::uint16_t>((native.bytes[0] << 8) | native.bytes[1]);
    default: return kNone;
    }
}

bool has_character(std::uint32_t windows_number, KxChar ch) noexcept {
    const std::uint16_t code = codepage::kx_to_double_byte(windows_number, ch);
    return code != kNone && codepage::double_byte_to_kx(windows_number, code) == ch;
}

// A double-byte page answers with a mark for its codes that no character has. A text must not fill with them unseen.
bool stands_for_undefined(const CodePage &page, KxChar ch, std::uint16_t unit) noexcept {
    constexpr std::uint16_t katakana_middle_dot = 0x30FB;
    if (unit != '?' && unit != katakana_middle_dot) return false;
    return join(platform::from_wide(page.windows_number, unit)) != codepage::kx_to_double_byte(page.windows_number, ch);
}

// The page that a unit speaks of: that of the text, unless it is an East Asian character that only another page has.
// The sets of the four pages are apart; the areas beside them, which hold the user-defined characters, overlap, and
// there the page of the text decides.
CodePage page_of(const CodePage &text_page, KxChar ch) noexcept {
    if (!is_east_asian(ch) || has_character(text_page.windows_number, ch)) return text_page;
    for (const std::uint32_t number : kDoubleBytePages) {
        if (has_character(number, ch)) return page_of_windows_number(number);
    }
    return text_page;
}

// Whether the byte is a control character that DOS shows as this one.
constexpr bool is_glyph_of_control(KxChar ch, std::uint16_t code) noexcept {
    return code < 0x20 && !is_plain_set(ch) && control_of_code(ch) == kNone;
}

// The code that the page itself has for a unit.
std::uint16_t own_code(const CodePage &page, const CodePage &text_page, KxChar ch, LineEnds ends) noexcept {
    const bool of_another_page =
        (is_native_byte(ch) && page != text_page) || (is_east_asian(ch) && page_of(text_page, ch) != page);
    if (of_another_page) return kNone;
    const std::uint16_t code = codepage::from_kx(descriptor_of(page), ch, kDoubleByteSystem);
    if (code > 0xFF && kx_of_code(page, code) != ch) return kNone;
    // A glyph must not become a line end.
    if (ends == LineEnds::codes && is_glyph_of_control(ch, code) && code_of_control(code) != kNone) return kNone;
    return code;
}

// KX text has an Arabic letter and its isolated form as one character, and the library gives the form as its Unicode
// value. In a text it is the letter, which joins its neighbours, unless the page of the text has the form itself.
std::uint16_t letter_of_form(const CodePage &text_page, KxChar ch, std::uint16_t form) noexcept {
    constexpr std::uint16_t first_form = 0xFB50;
    constexpr std::uint16_t last_form = 0xFEFC;
    if (form < first_form || form > last_form) return form;
    if (platform::from_wide(text_page.windows_number, form).count != 0) return form;
    for (std::uint16_t letter = 0x0600; letter <= 0x06FF; ++letter) {
        if (unicode::to_kx(letter, text_page.windows_number) == ch) return letter;
    }
    return form;
}

} // namespace

CodePage page_of_kx_number(std::uint32_t number) noexcept {
    return {number, WcvtKXCodepageToWinCodepage(number)};
}

CodePage page_of_windows_number(std::uint32_t number) noexcept {
    return {WcvtWinCodepageToKXCodepage(number), number};
}

bool is_double_byte(const CodePage &page) noexcept {
    return codepage::has_double_byte_rule(page.windows_number);
}

bool is_lead_byte(const CodePage &page, std::uint8_t byte) noexcept {
    return is_double_byte(page) && platform::is_lead_byte_of(page.windows_number, byte);
}

KxChar kx_of_code(const CodePage &page, std::uint16_t code, LineEnds ends) noexcept {
    const KxChar code_of_line = ends == LineEnds::codes ? code_of_control(code) : kNone;
    if (code_of_line != kNone) return code_of_line;
    const KxChar ch = codepage::to_kx(descriptor_of(page), code, kDoubleByteSystem);
    // The table of a page may carry its no-break space as the byte that other pages have for it.
    const bool another_byte = is_native_byte(ch) && index_of(ch) != code;
    if (ch != kNone && !another_byte) return ch;
    if (code < 0x80) return code;
    if (code > 0xFF || is_lead_byte(page, static_cast<std::uint8_t>(code))) return kNone;
    return make_char(kNativeByteSet, code);
}

KxChar kx_of_unicode(const CodePage &text_page, std::uint16_t unit, LineEnds ends) noexcept {
    if (const KxChar code_of_line = code_of_control(unit); code_of_line != kNone) return code_of_line;
    if (unit < 0x80) return unit;
    const KxChar ch = unicode::to_kx(unit, text_page.windows_number);
    const bool found = ch != kNone && !is_native_byte(ch);
    if (found && !is_glyph_of_control(ch, own_code(text_page, text_page, ch, ends))) return ch;
    // A byte that has no other KX character, such as the no-break space, is where the page has it; and a byte that is
    // only a glyph is better than one that is a control character as well.
    const std::uint16_t code = join(platform::from_wide(text_page.windows_number, unit));
    if (code != kNone) return kx_of_code(text_page, code, ends);
    return found ? ch : kNone;
}

std::uint16_t unicode_of_kx(const CodePage &text_page, KxChar ch) noexcept {
    if (const std::uint16_t control = control_of_code(ch); control != kNone) return control;
    const CodePage page = page_of(text_page, ch);
    // The rules of the double-byte pages also take units that no code of the page gives.
    if (is_east_asian(ch) && !has_character(page.windows_number, ch)) return kNone;
    const std::uint16_t unit = unicode::from_kx(ch, page.windows_number);
    if (is_east_asian(ch) && stands_for_undefined(page, ch, unit)) return kNone;
    return letter_of_form(text_page, ch, unit);
}

std::uint16_t code_of_kx(const CodePage &page, const CodePage &text_page, KxChar ch, LineEnds ends) noexcept {
    const std::uint16_t own = own_code(page, text_page, ch, ends);
    if (own != kNone && (page == text_page || !is_glyph_of_control(ch, own))) return own;
    // Greek, Cyrillic or a star have KX characters of their own, which a double-byte page has under its own codes.
    const std::uint16_t unit = unicode_of_kx(text_page, ch);
    if (unit == kNone) return own;
    const std::uint16_t code = join(platform::from_wide(page.windows_number, unit));
    return code != kNone && kx_of_code(page, code) != kNone ? code : own;
}

KxChar kx_of_kx(const CodePage &page, const CodePage &text_page, KxChar ch, LineEnds ends) noexcept {
    const bool means_another =
        page != text_page && (is_native_byte(ch) || (is_east_asian(ch) && page_of(text_page, ch) != page));
    if (!means_another) return ch;
    const std::uint16_t unit = unicode_of_kx(text_page, ch);
    return unit != kNone ? kx_of_unicode(page, unit, ends) : kNone;
}

} // namespace kxstr::text
