#include <kxstr/unicode.h>

#include "core/kx_char.h"
#include "support/test.h"

namespace {

using namespace kxstr;
using namespace kxstr::test;
using Units = std::vector<std::uint16_t>;

unsigned look_up(const reference::Map &map, unsigned key) {
    const auto found = map.find(key);
    return found != map.end() ? found->second : kNone;
}

TEST(UnicodeMap, TablesAloneWithoutDoubleByteRules) {
    const auto pairs = reference::unicode_to_kx(), values = reference::kx_to_unicode();
    run_on(kWestern);
    for (unsigned value = 0; value <= 0xFFFF; ++value) {
        SCOPED_TRACE(testing::Message() << std::hex << value);
        const unsigned argument = 0xA5A50000u | value;
        ASSERT_EQ(GetKXCCHARValue(argument), look_up(pairs, value));
        ASSERT_EQ(YWcharUnicodeToKX6x(argument), value < 0x7F ? value : look_up(pairs, value));
        const unsigned set = value >> 8;
        if (set == 0 || set == 12) continue; // native bytes, for which the system is asked
        ASSERT_EQ(YWcharKX6xToUnicode(argument), look_up(values, value));
        const unsigned by_index = GetUnicodeValue(0xA500 | set, argument);
        ASSERT_EQ(by_index, values.contains(value) ? values.at(value) : 0);
    }
}

TEST(UnicodeMap, DoubleByteCharactersComeBack) {
    for (const System &system : {kJapanese, kKorean, kTraditionalChinese, kSimplifiedChinese}) {
        if (!runs_on(system)) continue;
        unsigned characters = 0;
        for (unsigned ch = 0x2400; ch <= 0xFFFF; ++ch) {
            const unsigned unicode = YWcharKX6xToUnicode(ch);
            if (unicode == kNone) continue;
            ++characters;
            // The table of pairs can lead to another set; and some code pages hold a character twice.
            const unsigned back = YWcharUnicodeToKX6x(unicode);
            EXPECT_TRUE(back < 0x1000 || YWcharKX6xToUnicode(back) == unicode) << system.ansi << ' ' << std::hex << ch;
        }
        EXPECT_GT(characters, 6000u);
    }
}

struct Row {
    unsigned ansi, from, to;
};

constexpr Row kToKx[] = {
    {1252, 0x3042, 0xFFFF}, {932, 0x0080, 0xFFFF}, {932, 0x3042, 0x255F}, {932, 0xFF71, 0x0B10},
    {932, 0x01CD, 0xFFFF},  {932, 0xFF21, 0x2520}, {936, 0x3007, 0xFFFF}, {932, 0x3007, 0x241A},
    {932, 0x9FA0, 0x4D5D},  {949, 0xAC00, 0x5A5E}, {949, 0x1100, 0xFFFF}, {950, 0x4E00, 0xA6D8},
};

constexpr Row kFromKx[] = {
    {1252, 0x0041, 0x0041}, {934, 0x0C41, 0x0041}, {1252, 0x0C80, 0x20AC}, {1251, 0x0CC0, 0x0410},
    {1252, 0x255F, 0xFFFF}, {932, 0x255F, 0x3042}, {932, 0x23FF, 0xFFFF},  {932, 0xE000, 0xFFFF},
    {932, 0xF909, 0xFFFF},  {949, 0x5A5E, 0xAC00}, {950, 0xA6D8, 0x4E00},  {932, 0x0CB1, 0xFF71},
};

TEST(UnicodeMap, TellingRows) {
    for (const Row &row : kToKx) {
        if (!runs_on(system_of(row.ansi))) continue;
        EXPECT_EQ(YWcharUnicodeToKX6x(row.from), row.to) << row.ansi << ' ' << std::hex << row.from;
    }
    for (const Row &row : kFromKx) {
        if (!runs_on(system_of(row.ansi))) continue;
        EXPECT_EQ(YWcharKX6xToUnicode(row.from), row.to) << row.ansi << ' ' << std::hex << row.from;
    }
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
