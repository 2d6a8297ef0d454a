// What is known about the character set, the Unicode tables and the code pages, whatever file they were made from.
#include "tables/code_pages.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <set>

#include "frame/bytes.h"
#include "frame/validity.h"
#include "reference/data_files.h"
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

Map pair_map() {
    Map map;
    for (const auto &[unicode, kx] : kUnicodeToKx)
        map[unicode] = kx;
    return map;
}

TEST(UnicodePairs, AscendAndShareCharactersAsOftenAsKnown) {
    EXPECT_TRUE(std::ranges::is_sorted(kUnicodeToKx, std::ranges::less_equal{}, &tables::UnicodePair::unicode));
    EXPECT_EQ(pair_map().size(), 2245u);
    EXPECT_EQ(kUnicodeToKx.front().unicode, 0x00A0);
    EXPECT_EQ(kUnicodeToKx.back().unicode, 0xFF9F);
    Map keys_of;
    for (const auto &[unicode, kx] : kUnicodeToKx)
        ++keys_of[kx];
    Map characters_by_keys;
    for (const auto &[kx, keys] : keys_of)
        ++characters_by_keys[keys];
    EXPECT_EQ(characters_by_keys, (Map{{1, 2164 - 79}, {2, 77}, {3, 2}})); // two triples make 2245 of 2164 and 79
    EXPECT_TRUE(std::ranges::all_of(kUnicodeToKx, [](const auto &pair) { return frame::is_valid(pair.kx, false); }));
}

TEST(UnicodePairs, SpreadOverUnicodeAndTheSets) {
    const struct {
        unsigned first, last;
        Map keys_by_set;
    } ranges[] = {
        {0x0000, 0x009F, {}},
        {0x00A0, 0x00FF, {{1, 68}, {4, 20}, {6, 5}, {12, 3}}},
        {0x0100, 0x024F, {{1, 135}, {4, 1}, {6, 1}, {10, 1}}},
        {0x0250, 0x02FF, {{1, 7}, {2, 112}}},
        {0x0300, 0x036F, {{1, 12}, {2, 26}, {6, 1}, {8, 3}, {10, 1}}},
        {0x0370, 0x03FF, {{8, 87}}},
        {0x0400, 0x04FF, {{10, 140}}},
        {0x0500, 0x058F, {}},
        {0x0590, 0x05FF, {{9, 51}}},
        {0x0600, 0x06FF, {{13, 61}, {14, 54}}},
        {0x0700, 0x1FFF, {{1, 3}, {8, 83}, {10, 41}}},
        {0x2000, 0x206F, {{2, 1}, {4, 19}, {5, 4}, {6, 3}}},
        {0x2070, 0x20CF, {{4, 10}, {9, 1}}},
        {0x20D0, 0x2BFF, {{3, 88}, {4, 31}, {5, 215}, {6, 200}, {7, 4}}},
        {0x2C00, 0x2FFF, {}},
        {0x3000, 0x9FFF, {{6, 3}}},
        {0xA000, 0xDFFF, {}},
        {0xE000,
         0xF8FF,
         {{1, 18}, {2, 4}, {4, 16}, {5, 24}, {6, 18}, {7, 226}, {8, 43}, {9, 67}, {10, 58}, {13, 26}, {14, 38}}},
        {0xF900, 0xFEFF, {{4, 5}, {9, 1}, {13, 143}}},
        {0xFF00, 0xFFEF, {{11, 63}}},
        {0xFFF0, 0xFFFF, {}},
    };
    for (const auto &range : ranges) {
        Map found;
        for (const auto &[unicode, kx] : kUnicodeToKx)
            if (unicode >= range.first && unicode <= range.last) ++found[kx >> 8];
        EXPECT_EQ(found, range.keys_by_set) << std::hex << range.first;
    }
}

TEST(UnicodePairs, TellingRows) {
    Map pairs = pair_map();
    const Map rows{{0x00A0, 0x0CA0}, {0x00A6, 0x0C7C}, {0x00AD, 0x0C2D}, {0x00A1, 0x0407}, {0x00A5, 0x040C},
                   {0x00A8, 0x0107}, {0x00E9, 0x0129}, {0x0391, 0x0800}, {0x03B1, 0x0801}, {0x0410, 0x0A00},
                   {0x05D0, 0x0900}, {0x2022, 0x0403}, {0x20AC, 0x0448}, {0x25CF, 0x042C}, {0x3007, 0x068F},
                   {0x301A, 0x0661}, {0x301B, 0x0662}};
    for (const auto &[unicode, kx] : rows)
        EXPECT_EQ(pairs[unicode], kx) << std::hex << unicode;
    for (unsigned i = 0; i < 16; ++i)
        EXPECT_EQ(pairs[0xF000 + i], 0x01D4 + i);
    for (unsigned i = 0; i < 63; ++i)
        EXPECT_EQ(pairs[0xFF61 + i], 0x0B00 + i);
}

TEST(UnicodeOfSets, EveryCharacterHasAValueAndPrivateOnesComeBack) {
    const Map pairs = pair_map();
    unsigned characters = 0, private_use = 0;
    for (unsigned set = 0; set < kKxToUnicode.size(); ++set) {
        const auto values = kKxToUnicode[set];
        const bool by_rule = set == 0 || set == 12;
        EXPECT_EQ(values.size(), by_rule ? 0u : frame::kSetRanges[set].last + 1u) << set;
        characters += static_cast<unsigned>(values.size());
        for (unsigned i = 0; i < values.size(); ++i) {
            EXPECT_TRUE(values[i] != 0 && values[i] != 0xFFFF) << set << ' ' << i;
            if (!is_private_use(values[i])) continue;
            ++private_use;
            EXPECT_EQ(pairs.at(values[i]), set * 256 + i);
        }
    }
    EXPECT_EQ(characters, 2370u);
    EXPECT_EQ(private_use, 520u);
    EXPECT_EQ(std::ranges::count_if(kKxToUnicode[7], is_private_use), 226);
    const Map rows{{0x0100, 0x0300}, {0x0183, 0x0069}, {0x0300, 0x2591}, {0x0400, 0x25CF}, {0x0800, 0x0391},
                   {0x0801, 0x03B1}, {0x0802, 0x0392}, {0x0803, 0x03B2}, {0x0900, 0x05D0}, {0x097A, 0x20AA},
                   {0x0A00, 0x0410}, {0x0A01, 0x0430}, {0x0A02, 0x0411}, {0x0A03, 0x0431}, {0x0B00, 0xFF61},
                   {0x0B3E, 0xFF9F}, {0x0D00, 0xF895}, {0x0E00, 0xF8B6}};
    for (const auto &[kx, unicode] : rows)
        EXPECT_EQ(kKxToUnicode[kx >> 8][kx & 0xFF], unicode) << std::hex << kx;
}

// ---- Code pages ----

Map range_entries(const std::uint8_t *table) {
    Map entries;
    if (table == nullptr) return entries;
    for (unsigned byte = table[0]; byte <= table[1]; ++byte)
        entries[byte] = load_u16le(&table[2 + 2 * (byte - table[0])]);
    return entries;
}

struct PageRow {
    unsigned kx_number, windows_number;
    bool has_low;
    unsigned first, last, reverse_entries;
};

constexpr PageRow kPageRows[] = {
    {10001, 10001, true, 0x80, 0xFF, 155},  {333, 333, true, 0x7F, 0xFE, 159},
    {437, 437, true, 0x7F, 0xFE, 159},      {708, 708, true, 0x7F, 0xFE, 146},
    {710, 710, true, 0x7F, 0xFE, 159},      {737, 737, true, 0x7F, 0xFE, 159},
    {775, 775, true, 0x7F, 0xFE, 155},      {850, 850, true, 0x7F, 0xFE, 155},
    {851, 851, true, 0x7F, 0xFE, 156},      {8510, 8510, true, 0x7F, 0xFE, 156},
    {852, 852, true, 0x7F, 0xFE, 157},      {853, 853, true, 0x7F, 0xFE, 150},
    {855, 855, true, 0x7F, 0xFE, 157},      {857, 857, true, 0x7F, 0xFE, 152},
    {860, 860, true, 0x7F, 0xFE, 159},      {8600, 8600, true, 0x7F, 0xFE, 159},
    {8601, 8601, true, 0x7F, 0xFE, 159},    {861, 861, true, 0x7F, 0xFE, 159},
    {862, 862, true, 0x7F, 0xFE, 159},      {863, 863, true, 0x7F, 0xFE, 156},
    {864, 864, true, 0x7F, 0xFE, 149},      {865, 865, true, 0x7F, 0xFE, 159},
    {866, 866, true, 0x7F, 0xFE, 159},      {8660, 8660, true, 0x7F, 0xFE, 159},
    {869, 869, true, 0x7F, 0xFE, 147},      {895, 895, true, 0x7F, 0xFE, 159},
    {896, 896, true, 0x7F, 0xFE, 158},      {897, 897, true, 0x7F, 0xFE, 158},
    {932, 932, false, 0xA1, 0xDF, 63},      {1004, 1004, false, 0x80, 0xFF, 120},
    {1250, 1250, false, 0x80, 0xFF, 120},   {1251, 1251, false, 0x80, 0xFF, 124},
    {1252, 1252, false, 0x80, 0xFF, 120},   {1253, 1253, false, 0x80, 0xFF, 108},
    {1254, 1254, false, 0x80, 0xFF, 118},   {1255, 1255, false, 0x80, 0xFF, 99},
    {1256, 1256, false, 0x80, 0xFF, 119},   {1257, 1257, false, 0x80, 0xFF, 113},
    {1258, 1258, false, 0x80, 0xFF, 114},   {18851, 28591, false, 0x7F, 0xFF, 93},
    {18852, 28592, false, 0x7F, 0xFF, 94},  {18856, 28596, false, 0x7F, 0xFF, 49},
    {18857, 28597, false, 0x7F, 0xFF, 87},  {18858, 28598, false, 0x7F, 0xFF, 55},
    {19000, 19000, false, 0x7F, 0xFF, 108}, {19001, 19001, false, 0x7F, 0xFF, 45},
};

TEST(CodePages, OrderNumbersRangesAndReverseCounts) {
    ASSERT_EQ(std::size(kPageRows), tables::kCodePages.size());
    for (std::size_t i = 0; i < std::size(kPageRows); ++i) {
        const PageRow &want = kPageRows[i];
        const tables::CodePage &page = tables::kCodePages[i];
        EXPECT_EQ(page.kx_number, want.kx_number);
        EXPECT_EQ(page.windows_number, want.windows_number);
        EXPECT_EQ(page.low != nullptr, want.has_low) << want.kx_number;
        EXPECT_EQ(page.high[0], want.first) << want.kx_number;
        EXPECT_EQ(page.high[1], want.last) << want.kx_number;
        EXPECT_EQ(load_u16le(page.reverse), want.reverse_entries) << want.kx_number;
    }
}

TEST(CodePages, TablesHoldWhatThePublishedMappingsGiveAndReversesInvertThem) {
    const auto pages = reference::pages();
    ASSERT_EQ(pages.size(), tables::kCodePages.size());
    for (std::size_t i = 0; i < pages.size(); ++i) {
        const tables::CodePage &page = tables::kCodePages[i];
        EXPECT_EQ(range_entries(page.low), pages[i].low) << page.kx_number;
        EXPECT_EQ(range_entries(page.high), pages[i].high) << page.kx_number;
        Map reverse;
        for (unsigned k = 0; k < load_u16le(page.reverse); ++k) {
            const unsigned kx = load_u16le(&page.reverse[2 + 3 * k]);
            EXPECT_TRUE(reverse.empty() || reverse.rbegin()->first < kx) << page.kx_number;
            reverse[kx] = page.reverse[4 + 3 * k];
        }
        EXPECT_EQ(reverse, pages[i].reverse) << page.kx_number;
    }
}

TEST(CodePages, LowTables) {
    const KxChar common[] = {0x0507, 0x0508, 0x05AA, 0x05A9, 0x05A8, 0x05AB, 0x0403, 0x0512, 0x0401, 0x0513, 0x0504,
                             0x0505, 0x0509, 0x050A, 0x0506, 0x061B, 0x061C, 0x061A, 0x050D, 0x0405, 0x0406, 0x050B,
                             0x050F, 0x0617, 0x0618, 0x0615, 0x0616, 0x0511, 0x0619, 0x061D, 0x061E};
    Map low, greek;
    for (unsigned byte = 1; byte < 32; ++byte)
        low[byte] = common[byte - 1];
    greek = {{0x01, 0x0834}, {0x02, 0x0836}, {0x03, 0x0838}, {0x04, 0x083A}, {0x05, 0x083E},
             {0x06, 0x0840}, {0x07, 0x0624}, {0x16, 0x040B}, {0x17, 0x0844}, {0x1C, 0x012C}};
    greek.insert(low.begin(), low.end());
    for (const auto &page : tables::kCodePages) {
        if (page.low == nullptr) continue;
        EXPECT_EQ(range_entries(page.low), page.kx_number == 333 ? greek : low) << page.kx_number;
    }
}

TEST(CodePages, TellingEntries) {
    const struct {
        unsigned page;
        Map entries;
    } rows[] = {
        {437, {{0x7F, 0x050C}, {0xE6, 0x0625}, {0xEA, 0x0832}, {0xFA, 0x0101}}},
        {850, {{0xDD, 0x007C}, {0xF0, 0x002D}}},
        {857, {{0xD5, 0x0CD5}, {0xE7, 0x0CE7}, {0xF2, 0x0CF2}}},
        {866, {{0xFD, 0x0418}}},
        {932, {{0xA1, 0x0B00}, {0xDF, 0x0B3E}}},
        {1250, {{0x80, 0x0448}, {0xA6, 0x007C}, {0xAD, 0x002D}}},
        {1251, {{0x88, 0x0448}}},
        {1252, {{0x80, 0x0448}, {0x81, 0x0C81}, {0xA5, 0x040C}, {0xE9, 0x0129}}},
        {10001, {{0xA5, 0x0622}, {0xC6, 0x0808}, {0xC9, 0x06DC}, {0xDB, 0x0418}, {0xF6, 0x0217}, {0xF7, 0x0219}}},
        {18851, {{0x7F, 0x0C7F}, {0x80, 0x0C80}, {0x9F, 0x0C9F}, {0xA0, 0x0CA0}}},
        {18857, {{0xA1, 0x0204}, {0xA2, 0x010B}, {0xA4, 0x0CA4}}},
        {18858, {{0xAF, 0x0626}}},
    };
    for (const auto &row : rows) {
        const auto page = std::ranges::find(tables::kCodePages, row.page, &tables::CodePage::kx_number);
        for (const auto &[byte, kx] : row.entries)
            EXPECT_EQ(range_entries(page->high).at(byte), kx) << row.page << ' ' << std::hex << byte;
    }
    const auto &pages = tables::kCodePages;
    EXPECT_EQ(range_entries(std::ranges::find(pages, 1004u, &tables::CodePage::kx_number)->high),
              range_entries(std::ranges::find(pages, 1252u, &tables::CodePage::kx_number)->high));
}

TEST(KxNames, FirstAndLastOfTheSets) {
    const struct {
        KxChar ch;
        std::string_view name;
    } cases[] = {
        {0x0100, "COMBINING GRAVE ACCENT"},
        {0x0129, "LATIN SMALL LETTER E WITH ACUTE"},
        {0x01F2, ""},
        {0x0B3E, "HALFWIDTH KATAKANA SEMI-VOICED SOUND MARK"},
        {0x0B3F, ""},
        {0x0041, ""},
        {0x0C41, ""},
        {0x0F00, ""},
        {0xFFFF, ""},
    };
    for (const auto &c : cases)
        EXPECT_EQ(tables::kx_name(c.ch), c.name) << std::hex << c.ch;
    EXPECT_FALSE(tables::kx_name(0x0EDB).empty());
    EXPECT_TRUE(tables::kx_name(0x0EDC).empty());
}

} // namespace
