#include <kxstr/forms.h>

#include "forms/code_size.h"
#include "forms/native_text.h"
#include "forms/strip.h"

namespace kxstr::forms {
namespace {

// Text bytes go over as they are, other codes through the code page, and those that have no KX character are dropped.
// (The backslash may stand for a currency sign on double-byte systems, but converts to itself.)
std::uint32_t native_to_stream(Native which, std::uint8_t *destination, const char *source, std::uint16_t count,
                               bool double_byte) noexcept {
    if (count == 0) return 0;
    NativeReader reader(bytes_of(source), double_byte);
    NativePage page(which);
    ByteWriter out(destination, count - 1u);
    while (out.has_room()) {
        const std::uint16_t code = reader.next();
        if (code == 0) break;
        const KxChar ch = is_text_byte(code) ? code : page.to_kx(code);
        if (ch == kNone) continue;
        const bool fitted =
            set_of(ch) == kAsciiSet ? out.put(index_of(ch)) : out.put({kExtended, index_of(ch), set_of(ch), kExtended});
        if (!fitted) break;
    }
    return static_cast<std::uint32_t>(out.finish() + 1);
}

std::uint32_t stream_to_native(Native which, char *destination, const std::uint8_t *source,
                               std::uint16_t count) noexcept {
    if (count == 0) return 0;
    const std::size_t room = count - 1u;
    strip_stream(bytes_of(destination), source, room, KX_KEEP_HARD_ENDS | KX_KEEP_SOFT_ENDS);
    NativePage page(which);
    // In place: no code grows, so the output never overtakes what is still to be read.
    ByteWriter out(bytes_of(destination), room);
    for (const std::uint8_t *at = bytes_of(destination); out.has_room() && *at != 0;) {
        if (*at != kExtended) {
            out.put(*at++);
            continue;
        }
        const std::uint16_t code = page.from_kx(make_char(at[2], at[1]));
        at += kExtendedSize;
        if (code == kNone) {
            out.charge(1); // a dropped character still counts
        } else if (!put_native(out, code)) {
            break;
        }
    }
    return static_cast<std::uint32_t>(out.finish() + 1);
}

} // namespace
} // namespace kxstr::forms

using namespace kxstr;
using forms::Native;

extern "C" {

void TpiSetCodepage(void) {
    codepage::fill_descriptors();
}

uint32_t str_SetCodePage(void) {
    codepage::ensure_descriptors();
    return 1;
}

void str_ClrCodePage(void) {
    codepage::clear_descriptors();
}

uint32_t TpiAnsiToKx(uint32_t code) {
    return forms::NativePage(Native::kAnsi).to_kx(low16(code));
}

uint32_t TpiOemToKx(uint32_t code) {
    return forms::NativePage(Native::kOem).to_kx(low16(code));
}

uint32_t TpiGetAnsi(uint32_t ch) {
    return forms::NativePage(Native::kAnsi).from_kx(low16(ch));
}

uint32_t TpiGetOem(uint32_t ch) {
    return forms::NativePage(Native::kOem).from_kx(low16(ch));
}

uint32_t str_AnsiToKx(uint8_t *destination, const char *source, uint32_t count) {
    return forms::native_to_stream(Native::kAnsi, destination, source, low16(count), false);
}

uint32_t str_OemToKx(uint8_t *destination, const char *source, uint32_t count) {
    return forms::native_to_stream(Native::kOem, destination, source, low16(count), false);
}

// The selector would choose between descriptors that hold the same code page.
uint32_t str_DBCS_OEMorANSItoKX(uint8_t *destination, const char *source, uint32_t count, uint32_t /*selector*/) {
    return forms::native_to_stream(Native::kAnsi, destination, source, low16(count), true);
}

uint32_t TpiAnsiToKxBuff(uint8_t *destination, const char *source, uint32_t count) {
    if (platform::is_double_byte_system()) return str_DBCS_OEMorANSItoKX(destination, source, count, 0);
    return str_AnsiToKx(destination, source, count);
}

uint32_t TpiOemToKxBuff(uint8_t *destination, const char *source, uint32_t count) {
    if (platform::is_double_byte_system()) return str_DBCS_OEMorANSItoKX(destination, source, count, 1);
    return str_OemToKx(destination, source, count);
}

uint32_t TpiKxToAnsiBuff(char *destination, const uint8_t *source, uint32_t count) {
    return forms::stream_to_native(Native::kAnsi, destination, source, low16(count));
}

uint32_t TpiKxToOemBuff(char *destination, const uint8_t *source, uint32_t count) {
    return forms::stream_to_native(Native::kOem, destination, source, low16(count));
}
}
