#include "platform/portable/utf8.h"

#include <cstdint>

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
    const auto tail = [&bytes](std::uint32_t point, int shift) {
        bytes += static_cast<char>(0x80 | ((point >> shift) & 0x3F));
    };
    for (std::size_t i = 0; i < units.size(); ++i) {
        std::uint32_t point = units[i];
        if (is_high(point) && i + 1 < units.size() && is_low(units[i + 1])) {
            point = 0x10000 + ((point - 0xD800) << 10) + (units[++i] - 0xDC00u);
        }
        if (point < 0x80) {
            bytes += static_cast<char>(point);
        } else if (point < 0x800) {
            bytes += static_cast<char>(0xC0 | (point >> 6));
            tail(point, 0);
        } else if (point < 0x10000) {
            bytes += static_cast<char>(0xE0 | (point >> 12));
            tail(point, 6);
            tail(point, 0);
        } else {
            bytes += static_cast<char>(0xF0 | (point >> 18));
            tail(point, 12);
            tail(point, 6);
            tail(point, 0);
        }
    }
    return bytes;
}

std::optional<std::u16string> from_utf8(std::string_view bytes) {
    // The least code point of a sequence with so many bytes after the first: a longer form of it is a fault.
    constexpr std::uint32_t kLeast[] = {0, 0x80, 0x800, 0x10000};
    std::u16string units;
    units.reserve(bytes.size());
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        const auto first = static_cast<std::uint8_t>(bytes[i]);
        std::size_t more = 0;
        std::uint32_t point = first;
        if (first >= 0x80) {
            if (first < 0xC0 || first >= 0xF8) return std::nullopt;
            more = first < 0xE0 ? 1 : first < 0xF0 ? 2 : 3;
            point = first & (0x3Fu >> more);
        }
        if (bytes.size() - i <= more) return std::nullopt;
        for (std::size_t k = 1; k <= more; ++k) {
            const auto byte = static_cast<std::uint8_t>(bytes[i + k]);
            if ((byte & 0xC0) != 0x80) return std::nullopt;
            point = (point << 6) | (byte & 0x3Fu);
        }
        if (point < kLeast[more] || point > 0x10FFFF) return std::nullopt;
        i += more;
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
