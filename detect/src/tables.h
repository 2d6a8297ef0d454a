// The models, generated from data/detect/. All costs are in sixteenths of a nat: -16 ln(probability).
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace kxdetect {

// What a byte of a page is: undefined, a control, a sign with its number, or a letter with its number from 1 and its
// case. Equal codes are equal characters, within a page and among pages.
using Code = std::uint16_t;
inline constexpr Code kUndefined = 0;
inline constexpr Code kControl = 1;
inline constexpr Code kSignBit = 0x1000;
inline constexpr Code kLetterBit = 0x8000;
inline constexpr Code kCapitalBit = 0x4000;
inline constexpr Code kSmallBit = 0x2000;
inline constexpr Code kJoinedBits = kCapitalBit | kSmallBit; // an Arabic letter that is joined to the next one
inline constexpr Code kKindMask = kCapitalBit | kSmallBit;
inline constexpr Code kNumberMask = 0x0FFF;

enum class SignClass : std::uint8_t { opening, closing, quoting, joining, box, upright, level, other };

struct Sign {
    std::uint16_t character;
    std::uint8_t cost; // among what is no letter
    SignClass kind;
};

struct Page {
    const char *name;
    std::uint8_t cost; // of the guess that a text is in this page, before it is read
    std::array<Code, 128> upper;
};

struct UnicodeLetter {
    std::uint16_t character;
    std::uint16_t first;
    std::uint16_t second; // 0, or the mark that pages write after it
};

// How the letters of a language follow one another. Symbol 0 is the edge of a word, symbol N the letter letters[N - 1];
// costs has a row for each symbol, and starts one for each symbol at the start of a word.
struct Model {
    const char *code;
    const char *name;
    std::uint64_t pages; // bit N: written in kPages[N]
    std::uint8_t usual;  // what a pair with a letter outside ASCII costs in the language itself, on the average
    std::span<const std::uint16_t> letters;
    std::span<const std::uint8_t> costs;
    std::span<const std::uint8_t> starts;
};

struct CharacterCost {
    std::uint16_t character;
    std::uint8_t cost;
};

// A language with thousands of characters. Both lists ascend.
struct CharacterModel {
    const char *code;
    const char *name;
    const char *page;
    std::uint8_t usual; // what a character costs in the language itself, on the average
    std::span<const CharacterCost> in_unicode;
    std::span<const CharacterCost> in_page; // lead byte high
};

extern const std::span<const Sign> kSigns;
extern const std::span<const Page> kPages; // in the order of preference among those that decode a text alike
extern const std::span<const UnicodeLetter> kUnicodeLetters; // ascending
extern const std::size_t kLetterCount;                       // letter numbers are smaller
extern const std::span<const Model> kModels;                 // the first is English
extern const std::span<const CharacterModel> kCharacterModels;

} // namespace kxdetect
