#include "forms/sio.h"

#include <kxstr/forms.h>

#include "core/text.h"
#include "core/validity.h"
#include "forms/bounded_writer.h"
#include "forms/code_size.h"
#include "forms/strip.h"
#include "forms/temporary_buffer.h"
#include "platform/system.h"

namespace kxstr::forms {
namespace {

constexpr std::uint8_t kSioTab = 0x09;
constexpr std::uint8_t kSioOtherTab = 0xFE; // by KX_TABS_AS_FE
constexpr std::uint8_t kSioLineEnd = 0x0D;
constexpr std::uint8_t kSioExtended = 0xFD; // then index and set

// Two attributes have codes of their own; the others are named by number, one up so that no 0 byte arises.
bool put_attribute(ByteWriter &out, std::uint8_t attribute, bool on) noexcept {
    switch (attribute) {
    case 0x0C: return out.put(on ? 0x1D : 0x1C);
    case 0x0E: return out.put(on ? 0x14 : 0x15);
    default: break;
    }
    const std::uint8_t code = on ? 0x0E : 0x0F;
    if (!out.put({code, static_cast<std::uint8_t>(attribute + 1)})) return false;
    out.charge(1); // counts as the three bytes that it has in a document stream
    return true;
}

bool put_extended(ByteWriter &out, std::uint8_t set, std::uint8_t index) noexcept {
    return out.put({kSioExtended, index, set});
}

// One code of a stripped document stream; false when it does not fit or is none.
bool put_code(ByteWriter &out, const std::uint8_t *code) noexcept {
    if (is_text_byte(*code)) return out.put(*code);
    switch (*code) {
    case kSpaceCode: return out.put(' ');
    case kHardLineEnd:
    case kSoftLineEnd: return out.put(kSioLineEnd);
    case kExtended: return put_extended(out, code[2], code[1]);
    case kAttributeOn: return put_attribute(out, code[1], true);
    case kAttributeOff: return put_attribute(out, code[1], false);
    default: return false;
    }
}

// One unit of a stripped KX string; false when it does not fit. A unit that has no sio form gives nothing.
bool put_unit(ByteWriter &out, KxChar unit, std::uint8_t tab, bool double_byte_system) noexcept {
    if (is_attribute(unit)) {
        const auto attribute = static_cast<std::uint8_t>(index_of(unit) / 2);
        return put_attribute(out, attribute, unit % 2 == 0);
    }
    switch (unit) {
    case KX_TAB: return out.put(tab);
    case KX_LINE_FEED:
    case KX_CARRIAGE_RETURN: return out.put(kSioLineEnd);
    default: break;
    }
    // Validity takes set 0xFF for set 0; such a unit has no form here.
    if (!core::is_valid(unit, double_byte_system) || set_of(unit) > kLastDoubleByteSet) return true;
    return set_of(unit) == kAsciiSet ? out.put(index_of(unit)) : put_extended(out, set_of(unit), index_of(unit));
}

} // namespace

std::uint16_t stream_to_sio(std::uint8_t *destination, const std::uint8_t *source, std::uint16_t count,
                            std::uint32_t flags) noexcept {
    if (count == 0) return 0;
    const std::size_t room = count - 1u;
    strip_stream(destination, source, room, flags);
    // In place: no code grows, so the output never overtakes what is still to be read.
    ByteWriter out(destination, room);
    for (const std::uint8_t *code = destination; out.has_room() && *code != 0;) {
        const std::size_t size = step(code);
        if (!put_code(out, code)) break;
        code += size;
    }
    return static_cast<std::uint16_t>(out.finish());
}

std::uint16_t string_to_sio(std::uint8_t *destination, const KxChar *source, std::uint16_t count, std::uint32_t flags,
                            bool double_byte_system) noexcept {
    if (count == 0) return 0;
    const TemporaryBuffer<KxChar> stripped(length_of(source) + 1);
    if (stripped.get() == nullptr) return 0;
    const std::size_t length =
        strip_string(stripped.get(), source, characters_by_bytes(count), flags, double_byte_system);
    const std::uint8_t tab = (flags & KX_TABS_AS_FE) != 0 ? kSioOtherTab : kSioTab;
    ByteWriter out(destination, count - 1u);
    for (std::size_t i = 0; i < length && out.has_room(); ++i)
        if (!put_unit(out, stripped.get()[i], tab, double_byte_system)) break;
    return static_cast<std::uint16_t>(out.finish());
}

} // namespace kxstr::forms

using namespace kxstr;

extern "C" {

uint16_t TpiKxToKxsioBuff(uint8_t *destination, const uint8_t *source, uint32_t count, uint32_t flags) {
    return forms::stream_to_sio(destination, source, low16(count), flags);
}

uint16_t TpiKxwzToKxsioBuff(uint8_t *destination, const KxChar *source, uint32_t count, uint32_t flags) {
    return forms::string_to_sio(destination, source, low16(count), flags, platform::is_double_byte_system());
}

uint16_t W6dzTotz(const uint8_t *source, uint8_t *destination, uint32_t count, uint32_t flags) {
    return TpiKxToKxsioBuff(destination, source, count, flags);
}

uint16_t W6wzTotz(const KxChar *source, uint8_t *destination, uint32_t count, uint32_t flags) {
    return TpiKxwzToKxsioBuff(destination, source, count, flags);
}
}
