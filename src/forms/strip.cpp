#include "forms/strip.h"

#include <kxstr/forms.h>

#include "forms/bounded_writer.h"
#include "forms/code_size.h"
#include "frame/validity.h"
#include "platform/system.h"

namespace kxstr::forms {
namespace {

constexpr bool has(std::uint32_t flags, std::uint32_t flag) noexcept {
    return (flags & flag) != 0;
}

// What a code of a document stream becomes, by its first byte: itself, a one-byte code in its place, or nothing (0).
constexpr std::uint8_t kept_byte(std::uint8_t code, std::uint32_t flags) noexcept {
    if (is_text_byte(code)) return code;
    switch (code) {
    case kSpaceCode:
    case kExtended: return code;
    case kFirstHyphenCode:
    case kSecondHyphenCode: return has(flags, KX_HYPHENS_AS_TEXT) ? '-' : 0;
    case kHardLineEnd: return has(flags, KX_KEEP_HARD_ENDS) ? code : 0;
    case kSoftLineEnd:
        if (has(flags, KX_KEEP_SOFT_ENDS)) return code;
        return has(flags, KX_SOFT_ENDS_AS_SPACES) ? kSpaceCode : 0;
    case kAttributeOn:
    case kAttributeOff: return has(flags, KX_KEEP_ATTRIBUTES) ? code : 0;
    default: return 0;
    }
}

// The same for a unit of a KX string.
constexpr KxChar kept_unit(KxChar unit, std::uint32_t flags, bool double_byte_system) noexcept {
    constexpr KxChar hyphen_code = 0xFB05; // beside the two that streams have
    if (frame::is_valid(unit, double_byte_system)) return unit;
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
    ByteWriter out(destination, room);
    while (out.has_room() && *source != 0) {
        const std::size_t size = step(source);
        const std::uint8_t kept = kept_byte(*source, flags);
        if (kept == *source) {
            if (!out.put(source, size)) break;
        } else if (kept != 0) {
            out.put(kept);
        }
        source += size;
    }
    return out.finish();
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
