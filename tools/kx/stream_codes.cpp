#include "stream_codes.h"

#include "forms/code_size.h"
#include "forms/strip.h"

namespace kx {
namespace {

namespace forms = kxstr::forms;

const char *fault_of(std::span<const std::uint8_t> code) {
    const std::uint8_t last = code.back();
    const bool closed = forms::is_group(code[0]) ? forms::is_group(last) : forms::is_fixed(last);
    if (!closed) return "is not closed";
    // The trailer of a group lies inside it: its size has been looked at before.
    return forms::backward_size(code.data() + code.size()) == code.size() ? nullptr : "ends with another size";
}

} // namespace

std::optional<StreamCode> stream_code(const Chunk &chunk, std::size_t at) {
    const std::span<const std::uint8_t> rest = chunk.bytes.subspan(at);
    const bool group = forms::is_group(rest[0]);
    if (!group && !forms::is_fixed(rest[0])) return StreamCode{1, nullptr};

    constexpr const char *cut_off = "runs past the end";
    const auto wait_for_more = [&]() -> std::optional<StreamCode> {
        return chunk.last ? std::optional(StreamCode{1, cut_off}) : std::nullopt;
    };
    if (group && rest.size() < forms::kGroupHeaderSize) return wait_for_more();
    const std::size_t size = forms::forward_size(rest.data());
    if (group && size < forms::kGroupHeaderSize + forms::kGroupTrailerSize) {
        return StreamCode{1, "has no room for its ends"};
    }
    if (size > rest.size()) return wait_for_more();
    const char *fault = fault_of(rest.first(size));
    return StreamCode{fault == nullptr ? size : 1, fault};
}

std::optional<KxChar> unit_of_stream_code(std::span<const std::uint8_t> code, bool with_codes) {
    const std::uint8_t first = code[0];
    if (first < forms::kFirstFunctionCode) return first;
    switch (first) {
    case forms::kSpaceCode: return KxChar{' '};
    case forms::kFirstHyphenCode:
    case forms::kSecondHyphenCode: return with_codes ? KxChar{first} : KxChar{'-'};
    case forms::kHardLineEnd: return KX_LINE_FEED;
    case forms::kSoftLineEnd: return KX_CARRIAGE_RETURN;
    case forms::kExtended: return kxstr::load_u16le(&code[1]);
    case forms::kAttributeOn:
    case forms::kAttributeOff: {
        const unsigned unit = forms::kFirstAttribute + 2u * code[1] + (first == forms::kAttributeOff ? 1 : 0);
        if (!with_codes || unit > forms::kLastAttribute) return std::nullopt;
        return static_cast<KxChar>(unit);
    }
    default: return std::nullopt;
    }
}

} // namespace kx
