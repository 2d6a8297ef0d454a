#include <gtest/gtest.h>
#include <kxstr/unicode.h>
#include <vector>

#include "reference/conversions.h"
#include "support/process_state.h"

namespace {

using namespace kxstr;
using test::kJapanese;
using test::kWestern;
using test::run_on;
using test::runs_on;
using Units = std::vector<std::uint16_t>;

TEST(UnicodeMap, EveryValueAsThePlainVersionOnEveryKindOfCodePage) {
    const auto pairs = reference::unicode_to_kx(), values = reference::kx_to_unicode();
    ASSERT_EQ(pairs.size(), 2245u);
    ASSERT_EQ(values.size(), 2370u);
    for (const unsigned ansi : {1252u, 1251u, 1255u, 437u, 932u, 934u, 936u, 938u, 949u, 950u}) {
        // The double-byte flag plays no part here; give it the wrong answer where it can be chosen.
        if (!runs_on({ansi, 437, ansi > 1000}) && !runs_on(test::system_of(ansi))) continue;
        for (unsigned value = 0; value <= 0xFFFF; ++value) {
            const unsigned argument = 0xA5A50000u | value;
            ASSERT_EQ(YWcharUnicodeToKX6x(argument), reference::unicode_to_kx(pairs, value, ansi))
                << ansi << ' ' << std::hex << value;
            ASSERT_EQ(YWcharKX6xToUnicode(argument), reference::kx_to_unicode(values, value, ansi))
                << ansi << ' ' << std::hex << value;
            const auto pair = pairs.find(value);
            ASSERT_EQ(GetKXCCHARValue(argument), pair != pairs.end() ? pair->second : reference::kNone);
            // By set and index: as the character, but never through the double-byte rules.
            const unsigned unicode = value < 0x1000 ? reference::kx_to_unicode(values, value, ansi) : reference::kNone;
            ASSERT_EQ(GetUnicodeValue(0xA500 | value >> 8, argument), unicode != reference::kNone ? unicode : 0)
                << ansi << ' ' << std::hex << value;
        }
    }
}

struct Row {
    unsigned ansi, from, to;
};

constexpr Row kToKx[] = {
    {1252, 0x0000, 0x0000}, {1252, 0x007E, 0x007E}, {1252, 0x007F, 0xFFFF}, {1252, 0x0080, 0xFFFF},
    {1252, 0x009F, 0xFFFF}, {932, 0x0080, 0xFFFF},  {1252, 0x00A0, 0x0CA0}, {1252, 0x3007, 0x068F},
    {1252, 0x3042, 0xFFFF}, {932, 0x3042, 0x255F},  {932, 0xFF71, 0x0B10},  {932, 0x01CD, 0xFFFF},
    {932, 0xFF21, 0x2520},  {936, 0x3007, 0xFFFF},  {932, 0x3007, 0x241A},  {949, 0xAC00, 0x5A5E},
    {950, 0x4E00, 0xA6D8},
};

constexpr Row kFromKx[] = {
    {1252, 0x0041, 0x0041}, {1252, 0x0C41, 0x0041}, {1252, 0x0CA0, 0x00A0}, {1252, 0x0C2D, 0x002D},
    {1252, 0x0C80, 0x20AC}, {1251, 0x0CC0, 0x0410}, {1252, 0x05FF, 0xFFFF}, {1252, 0x0F41, 0xFFFF},
    {1252, 0x255F, 0xFFFF}, {932, 0x255F, 0x3042},  {932, 0x23FF, 0xFFFF},  {932, 0xE000, 0xFFFF},
    {932, 0xF909, 0xFFFF},  {949, 0x5A5E, 0xAC00},  {950, 0xA6D8, 0x4E00},  {932, 0x0CB1, 0xFF71},
};

TEST(UnicodeMap, TellingRows) {
    for (const Row &row : kToKx) {
        if (!runs_on({row.ansi}) && !runs_on(test::system_of(row.ansi))) continue;
        EXPECT_EQ(YWcharUnicodeToKX6x(row.from), row.to) << row.ansi << ' ' << std::hex << row.from;
    }
    for (const Row &row : kFromKx) {
        if (!runs_on({row.ansi}) && !runs_on(test::system_of(row.ansi))) continue;
        EXPECT_EQ(YWcharKX6xToUnicode(row.from), row.to) << row.ansi << ' ' << std::hex << row.from;
    }
    if (!runs_on(kJapanese)) return;
    EXPECT_EQ(GetUnicodeValue(0, 0x41), 0x0041u);
    EXPECT_EQ(GetUnicodeValue(0x25, 0x5F), 0u);
    EXPECT_EQ(GetKXCCHARValue(0x41), 0xFFFFu);
}

TEST(UnicodeMap, StringsEndAtAStoredZeroOrAtTheSmallerLimit) {
    run_on(kWestern);
    const struct {
        const char *why;
        bool to_kx;
        Units source;
        std::uint32_t source_limit, destination_limit;
        Units stored;
    } cases[] = {
        {"the zero is stored and counted", true, {0x41, 0x42, 0}, 9, 3, {0x41, 0x42, 0}},
        {"no terminator at a limit", true, {0x41, 0x42}, 2, 9, {0x41, 0x42}},
        {"destination limit", true, {0x41, 0x42}, 9, 2, {0x41, 0x42}},
        {"no source", true, {}, 0, 9, {}},
        {"no room", true, {}, 9, 0, {}},
        {"unconvertible units are stored", true, {0x7F, 0xE9, 0}, 9, 9, {0xFFFF, 0x0129, 0}},
        {"surrogates stay apart", true, {0xD83D, 0xDE00, 0}, 9, 9, {0xFFFF, 0xFFFF, 0}},
        {"and back", false, {0x0129, 0xF90A, 0}, 9, 9, {0xE9, 0xFFFF, 0}},
        {"KX 0C00 gives a zero", false, {0x41, 0x0C00}, 9, 9, {0x41, 0}},
    };
    for (const auto &c : cases) {
        // The source ends where the conversion must stop, and the destination has no unit too many.
        Units stored(c.stored.size());
        const auto convert = c.to_kx ? YWstrUnicodeToKX6x : YWstrKX6xToUnicode;
        EXPECT_EQ(convert(c.source.data(), c.source_limit, stored.data(), c.destination_limit), c.stored.size())
            << c.why;
        EXPECT_EQ(stored, c.stored) << c.why;
    }
}

} // namespace
