// Stripping: document streams and KX strings cut down to their text and to the codes that the caller keeps.
#pragma once

#include <cstddef>

#include "core/kx_char.h"

namespace kxstr::forms {

// One-byte codes of document streams that stripping and the sio form know by name.
inline constexpr std::uint8_t kSpaceCode = 0x80;
inline constexpr std::uint8_t kFirstHyphenCode = 0x84;
inline constexpr std::uint8_t kSecondHyphenCode = 0x85;
inline constexpr std::uint8_t kHardLineEnd = 0xCC;
inline constexpr std::uint8_t kSoftLineEnd = 0xCF;

// Codes of KX strings: attribute a on is kFirstAttribute + 2a, off is one more.
inline constexpr KxChar kFirstAttribute = 0xFE00;
inline constexpr KxChar kLastAttribute = 0xFE1F;

constexpr bool is_text_byte(std::uint16_t byte) noexcept {
    return 0x20 <= byte && byte <= 0x7E;
}
constexpr bool is_attribute(KxChar ch) noexcept {
    return kFirstAttribute <= ch && ch <= kLastAttribute;
}

// `flags`: KX_KEEP_ATTRIBUTES and so on. The destination may be the source. Both terminate the destination and return
// what they wrote, the terminator not included.
// `room`: bytes before the terminator.
std::size_t strip_stream(std::uint8_t *destination, const std::uint8_t *source, std::size_t room,
                         std::uint32_t flags) noexcept;
// `room` and result: characters. East Asian characters are some on double-byte systems only.
std::size_t strip_string(KxChar *destination, const KxChar *source, std::size_t room, std::uint32_t flags,
                         bool double_byte_system) noexcept;

// The characters that a byte count stands for, which includes a terminator that it need not leave room for: half of
// it, rounded down.
constexpr std::size_t characters_by_bytes(std::int32_t count) noexcept {
    return count > 0 ? static_cast<std::size_t>(count) / 2 : 0;
}

} // namespace kxstr::forms
