// The document stream of the KX 5 generation.
#pragma once

#include <cstddef>
#include <cstdint>
#include <kxstr/types.h>

namespace kxstr::forms {

inline constexpr std::uint8_t kExtended5 = 0xC0;     // 0xC0, index, set, 0xC0
inline constexpr std::uint8_t kAttributeOn5 = 0xC3;  // 0xC3, attribute, 0xC3
inline constexpr std::uint8_t kAttributeOff5 = 0xC4; // likewise
inline constexpr std::uint8_t kFirstGroup5 = 0xD0;   // code, any byte, size of the content, content
inline constexpr std::size_t kGroupHeaderSize5 = 4;
inline constexpr std::size_t kExtendedSize5 = 4;
inline constexpr std::size_t kAttributeSize5 = 3;
// A pair: the number of a row and a place in it, 0x21..0x7F each. The first row holds set 0.
inline constexpr std::size_t kPairSize5 = 2;
inline constexpr std::uint8_t kFirstRow5 = 0x21;
inline constexpr std::uint8_t kLastRow5 = 0x7F;

// What the bytes 0x20..0x7F of a stream are, which the stream does not tell.
enum class Kx5Text {
    bytes,            // characters of set 0, one each
    pairs,            // East Asian characters by row and cell
    simplified_pairs, // Chinese characters numbered through
    traditional_pairs,
};

// `bytes`: the destination's size, the terminator included; with less than 2 nothing is written. Returns `destination`.
KxChar *read_stream5(const std::uint8_t *source, KxChar *destination, std::uint16_t bytes, Kx5Text text) noexcept;

} // namespace kxstr::forms
