// The codes of a KX document stream that comes from outside. The library trusts its streams; here every code is held
// against the bytes there are, and one that lies counts as a single byte.
#include <kxstr/text.h>
#include <span>

#include "forms/code_size.h"
#include "forms/strip.h"

namespace kxstr::text {
namespace {

constexpr KxStreamCode faulty(std::uint32_t kind, std::uint32_t fault) noexcept {
    return {1, kind, fault, KX_NONE};
}

std::uint32_t fault_of(std::span<const std::uint8_t> code) noexcept {
    const std::uint8_t last = code.back();
    const bool closed = forms::is_group(code[0]) ? forms::is_group(last) : forms::is_fixed(last);
    if (!closed) return KX_STREAM_NOT_CLOSED;
    // The trailer of a group lies inside it: its size has been looked at before.
    return forms::backward_size(code.data() + code.size()) == code.size() ? KX_STREAM_SOUND : KX_STREAM_OTHER_SIZE;
}

KxStreamCode one_byte(std::uint8_t byte) noexcept {
    const auto text = [](KxChar ch) { return KxStreamCode{1, KX_STREAM_TEXT, KX_STREAM_SOUND, ch}; };
    if (byte == 0) return {1, KX_STREAM_END, KX_STREAM_SOUND, KX_NONE};
    if (byte < forms::kFirstFunctionCode) return text(byte);
    switch (byte) {
    case forms::kSpaceCode: return text(' ');
    case forms::kFirstHyphenCode:
    case forms::kSecondHyphenCode: return text('-');
    case forms::kHardLineEnd: return text(KX_LINE_FEED);
    case forms::kSoftLineEnd: return text(KX_CARRIAGE_RETURN);
    default: return {1, KX_STREAM_FUNCTION, KX_STREAM_SOUND, KX_NONE};
    }
}

KxStreamCode next(std::span<const std::uint8_t> rest) noexcept {
    const std::uint8_t first = rest[0];
    const bool group = forms::is_group(first);
    if (!group && !forms::is_fixed(first)) return one_byte(first);

    const bool attribute = first == forms::kAttributeOn || first == forms::kAttributeOff;
    const std::uint32_t kind = group                       ? KX_STREAM_GROUP
                               : first == forms::kExtended ? KX_STREAM_TEXT
                               : attribute                 ? KX_STREAM_ATTRIBUTE
                                                           : KX_STREAM_FIXED;
    if (group && rest.size() < forms::kGroupHeaderSize) return faulty(kind, KX_STREAM_CUT_OFF);
    const std::size_t size = forms::forward_size(rest.data());
    if (group && size < forms::kGroupHeaderSize + forms::kGroupTrailerSize) return faulty(kind, KX_STREAM_NO_ROOM);
    if (size > rest.size()) return faulty(kind, KX_STREAM_CUT_OFF);
    const std::uint32_t fault = fault_of(rest.first(size));
    if (fault != KX_STREAM_SOUND) return faulty(kind, fault);

    KxStreamCode code{size, kind, KX_STREAM_SOUND, KX_NONE};
    if (kind == KX_STREAM_TEXT) code.character = load_u16le(&rest[1]);
    if (attribute) {
        const unsigned unit = forms::kFirstAttribute + 2u * rest[1] + (first == forms::kAttributeOff ? 1 : 0);
        if (unit <= forms::kLastAttribute) code.character = static_cast<KxChar>(unit);
    }
    return code;
}

} // namespace
} // namespace kxstr::text

extern "C" uint32_t KxStreamNext(const uint8_t *stream, size_t length, KxStreamCode *code) {
    *code = length == 0 ? KxStreamCode{} : kxstr::text::next({stream, length});
    return length == 0 ? 0 : 1;
}
