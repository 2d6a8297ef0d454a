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
// Exported functions take characters and 16-bit counts in 32-bit arguments, of which the low 16 bits count.
constexpr KxChar low16(std::uint32_t argument) noexcept {
    return static_cast<KxChar>(argument);
}

} // namespace kxstr
