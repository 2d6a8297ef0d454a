// A text as the pairs of letters that it has, by three kinds of words.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <vector>

namespace kxdetect {

struct BytePair {
    std::uint8_t first;  // 0 for the edge of a word
    std::uint8_t second; // 0 for the edge of a word
    bool at_start;       // of a word: its first two letters
    std::uint32_t count;

    bool is_ascii() const { return first < 0x80 && second < 0x80; }
};

inline constexpr unsigned kEdge = 0;
inline constexpr unsigned kAsciiSymbols = 27; // the edge, a to z

// How often one letter of ASCII follows another, whatever their case.
using AsciiPairs = std::array<std::uint32_t, std::size_t{kAsciiSymbols} * kAsciiSymbols>;

struct TextPairs {
    // Of the words that have bytes from 80 on, which tell the page: the pairs with such a byte, and the others.
    std::vector<BytePair> upper;
    std::vector<BytePair> within;
    std::array<std::uint32_t, 256> inside{};       // how often each byte has other bytes of a word on both sides
    std::array<std::uint32_t, 256> beside_digit{}; // how often each upper byte has a digit beside it
    AsciiPairs beside{};                           // of the other words in their lines
    AsciiPairs apart{};                            // of the lines without such bytes
    std::array<std::uint32_t, 256> bytes{};        // how often each byte occurs
    std::size_t upper_bytes = 0;                   // how many are 80 or above
    std::size_t first_upper_line = 0;              // where the first line with such a byte begins
};

// A control that texts do not have: all but the bell, tabs, line ends, the old end of a text and the escape.
constexpr bool is_odd_control(std::uint8_t byte) {
    return byte < 0x20 && (byte < '\a' || byte > '\r') && byte != 0x1A && byte != 0x1B;
}

TextPairs count_pairs(std::span<const std::uint8_t> text);

} // namespace kxdetect
