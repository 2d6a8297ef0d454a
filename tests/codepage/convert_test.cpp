#include <algorithm>
#include <array>
#include <bitset>
#include <gtest/gtest.h>
#include <kxstr/codepage.h>
#include <memory>

#include "reference/conversions.h"
#include "support/process_state.h"

namespace {

using namespace kxstr;
using test::kJapanese;
using test::kWestern;
using test::run_on;
using test::runs_on;

KxCodePage descriptor(unsigned code_page) {
    KxCodePage page{};
    WcvtSetCodepage(code_page, KX_BOTH_DIRECTIONS, &page);
    return page;
}

TEST(NativeConversion, EveryPageAndValueAsThePlainVersion) {
    auto pages = reference::pages();
    ASSERT_EQ(pages.size(), 46u);
    // Without tables: the remaining double-byte pages, a number between them, one that nobody knows, and none.
    for (const unsigned number : {934u, 936u, 938u, 949u, 950u, 933u, 12345u, 0u})
        pages.push_back({number, {}, {}, {}});
    for (const bool double_byte : {false, true}) {
        if (!runs_on(double_byte ? kJapanese : kWestern)) continue;
        for (const auto &page : pages) {
            const KxCodePage native = descriptor(page.kx_number);
            for (unsigned value = 0; value <= 0xFFFF; ++value) {
                const unsigned argument = 0xA5A50000u | value; // the high half does not count
                ASSERT_EQ(WcvtNtvToKx(&native, argument), reference::native_to_kx(page, value, double_byte))
                    << page.kx_number << ' ' << std::hex << value << ' ' << double_byte;
                ASSERT_EQ(WcvtKxToNtv(&native, argument), reference::kx_to_native(page, value, double_byte))
                    << page.kx_number << ' ' << std::hex << value << ' ' << double_byte;
            }
        }
    }
}

TEST(NativeConversion, EveryDoubleByteCodeComesBackAndNoTwoCollide) {
    run_on(kJapanese);
    const struct {
        unsigned code_page;
        unsigned codes;
    } cases[] = {
        {932, (31 + 16 + 13) * 188}, {934, 94 * 94},         {949, 94 * 94},
        {936, (32 + 94) * 94},       {938, (32 + 94) * 157}, {950, (32 + 94) * 157},
    };
    for (const auto &c : cases) {
        const KxCodePage page = descriptor(c.code_page);
        std::bitset<0x10000> taken;
        for (unsigned code = 0x100; code <= 0xFFFF; ++code) {
            const KxChar kx = WcvtNtvToKx(&page, code);
            if (kx == KX_NONE) continue;
            ASSERT_FALSE(taken.test(kx)) << c.code_page << ' ' << std::hex << code;
            taken.set(kx);
            ASSERT_EQ(WcvtKxToNtv(&page, kx), code) << c.code_page << ' ' << std::hex << kx;
        }
        EXPECT_EQ(taken.count(), c.codes) << c.code_page;
    }
}

struct Row {
    unsigned code_page, from, to;
};

constexpr Row kToKx[] = {
    {1252, 0x09, 0xF909},  {1252, 0x00, 0xFFFF},  {1252, 0x7F, 0xFFFF},  {1252, 0x81, 0x0C81},  {1252, 0xE9, 0x0129},
    {437, 0x09, 0x0401},   {437, 0x00, 0xFFFF},   {437, 0x7F, 0x050C},   {437, 0xFF, 0xFFFF},   {932, 0xB1, 0x0B10},
    {932, 0x82A0, 0x255F}, {932, 0x9FFC, 0x42BB}, {932, 0xE040, 0x4300}, {932, 0xF040, 0x2BBC}, {932, 0xF09F, 0x2CDA},
    {932, 0xFCFC, 0x51C7}, {932, 0x817F, 0xFFFF}, {932, 0xA0A1, 0xFFFF}, {949, 0xA1A1, 0x5300}, {949, 0xA2A1, 0x535E},
    {949, 0xB0A1, 0x5A5E}, {949, 0xFEFE, 0x81BB}, {936, 0xA1A1, 0x8200}, {936, 0xB0A1, 0x8787}, {936, 0xF7FE, 0xA211},
    {936, 0x81A1, 0x2BBC}, {936, 0xA0FE, 0x59FB}, {936, 0x8140, 0xFFFF}, {950, 0xA140, 0xA500}, {950, 0xA1A1, 0xA53F},
    {950, 0xA440, 0xA6D8}, {950, 0xF9FE, 0xDBCA}, {950, 0x8140, 0x2BBC}, {950, 0xA0FE, 0x79DB},
};

constexpr Row kFromKx[] = {
    {1252, 0x0129, 0xE9},
    {1252, 0x0C81, 0x81},
    {1252, 0x0080, 0x20},
    {1252, 0x00E9, 0xE9},
    {1252, 0xF909, 0x09},
    {1252, 0xF90B, 0xFFFF},
    {1252, 0x040C, 0xA5},
    {1252, 0x2400, 0xFFFF},
    {932, 0x040C, 0x5C},
    {932, 0x2400, 0x8140},
    {932, 0x42BB, 0x9FFC},
    {932, 0x4300, 0xE040},
    {932, 0x52BB, 0xEFFC},
    {932, 0x2BBC, 0xF040},
    {932, 0x51C7, 0xFCFC},
    {932, 0x2AFF, 0xFFFF},
    {932, 0x0B00, 0xA1},
    {949, 0x0456, 0x5C},
    {949, 0x5A5E, 0xB0A1},
    {949, 0x53BC, 0xFFFF},
    {936, 0x8787, 0xB0A1},
    {936, 0x2BBC, 0x81A1},
    {936, 0x82FF, 0xFFFF},
    {950, 0xA53F, 0xA1A1},
    {950, 0xA6D8, 0xA440},
    {950, 0x2BBC, 0x8140},
    // Characters that no code leads to: index FC counts on to the first of the next set; past the last row.
    {932, 0x2BFC, 0xF081},
    {932, 0x2CBC, 0xF081},
    {932, 0x51C8, 0xFD40},
    {936, 0xA4FE, 0xFFF9},
    {936, 0x81FB, 0xBCB6},
    {950, 0xDEDE, 0xFEFE},
};

TEST(NativeConversion, TellingRows) {
    run_on(kJapanese);
    for (const Row &row : kToKx) {
        const KxCodePage page = descriptor(row.code_page);
        EXPECT_EQ(WcvtNtvToKx(&page, row.from), row.to) << row.code_page << ' ' << std::hex << row.from;
    }
    for (const Row &row : kFromKx) {
        const KxCodePage page = descriptor(row.code_page);
        EXPECT_EQ(WcvtKxToNtv(&page, row.from), row.to) << row.code_page << ' ' << std::hex << row.from;
    }
}

TEST(NativeConversion, TablesOfTheCallersOwn) {
    run_on(kWestern);
    // Exact sizes on the heap, so that a read past an end is seen.
    const auto low = std::make_unique<std::uint8_t[]>(4);
    const auto high = std::make_unique<std::uint8_t[]>(4);
    const auto reverse = std::make_unique<std::uint8_t[]>(5);
    const auto empty = std::make_unique<std::uint8_t[]>(2);
    std::ranges::copy(std::to_array<std::uint8_t>({5, 5, 0x01, 0x02}), low.get());
    std::ranges::copy(std::to_array<std::uint8_t>({0xFF, 0xFF, 0x34, 0x12}), high.get());
    std::ranges::copy(std::to_array<std::uint8_t>({1, 0, 0x34, 0x12, 0xFF}), reverse.get());
    KxCodePage page{0, 0, low.get(), high.get(), reverse.get()};
    EXPECT_EQ(WcvtNtvToKx(&page, 5), 0x0201);
    EXPECT_EQ(WcvtNtvToKx(&page, 4), KX_NONE);
    EXPECT_EQ(WcvtNtvToKx(&page, 9), KX_NONE); // a low table replaces the control codes, even where it has no entry
    EXPECT_EQ(WcvtNtvToKx(&page, 0xFE), KX_NONE);
    EXPECT_EQ(WcvtNtvToKx(&page, 0xFF), 0x1234);
    EXPECT_EQ(WcvtNtvToKx(&page, 0x1FF), KX_NONE);
    for (const std::uint8_t *table : {reverse.get(), empty.get()}) {
        page.reverse_table = table;
        EXPECT_EQ(WcvtKxToNtv(&page, 0x1234), table == empty.get() ? KX_NONE : 0xFF);
        EXPECT_EQ(WcvtKxToNtv(&page, 0x1233), KX_NONE);
        EXPECT_EQ(WcvtKxToNtv(&page, 0x1235), KX_NONE);
        EXPECT_EQ(WcvtKxToNtv(&page, KX_TAB), 9); // not in the table: the control codes come back
    }
}

} // namespace
