#include "codepage/convert.h"

#include <kxstr/codepage.h>

#include "codepage/double_byte.h"
#include "codepage/page_maps.h"
#include "platform/bytes.h"
#include "platform/system.h"

namespace kxstr::codepage {
namespace {

// The entry of a range table for a native byte, or kNone outside the table's range.
KxChar find_kx(const std::uint8_t *table, std::uint16_t code) noexcept {
    if (table == nullptr || code < table[0] || code > table[1]) return kNone;
    return load_u16le(table + 2 + 2 * static_cast<std::size_t>(code - table[0]));
}

// The native byte of a KX character in a reverse table, or kNone. Entries lie three bytes apart, so keys are unaligned.
std::uint16_t find_native(const std::uint8_t *table, KxChar ch) noexcept {
    if (table == nullptr) return kNone;
    std::size_t low = 0;
    std::size_t high = load_u16le(table);
    while (low < high) {
        const std::size_t middle = low + (high - low) / 2;
        const std::uint8_t *entry = table + 2 + 3 * middle;
        const KxChar key = load_u16le(entry);
        if (key == ch) return entry[2];
        if (key < ch) {
            low = middle + 1;
        } else {
            high = middle;
        }
    }
    return kNone;
}

// The currency sign that stands in the backslash's place in Japanese and Korean code pages.
constexpr bool is_backslash_currency(std::uint32_t code_page, KxChar ch) noexcept {
    constexpr KxChar yen = 0x040C;
    constexpr KxChar won = 0x0456;
    return (code_page == 932 && ch == yen) || ((code_page == 934 || code_page == 949) && ch == won);
}

} // namespace

KxChar to_kx(const KxCodePage &page, std::uint16_t code, bool double_byte_system) noexcept {
    if (code >= 32 && code <= 126) return code;
    if (code < 32) return page.low_table != nullptr ? find_kx(page.low_table, code) : code_of_control(code);
    if (double_byte_system) {
        const KxChar ch = double_byte_to_kx(page.input_code_page, code);
        if (ch != kNone) return ch;
    }
    return find_kx(page.high_table, code);
}

std::uint16_t from_kx(const KxCodePage &page, KxChar ch, bool double_byte_system) noexcept {
    constexpr KxChar space_code = 0x0080;
    if (ch == space_code) return ' ';
    if (set_of(ch) == kAsciiSet) return ch;
    if (set_of(ch) == kNativeByteSet) return index_of(ch);
    if (double_byte_system) {
        const std::uint16_t code = kx_to_double_byte(page.output_code_page, ch);
        if (code != kNone) return code;
        if (is_backslash_currency(page.output_code_page, ch)) return '\\';
    }
    const std::uint16_t byte = find_native(page.reverse_table, ch);
    return byte != kNone ? byte : control_of_code(ch);
}

namespace {

[[gnu::noinline]] KxChar to_kx_by_map(const KxCodePage &page, std::uint16_t code, bool double_byte_system) noexcept {
    const std::uint16_t *const map = to_kx_map(page, double_byte_system);
    return map != nullptr ? map[code] : to_kx(page, code, double_byte_system);
}

[[gnu::noinline]] std::uint16_t from_kx_by_map(const KxCodePage &page, KxChar ch, bool double_byte_system) noexcept {
    const std::uint16_t *const map = from_kx_map(page, double_byte_system);
    return map != nullptr ? map[ch] : from_kx(page, ch, double_byte_system);
}

} // namespace
} // namespace kxstr::codepage

extern "C" {

// Most characters are ASCII: they go by without asking the system. A filter may call these for each character, so the
// usual way of the others has no call in it either.
uint16_t WcvtNtvToKx(const KxCodePage *page, uint32_t code) {
    const std::uint16_t native = kxstr::low16(code);
    if (native >= 32 && native <= 126) return native;
    const bool double_byte = kxstr::platform::is_double_byte_system();
    if (const auto *const map = kxstr::codepage::first_to_kx_map(*page, double_byte)) return map[native];
    return kxstr::codepage::to_kx_by_map(*page, native, double_byte);
}

uint16_t WcvtKxToNtv(const KxCodePage *page, uint32_t ch) {
    const KxChar kx = kxstr::low16(ch);
    if (kx < 0x80) return kx;
    const bool double_byte = kxstr::platform::is_double_byte_system();
    if (const auto *const map = kxstr::codepage::first_from_kx_map(*page, double_byte)) return map[kx];
    return kxstr::codepage::from_kx_by_map(*page, kx, double_byte);
}
}
