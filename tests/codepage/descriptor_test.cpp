#include <kxstr/codepage.h>

#include "support/test.h"

namespace {

using namespace kxstr::test;

KxCodePage with_tables_of(std::uint32_t towards_kx, std::uint32_t from_kx) {
    return {towards_kx, from_kx, WcvtFindCPTable(towards_kx, 0), WcvtFindCPTable(towards_kx, 1),
            WcvtFindCPTable(from_kx, 2)};
}

TEST(Descriptor, EachDirectionIsSetByItself) {
    KxCodePage page{};
    const auto expect_set = [&page](std::uint32_t towards_kx, std::uint32_t from_kx) {
        const KxCodePage wanted = with_tables_of(towards_kx, from_kx);
        EXPECT_EQ(std::memcmp(&page, &wanted, sizeof page), 0) << page.input_code_page << ' ' << page.output_code_page;
    };
    WcvtSetCodepage(1252, 0xFC | KX_TOWARDS_KX, &page); // other flag bits do not count
    expect_set(1252, 0);
    WcvtSetCodepage(437, KX_FROM_KX, &page);
    expect_set(1252, 437);
    WcvtSetCodepage(850, 0, &page);
    expect_set(1252, 437);
    WcvtSetCodepage(866, KX_BOTH_DIRECTIONS, &page);
    expect_set(866, 866);
    WcvtSetCodepage(949, KX_BOTH_DIRECTIONS, &page);
    expect_set(949, 949); // a double-byte page has no tables; those of the page before must not stay
    WcvtSetCodepage(866, KX_BOTH_DIRECTIONS, &page);
    WcvtClrCodepage(&page);
    expect_set(0, 0);
    if (!runs_on(kRussian)) return;
    WcvtSetCodepage(KX_WINDOWS_CODE_PAGE, KX_BOTH_DIRECTIONS, &page);
    expect_set(1251, 1251);
}

TEST(Descriptor, ADirectionThatHasTheCodePageIsLeftUntouched) {
    const std::uint8_t own[] = {0x80, 0x80, 0x41, 0x00};
    KxCodePage page{437, 0, own, own, own};
    WcvtSetCodepage(437, KX_TOWARDS_KX, &page);
    EXPECT_TRUE(page.low_table == own && page.high_table == own && page.reverse_table == own);
    WcvtSetCodepage(0, KX_BOTH_DIRECTIONS, &page);
    EXPECT_TRUE(page.low_table == nullptr && page.high_table == nullptr && page.reverse_table == own);
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
