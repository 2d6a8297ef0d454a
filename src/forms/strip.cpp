#include "forms/strip.h"

#include <algorithm>
#include <array>
#include <kxstr/forms.h>

#include "core/validity.h"
#include "forms/bounded_writer.h"
#include "forms/code_size.h"
#include "platform/system.h"

namespace kxstr::forms {
namespace {

// The same for all codes, for every set of the flags that name codes of one byte.
constexpr std::uint32_t kByteFlags =
    KX_KEEP_HARD_ENDS | KX_KEEP_SOFT_ENDS | KX_SOFT_ENDS_AS_SPACES | KX_HYPHENS_AS_TEXT;
constexpr auto kKeptBytes = [] {
    std::array<std::array<std::uint8_t, 256>, kByteFlags / 2 + 1> kept{};
    for (std::uint32_t set = 0; set != kept.size(); ++set)
        for (unsigned code = 0; code < 256; ++code)
            kept[set][code] = kept_byte(static_cast<std::uint8_t>(code), 2 * set);
    return kept;
}();

const std::uint8_t *kept_bytes(std::uint32_t flags) noexcept {
    return kKeptBytes[(flags & kByteFlags) / 2].data();
}

// The same for a unit of a KX string.
constexpr KxChar kept_unit(KxChar unit, std::uint32_t flags, bool double_byte_system) noexcept {
    constexpr KxChar hyphen_code = 0xFB05; // beside the two that streams have
    if (core::is_valid(unit, double_byte_system)) return unit;
    if (is_attribute(unit)) return has(flags, KX_KEEP_ATTRIBUTES) ? unit : 0;
    switch (unit) {
    case kFirstHyphenCode:
    case kSecondHyphenCode:
    case hyphen_code: return has(flags, KX_HYPHENS_AS_TEXT) ? '-' : 0;
    case KX_TAB: return has(flags, KX_KEEP_TABS) ? unit : 0;
    case KX_LINE_FEED:
    case KX_FORM_FEED: return has(flags, KX_KEEP_HARD_ENDS) ? unit : 0;
    case KX_CARRIAGE_RETURN:
        if (has(flags, KX_KEEP_SOFT_ENDS)) return unit;
        return has(flags, KX_SOFT_ENDS_AS_SPACES) ? ' ' : 0;
    default: return 0;
    }
}

} // namespace

std::size_t strip_stream(std::uint8_t *destination, const std::uint8_t *source, std::size_t room,
                         std::uint32_t flags) noexcept {
    const auto filter_stream = simd::kernels().filter_stream;
    const std::uint8_t *const kept = kept_bytes(flags);
    std::size_t written = 0;
    for (;;) {
        const simd::Progress run = filter_stream(destination + written, source, room - written, kept);
        source += run.read;
        written += run.written;
        if (written == room || *source == 0) break;
        const std::size_t size = step(source);
        if (kept_byte(*source, flags) != 0) {
            if (size > room - written) break;
            // The source may lie in the destination, behind what has been written.
            std::copy_n(source, size, destination + written);
            written += size;
        }
        source += size;
    }
    destination[written] = 0;
    return written;
}

namespace {

// Whether nothing is left: the room is full, for an extended character at least; or the stream ends.
bool is_done(const simd::Narrowed &all, const std::uint8_t *source, std::size_t room) noexcept {
    return all.filtered == room || *source == kExtended || *source == 0;
}

[[gnu::noinline]] simd::Narrowed strip_rest(std::uint8_t *destination, const std::uint8_t *source, std::size_t room,
                                            const std::uint16_t *codes, simd::Narrowed all) noexcept {
    const auto narrow_stream = simd::kernels().narrow_stream;
    const std::uint8_t *const kept = kept_bytes(kLineEnds);
    source += all.read;
    while (!is_done(all, source, room)) {
        source += step(source); // a code that is not kept
        const simd::Narrowed run = narrow_stream(destination + all.written, source, room - all.filtered, kept, codes);
        source += run.read;
        all.filtered += run.filtered;
        all.written += run.written;
        all.dropped += run.dropped;
    }
    return all;
}

} // namespace

std::size_t strip_to_native(std::uint8_t *destination, const std::uint8_t *source, std::size_t room,
                            const std::uint16_t *codes) noexcept {
    simd::Narrowed all = simd::kernels().narrow_stream(destination, source, room, kept_bytes(kLineEnds), codes);
    if (!is_done(all, source + all.read, room)) all = strip_rest(destination, source, room, codes, all);
    destination[all.written] = 0;
    return all.written + all.dropped;
}

std::size_t strip_string(KxChar *destination, const KxChar *source, std::size_t room, std::uint32_t flags,
                         bool double_byte_system) noexcept {
    KxWriter out(destination, room);
    for (; out.has_room() && *source != 0; ++source) {
        const KxChar kept = kept_unit(*source, flags, double_byte_system);
        if (kept != 0) out.put(kept);
    }
    return out.finish();
}

} // namespace kxstr::forms

using namespace kxstr;

extern "C" {

uint32_t TpiKxDocStripBuff(uint8_t *destination, const uint8_t *source, uint32_t count, uint32_t flags) {
    const std::uint16_t size = low16(count);
    if (size == 0) return 0;
    return static_cast<uint32_t>(forms::strip_stream(destination, source, size - 1u, flags) + 1);
}

uint32_t TpiKxLongStripBuff(KxChar *destination, const KxChar *source, int32_t count, uint32_t flags) {
    if (count == 0) return 0;
    const std::size_t characters = forms::strip_string(destination, source, forms::characters_by_bytes(count), flags,
                                                       platform::is_double_byte_system());
    return static_cast<uint32_t>(2 * characters + 2);
}
}
