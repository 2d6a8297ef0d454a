// Stripping: document streams and KX strings cut down to their text and to the codes that the caller keeps.
#pragma once

#include <cstddef>
#include <kxstr/forms.h>

#include "core/kx_char.h"
#include "forms/code_size.h"

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

constexpr bool has(std::uint32_t flags, std::uint32_t flag) noexcept {
    return (flags & flag) != 0;
}

// What a code of a document stream becomes, by its first byte: itself, a one-byte code in its place, or nothing (0).
constexpr std::uint8_t kept_byte(std::uint8_t code, std::uint32_t flags) noexcept {
    if (is_text_byte(code)) return code;
    switch (code) {
    case kSpaceCode:
    case kExtended: return code;
    case kFirstHyphenCode:
    case kSecondHyphenCode: return has(flags, KX_HYPHENS_AS_TEXT) ? '-' : 0;
    case kHardLineEnd: return has(flags, KX_KEEP_HARD_ENDS) ? code : 0;
    case kSoftLineEnd:
        if (has(flags, KX_KEEP_SOFT_ENDS)) return code;
        return has(flags, KX_SOFT_ENDS_AS_SPACES) ? kSpaceCode : 0;
    case kAttributeOn:
    case kAttributeOff: return has(flags, KX_KEEP_ATTRIBUTES) ? code : 0;
    default: return 0;
    }
}

// What a conversion to native text keeps of a stream's codes.
inline constexpr std::uint32_t kLineEnds = KX_KEEP_HARD_ENDS | KX_KEEP_SOFT_ENDS;

// `flags`: KX_KEEP_ATTRIBUTES and so on. The destination may be the source. Both terminate the destination and return
// what they wrote, the terminator not included.
// `room`: bytes before the terminator.
std::size_t strip_stream(std::uint8_t *destination, const std::uint8_t *source, std::size_t room,
                         std::uint32_t flags) noexcept;
// strip_stream with the flags that keep line ends, and extended characters as native codes: `codes`: the values
// of a simd::PairMap, 0xFFFF for none. The room is that for the stripped stream. The
// result counts a character that has no code as one byte.
std::size_t strip_to_native(std::uint8_t *destination, const std::uint8_t *source, std::size_t room,
                            const std::uint16_t *codes) noexcept;
// `room` and result: characters. East Asian characters are some on double-byte systems only.
std::size_t strip_string(KxChar *destination, const KxChar *source, std::size_t room, std::uint32_t flags,
                         bool double_byte_system) noexcept;

// The characters that a byte count stands for, which includes a terminator that it need not leave room for: half of
// it, rounded down.
constexpr std::size_t characters_by_bytes(std::int32_t count) noexcept {
    return count > 0 ? static_cast<std::size_t>(count) / 2 : 0;
}

} // namespace kxstr::forms
