#include <cstring>
#include <kxstr/forms.h>

#include "forms/code_size.h"
#include "forms/native_text.h"
#include "forms/strip.h"
#include "simd/kernels.h"

namespace kxstr::forms {
namespace {

// A native code's KX character, appended; false when it does not fit. None is dropped.
bool put_character(ByteWriter &out, KxChar ch) noexcept {
    if (ch == kNone) return true;
    if (set_of(ch) == kAsciiSet) return out.put(index_of(ch));
    return out.put({kExtended, index_of(ch), set_of(ch), kExtended});
}

// Text bytes go over as they are, other codes through the code page, and those that have no KX character are dropped.
// With double-byte characters the backslash goes through the code page, too: it stays one, but counts as a first use of
// the descriptors.
std::uint32_t native_to_stream(Native which, std::uint8_t *destination, const char *source, std::uint16_t count,
                               bool double_byte) noexcept {
    if (count == 0) return 0;
    const std::uint8_t *at = bytes_of(source);
    ByteWriter out(destination, count - 1u);
    for (; out.has_room() && is_text_byte(*at) && !(double_byte && *at == '\\'); ++at)
        out.put(*at);
    if (!out.has_room() || *at == 0) return static_cast<std::uint32_t>(out.finish() + 1);

    NativePage page(which);
    const std::uint16_t *const map = page.to_kx_map();
    if (map != nullptr && !double_byte) {
        const std::size_t start = out.finish();
        const std::size_t room = count - 1u - start;
        const std::size_t written = start + simd::kernels().widen_stream(destination + start, at, room, map);
        destination[written] = 0;
        return static_cast<std::uint32_t>(written + 1);
    }
    NativeReader reader(at, double_byte);
    if (map != nullptr) {
        // While any code fits, none is tested for it.
        std::size_t written = out.finish();
        const std::size_t start = written;
        for (const std::size_t room = count - 1u; room - written >= kExtendedSize;) {
            const std::uint16_t code = reader.next();
            if (code == 0) break;
            const KxChar ch = is_text_byte(code) ? code : map[code];
            if (ch == kNone) continue;
            std::uint8_t *const to = destination + written;
            if (set_of(ch) == kAsciiSet) {
                *to = index_of(ch);
                ++written;
                continue;
            }
            to[0] = kExtended;
            to[1] = index_of(ch);
            to[2] = set_of(ch);
            to[3] = kExtended;
            written += kExtendedSize;
        }
        out.advance(written - start);
    }
    while (out.has_room()) {
        const std::uint16_t code = reader.next();
        if (code == 0) break;
        const KxChar ch = is_text_byte(code) ? code : map != nullptr ? map[code] : page.to_kx(code);
        if (!put_character(out, ch)) break;
    }
    return static_cast<std::uint32_t>(out.finish() + 1);
}

// In place: no code grows, so the output never overtakes what is still to be read, and the room for the stripped stream
// is room enough.
std::uint32_t stream_to_native(Native which, char *destination, const std::uint8_t *source,
                               std::uint16_t count) noexcept {
    if (count == 0) return 0;
    std::uint8_t *const stream = bytes_of(destination);
    const std::size_t room = count - 1u;
    const std::size_t length = strip_stream(stream, source, room, KX_KEEP_HARD_ENDS | KX_KEEP_SOFT_ENDS);
    auto *const first = static_cast<std::uint8_t *>(std::memchr(stream, kExtended, length));
    if (first == nullptr) return static_cast<std::uint32_t>(length + 1);

    NativePage page(which);
    const auto plain = static_cast<std::size_t>(first - stream);
    if (const std::uint16_t *const map = page.from_kx_map(); map != nullptr) {
        const simd::Narrowed rest = simd::kernels().narrow_stream(first, length - plain, map);
        first[rest.written] = 0;
        return static_cast<std::uint32_t>(plain + rest.written + rest.dropped + 1); // a dropped character still counts
    }
    ByteWriter out(first, room - plain);
    for (const std::uint8_t *at = first; *at != 0;) {
        if (*at != kExtended) {
            out.put(*at++);
            continue;
        }
        const std::uint16_t code = page.from_kx(make_char(at[2], at[1]));
        at += kExtendedSize;
        if (code == kNone)
            out.charge(1);
        else
            put_native(out, code);
    }
    return static_cast<std::uint32_t>(plain + out.finish() + 1);
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
