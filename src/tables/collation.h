// The collation tables (data/collation/): what the comparison and the per-character values of the collation by language
// number read, and what sets up the exported coltbl for a language.
#pragma once

#include <cstdint>
#include <kxstr/types.h>
#include <span>

namespace kxstr::tables {

// A collation sequence is an array of these, ended by set 0xFF without a block. A block holds its first index, the
// count of its values, and the values. The exported coltbl has the same shape, packed.
struct SequenceEntry {
    std::uint8_t set;
    const std::uint8_t *block;
};
extern const SequenceEntry kDefaultSequence[6];
extern const SequenceEntry kHebrewArabicSequence[9];

// A base letter and its diacritic; KX_NONE twice for a character that is no composite.
struct Composite {
    KxChar base;
    KxChar diacritic;
};
struct CompositeTable {
    std::uint8_t set;
    std::uint8_t first; // index of entries[0]
    std::span<const Composite> entries;
};
extern const CompositeTable kCompositeTables[3];

// Second-level rank of a Latin letter by the number of its diacritic.
extern const std::uint8_t kDiacriticRanks[26];

// Second-level values of the Arabic carriers of hamza, from the first one on.
inline constexpr KxChar kFirstHamzaCarrier = 0x0DA5;
extern const std::uint8_t kHamzaRanks[16];

// Set-14 letters that differ from the letter whose value they share at the second level.
struct CharacterRange {
    KxChar first;
    KxChar last;
};
extern const CharacterRange kArabicLettersApart[8];

enum class LanguageKind : std::uint8_t {
    kPlain,        // the default sequence and nothing else
    kLetters,      // contractions and letters of its own
    kHebrewArabic, // a sequence of its own, ignorable characters
    kEastAsian,    // 16-bit values
};
struct LanguageRules {
    char code[2];
    LanguageKind kind;
    std::uint8_t first_state;   // where contractions start; 0: the language has none
    std::uint8_t letter_column; // in LetterValues
    bool late_diaeresis;        // the diaeresis ranks 9
    bool upper_first;           // uppercase sorts before lowercase
};
extern const LanguageRules kCollationLanguages[40];

// The values that a letter and its lowercase (one higher) have in the languages, by column; column 0 is the default's.
struct LetterValues {
    KxChar upper;
    std::uint8_t values[8];
};
extern const LetterValues kLetters[12];

// The contraction machine: in a state, a lowercase character leads to another state or, from kFirstContractionResult
// on, to a result.
inline constexpr std::uint8_t kFirstContractionResult = 0x80;
struct ContractionStep {
    std::uint8_t state;
    std::uint8_t target;
    KxChar key;
};
extern const ContractionStep kContractionSteps[13];

// What the matched characters sort as: two letters, or (second is 0) as one behind everything that begins with `first`.
struct ContractionResult {
    char first;
    char second;
};
extern const ContractionResult kContractionResults[7];

// The letters of coltbl that depend on the language; column 0 is for languages that are not listed.
struct ColtblLanguage {
    char code[2];
    std::uint8_t column;
};
extern const ColtblLanguage kColtblLanguages[12];
struct ColtblLetter {
    KxChar ch;
    std::uint8_t values[11];
};
extern const ColtblLetter kColtblLetters[60];

// Kana by position (the hiragana from 0x255E, the katakana from 0x2600): voicing and size, primary value less 0x100.
extern const std::uint8_t kKanaSounds[88];
extern const std::uint8_t kKanaValues[88];
// By primary value less 0x100: that of the vowel in which the kana ends.
extern const std::uint8_t kKanaVowels[64];

// East Asian symbols with a value of their own, told by the index alone.
struct EastAsianSymbol {
    std::uint8_t index;
    std::uint16_t primary;
};
extern const EastAsianSymbol kEastAsianSymbols[17];

} // namespace kxstr::tables
