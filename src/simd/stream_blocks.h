// Finding the codes in 64 bytes of a document stream by bits, one for each byte. Only the vector forms include it;
// every function is the including file's own.
#pragma once

#include <cstdint>

namespace kxstr::simd {

// The bytes of a block that the walk may not pass over unseen.
struct StreamBytes {
    std::uint64_t stops;    // 0 and 0xD0..0xFF, 0xF0 included
    std::uint64_t extended; // 0xF0
};

// Extended characters are found by parity: of the bytes 0xF0 every other one opens a character and the next one, three
// bytes on, closes it. Where that does not hold (an index of 0xF0, no closing byte) `odd` marks the place: all in front
// of the lowest mark is told rightly.
struct StreamCodes {
    std::uint64_t openers;
    std::uint64_t inside; // the three bytes behind an opener
    std::uint64_t stops;  // terminators and codes of other kinds, where a code begins
    std::uint64_t odd;
};

// `before`: the openers of the block in front.
static inline StreamCodes find_codes(StreamBytes bytes, std::uint64_t before) noexcept {
    std::uint64_t parity = bytes.extended;
    for (unsigned shift = 1; shift < 64; shift *= 2)
        parity ^= parity << shift;
    if (before >> 61 != 0) parity = ~parity;
    const std::uint64_t openers = bytes.extended & parity;
    const std::uint64_t closers = openers << 3 | before >> 61;
    const std::uint64_t inside = openers << 1 | openers << 2 | closers | before >> 63 | before >> 62;
    return {openers, inside, bytes.stops & ~bytes.extended & ~inside, closers ^ (bytes.extended & ~parity)};
}

// How many bytes the last extended character of a block reaches into the next one.
static inline unsigned bytes_over(std::uint64_t openers) noexcept {
    const auto last = static_cast<unsigned>(openers >> 61);
    return last - last / 4;
}

} // namespace kxstr::simd
