#include <optional>

#include "platform/system.h"
#include "support/test.h"

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
        const std::size_t size = from_wide(page, static_cast<std::uint16_t>(unit)).count;
        if (size == 0) continue;
        ++count;
        EXPECT_EQ(size, code_of(page, unit) > 0xFF ? 2u : 1u) << page << std::hex << ' ' << unit;
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
            EXPECT_TRUE(!is_lead(page, byte) || unit_of(page.number, byte) == page.default_unit) << "no trail byte";
        }
    }
    for (const std::uint32_t page : {0u, 437u, 934u, 1252u, 65536u + 932u}) {
        test::run_on({.ansi = page, .double_byte = true});
        for (unsigned byte = 0; byte <= 0xFF; ++byte)
            EXPECT_FALSE(platform::is_lead_byte(static_cast<std::uint8_t>(byte))) << page;
    }
}

TEST(Conversions, TellingCodes) {
    const auto rows = reference::read_rows("../tests/platform/windows_codes.txt");
    EXPECT_EQ(rows.size(), 37u);
    for (const auto &row : rows) {
        const auto page = static_cast<std::uint32_t>(std::stoul(row[0]));
        const auto code = static_cast<unsigned>(std::stoul(row[1], nullptr, 16));
        const auto unit = static_cast<unsigned>(std::stoul(row[2], nullptr, 16));
        EXPECT_EQ(unit_of(page, code), unit) << row[0] << ' ' << row[1];
        EXPECT_EQ(code_of(page, unit), code) << row[0] << ' ' << row[2];
    }
    EXPECT_EQ(code_of(932, *unit_of(932, 0xFA4A)), 0x8754u) << "the IBM copy of row 13";
    EXPECT_EQ(code_of(932, *unit_of(932, 0xED40)), 0xFA5Cu) << "the copy that NEC chose";
    EXPECT_EQ(code_of(950, *unit_of(950, 0xA2A4)), 0xF9F9u) << "the first of two";
    for (const unsigned unit : {0x00E9u, 0x2014u, 0xD800u, 0xFFFDu, 0xFFFFu})
        EXPECT_EQ(code_of(932, unit), 0u) << "no best fit for " << std::hex << unit;
}

TEST(Conversions, NothingForUnknownPagesAndOtherLengths) {
    const std::uint8_t bytes[] = {0x82, 0xA0, 0x41};
    for (const std::uint32_t page : {0u, 333u, 934u, 19000u, 65001u, 65536u + 932u}) {
        EXPECT_FALSE(to_wide(page, std::span(bytes).last(1))) << page;
        EXPECT_EQ(from_wide(page, 0x41).count, 0) << page;
    }
    EXPECT_FALSE(to_wide(932, {}));
    EXPECT_FALSE(to_wide(932, bytes));
}
