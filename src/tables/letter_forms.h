// The East Asian form tables: letters, kana and other characters that exist in two widths.
#pragma once

#include <array>
#include <cstdint>
#include <kxstr/types.h>
#include <span>

namespace kxstr::tables {

// A character in both widths: column 0 the single-width form (sets 0 to 11), column 1 the double-width form (sets 36
// and up). 0: no form of that width. 0xFFFF in both: a separator between groups.
using LetterFormRow = std::array<KxChar, 2>;

// The rows of a table stand in four groups, each ended by a separator: letter case, nothing, kana, width. The first two
// filled groups hold couples: rows 2k and 2k + 1, capital and small letter, or the two kana of a sound.
struct LetterFormTable {
    std::span<const LetterFormRow> rows;

    // Where a character is found: blocks[ch / 64] is the number of the block of 64 entries that holds its entry. An
    // entry tells the first row that holds the character (single-width characters in column 0, double-width ones in
    // column 1): bit 15 set, the group in bits 13..12, the row in bits 9..0. 0: no row holds it.
    const std::uint8_t *blocks;
    const std::uint16_t *entries;
};

// By country, from kJapanese (country 1) to kSimplifiedChinese (country 4).
extern const std::array<LetterFormTable, 4> kLetterFormTables;

} // namespace kxstr::tables
