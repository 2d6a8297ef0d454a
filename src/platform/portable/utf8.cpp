#include "platform/portable/utf8.h"

#include <cstdint>
#include <span>

#include "platform/utf16.h"
#include "platform/utf8.h"

namespace kxstr::platform {

std::string to_utf8(std::u16string_view units) {
    std::string bytes;
    bytes.reserve(units.size());
    for (std::size_t i = 0; i < units.size(); ++i) {
        std::uint32_t point = units[i];
        if (is_first_half(point) && i + 1 < units.size() && is_second_half(units[i + 1]))
            point = join_halves(point, units[++i]);
        char sequence[kMostUtf8Bytes];
        bytes.append(sequence, write_utf8(point, sequence));
    }
    return bytes;
}

std::optional<std::u16string> from_utf8(std::string_view text) {
    std::span bytes(reinterpret_cast<const std::uint8_t *>(text.data()), text.size());
    std::u16string units;
    units.reserve(bytes.size());
    while (!bytes.empty()) {
        const auto [kind, length, point] = read_utf8(bytes, HalfSurrogates::taken);
        if (kind != Utf8Sequence::character) return std::nullopt;
        bytes = bytes.subspan(length);
        if (point < kFirstOfPairs) {
            units += static_cast<char16_t>(point);
        } else {
            units += static_cast<char16_t>(first_half(point));
            units += static_cast<char16_t>(second_half(point));
        }
    }
    return units;
}

} // namespace kxstr::platform
