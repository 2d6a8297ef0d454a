// What is known about the collation tables, held against the tables themselves.
#include <kxstr/collate.h>
#include <kxstr/letters.h>
#include <set>

#include "support/coltbl_state.h"
#include "support/test.h"
#include "tables/collation.h"

namespace {

using kxstr::reference::Map;
using kxstr::test::ColtblAtLoad;
namespace tables = kxstr::tables;

constexpr std::uint32_t kDefaultLanguage = 0, kHebrew = 19;

unsigned hex(const std::string &field) {
    return static_cast<unsigned>(std::stoul(field, nullptr, 16));
}

Map known_values(const std::string &sequence) {
    Map values;
    for (const auto &row : kxstr::reference::read_rows("../tests/collate/known_values.txt")) {
        if (row.at(0) != sequence) continue;
        for (unsigned k = 0; k < 16; ++k)
            if (const std::string &value = row.at(2 + k); value != "--") values[hex(row[1]) + k] = hex(value);
    }
    return values;
}

unsigned known_value(const Map &known, unsigned ch) {
    if (const auto found = known.find(ch); found != known.end()) return found->second;
    KxChar base = 0;
    KxChar diacritic = 0;
    return KxCh6Brkcar(ch, &base, &diacritic) == 0 ? known_value(known, base) : 0xFFu;
}

TEST(Sequences, EveryCharacterHasItsKnownValue) {
    const ColtblAtLoad at_load;
    const Map coltbl = known_values("coltbl"), plain = known_values("default"), hebrew = known_values("hebrew-arabic");
    ASSERT_FALSE(coltbl.empty() || plain.empty() || hebrew.empty());
    for (unsigned ch = 0; ch < 0xF900; ++ch) {
        SCOPED_TRACE(testing::Message() << std::hex << ch);
        EXPECT_EQ(xch2col(ch), known_value(coltbl, ch));
        EXPECT_EQ(f_KX60ColVal(ch, kDefaultLanguage), known_value(plain, ch));
        const unsigned set = ch >> 8;
        const bool own_script = set == 9 || set == 13 || set == 14;
        const unsigned in_script = hebrew.contains(ch) ? hebrew.at(ch) : 0xFDu;
        const unsigned elsewhere = set == 10 ? 0xFFu : known_value(plain, ch);
        EXPECT_EQ(f_KX60ColVal(ch, kHebrew), own_script ? in_script : elsewhere);
    }
}

TEST(Coltbl, LayoutIsPackedEntriesAndBlocks) {
    const struct {
        std::uint8_t set, first, count;
    } wanted[] = {{0, 0x20, 95}, {1, 0x17, 219}, {4, 0x0B, 22}, {5, 0x7B, 6}, {8, 0x00, 215}, {10, 0x00, 200}};
    // By bytes, as a host reads it that knows nothing of our headers.
    const auto *entry = reinterpret_cast<const std::uint8_t *>(coltbl);
    const std::uint8_t *expected_block = coltbl[0].block;
    for (const auto &want : wanted) {
        EXPECT_EQ(entry[0], want.set);
        const std::uint8_t *block = nullptr;
        std::memcpy(&block, entry + 1, sizeof block);
        EXPECT_EQ(block[0], want.first);
        EXPECT_EQ(block[1], want.count);
        EXPECT_EQ(block, expected_block);
        expected_block = block + 2 + block[1];
        entry += 1 + sizeof block;
    }
    const std::uint8_t end[1 + sizeof(void *)] = {0xFF};
    EXPECT_EQ(std::memcmp(entry, end, sizeof end), 0);
}

TEST(Languages, RulesByNumber) {
    using enum tables::LanguageKind;
    const std::map<int, std::string> starts = {{3, "spanish"}, {29, "spanish"}, {5, "czech"},
                                               {28, "czech"},  {13, "french"},  {14, "french"},
                                               {16, "german"}, {17, "german"},  {7, "dutch"}};
    const std::set<int> hebrew_arabic = {2, 11, 19, 32}, late_diaeresis = {5, 12, 28, 30};
    std::map<std::string, int> state_of{{"", 0}};
    std::map<int, std::string> start_at{{0, ""}};
    int number = 0;
    for (const tables::LanguageRules &language : tables::kCollationLanguages) {
        const auto other_than_plain = number >= 34                     ? kEastAsian
                                      : hebrew_arabic.contains(number) ? kHebrewArabic
                                                                       : kLetters;
        EXPECT_EQ(language.kind, number == 0 ? kPlain : other_than_plain) << number;
        const auto start = starts.find(number);
        const std::string name = start != starts.end() ? start->second : "";
        EXPECT_EQ(state_of.emplace(name, language.first_state).first->second, language.first_state) << number;
        EXPECT_EQ(start_at.emplace(language.first_state, name).first->second, name) << number;
        EXPECT_EQ(language.upper_first, number == 18) << number;
        EXPECT_EQ(language.late_diaeresis, late_diaeresis.contains(number)) << number;
        ++number;
    }
}

TEST(Languages, LettersThatMove) {
    const struct {
        std::uint32_t language;
        KxChar upper;
        std::uint8_t value;
    } rows[] = {{6, 0x0124, 0xAA},  {21, 0x0124, 0xAE}, {23, 0x0124, 0xAB}, {5, 0x0162, 0x85}, {28, 0x0162, 0x85},
                {12, 0x0122, 0xAC}, {30, 0x0122, 0xAC}, {31, 0x0A3A, 0xEC}, {33, 0x01EE, 0x8B}};
    for (const auto &row : rows)
        for (const KxChar ch : {row.upper, static_cast<KxChar>(row.upper + 1)})
            EXPECT_EQ(f_KX60ColVal(ch, row.language), row.value) << row.language << ' ' << std::hex << ch;
    for (const tables::LetterValues &letter : tables::kLetters)
        EXPECT_EQ(letter.values[0], f_KX60ColVal(letter.upper, kDefaultLanguage)) << "the column of all the others";
}

TEST(Composites, PartsAndTheWayBack) {
    const std::set<unsigned> latin_bases = {0x0131, 0x0133, 0x0135, 0x0137, 0x0183, 0x0185, 0x0189, 0x018D, 0x01ED};
    for (unsigned ch = 0; ch <= 0xFFFF; ++ch) {
        SCOPED_TRACE(testing::Message() << std::hex << ch);
        KxChar base = 0xBEEF;
        KxChar diacritic = 0xBEEF;
        if (KxCh6Brkcar(ch, &base, &diacritic) != 0) {
            EXPECT_EQ(base, 0xBEEF);
            EXPECT_EQ(diacritic, 0xBEEF);
            EXPECT_EQ(KxCh6Getdia(ch), 0u);
            continue;
        }
        const unsigned set = ch >> 8;
        EXPECT_EQ(diacritic >> 8, set);
        EXPECT_EQ(base >> 8, set == 1 && !latin_bases.contains(ch) ? 0u : set);
        // Both cases share the diacritic, and their bases are the two cases of one letter (or i, j).
        if (set == 1 && ch % 2 == 0) {
            KxChar lower_base = 0;
            KxChar lower_diacritic = 0;
            EXPECT_EQ(KxCh6Brkcar(ch + 1, &lower_base, &lower_diacritic), 0u);
            EXPECT_EQ(lower_diacritic, diacritic);
            EXPECT_EQ(lower_base < 0x0100 ? wtolower(base) : lower_base, lower_base);
        }
        const unsigned number = diacritic & 0xFFu;
        EXPECT_EQ(KxCh6Getdia(ch), number < 26 ? tables::kDiacriticRanks[number] : 0u);
        KxChar composite = 0;
        EXPECT_EQ(KxCh6Cmbcar(&composite, base, diacritic & 0x7F), 0u);
        EXPECT_EQ(composite, ch);
    }
    KxChar untouched = 0xBEEF;
    EXPECT_EQ(KxCh6Cmbcar(&untouched, 0x0041, 0x40), 1u);
    EXPECT_EQ(KxCh6Cmbcar(&untouched, 0x0A00, 0xC8), 1u) << "the top bit is cleared in the table, not in the argument";
    EXPECT_EQ(KxCh6Cmbcar(&untouched, 0x0200, 6), 1u);
    EXPECT_EQ(untouched, 0xBEEF);
    EXPECT_EQ(KxCh6Cmbcar(&untouched, 0x01FF, 0x7F), 0u);
    EXPECT_EQ(untouched, 0x0124) << "the first gap between the composites";
}

// The exported table closes the gap at 9, which the diaeresis takes in some languages, and gives up at 15.
TEST(Diacritics, RanksAndTheExportedTable) {
    const int ranks[] = {2, 16, 7, 4, 12, 10, 1, 6, 17, 18, 19, 20, 21, 22, 8, 13, 23, 11, 14, 5, 15, 24, 3, 0, 25, 26};
    for (std::size_t k = 0; k < 26; ++k) {
        EXPECT_EQ(tables::kDiacriticRanks[k], ranks[k]);
        EXPECT_EQ(diatbl[k], std::min(ranks[k] > 9 ? ranks[k] - 1 : ranks[k], 15));
    }
}

} // namespace
