// The search of the East Asian form tables, on which case, width and kana of the East Asian characters rest.
#pragma once

#include <cstdint>
#include <optional>

#include "codepage/country.h"
#include "core/kx_char.h"
#include "tables/letter_forms.h"

namespace kxstr::letters {

enum class LetterFormGroup : std::uint8_t { kCase = 0, kKana = 2, kWidth = 3 };

inline constexpr unsigned kSingleWidth = 0;
inline constexpr unsigned kDoubleWidth = 1;

// Where a character stands: its row, and the column of its own width. A cell of 0 means that there is no such form; a
// separator's cells are 0xFFFF.
struct LetterForm {
    const tables::LetterFormRow *rows;
    unsigned row;
    unsigned column;
    LetterFormGroup group;

    KxChar in_column(unsigned other_column) const noexcept { return rows[row][other_column]; }
    // The two rows of the couple, in the character's own width: capital and small letter, or the two kana of a sound.
    // For a character of LetterFormGroup::kWidth, which has no couples, they mean nothing.
    KxChar first_of_couple() const noexcept { return rows[row & ~1u][column]; }
    KxChar second_of_couple() const noexcept { return rows[row | 1u][column]; }
};

// The table of the system's country, or null.
inline const tables::LetterFormTable *letter_form_table() noexcept {
    const unsigned country = codepage::country_id();
    if (country < codepage::kJapanese || country > codepage::kSimplifiedChinese) return nullptr;
    return &tables::kLetterFormTables[country - codepage::kJapanese];
}

// The first row that holds the character in the column of its width. Every value can be found: 0 where a row lacks a
// single-width form, 0xFFFF at the first separator.
inline std::optional<LetterForm> find_letter_form(const tables::LetterFormTable &table, KxChar ch) noexcept {
    const unsigned entry = table.entries[table.blocks[ch / 64] * 64u + ch % 64];
    if (entry == 0) return std::nullopt;
    return LetterForm{table.rows.data(), entry & 0x3FFu,
                      set_of(ch) >= kFirstDoubleByteSet ? kDoubleWidth : kSingleWidth,
                      static_cast<LetterFormGroup>((entry >> 12) & 3u)};
}

inline std::optional<LetterForm> find_letter_form(KxChar ch) noexcept {
    const tables::LetterFormTable *table = letter_form_table();
    return table == nullptr ? std::nullopt : find_letter_form(*table, ch);
}

enum class LetterFormMode : std::uint16_t {
    kLower = 1,
    kUpper = 2,
    kDouble = 3,
    kSingle = 4,
    // The kana of the first or second row of a couple: hiragana and katakana in the Japanese table, the other way round
    // in the Chinese ones.
    kFirstKana = 5,
    kSecondKana = 6,
};

// The form of the character that the mode names, or the character itself where there is none. Modes 1, 2, 5 and 6 keep
// the width; 3 and 4 keep everything else. Any other mode changes nothing.
inline KxChar convert_letter_form(LetterFormMode mode, KxChar ch) noexcept {
    const auto form = find_letter_form(ch);
    if (!form) return ch;
    const auto cell = [&]() noexcept -> KxChar {
        switch (mode) {
        case LetterFormMode::kLower: return form->group == LetterFormGroup::kCase ? form->second_of_couple() : ch;
        case LetterFormMode::kUpper: return form->group == LetterFormGroup::kCase ? form->first_of_couple() : ch;
        case LetterFormMode::kDouble: return form->in_column(kDoubleWidth);
        case LetterFormMode::kSingle: return form->in_column(kSingleWidth);
        case LetterFormMode::kFirstKana: return form->group == LetterFormGroup::kKana ? form->first_of_couple() : ch;
        case LetterFormMode::kSecondKana: return form->group == LetterFormGroup::kKana ? form->second_of_couple() : ch;
        }
        return ch;
    }();
    return cell != 0 ? cell : ch;
}

} // namespace kxstr::letters
