// The document stream of the KX 5 generation.
#pragma once

#include <cstdint>
#include <kxstr/types.h>

namespace kxstr::forms {

// What the bytes 0x20..0x7F of a stream are, which the stream does not tell.
enum class Text5 {
    bytes,            // characters of set 0, one each
    pairs,            // East Asian characters by row and cell
    simplified_pairs, // Chinese characters numbered through
    traditional_pairs,
};

// `bytes`: the destination's size, the terminator included; with less than 2 nothing is written. Returns `destination`.
KxChar *read_stream5(const std::uint8_t *source, KxChar *destination, std::uint16_t bytes, Text5 text) noexcept;

} // namespace kxstr::forms
