// The halves that UTF-16 has for a character beyond U+FFFF.
#pragma once

#include <cstdint>

namespace kxstr {

inline constexpr std::uint32_t kFirstOfPairs = 0x10000; // the lowest character that takes two units

constexpr bool is_surrogate(std::uint32_t unit) noexcept {
    return unit >= 0xD800 && unit <= 0xDFFF;
}
constexpr bool is_first_half(std::uint32_t unit) noexcept {
    return unit >= 0xD800 && unit <= 0xDBFF;
}
constexpr bool is_second_half(std::uint32_t unit) noexcept {
    return unit >= 0xDC00 && unit <= 0xDFFF;
}

constexpr std::uint32_t join_halves(std::uint32_t first, std::uint32_t second) noexcept {
    return kFirstOfPairs + ((first & 0x3FFu) << 10) + (second & 0x3FFu);
}
constexpr std::uint16_t first_half(std::uint32_t character) noexcept {
    return static_cast<std::uint16_t>(0xD800u + ((character - kFirstOfPairs) >> 10));
}
constexpr std::uint16_t second_half(std::uint32_t character) noexcept {
    return static_cast<std::uint16_t>(0xDC00u + (character & 0x3FFu));
}

} // namespace kxstr
