#include <gtest/gtest.h>
#include <kxstr/codepage.h>

#include "support/process_state.h"

namespace {

using kxstr::test::kRussian;
using kxstr::test::run_on;

TEST(Descriptor, EachDirectionIsSetByItself) {
    KxCodePage page{};
    WcvtSetCodepage(1252, 0xFC | KX_TOWARDS_KX, &page); // other flag bits do not count
    EXPECT_EQ(page.input_code_page, 1252u);
    EXPECT_EQ(page.high_table, WcvtFindCPTable(1252, 1));
    EXPECT_EQ(page.output_code_page, 0u);
    EXPECT_EQ(page.reverse_table, nullptr);
    WcvtSetCodepage(437, KX_FROM_KX, &page);
    EXPECT_EQ(page.input_code_page, 1252u);
    EXPECT_EQ(page.low_table, nullptr);
    EXPECT_EQ(page.high_table, WcvtFindCPTable(1252, 1));
    EXPECT_EQ(page.output_code_page, 437u);
    EXPECT_EQ(page.reverse_table, WcvtFindCPTable(437, 2));
    WcvtSetCodepage(850, 0, &page);
    EXPECT_EQ(page.input_code_page, 1252u);
    EXPECT_EQ(page.output_code_page, 437u);
    // A double-byte page has no tables; those of the page before must not stay.
    WcvtSetCodepage(949, KX_BOTH_DIRECTIONS, &page);
    EXPECT_EQ(page.input_code_page, 949u);
    EXPECT_TRUE(page.low_table == nullptr && page.high_table == nullptr && page.reverse_table == nullptr);
    WcvtSetCodepage(866, KX_BOTH_DIRECTIONS, &page);
    WcvtClrCodepage(&page);
    EXPECT_TRUE(page.input_code_page == 0 && page.output_code_page == 0 && page.low_table == nullptr &&
                page.high_table == nullptr && page.reverse_table == nullptr);
}

TEST(Descriptor, ADirectionThatHasTheCodePageIsLeftUntouched) {
    const std::uint8_t own[] = {0x80, 0x80, 0x41, 0x00};
    KxCodePage page{437, 0, own, own, own};
    WcvtSetCodepage(437, KX_TOWARDS_KX, &page);
    EXPECT_TRUE(page.low_table == own && page.high_table == own && page.reverse_table == own);
    WcvtSetCodepage(0, KX_BOTH_DIRECTIONS, &page);
    EXPECT_TRUE(page.low_table == nullptr && page.high_table == nullptr && page.reverse_table == own);
}

TEST(Descriptor, TheWindowsCodePageStandsBehindAllBitsSet) {
    run_on(kRussian);
    KxCodePage page{};
    WcvtSetCodepage(KX_WINDOWS_CODE_PAGE, KX_BOTH_DIRECTIONS, &page);
    EXPECT_EQ(page.input_code_page, 1251u);
    EXPECT_EQ(page.output_code_page, 1251u);
    EXPECT_EQ(page.high_table, WcvtFindCPTable(1251, 1));
}

TEST(Descriptor, TablesAreFoundByKxNumberAndKind) {
    EXPECT_EQ(WcvtFindCPTable(932, 0), nullptr);
    ASSERT_NE(WcvtFindCPTable(932, 1), nullptr);
    EXPECT_EQ(WcvtFindCPTable(932, 1)[0], 0xA1);
    EXPECT_EQ(WcvtFindCPTable(437, 0)[0], 0x01);
    EXPECT_EQ(WcvtFindCPTable(932, 2)[0], 63);
    EXPECT_EQ(WcvtFindCPTable(1252, 3), nullptr);
    EXPECT_EQ(WcvtFindCPTable(1252, 0x101), nullptr);
    EXPECT_EQ(WcvtFindCPTable(28591, 1), nullptr);
    EXPECT_EQ(WcvtFindCPTable(949, 1), nullptr);
}

TEST(Descriptor, NumbersOfTheIsoPagesDiffer) {
    for (const std::uint32_t part : {1u, 2u, 6u, 7u, 8u}) {
        EXPECT_EQ(WcvtKXCodepageToWinCodepage(18850 + part), 28590 + part);
        EXPECT_EQ(WcvtWinCodepageToKXCodepage(28590 + part), 18850 + part);
    }
    for (const std::uint32_t same : {1252u, 10001u, 28591u, 949u, 0u, 0xFFFFFFFFu})
        EXPECT_EQ(WcvtKXCodepageToWinCodepage(same), same);
    for (const std::uint32_t same : {1252u, 10001u, 18851u, 949u, 0u, 0xFFFFFFFFu})
        EXPECT_EQ(WcvtWinCodepageToKXCodepage(same), same);
}

} // namespace
