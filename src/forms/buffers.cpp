#include <algorithm>
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

// Bytes before the first `end`, of which `limit` are looked at.
std::size_t length_within(const std::uint8_t *text, std::size_t limit, std::uint8_t end = 0) noexcept {
    const void *const found = std::memchr(text, end, limit);
    return found != nullptr ? static_cast<std::size_t>(static_cast<const std::uint8_t *>(found) - text) : limit;
}

// A stream that is written, and how much of it.
struct Target {
    std::uint8_t *stream;
    std::size_t room;
    std::size_t written;
};

// By maps, as many characters at a time as may fit. Gives the rest of the source, which goes code by code (a lead byte
// at the end, all without maps), or null when nothing is left that fits.
const std::uint8_t *convert_pieces(NativePage &page, const std::uint8_t *source, Target &to,
                                   bool double_byte) noexcept {
    constexpr std::size_t kPiece = 2048;
    KxChar characters[kPiece + 1];
    const std::uint16_t *const map = page.to_kx_map();
    const std::uint8_t *const leads = double_byte ? codepage::lead_byte_map(platform::ansi_code_page()) : nullptr;
    if (map == nullptr || (double_byte && leads == nullptr)) return source;
    const simd::Kernels &kernels = simd::kernels();
    if (!double_byte) {
        to.written += kernels.stream_of_bytes(map, source, to.stream + to.written, to.room - to.written);
        return nullptr;
    }
    while (const std::size_t limit = std::min(to.room - to.written, kPiece)) {
        const simd::Progress piece = kernels.decode_page(map, leads, source, length_within(source, limit), characters);
        const simd::Progress codes =
            kernels.write_stream(to.stream + to.written, characters, piece.written, to.room - to.written);
        source += piece.read;
        to.written += codes.written;
        if (codes.read < piece.written) return nullptr;
        if (piece.read == 0 || *source == 0) break;
    }
    return source;
}

// Characters without a KX character are dropped. As long as the descriptors are not filled, text goes over without
// asking for one. With double-byte characters the backslash, too, counts as a first use of them.
std::uint32_t native_to_stream(Native which, std::uint8_t *destination, const char *source, std::uint16_t count,
                               bool double_byte) noexcept {
    if (count == 0) return 0;
    const std::uint8_t *at = bytes_of(source);
    Target to{destination, count - 1u, 0};
    if (!NativePage::is_filled()) {
        to.written = simd::kernels().outside8(at, length_within(at, to.room), 0x20, 0x7E);
        if (double_byte) to.written = length_within(at, to.written, '\\');
        std::memcpy(destination, at, to.written);
        at += to.written;
    }
    NativePage page(which);
    if (to.written < to.room && *at != 0) at = convert_pieces(page, at, to, double_byte);
    ByteWriter out(destination + to.written, to.room - to.written);
    for (NativeReader reader(at, double_byte); at != nullptr && out.has_room();) {
        const std::uint16_t code = reader.next();
        if (code == 0 || !put_character(out, page.to_kx(code))) break;
    }
    return static_cast<std::uint32_t>(to.written + out.finish() + 1);
}

// The same of single bytes, most often without a way to the map.
std::uint32_t bytes_to_stream(Native which, std::uint8_t *destination, const char *source,
                              std::uint16_t count) noexcept {
    const std::uint16_t *const map = usual_to_kx_map(which);
    if (map == nullptr || count == 0) return native_to_stream(which, destination, source, count, false);
    const std::size_t written = simd::kernels().stream_of_bytes(map, bytes_of(source), destination, count - 1u);
    destination[written] = 0;
    return static_cast<std::uint32_t>(written + 1);
}

// The same with double-byte characters, most often of short texts.
std::uint32_t pairs_to_stream(Native which, std::uint8_t *destination, const char *source,
                              std::uint16_t count) noexcept {
    if (const PairMaps maps = usual_pair_maps(which); count != 0 && maps.to_kx != nullptr && maps.leads != nullptr) {
        const std::size_t size =
            simd::kernels().stream_of_short(maps.to_kx, maps.leads, bytes_of(source), destination, count - 1u);
        if (size != 0) return static_cast<std::uint32_t>(size);
    }
    return native_to_stream(which, destination, source, count, true);
}

// In place: no code grows, so the output never overtakes what is still to be read, and the room for the stripped stream
// is room enough. As long as the descriptors are not filled, only a stripped stream with extended characters asks for
// one.
[[gnu::noinline]] std::uint32_t stream_to_native_anyhow(Native which, std::uint8_t *stream, const std::uint8_t *source,
                                                        std::size_t room) noexcept {
    NativePage page(which);
    if (!NativePage::is_filled()) {
        const std::size_t text = simd::kernels().outside8(source, room, 0x20, 0x7E);
        if (text == room || source[text] == 0) {
            std::memmove(stream, source, text);
            stream[text] = 0;
            return static_cast<std::uint32_t>(text + 1);
        }
        const std::size_t length = strip_stream(stream, source, room, kLineEnds);
        if (length_within(stream, length, kExtended) == length) return static_cast<std::uint32_t>(length + 1);
        source = stream;
    }
    if (const std::uint16_t *const map = page.from_kx_map(); map != nullptr)
        return static_cast<std::uint32_t>(strip_to_native(stream, source, room, map) + 1);

    ByteWriter out(stream, room);
    for (std::size_t stripped = 0, size = 0; *source != 0 && stripped < room; source += size) {
        size = step(source);
        if (*source == kExtended) {
            if (size > room - stripped) break;
            stripped += size;
            const std::uint16_t code = page.from_kx(make_char(source[2], source[1]));
            if (code == kNone)
                out.charge(1); // a character without a native code still counts
            else
                put_native(out, code);
        } else if (kept_byte(*source, kLineEnds) != 0) {
            ++stripped;
            out.put(*source);
        }
    }
    return static_cast<std::uint32_t>(out.finish() + 1);
}

std::uint32_t stream_to_native(Native which, char *destination, const std::uint8_t *source,
                               std::uint16_t count) noexcept {
    if (count == 0) return 0;
    const std::uint16_t *const map = usual_from_kx_map(which);
    if (map == nullptr) return stream_to_native_anyhow(which, bytes_of(destination), source, count - 1u);
    return static_cast<std::uint32_t>(strip_to_native(bytes_of(destination), source, count - 1u, map) + 1);
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
    return forms::bytes_to_stream(Native::kAnsi, destination, source, low16(count));
}

uint32_t str_OemToKx(uint8_t *destination, const char *source, uint32_t count) {
    return forms::bytes_to_stream(Native::kOem, destination, source, low16(count));
}

// The selector would choose between descriptors that hold the same code page.
uint32_t str_DBCS_OEMorANSItoKX(uint8_t *destination, const char *source, uint32_t count, uint32_t /*selector*/) {
    return forms::pairs_to_stream(Native::kAnsi, destination, source, low16(count));
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
