#include <kxstr/codepage.h>

#include "reference/conversions.h"
#include "support/test.h"

namespace {

using namespace kxstr;
using namespace test;

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

// The plain version could be wrong alike.
TEST(NativeConversion, TellingRows) {
    run_on(kJapanese);
    const auto rows = reference::read_rows("../tests/codepage/codes.txt");
    EXPECT_EQ(rows.size(), 32u);
    for (const auto &row : rows) {
        const KxCodePage page = descriptor(static_cast<unsigned>(std::stoul(row[0])));
        const auto code = static_cast<unsigned>(std::stoul(row[1], nullptr, 16));
        const auto kx = static_cast<unsigned>(std::stoul(row[2], nullptr, 16));
        EXPECT_EQ(WcvtKxToNtv(&page, kx), code) << row[0] << ' ' << row[2];
        EXPECT_TRUE(row.size() > 3 || WcvtNtvToKx(&page, code) == kx) << row[0] << ' ' << row[1];
    }
}

TEST(NativeConversion, TablesOfTheCallersOwn) {
    run_on(kWestern);
    // Exact sizes on the heap, so that a read past an end is seen.
    const std::vector<std::uint8_t> low{5, 5, 0x01, 0x02}, high{0xFF, 0xFF, 0x34, 0x12};
    const std::vector<std::uint8_t> reverse{1, 0, 0x34, 0x12, 0xFF}, empty{0, 0};
    KxCodePage page{0, 0, low.data(), high.data(), reverse.data()};
    EXPECT_EQ(WcvtNtvToKx(&page, 5), 0x0201);
    EXPECT_EQ(WcvtNtvToKx(&page, 4), KX_NONE);
    EXPECT_EQ(WcvtNtvToKx(&page, 9), KX_NONE); // a low table replaces the control codes, even where it has no entry
    EXPECT_EQ(WcvtNtvToKx(&page, 0xFE), KX_NONE);
    EXPECT_EQ(WcvtNtvToKx(&page, 0xFF), 0x1234);
    EXPECT_EQ(WcvtNtvToKx(&page, 0x1FF), KX_NONE);
    for (const std::uint8_t *table : {reverse.data(), empty.data()}) {
        page.reverse_table = table;
        EXPECT_EQ(WcvtKxToNtv(&page, 0x1234), table == empty.data() ? KX_NONE : 0xFF);
        EXPECT_EQ(WcvtKxToNtv(&page, 0x1233), KX_NONE);
        EXPECT_EQ(WcvtKxToNtv(&page, 0x1235), KX_NONE);
        EXPECT_EQ(WcvtKxToNtv(&page, KX_TAB), 9); // not in the table: the control codes come back
    }
}

} // namespace
