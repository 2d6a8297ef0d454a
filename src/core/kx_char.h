// The KX character: taking it apart and putting it together.
#pragma once

#include <cstdint>
#include <kxstr/types.h>

namespace kxstr {

inline constexpr KxChar kNone = KX_NONE;
inline constexpr KxChar kFirstCode = KX_FIRST_CODE;

// Set 0 is ASCII; set 12 carries the native bytes that have no other KX character.
inline constexpr std::uint8_t kAsciiSet = 0;
inline constexpr std::uint8_t kKatakanaSet = 11;
inline constexpr std::uint8_t kNativeByteSet = 12;
// The sets that hold the East Asian double-byte characters.
inline constexpr std::uint8_t kFirstDoubleByteSet = 36;
inline constexpr std::uint8_t kLastDoubleByteSet = 223;
// Those of the two Chinese scripts, which lie 255 characters to a set.
inline constexpr std::uint8_t kFirstSimplifiedSet = 0x82;
inline constexpr std::uint8_t kFirstTraditionalSet = 0xA5;
inline constexpr unsigned kPerChineseSet = 255;

constexpr std::uint8_t set_of(KxChar ch) noexcept {
    return static_cast<std::uint8_t>(ch >> 8);
}
constexpr std::uint8_t index_of(KxChar ch) noexcept {
    return static_cast<std::uint8_t>(ch);
}
constexpr KxChar make_char(unsigned set, unsigned index) noexcept {
    return static_cast<KxChar>((set << 8) | (index & 0xFFu));
}
constexpr bool is_code(KxChar ch) noexcept {
    return ch >= kFirstCode;
}
// The control characters that KX text has as codes, and back; kNone for any other.
constexpr KxChar code_of_control(std::uint16_t control) noexcept {
    switch (control) {
    case 9: return KX_TAB;
    case 10: return KX_LINE_FEED;
    case 12: return KX_FORM_FEED;
    case 13: return KX_CARRIAGE_RETURN;
    default: return kNone;
    }
}
constexpr std::uint16_t control_of_code(KxChar ch) noexcept {
    return code_of_control(index_of(ch)) == ch && ch != kNone ? index_of(ch) : kNone;
}

// Exported functions take characters and 16-bit counts in 32-bit arguments, of which the low 16 bits count.
constexpr KxChar low16(std::uint32_t argument) noexcept {
    return static_cast<KxChar>(argument);
}

} // namespace kxstr
