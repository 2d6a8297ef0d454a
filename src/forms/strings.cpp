#include <algorithm>
#include <cstring>
#include <kxstr/forms.h>

#include "core/text.h"
#include "forms/native_text.h"
#include "forms/temporary_buffer.h"
#include "simd/kernels.h"
#include "unicode/map.h"

namespace kxstr::forms {
namespace {

constexpr std::uint32_t kDone = 1; // what most of the exported functions give

// ---- Native text to KX strings ----

// Whether writing `length` characters from `destination` on could reach bytes of the source before they are read.
bool would_overtake(const KxChar *destination, const std::uint8_t *source, std::size_t length) noexcept {
    const auto to = reinterpret_cast<std::uintptr_t>(destination);
    const auto from = reinterpret_cast<std::uintptr_t>(source);
    return to <= from && from <= to + length;
}

// At most `limit` characters.
void convert_bytes(NativePage &page, const std::uint8_t *source, KxChar *destination, std::size_t limit) noexcept {
    if (limit == 0 || *source == 0) {
        *destination = 0;
        return;
    }
    if (const std::uint16_t *const map = page.to_kx_map(); map != nullptr) {
        simd::kernels().map_bytes(map, source, limit, destination);
        return;
    }
    // From the last byte to the first: source and destination may begin at one address, and a KX character is twice as
    // wide as its byte, so going forward would overwrite bytes not yet read.
    std::size_t length = std::min(length_of(source), limit);
    destination[length] = 0;
    while (length-- > 0)
        destination[length] = page.to_kx(source[length]);
}

// `bytes`: the source's length. At most `limit` characters.
void convert_codes(NativePage &page, const std::uint8_t *source, std::size_t bytes, KxChar *destination,
                   std::size_t limit) noexcept {
    simd::Progress done{};
    if (std::min(bytes, limit) != 0) {
        const std::uint16_t *const map = page.to_kx_map();
        const std::uint8_t *const leads = codepage::lead_byte_map(platform::ansi_code_page());
        while (map != nullptr && leads != nullptr) {
            const std::size_t count = std::min(bytes - done.read, limit - done.written);
            if (count == 0) break;
            const auto [read, written] =
                simd::kernels().decode_page(map, leads, source + done.read, count, destination + done.written);
            if (read == 0) break;
            done = {done.read + read, done.written + written};
        }
    }
    KxWriter out(destination + done.written, limit - done.written);
    if (done.read < bytes) {
        // What is left: all without a map, else the last characters before an end in the middle of a pair.
        NativeReader reader(source + done.read, true);
        while (out.has_room()) {
            const std::uint16_t code = reader.next();
            if (code == 0) break;
            out.put(page.to_kx(code));
        }
    }
    out.finish();
}

[[gnu::noinline]] std::uint32_t native_to_string_anyhow(Native which, const char *text, KxChar *destination,
                                                        std::size_t limit) noexcept {
    const std::uint8_t *source = bytes_of(text);
    NativePage page(which);
    if (!page.is_double_byte_system()) {
        convert_bytes(page, source, destination, limit);
        return kDone;
    }
    const std::size_t bytes = length_of(source);
    const std::size_t length = std::min(bytes, limit);
    if (!would_overtake(destination, source, length)) {
        convert_codes(page, source, bytes, destination, length);
    } else {
        const TemporaryBuffer<std::uint8_t> copy(bytes + 1);
        if (copy.get() == nullptr) return 0;
        std::copy_n(source, bytes + 1, copy.get());
        convert_codes(page, copy.get(), bytes, destination, length);
    }
    return kDone;
}

// At most `limit` characters. The result is 0 when there is no memory for a copy of the source.
std::uint32_t native_to_string(Native which, const char *text, KxChar *destination, std::size_t limit) noexcept {
    if (const std::uint16_t *const map = usual_to_kx_map(which); map != nullptr) {
        simd::kernels().map_bytes(map, bytes_of(text), limit, destination);
        return kDone;
    }
    if (const PairMaps maps = usual_pair_maps(which); maps.to_kx != nullptr && maps.leads != nullptr) {
        if (simd::kernels().decode_short(maps.to_kx, maps.leads, bytes_of(text), limit, destination)) return kDone;
    }
    return native_to_string_anyhow(which, text, destination, limit);
}

// ---- KX strings to native text ----

// At most `limit` characters, as far as the output has `room` for bytes before the terminator. Characters without a
// native code become kNoNativeByte. Returns the bytes written, the terminator not included.
std::size_t string_to_native(Native which, const KxChar *source, std::size_t limit, char *destination,
                             std::size_t room = kUnlimited) noexcept {
    std::size_t written = 0;
    NativePage page(which);
    const bool is_empty = limit == 0 || room == 0 || *source == 0;
    if (const std::uint16_t *const map = is_empty ? nullptr : page.from_kx_map(); map != nullptr) {
        // As many as fit for certain, until nothing is left but what must be looked at one by one.
        while (const std::size_t count = std::min(limit, (room - written) / 2)) {
            const simd::Progress done =
                simd::kernels().encode_units(map, source, count, bytes_of(destination) + written, simd::NoCode::mark);
            written += done.written;
            source += done.read;
            limit -= done.read;
            if (done.read < count) break;
        }
    }
    ByteWriter out(bytes_of(destination) + written, room - written);
    for (; limit > 0 && out.has_room() && *source != 0; --limit, ++source) {
        const std::uint16_t code = page.from_kx(*source);
        if (!put_native(out, code != kNone ? code : kNoNativeByte)) break;
    }
    return written + out.finish();
}

ByteWriter unlimited(char *destination) noexcept {
    return {bytes_of(destination), kUnlimited};
}

// Appends a line end or soft line end as the flags want it; false for any other character.
bool put_line_end(ByteWriter &out, KxChar ch, std::uint32_t flags) noexcept {
    if (ch != KX_LINE_FEED && ch != KX_CARRIAGE_RETURN) return false;
    if (ch == KX_CARRIAGE_RETURN && (flags & KX_ANSI_SOFT_ENDS_AS_SPACES) != 0) {
        out.put(' ');
    } else if ((flags & KX_ANSI_CRLF) != 0) {
        out.put({'\r', '\n'});
    } else {
        out.put(ch == KX_LINE_FEED ? '\n' : '\r');
    }
    return true;
}

[[gnu::noinline]] std::size_t string_to_ansi_anyhow(const KxChar *source, char *destination,
                                                    std::uint32_t flags) noexcept {
    NativePage page(Native::kAnsi);
    ByteWriter out = unlimited(destination);
    for (; *source != 0; ++source) {
        if (put_line_end(out, *source, flags)) continue;
        const std::uint16_t code = page.from_kx(*source);
        if (code != kNone) {
            put_native(out, code);
        } else if ((flags & KX_ANSI_MARK_UNKNOWN) != 0) {
            out.put(kNoNativeByte);
        }
    }
    return out.finish();
}

// `destination` is null where nothing but the count is wanted.
std::size_t string_to_ansi(const KxChar *source, char *destination, std::uint32_t flags) noexcept {
    // Line ends that go over as they are convert like all characters.
    constexpr std::uint32_t kLineEnds = KX_ANSI_SOFT_ENDS_AS_SPACES | KX_ANSI_CRLF;
    if (destination == nullptr || (flags & kLineEnds) != 0 || *source == 0)
        return string_to_ansi_anyhow(source, destination, flags);
    const std::uint16_t *map = usual_from_kx_map(Native::kAnsi);
    if (map == nullptr) map = NativePage(Native::kAnsi).from_kx_map();
    if (map == nullptr) return string_to_ansi_anyhow(source, destination, flags);
    const auto no_code = (flags & KX_ANSI_MARK_UNKNOWN) != 0 ? simd::NoCode::mark : simd::NoCode::drop;
    const std::size_t written =
        simd::kernels().encode_units(map, source, kUnlimited, bytes_of(destination), no_code).written;
    destination[written] = 0;
    return written;
}

// ---- Unicode strings ----

using ConvertUnits = std::size_t(const std::uint16_t *, std::size_t, std::uint16_t *) noexcept;

void convert_bounded(ConvertUnits convert, const std::uint16_t *source, std::uint16_t *destination,
                     std::uint16_t count) noexcept {
    if (destination == nullptr || count == 0) return;
    destination[0] = 0;
    if (source == nullptr) return;
    const std::size_t limit = std::min<std::size_t>(length_of(source), count - 1u);
    convert(source, limit, destination);
    destination[limit] = 0;
}

void unicode_to_ansi(const std::uint16_t *source, char *destination, std::uint16_t count) noexcept {
    if (destination == nullptr || count == 0) return;
    destination[0] = 0;
    const TemporaryBuffer<KxChar> converted(count + 1u);
    if (converted.get() == nullptr || source == nullptr) return;
    const std::size_t limit = std::min<std::size_t>(length_of(source), count);
    converted.get()[unicode::to_kx(source, limit, converted.get())] = 0;
    string_to_native(Native::kAnsi, converted.get(), count - 1u, destination);
}

} // namespace
} // namespace kxstr::forms

using namespace kxstr;
using forms::kDone;
using forms::kUnlimited;
using forms::Native;

extern "C" {

uint32_t W6azTowz(const char *source, KxChar *destination) {
    return forms::native_to_string(Native::kAnsi, source, destination, kUnlimited);
}

uint32_t W6azTowzN(const char *source, KxChar *destination, uint32_t count) {
    const std::uint16_t size = low16(count);
    return size != 0 ? forms::native_to_string(Native::kAnsi, source, destination, size - 1u) : kDone;
}

uint32_t W6ozTowz(const char *source, KxChar *destination) {
    return forms::native_to_string(Native::kOem, source, destination, kUnlimited);
}

uint32_t W6ozTowzN(const char *source, KxChar *destination, uint32_t count) {
    const std::uint16_t size = low16(count);
    return size != 0 ? forms::native_to_string(Native::kOem, source, destination, size - 1u) : kDone;
}

uint32_t W6wzToaz(const KxChar *source, char *destination) {
    return W6wzToazEx(source, destination, KX_ANSI_MARK_UNKNOWN);
}

uint32_t W6wzToazEx(const KxChar *source, char *destination, uint32_t flags) {
    const bool measure = (flags & KX_ANSI_MEASURE) != 0;
    return static_cast<uint32_t>(forms::string_to_ansi(source, measure ? nullptr : destination, flags));
}

uint32_t W6wzToazN(const KxChar *source, char *destination, uint32_t count) {
    const std::uint16_t size = low16(count);
    if (size != 0) forms::string_to_native(Native::kAnsi, source, size - 1u, destination);
    return kDone;
}

uint32_t W6wzToazNB(const KxChar *source, char *destination, uint32_t bytes) {
    if (source == nullptr || destination == nullptr) return 0;
    const std::uint16_t size = low16(bytes);
    if (size != 0) {
        forms::string_to_native(Native::kAnsi, source, kUnlimited, destination, size - 1u);
    }
    return kDone;
}

uint32_t W6wzTooz(const KxChar *source, char *destination) {
    forms::string_to_native(Native::kOem, source, kUnlimited, destination);
    return kDone;
}

uint32_t W6wzToozN(const KxChar *source, char *destination, uint32_t count) {
    const std::uint16_t size = low16(count);
    if (size != 0) forms::string_to_native(Native::kOem, source, size - 1u, destination);
    return kDone;
}

uint32_t W6VaskTowz(const uint16_t *source, KxChar *destination) {
    if (const std::uint16_t *const map = unicode::usual_map(unicode::maps_to_kx))
        simd::kernels().map_units(map, source, kUnlimited, destination);
    else
        unicode::to_kx(source, kUnlimited, destination);
    return kDone;
}

uint32_t W6VaskTowzN(const uint16_t *source, KxChar *destination, uint32_t count) {
    forms::convert_bounded(unicode::to_kx, source, destination, low16(count));
    return kDone;
}

// A character that converts to 0 ends the text before its terminator.
uint32_t W6wzToVask(const KxChar *source, uint16_t *destination) {
    if (const std::uint16_t *const map = unicode::usual_map(unicode::maps_from_kx))
        simd::kernels().map_units(map, source, kUnlimited, destination);
    else
        unicode::from_kx(source, kUnlimited, destination);
    return kDone;
}

uint32_t W6wzToVaskEx(const KxChar *source, uint16_t *destination, uint32_t /*unused*/) {
    return W6wzToVask(source, destination);
}

uint32_t W6wzToVaskN(const KxChar *source, uint16_t *destination, uint32_t count) {
    forms::convert_bounded(unicode::from_kx, source, destination, low16(count));
    return kDone;
}

uint32_t W6VaskToazN(const uint16_t *source, char *destination, uint32_t count) {
    forms::unicode_to_ansi(source, destination, low16(count));
    return kDone;
}
}
