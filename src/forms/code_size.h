// The sizes of the codes in a KX document stream, read from a code's first byte (forward) or from its last (backward).
// Everything that walks a stream does it by this rule; sizes are taken as they stand in the stream.
#pragma once

#include <array>
#include <cstddef>

#include "platform/bytes.h"
#include "simd/kernels.h"

namespace kxstr::forms {

// What the first byte of a code says. 0 ends the stream where a code begins.
inline constexpr std::uint8_t kFirstFunctionCode = 0x80; // below it: characters of set 0
inline constexpr std::uint8_t kFirstGroup = 0xD0;        // groups carry their whole size
inline constexpr std::uint8_t kLastGroup = 0xEF;
inline constexpr std::uint8_t kExtended = 0xF0; // 0xF0, index, set, 0xF0
inline constexpr std::uint8_t kAttributeOn = 0xF2;
inline constexpr std::uint8_t kAttributeOff = 0xF3;
inline constexpr std::uint8_t kLastFixed = 0xFE;

inline constexpr std::size_t kExtendedSize = 4;
inline constexpr std::size_t kAttributeSize = 3;

// Code byte and a byte that sizing does not read, then the size; and the other way round in the trailer: the size
// again, then the closing byte.
inline constexpr std::size_t kGroupHeaderSize = 4;
inline constexpr std::size_t kGroupTrailerSize = 3;

// Whole sizes of the codes that begin and end with 0xF0..0xFE.
inline constexpr std::array<std::uint8_t, 15> kFixedSizes{4, 5, 3, 3, 3, 3, 4, 4, 4, 5, 5, 6, 6, 8, 8};

constexpr bool is_group(std::uint8_t byte) noexcept {
    return kFirstGroup <= byte && byte <= kLastGroup;
}
constexpr bool is_fixed(std::uint8_t byte) noexcept {
    return kExtended <= byte && byte <= kLastFixed;
}

// Size of the code that begins at `code`. A group gives its size field, 0 included; every other code is 1 or more.
constexpr std::uint16_t forward_size(const std::uint8_t *code) noexcept {
    if (*code < kFirstGroup) return 1;
    if (is_fixed(*code)) return kFixedSizes[*code - kExtended];
    return is_group(*code) ? load_u16le(code + 2) : std::uint16_t{1};
}

// Size of the code whose last byte lies just before `end`; as above.
constexpr std::uint16_t backward_size(const std::uint8_t *end) noexcept {
    const std::uint8_t last = end[-1];
    if (last < kFirstGroup) return 1;
    if (is_fixed(last)) return kFixedSizes[last - kExtended];
    return is_group(last) ? load_u16le(end - 3) : std::uint16_t{1};
}

// How far a walk goes at `code`. Never 0: a group that claims no size counts as one byte, so that every walk ends.
constexpr std::size_t step(const std::uint8_t *code) noexcept {
    const std::size_t size = forward_size(code);
    return size != 0 ? size : 1;
}

// The same backwards from the byte behind a code.
constexpr std::size_t step_back(const std::uint8_t *end) noexcept {
    const std::size_t size = backward_size(end);
    return size != 0 ? size : 1;
}

// Bytes before the 0 that stands where a code begins.
inline std::size_t stream_length(const std::uint8_t *stream) noexcept {
    const auto skip_characters = simd::kernels().skip_characters;
    const std::uint8_t *code = skip_characters(stream);
    while (*code != 0)
        code = skip_characters(code + step(code));
    return static_cast<std::size_t>(code - stream);
}

} // namespace kxstr::forms
