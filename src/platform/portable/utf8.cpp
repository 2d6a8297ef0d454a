#include "platform/portable/utf8.h"

#include <cstdint>
#include <span>

#include "platform/utf8.h"

namespace kxstr::platform {
namespace {

constexpr bool is_high(std::uint32_t unit) noexcept {
    return (unit & 0xFC00u) == 0xD800;
}
constexpr bool is_low(std::uint32_t unit) noexcept {
    return (unit & 0xFC00u) == 0xDC00;
}

} // namespace

std::string to_utf8(std::u16string_view units) {
    std::string bytes;
    bytes.reserve(units.size());
    for (std::size_t i = 0; i < units.size(); ++i) {
        std::uint32_t point = units[i];
        if (is_high(point) && i + 1 < units.size() && is_low(units[i + 1])) {
            point = 0x10000 + ((point - 0xD800) << 10) + (units[++i] - 0xDC00u);
        }
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
        if (point < 0x10000) {
            units += static_cast<char16_t>(point);
        } else {
            units += static_cast<char16_t>(0xD800 + ((point - 0x10000) >> 10));
            units += static_cast<char16_t>(0xDC00 + ((point - 0x10000) & 0x3FF));
        }
    }
    return units;
}

} // namespace kxstr::platform
