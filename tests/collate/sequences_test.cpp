// What is known about the collation tables, held against the tables themselves.
#include <cstring>
#include <functional>
#include <gtest/gtest.h>
#include <kxstr/collate.h>
#include <kxstr/strops.h>
#include <map>
#include <set>
#include <string>

#include "collate/listed_values.h"
#include "support/coltbl_state.h"
#include "tables/collation.h"

namespace {

using namespace kxstr::test;
namespace tables = kxstr::tables;

constexpr int kNone = -1; // outside every block

struct Block {
    KxChar first;
    KxChar last;
};

// Character by character: the lists decide, then composition, and nothing has a value outside the blocks.
template <std::size_t kCount>
void expect_sequence(const std::function<int(KxChar)> &value_of, std::span<const Block> blocks,
                     const Listed (&listed)[kCount], const std::set<unsigned> &sets) {
    std::map<KxChar, std::uint8_t> known;
    for (const Listed &range : listed) {
        for (unsigned ch = range.first; ch <= range.last; ++ch)
            known[static_cast<KxChar>(ch)] = range.value;
    }
    int composites = 0;
    for (unsigned ch = 0x0100; ch < 0xF900; ++ch) {
        if (!sets.contains(ch >> 8)) continue;
        const auto kx = static_cast<KxChar>(ch);
        const bool covered = std::ranges::any_of(blocks, [kx](Block b) { return b.first <= kx && kx <= b.last; });
        KxChar base = 0;
        KxChar diacritic = 0;
        if (!covered) {
            EXPECT_EQ(value_of(kx), kNone) << std::hex << ch;
        } else if (known.contains(kx)) {
            EXPECT_EQ(value_of(kx), known[kx]) << std::hex << ch;
        } else if (KxCh6Brkcar(ch, &base, &diacritic) == 0) {
            EXPECT_EQ(value_of(kx), value_of(base)) << std::hex << ch;
            ++composites;
        } else {
            ADD_FAILURE() << std::hex << ch << " is neither listed nor a composite";
        }
    }
    EXPECT_GT(composites, 300);
}

// The characters of set 0 in the order of their values; letters and digits are told apart from the rest.
void expect_ascii(const std::function<int(KxChar)> &value_of, const std::map<char, int> &others) {
    EXPECT_EQ(others.size(), 33u);
    for (const auto &[ch, value] : others)
        EXPECT_EQ(value_of(static_cast<KxChar>(ch)), value) << ch;
    for (KxChar letter = 'A'; letter <= 'Z'; ++letter)
        EXPECT_EQ(value_of(letter), value_of(static_cast<KxChar>(letter + 0x20))) << letter;
    for (KxChar ch : std::initializer_list<KxChar>{0x1F, 0x7F})
        EXPECT_EQ(value_of(ch), kNone);
}

TEST(Coltbl, LayoutIsPackedEntriesAndBlocks) {
    EXPECT_EQ(sizeof(KxCollationEntry), 1 + sizeof(void *));
    const struct {
        std::uint8_t set, first, count;
    } wanted[] = {{0, 0x20, 95}, {1, 0x17, 219}, {4, 0x0B, 22}, {5, 0x7B, 6}, {8, 0x00, 215}, {10, 0x00, 200}};
    // By bytes, as a host reads it that knows nothing of our headers.
    const auto *entry = reinterpret_cast<const std::uint8_t *>(coltbl);
    const std::uint8_t *expected_block = nullptr;
    for (const auto &want : wanted) {
        EXPECT_EQ(entry[0], want.set);
        const std::uint8_t *block = nullptr;
        std::memcpy(&block, entry + 1, sizeof block);
        EXPECT_EQ(block[0], want.first);
        EXPECT_EQ(block[1], want.count);
        EXPECT_TRUE(expected_block == nullptr || block == expected_block);
        expected_block = block + 2 + block[1];
        entry += 1 + sizeof block;
    }
    const std::uint8_t end[1 + sizeof(void *)] = {0xFF};
    EXPECT_EQ(std::memcmp(entry, end, sizeof end), 0);
}

TEST(Coltbl, ValuesAtLoad) {
    const ColtblAtLoad at_load;
    const auto value_of = [](KxChar ch) {
        std::uint8_t *value = nullptr;
        return fndcolv(ch, &value) == 0 ? *value : kNone;
    };
    expect_ascii(value_of, {{' ', 0x20}, {'.', 0x21},  {',', 0x22}, {':', 0x23}, {';', 0x24}, {'!', 0x25}, {'?', 0x27},
                            {'"', 0x28}, {'\'', 0x29}, {'`', 0x2A}, {'(', 0x2B}, {')', 0x2C}, {'{', 0x2F}, {'}', 0x30},
                            {'$', 0x31}, {'+', 0x37},  {'-', 0x38}, {'*', 0x39}, {'/', 0x3A}, {'^', 0x3B}, {'<', 0x3C},
                            {'=', 0x3E}, {'>', 0x40},  {'%', 0x41}, {'#', 0x42}, {'&', 0x43}, {'@', 0x44}, {'\\', 0x45},
                            {'_', 0x46}, {'|', 0x47},  {'~', 0x48}, {'[', 0xC0}, {']', 0xC1}});
    for (int k = 0; k < 10; ++k)
        EXPECT_EQ(value_of(static_cast<KxChar>('0' + k)), 0x61 + k);
    for (int k = 0; k < 26; ++k)
        EXPECT_EQ(value_of(static_cast<KxChar>('A' + k)), 0x6D + 3 * k);
    const Block blocks[] = {{0x0117, 0x01F1}, {0x040B, 0x0420}, {0x057B, 0x0580}, {0x0800, 0x08D6}, {0x0A00, 0x0AC7}};
    expect_sequence(value_of, blocks, kInColtbl, {1, 2, 3, 4, 5, 6, 8, 9, 10, 11});
}

int value_in(KxChar ch, std::uint32_t language) {
    // The sequences tell a character outside every block from one with the value 0xFF only through their blocks.
    const auto *sequence = language == 19 ? tables::kHebrewArabicSequence : tables::kDefaultSequence;
    for (; sequence->set != 0xFF; ++sequence) {
        const unsigned offset = (ch & 0xFFu) - sequence->block[0];
        if (sequence->set == ch >> 8 && offset < sequence->block[1]) {
            EXPECT_EQ(f_KX60ColVal(ch, language), sequence->block[2 + offset]) << std::hex << ch;
            return sequence->block[2 + offset];
        }
    }
    const bool ignorable = language == 19 && ((ch >> 8) == 9 || (ch >> 8) == 13 || (ch >> 8) == 14);
    EXPECT_EQ(f_KX60ColVal(ch, language), ignorable ? 0xFDu : 0xFFu) << std::hex << ch;
    return kNone;
}

TEST(Sequences, DefaultValues) {
    const auto value_of = [](KxChar ch) { return value_in(ch, 0); };
    expect_ascii(value_of, {{' ', 0x20}, {'.', 0x21},  {',', 0x22}, {':', 0x23}, {';', 0x24}, {'!', 0x25}, {'?', 0x27},
                            {'"', 0x29}, {'\'', 0x2A}, {'`', 0x2B}, {'(', 0x2E}, {')', 0x2F}, {'{', 0x32}, {'}', 0x33},
                            {'$', 0x34}, {'+', 0x3A},  {'-', 0x3B}, {'*', 0x3C}, {'/', 0x3D}, {'^', 0x3E}, {'<', 0x42},
                            {'=', 0x44}, {'>', 0x46},  {'%', 0x50}, {'#', 0x51}, {'&', 0x52}, {'@', 0x53}, {'\\', 0x54},
                            {'_', 0x55}, {'|', 0x56},  {'~', 0x57}, {'[', 0xA8}, {']', 0xA9}});
    for (int k = 0; k < 10; ++k)
        EXPECT_EQ(value_of(static_cast<KxChar>('0' + k)), 0x76 + k);
    const int letters[] = {0x80, 0x82, 0x83, 0x86, 0x87, 0x88, 0x89, 0x8A, 0x8C, 0x8E, 0x8F, 0x90, 0x92,
                           0x93, 0x95, 0x97, 0x98, 0x99, 0x9B, 0x9D, 0x9E, 0x9F, 0xA0, 0xA1, 0xA2, 0xA3};
    for (std::size_t k = 0; k < 26; ++k)
        EXPECT_EQ(value_of(static_cast<KxChar>('A' + k)), letters[k]);
    const Block blocks[] = {{0x0117, 0x01F1}, {0x040B, 0x0413}, {0x0800, 0x08DA}, {0x0A00, 0x0AC7}};
    expect_sequence(value_of, blocks, kInDefaultSequence, {1, 2, 3, 4, 5, 6, 8, 9, 10, 11, 13, 14});
}

TEST(Sequences, HebrewArabicValues) {
    const auto value_of = [](KxChar ch) { return value_in(ch, 19); };
    const Block blocks[] = {{0x0954, 0x0976}, {0x0D26, 0x0DC3}, {0x0E29, 0x0EDB}};
    std::map<KxChar, std::uint8_t> known;
    for (KxChar ch = 0x0900; ch <= 0x091A; ++ch)
        EXPECT_EQ(value_of(ch), 0xAA + (ch - 0x0900));
    for (const Listed &range : kInHebrewArabicSequence) {
        for (KxChar ch = range.first; ch <= range.last; ++ch) {
            EXPECT_EQ(value_of(ch), range.value) << std::hex << ch;
            known[ch] = range.value;
        }
    }
    for (const Block &block : blocks) {
        for (KxChar ch = block.first; ch <= block.last; ++ch)
            EXPECT_TRUE(known.contains(ch)) << std::hex << ch;
    }
    for (KxChar ch : std::initializer_list<KxChar>{0x091B, 0x0953, 0x0977, 0x0D25, 0x0DC4, 0x0E28, 0x0EDC})
        EXPECT_EQ(value_of(ch), kNone) << std::hex << ch;
    // Sets 0, 1, 4 and 8 are the default's own blocks; set 10 has none.
    for (unsigned ch = 0; ch < 0x0900; ++ch)
        EXPECT_EQ(value_of(static_cast<KxChar>(ch)), value_in(static_cast<KxChar>(ch), 0)) << std::hex << ch;
    EXPECT_EQ(f_KX60ColVal(0x0A00, 2), 0xFFu);
    // Only the carriers of hamza and plain alef share the value by which the second level knows them.
    for (KxChar ch = 0x0D00; ch < 0x0F00; ++ch) {
        const bool carrier = ch == 0x0D3A || ch == 0x0D3B || (0x0DA5 <= ch && ch <= 0x0DB4);
        EXPECT_EQ(value_of(ch) == 0xC7, carrier) << std::hex << ch;
    }
}

TEST(Letters, RowsOfOtherLanguagesAreTheDefaultValues) {
    const ColtblAtLoad at_load;
    for (const tables::LetterValues &letter : tables::kLetters) {
        EXPECT_EQ(letter.upper % 2, 0);
        for (KxChar ch : {letter.upper, static_cast<KxChar>(letter.upper + 1)})
            EXPECT_EQ(f_KX60ColVal(ch, 0), letter.values[0]) << std::hex << ch;
        for (const std::uint8_t value : letter.values)
            EXPECT_NE(value, 0) << std::hex << letter.upper;
    }
    const std::set<KxChar> other_at_load = {0x014B, 0x01CC, 0x01CD, 0x01D0, 0x01D1};
    for (const tables::ColtblLetter &letter : tables::kColtblLetters)
        EXPECT_EQ(xch2col(letter.ch) == letter.values[0], !other_at_load.contains(letter.ch)) << std::hex << letter.ch;
}

TEST(Languages, NumbersThatTheRulesSingleOut) {
    const std::map<int, std::string> starts = {{3, "spanish"}, {29, "spanish"}, {5, "czech"},
                                               {28, "czech"},  {13, "french"},  {14, "french"},
                                               {16, "german"}, {17, "german"},  {7, "dutch"}};
    const std::map<int, std::uint8_t> ae_values = {{6, 0xAA}, {21, 0xAE}, {23, 0xAB}}; // 0x0124
    std::map<std::string, std::uint8_t> state_of;
    int number = 0;
    for (const tables::LanguageRules &language : tables::kCollationLanguages) {
        using enum tables::LanguageKind;
        const bool hebrew_arabic = number == 2 || number == 11 || number == 19 || number == 32;
        EXPECT_EQ(language.kind, number == 0     ? kPlain
                                 : number >= 34  ? kEastAsian
                                 : hebrew_arabic ? kHebrewArabic
                                                 : kLetters)
            << number;
        EXPECT_EQ(language.first_state != 0, starts.contains(number)) << number;
        if (starts.contains(number)) {
            const auto [known, is_new] = state_of.emplace(starts.at(number), language.first_state);
            EXPECT_EQ(known->second, language.first_state) << number;
        }
        EXPECT_EQ(language.upper_first, number == 18) << number;
        EXPECT_EQ(language.late_diaeresis, number == 12 || number == 30 || number == 5 || number == 28) << number;
        EXPECT_EQ(f_KX60ColVal(0x0124, static_cast<std::uint32_t>(number)),
                  ae_values.contains(number) ? ae_values.at(number) : 0x81)
            << number;
        ++number;
    }
    EXPECT_EQ(state_of.size(), 5u);
    // A letter of each row that moves in it alone.
    EXPECT_EQ(f_KX60ColVal(0x0162, 5), 0x85u);
    EXPECT_EQ(f_KX60ColVal(0x0163, 28), 0x85u);
    EXPECT_EQ(f_KX60ColVal(0x0122, 12), 0xACu);
    EXPECT_EQ(f_KX60ColVal(0x0122, 30), 0xACu);
    EXPECT_EQ(f_KX60ColVal(0x0A3A, 31), 0xECu);
    EXPECT_EQ(f_KX60ColVal(0x01EF, 33), 0x8Bu);
}

TEST(Composites, RangesPairsAndTheWayBack) {
    const std::pair<KxChar, KxChar> ranges[] = {{0x011A, 0x01F1}, {0x0834, 0x08D6}, {0x0A50, 0x0AC7}};
    const std::set<KxChar> latin_bases = {0x0131, 0x0133, 0x0135, 0x0137, 0x0183, 0x0185, 0x0189, 0x018D, 0x01ED};
    for (unsigned ch = 0; ch <= 0xFFFF; ++ch) {
        KxChar base = 0xBEEF;
        KxChar diacritic = 0xBEEF;
        if (KxCh6Brkcar(ch, &base, &diacritic) != 0) {
            EXPECT_EQ(base, 0xBEEF);
            EXPECT_EQ(diacritic, 0xBEEF);
            EXPECT_EQ(KxCh6Getdia(ch), 0u);
            continue;
        }
        EXPECT_TRUE(std::ranges::any_of(ranges, [ch](auto range) { return range.first <= ch && ch <= range.second; }));
        EXPECT_EQ(diacritic >> 8, ch >> 8);
        EXPECT_EQ(base >> 8, (ch >> 8) == 1 && !latin_bases.contains(static_cast<KxChar>(ch)) ? 0u : ch >> 8)
            << std::hex << ch;
        switch (ch >> 8) {
        case 1: EXPECT_LE(diacritic, 0x0116); break;
        case 8: EXPECT_TRUE(0x0851 <= diacritic && diacritic <= 0x086C) << std::hex << ch; break;
        default: EXPECT_TRUE(0x0AC8 <= diacritic && diacritic <= 0x0ACE) << std::hex << ch; break;
        }
        // Upper and lower case share the diacritic, and their bases are the two cases of one letter (or i, j).
        if ((ch >> 8) == 1 && ch % 2 == 0) {
            KxChar lower_base = 0;
            KxChar lower_diacritic = 0;
            EXPECT_EQ(KxCh6Brkcar(ch + 1, &lower_base, &lower_diacritic), 0u) << std::hex << ch;
            EXPECT_EQ(lower_diacritic, diacritic) << std::hex << ch;
            EXPECT_EQ(lower_base < 0x0100 ? wtolower(base) : lower_base, lower_base) << std::hex << ch;
        }
        EXPECT_EQ(KxCh6Getdia(ch), (diacritic & 0xFF) < 26 ? tables::kDiacriticRanks[diacritic & 0xFF] : 0u);
        KxChar composite = 0;
        EXPECT_EQ(KxCh6Cmbcar(&composite, base, diacritic & 0x7F), 0u);
        EXPECT_EQ(composite, ch);
    }
    KxChar untouched = 0xBEEF;
    EXPECT_EQ(KxCh6Cmbcar(&untouched, 0x0041, 0x40), 1u);
    EXPECT_EQ(KxCh6Cmbcar(&untouched, 0x0A00, 0xC8), 1u); // the top bit is cleared in the table, not in the argument
    EXPECT_EQ(KxCh6Cmbcar(&untouched, 0x0200, 6), 1u);
    EXPECT_EQ(untouched, 0xBEEF);
}

TEST(Diacritics, RanksAndTheExportedTable) {
    const int ranks[] = {2, 16, 7, 4, 12, 10, 1, 6, 17, 18, 19, 20, 21, 22, 8, 13, 23, 11, 14, 5, 15, 24, 3, 0, 25, 26};
    const int exported[] = {2,  15, 7,  4,  11, 9,  1, 6,  15, 15, 15, 15, 15,
                            15, 8,  12, 15, 10, 13, 5, 14, 15, 3,  0,  15, 15};
    for (std::size_t k = 0; k < 26; ++k) {
        EXPECT_EQ(tables::kDiacriticRanks[k], ranks[k]);
        EXPECT_EQ(diatbl[k], exported[k]);
    }
    EXPECT_EQ(std::ranges::count(tables::kDiacriticRanks, 9), 0);
}

} // namespace
