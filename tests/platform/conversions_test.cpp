#include <bitset>
#include <gtest/gtest.h>
#include <optional>

#include "platform/system.h"
#include "support/process_state.h"

using namespace kxstr;
using platform::from_wide;
using platform::to_wide;

namespace {

constexpr std::uint32_t kSingleBytePages[] = {437,  708,  737,  775,  850,   852,   855,   857,   860,   861,  862,
                                              863,  864,  865,  866,  869,   874,   1250,  1251,  1252,  1253, 1254,
                                              1255, 1256, 1257, 1258, 10001, 28591, 28592, 28596, 28597, 28598};

struct DoubleBytePage {
    std::uint32_t number;
    std::uint8_t lead_ranges[2][2];
    std::uint16_t default_unit;
    unsigned units; // that have a code
    unsigned codes; // pairs with a character, counted apart where two share one
};

constexpr DoubleBytePage kDoubleBytePages[] = {
    {932, {{0x81, 0x9F}, {0xE0, 0xFC}}, 0x30FB, 9402, 9604},
    {936, {{0x81, 0xFE}, {0x81, 0xFE}}, 0x003F, 24070, 23940},
    {949, {{0x81, 0xFE}, {0x81, 0xFE}}, 0x003F, 17366, 17236},
    {950, {{0x81, 0xFE}, {0x81, 0xFE}}, 0x003F, 19840, 19720},
};

bool is_lead(const DoubleBytePage &page, unsigned byte) {
    const auto &[low, high] = page.lead_ranges;
    return (byte >= low[0] && byte <= low[1]) || (byte >= high[0] && byte <= high[1]);
}

// The unit of a code written as one number, a lead byte high.
std::optional<std::uint16_t> unit_of(std::uint32_t page, unsigned code) {
    const std::uint8_t bytes[] = {static_cast<std::uint8_t>(code >> 8), static_cast<std::uint8_t>(code)};
    return to_wide(page, std::span(bytes).last(code > 0xFF ? 2 : 1));
}

// 0 when there is none; unit 0 aside.
unsigned code_of(std::uint32_t page, unsigned unit) {
    const auto native = from_wide(page, static_cast<std::uint16_t>(unit));
    if (native.count < 2) return native.count == 0 ? 0 : native.bytes[0];
    return static_cast<unsigned>(native.bytes[0] << 8 | native.bytes[1]);
}

// How many units have a code; each comes back from it.
unsigned count_round_trips(std::uint32_t page) {
    unsigned count = 0;
    for (unsigned unit = 0; unit <= 0xFFFF; ++unit) {
        if (from_wide(page, static_cast<std::uint16_t>(unit)).count == 0) continue;
        ++count;
        EXPECT_EQ(unit_of(page, code_of(page, unit)), unit) << page << std::hex << ' ' << unit;
    }
    return count;
}

} // namespace

TEST(Conversions, SingleBytePagesConvertEveryByteAndBack) {
    for (const std::uint32_t page : kSingleBytePages) {
        EXPECT_EQ(count_round_trips(page), 0x100u) << page;
        for (unsigned byte = 0; byte <= 0xFF; ++byte) {
            const auto unit = unit_of(page, byte);
            ASSERT_TRUE(unit) << page << ' ' << byte;
            EXPECT_TRUE(byte >= 0x80 || *unit == byte) << page;
            EXPECT_EQ(code_of(page, *unit), byte) << page;
            const std::uint8_t two_units[] = {static_cast<std::uint8_t>(byte), 0xA1};
            EXPECT_FALSE(to_wide(page, two_units)) << page;
        }
    }
}

TEST(Conversions, DoubleBytePagesConvertEveryUnitAndBack) {
    for (const auto &page : kDoubleBytePages) {
        EXPECT_EQ(count_round_trips(page.number), page.units) << page.number;
        unsigned codes = 0;
        for (unsigned code = 0x100; code <= 0xFFFF; ++code) {
            const auto unit = unit_of(page.number, code);
            const bool one_unit = is_lead(page, code >> 8) && (code & 0xFF) != 0;
            ASSERT_EQ(unit.has_value(), one_unit) << page.number << std::hex << ' ' << code;
            if (!unit || (*unit == page.default_unit && code_of(page.number, *unit) != code)) continue;
            ++codes;
            EXPECT_NE(code_of(page.number, *unit), 0u) << page.number << std::hex << ' ' << code;
        }
        EXPECT_EQ(codes, page.codes) << page.number;
    }
}

TEST(Conversions, LeadBytesFollowTheAnsiCodePageOfTheMoment) {
    for (const auto &page : kDoubleBytePages) {
        test::run_on({.ansi = page.number, .double_byte = false}); // whatever the double-byte flag says
        for (unsigned byte = 0; byte <= 0xFF; ++byte) {
            EXPECT_EQ(platform::is_lead_byte(static_cast<std::uint8_t>(byte)), is_lead(page, byte)) << byte;
            if (!is_lead(page, byte)) continue;
            EXPECT_EQ(unit_of(page.number, byte), page.default_unit) << "without a trail byte";
        }
    }
    for (const std::uint32_t page : {0u, 437u, 934u, 938u, 1252u, 10001u, 65535u, 65536u + 932u}) {
        test::run_on({.ansi = page, .double_byte = true});
        for (unsigned byte = 0; byte <= 0xFF; ++byte)
            EXPECT_FALSE(platform::is_lead_byte(static_cast<std::uint8_t>(byte))) << page;
    }
}

TEST(Conversions, TellingCodes) {
    const struct {
        const char *why;
        std::uint32_t page;
        unsigned code;
        std::uint16_t unit;
    } cases[] = {
        {"undefined, passed through", 1252, 0x81, 0x0081},
        {"the euro", 1252, 0x80, 0x20AC},
        {"undefined, private", 1253, 0xAA, 0xF8F9},
        {"undefined, private", 1253, 0xFF, 0xF8FB},
        {"undefined, private", 1255, 0xD9, 0xF88D},
        {"a point that the published table lacks", 1255, 0xCA, 0x05BA},
        {"undefined, private", 1257, 0xA1, 0xF8FC},
        {"undefined, private", 857, 0xE7, 0xF8BC},
        {"undefined, private", 864, 0xFF, 0xF8C0},
        {"the percent sign stays one", 864, 0x25, 0x0025},
        {"last before the private units", 708, 0xF2, 0x0652},
        {"the first edition of the standard", 28597, 0xA1, 0x02BD},
        {"which had no euro", 28597, 0xA4, 0xF7C2},
        {"no directional marks", 28598, 0xFD, 0xF7BF},
        {"the currency sign of the Roman page", 10001, 0xDB, 0x00A4},
        {"backslash, whatever it looks like", 932, 0x5C, 0x005C},
        {"kana", 932, 0xB1, 0xFF71},
        {"lone", 932, 0x80, 0x0080},
        {"lone", 932, 0xA0, 0xF8F0},
        {"lone", 932, 0xFD, 0xF8F1},
        {"lone", 932, 0xFF, 0xF8F3},
        {"hiragana", 932, 0x82A0, 0x3042},
        {"the default unit has a code too", 932, 0x8145, 0x30FB},
        {"first user-defined row", 932, 0xF040, 0xE000},
        {"last user-defined row", 932, 0xF9FC, 0xE757},
        {"row 13 before the IBM copy", 932, 0x8754, 0x2160},
        {"IBM before the copy that NEC chose", 932, 0xFA5C, 0x7E8A},
        {"last of the IBM rows", 932, 0xFC4B, 0x9ED1},
        {"the euro byte", 936, 0x80, 0x20AC},
        {"lone", 936, 0xFF, 0xF8F5},
        {"below the old set", 936, 0x8140, 0x4E02},
        {"the old set", 936, 0xB0A1, 0x554A},
        {"user-defined", 936, 0xAAA1, 0xE000},
        {"user-defined", 936, 0xF8A1, 0xE234},
        {"user-defined, no trail byte 7F", 936, 0xA180, 0xE505},
        {"a gap in the symbols", 936, 0xA2AB, 0xE766},
        {"the last of all", 936, 0xFEA0, 0xE864},
        {"lone", 949, 0x80, 0x0080},
        {"lone", 949, 0xFF, 0xF8F7},
        {"hangul outside the old set", 949, 0x8141, 0xAC02},
        {"hangul of the old set", 949, 0xB0A1, 0xAC00},
        {"user-defined", 949, 0xC9A1, 0xE000},
        {"user-defined", 949, 0xFEFE, 0xE0BB},
        {"lone", 950, 0xFF, 0xF8F8},
        {"ideograph", 950, 0xA440, 0x4E00},
        {"user-defined", 950, 0xFA40, 0xE000},
        {"user-defined", 950, 0x8E40, 0xE311},
        {"user-defined", 950, 0x8140, 0xEEB8},
        {"user-defined from the middle of a row", 950, 0xC6A1, 0xF6B1},
        {"the second of two", 950, 0xF9F9, 0x2550},
        {"the second of two", 950, 0xA451, 0x5341},
    };
    for (const auto &c : cases) {
        EXPECT_EQ(unit_of(c.page, c.code), c.unit) << c.why << ' ' << c.page << std::hex << ' ' << c.code;
        EXPECT_EQ(code_of(c.page, c.unit), c.code) << c.why << ' ' << c.page << std::hex << ' ' << c.unit;
    }
    const struct {
        const char *why;
        std::uint32_t page;
        unsigned code, back; // back 0: none
    } others[] = {
        {"the IBM copy of row 13", 932, 0xFA4A, 0x8754},
        {"the copy that NEC chose", 932, 0xED40, 0xFA5C},
        {"the first of two", 950, 0xA2A4, 0xF9F9},
    };
    for (const auto &c : others)
        EXPECT_EQ(code_of(c.page, *unit_of(c.page, c.code)), c.back) << c.why;
    for (const unsigned unit : {0x00E9u, 0x2014u, 0xD800u, 0xFFFFu, 0xFFFDu})
        EXPECT_EQ(code_of(932, unit), 0u) << "no best fit for " << std::hex << unit;
}

TEST(Conversions, NothingForUnknownPagesAndOtherLengths) {
    const std::uint8_t bytes[] = {0x82, 0xA0, 0x41};
    for (const std::uint32_t page : {0u, 333u, 710u, 851u, 895u, 934u, 938u, 1004u, 8510u, 19000u, 65001u, 66468u}) {
        for (std::size_t count = 0; count <= 3; ++count)
            EXPECT_FALSE(to_wide(page, std::span(bytes).first(count)));
        EXPECT_EQ(from_wide(page, 0x41).count, 0) << page;
    }
    EXPECT_FALSE(to_wide(932, {}));
    EXPECT_FALSE(to_wide(932, bytes));
}
