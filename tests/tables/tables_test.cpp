// What is known about the character set, the Unicode tables and the code pages, whatever file they were made from.
#include "tables/code_pages.h"

#include "core/validity.h"
#include "platform/bytes.h"
#include "support/test.h"
#include "tables/kx_names.h"
#include "tables/unicode_map.h"

namespace {

using namespace kxstr;
using reference::Map;
using tables::kKxToUnicode;
using tables::kUnicodeToKx;

constexpr bool is_private_use(unsigned unicode) {
    return unicode >= 0xE000 && unicode <= 0xF8FF;
}

// 0 for the sets that convert by rule.
unsigned unicode_of(unsigned kx) {
    const auto values = kKxToUnicode[kx >> 8];
    return values.empty() ? 0u : values[kx & 0xFF];
}

TEST(UnicodePairs, AscendAndShareCharactersAsOftenAsKnown) {
    EXPECT_TRUE(std::ranges::is_sorted(kUnicodeToKx, std::ranges::less_equal{}, &tables::UnicodePair::unicode));
    Map keys_of;
    for (const auto &[unicode, kx] : kUnicodeToKx) {
        ++keys_of[kx];
        EXPECT_TRUE(core::is_valid(kx, false)) << std::hex << kx;
    }
    Map characters_by_keys;
    for (const auto &[kx, keys] : keys_of)
        ++characters_by_keys[keys];
    EXPECT_EQ(characters_by_keys, (Map{{1, 2164 - 79}, {2, 77}, {3, 2}})); // two triples make 2245 of 2164 and 79
}

TEST(UnicodePairs, ComeBackButForKnownExceptions) {
    Map comes_back_from;
    for (const auto &[unicode, kx] : kUnicodeToKx)
        if (unicode_of(kx) == unicode) comes_back_from[kx] = unicode;
    EXPECT_EQ(comes_back_from.size(), kUnicodeToKx.size() - 102u); // second keys, and the native bytes
    unsigned characters = 0, private_use = 0;
    for (unsigned set = 0; set < kKxToUnicode.size(); ++set) {
        const bool by_rule = set == 0 || set == 12;
        ASSERT_EQ(kKxToUnicode[set].size(), by_rule ? 0u : core::kSetRanges[set].last + 1u) << set;
        for (unsigned i = 0; i < kKxToUnicode[set].size(); ++i) {
            const unsigned kx = set * 256 + i, unicode = kKxToUnicode[set][i];
            EXPECT_TRUE(unicode != 0 && unicode != 0xFFFF) << std::hex << kx;
            ++characters;
            if (!is_private_use(unicode)) continue;
            ++private_use;
            EXPECT_EQ(comes_back_from[kx], unicode) << std::hex << kx;
        }
    }
    EXPECT_EQ(characters, 2370u);
    EXPECT_EQ(private_use, 520u);
}

// Both tables could be wrong alike: some rows that tell, the edges of the runs among them.
TEST(UnicodePairs, TellingRows) {
    Map pairs;
    for (const auto &[unicode, kx] : kUnicodeToKx)
        pairs[unicode] = kx;
    const Map both_ways{{0x00A1, 0x0407}, {0x00A5, 0x040C}, {0x00A8, 0x0107}, {0x00E9, 0x0129}, {0x0391, 0x0800},
                        {0x03B1, 0x0801}, {0x0410, 0x0A00}, {0x0430, 0x0A01}, {0x05D0, 0x0900}, {0x20AC, 0x0448},
                        {0xF000, 0x01D4}, {0xF00F, 0x01E3}, {0xFF61, 0x0B00}, {0xFF9E, 0x0B3D}};
    for (const auto &[unicode, kx] : both_ways) {
        EXPECT_EQ(pairs[unicode], kx) << std::hex << unicode;
        EXPECT_EQ(unicode_of(kx), unicode) << std::hex << kx;
    }
    const Map taken_in_only{{0x00A0, 0x0CA0}, {0x00A6, 0x0C7C}, {0x00AD, 0x0C2D}, {0x3007, 0x068F}, {0x301A, 0x0661}};
    for (const auto &[unicode, kx] : taken_in_only)
        EXPECT_EQ(pairs[unicode], kx) << std::hex << unicode;
    const Map given_out_only{{0x0100, 0x0300}, {0x0183, 0x0069}};
    for (const auto &[kx, unicode] : given_out_only)
        EXPECT_EQ(unicode_of(kx), unicode) << std::hex << kx;
}

// ---- Code pages ----

Map range_entries(const std::uint8_t *table) {
    Map entries;
    if (table == nullptr) return entries;
    for (unsigned byte = table[0]; byte <= table[1]; ++byte)
        entries[byte] = load_u16le(&table[2 + 2 * (byte - table[0])]);
    return entries;
}

const tables::CodePage &page_of(unsigned number) {
    return *std::ranges::find(tables::kCodePages, number, &tables::CodePage::kx_number);
}

TEST(CodePages, OrderNumbersRangesAndReverseCounts) {
    const auto rows = reference::read_rows("../tests/tables/code_pages.txt");
    ASSERT_EQ(rows.size(), tables::kCodePages.size());
    for (std::size_t i = 0; i < rows.size(); ++i) {
        const tables::CodePage &page = tables::kCodePages[i];
        char text[64];
        std::snprintf(text, sizeof text, "%u %u %s %02X %02X %u ", page.kx_number, page.windows_number,
                      page.low() != nullptr ? "low" : "-", page.high()[0], page.high()[1], load_u16le(page.reverse()));
        std::string wanted;
        for (const std::string &field : rows[i])
            (wanted += field) += ' ';
        EXPECT_EQ(text, wanted);
    }
}

TEST(CodePages, TablesHoldWhatThePublishedMappingsGiveAndReversesInvertThem) {
    const auto pages = reference::pages();
    ASSERT_EQ(pages.size(), tables::kCodePages.size());
    for (std::size_t i = 0; i < pages.size(); ++i) {
        const tables::CodePage &page = tables::kCodePages[i];
        EXPECT_EQ(range_entries(page.low()), pages[i].low) << page.kx_number;
        EXPECT_EQ(range_entries(page.high()), pages[i].high) << page.kx_number;
        Map reverse;
        for (unsigned k = 0; k < load_u16le(page.reverse()); ++k) {
            const unsigned kx = load_u16le(&page.reverse()[2 + 3 * k]);
            EXPECT_TRUE(reverse.empty() || reverse.rbegin()->first < kx) << page.kx_number;
            reverse[kx] = page.reverse()[4 + 3 * k];
        }
        EXPECT_EQ(reverse, pages[i].reverse) << page.kx_number;
    }
}

TEST(CodePages, LowTablesHoldTheGlyphsOfTheControlCharacters) {
    constexpr std::u16string_view glyphs = u"☺☻♥♦♣♠•◘○◙♂♀♪♫☼►◄↕‼¶§▬↨↑↓→←∟↔▲▼";
    constexpr std::u16string_view greek = u"ΆΈΉΊΌΎ°◘○◙♂♀♪♫☼►◄↕‼¶§£Ώ↑↓→←Ë↔▲▼";
    for (const auto &page : tables::kCodePages) {
        std::u16string found;
        for (const auto &[byte, kx] : range_entries(page.low()))
            found += static_cast<char16_t>(unicode_of(kx));
        if (page.low() != nullptr) {
            EXPECT_EQ(found, page.kx_number == 333 ? greek : glyphs) << page.kx_number;
        }
    }
}

// Where a page departs from its published mapping.
TEST(CodePages, TellingEntries) {
    const struct {
        unsigned page;
        Map entries;
    } rows[] = {
        {437, {{0x7F, 0x050C}, {0xE6, 0x0625}, {0xFA, 0x0101}}},
        {850, {{0xDD, 0x007C}, {0xF0, 0x002D}}},
        {857, {{0xD5, 0x0CD5}, {0xE7, 0x0CE7}, {0xF2, 0x0CF2}}},
        {10001, {{0xA5, 0x0622}, {0xC6, 0x0808}, {0xC9, 0x06DC}, {0xDB, 0x0418}, {0xF6, 0x0217}, {0xF7, 0x0219}}},
        {18851, {{0x7F, 0x0C7F}, {0x80, 0x0C80}, {0x9F, 0x0C9F}, {0xA0, 0x0CA0}}},
        {18857, {{0xA1, 0x0204}, {0xA2, 0x010B}, {0xA4, 0x0CA4}}},
        {18858, {{0xAF, 0x0626}}},
    };
    for (const auto &row : rows)
        for (const auto &[byte, kx] : row.entries)
            EXPECT_EQ(range_entries(page_of(row.page).high()).at(byte), kx) << row.page << ' ' << std::hex << byte;
    EXPECT_EQ(range_entries(page_of(1004).high()), range_entries(page_of(1252).high()));
}

TEST(KxNames, FirstAndLastOfTheSets) {
    EXPECT_EQ(tables::kx_name(0x0100), "COMBINING GRAVE ACCENT");
    EXPECT_EQ(tables::kx_name(0x0129), "LATIN SMALL LETTER E WITH ACUTE");
    EXPECT_EQ(tables::kx_name(0x0B3E), "HALFWIDTH KATAKANA SEMI-VOICED SOUND MARK");
    EXPECT_NE(tables::kx_name(0x0EDB), "");
    for (const KxChar nameless : std::initializer_list<KxChar>{0x0041, 0x01F2, 0x0B3F, 0x0C41, 0x0EDC, 0x0F00, 0xFFFF})
        EXPECT_EQ(tables::kx_name(nameless), "") << std::hex << nameless;
}

} // namespace
