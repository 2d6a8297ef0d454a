// One code point in UTF-8.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace kxstr {

// What stands at the start of some bytes.
struct Utf8Sequence {
    enum Kind : std::uint8_t { character, malformed, incomplete } kind;
    std::uint8_t length; // bytes; of malformed ones the largest piece that could have begun a character
    std::uint32_t code_point;
};

// Half surrogates are no characters; where UTF-16 of any content must come back, they travel as three bytes.
enum class HalfSurrogates : bool { malformed, taken };

// `bytes` are not empty. Malformed ones are taken piece by piece as the Unicode Standard recommends. What is written
// longer than need be, or lies above U+10FFFF, is malformed: the range of the second byte sees to that.
constexpr Utf8Sequence read_utf8(std::span<const std::uint8_t> bytes,
                                 HalfSurrogates halves = HalfSurrogates::malformed) noexcept {
    const std::uint8_t first = bytes[0];
    if (first < 0x80) return {Utf8Sequence::character, 1, first};
    if (first < 0xC2 || first > 0xF4) return {Utf8Sequence::malformed, 1, 0};
    const std::uint8_t length = first < 0xE0 ? 2 : first < 0xF0 ? 3 : 4;
    const bool no_halves = first == 0xED && halves == HalfSurrogates::malformed;
    std::uint8_t low = first == 0xE0 ? 0xA0 : first == 0xF0 ? 0x90 : 0x80;
    std::uint8_t high = no_halves ? 0x9F : first == 0xF4 ? 0x8F : 0xBF;
    std::uint32_t value = first & (0x7Fu >> length);
    for (std::uint8_t at = 1; at < length; ++at) {
        if (at == bytes.size()) return {Utf8Sequence::incomplete, at, 0};
        if (bytes[at] < low || bytes[at] > high) return {Utf8Sequence::malformed, at, 0};
        value = (value << 6) | (bytes[at] & 0x3Fu);
        low = 0x80;
        high = 0xBF;
    }
    return {Utf8Sequence::character, length, value};
}

inline constexpr std::size_t kMostUtf8Bytes = 4;

// Writes a code point up to U+10FFFF, half surrogates as three bytes. Returns the bytes written, up to kMostUtf8Bytes.
template <class Byte> constexpr std::size_t write_utf8(std::uint32_t code_point, Byte *bytes) noexcept {
    if (code_point < 0x80) {
        bytes[0] = static_cast<Byte>(code_point);
        return 1;
    }
    const std::size_t length = code_point < 0x800 ? 2 : code_point < 0x10000 ? 3 : 4;
    for (std::size_t at = length - 1; at != 0; --at, code_point >>= 6)
        bytes[at] = static_cast<Byte>(0x80 | (code_point & 0x3F));
    bytes[0] = static_cast<Byte>((0xF00u >> length & 0xF0) | code_point);
    return length;
}

} // namespace kxstr
