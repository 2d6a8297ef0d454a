#include <gtest/gtest.h>
#include <kxstr/codepage.h>

#include "support/process_state.h"

namespace {

using kxstr::test::kJapanese;
using kxstr::test::kWestern;
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
    run_on({1250});
    KxCodePage page{};
    WcvtSetCodepage(KX_WINDOWS_CODE_PAGE, KX_BOTH_DIRECTIONS, &page);
    EXPECT_EQ(page.input_code_page, 1250u);
    EXPECT_EQ(page.output_code_page, 1250u);
    EXPECT_EQ(page.high_table, WcvtFindCPTable(1250, 1));
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

TEST(Country, ByLanguageThenByKeyboardOnADoubleByteSystem) {
    const struct {
        const char *why;
        std::uint16_t language, keyboard;
        std::uint32_t ansi;
        int single, dbcs;
    } cases[] = {
        {"Japanese", 0x0411, 0x0409, 932, 1, 1},
        {"Korean", 0x0412, 0x0409, 949, 2, 2},
        {"Taiwan", 0x0404, 0x0409, 950, 3, 3},
        {"Hong Kong", 0x0C04, 0x0409, 950, 3, 3},
        {"Macao", 0x1404, 0x0409, 950, 3, 3},
        {"China", 0x0804, 0x0404, 936, 4, 4},
        {"Singapore", 0x1004, 0x0409, 936, 4, 4},
        {"Arabic of Saudi Arabia", 0x0401, 0x0804, 1256, 5, 5},
        {"Hebrew", 0x040D, 0x0804, 1255, 6, 6},
        {"Arabic of Iraq is none of these", 0x0801, 0x0401, 1256, 0, 0},
        {"keyboard of China", 0x0409, 0x0804, 1252, 0, 4},
        {"keyboard of Taiwan", 0x0409, 0x0404, 1252, 0, 3},
        {"keyboards of Japan and Korea tell nothing", 0x0409, 0x0411, 932, 0, 0},
        {"an unknown keyboard: the system's code page", 0x0409, 0x7F7F, 936, 0, 4},
        {"a code page without a character set", 0x0409, 0x7F7F, 437, 0, 0},
    };
    for (const auto &c : cases) {
        run_on({c.ansi, 437, false, c.language, c.keyboard});
        EXPECT_EQ(WtpiGetCountryID(), c.single) << c.why;
        run_on({c.ansi, 437, true, c.language, c.keyboard});
        EXPECT_EQ(WtpiGetCountryID(), c.dbcs) << c.why;
    }
}

TEST(Country, IsKeptForTheLifeOfTheProcess) {
    run_on(kWestern);
    EXPECT_EQ(WtpiGetCountryID(), 0); // a decision for none is a decision
    const auto decided = kxstr::codepage::process_state();
    run_on(kJapanese);
    kxstr::codepage::process_state() = decided;
    EXPECT_EQ(WtpiGetCountryID(), 0);
}

TEST(Keyboard, CodePageAndCharacterSet) {
    const struct {
        std::uint16_t keyboard;
        std::uint32_t ansi;
        int code_page, character_set;
    } cases[] = {
        {0x0409, 932, 1252, 0},   {0x0411, 1252, 932, 128},  {0x0412, 1252, 949, 129}, {0x0804, 1252, 936, 134},
        {0x0404, 1252, 950, 136}, {0x7F7F, 1250, 1250, 238}, {0x7F7F, 437, 437, 1},
    };
    for (const auto &c : cases) {
        run_on({c.ansi, 437, false, 0x0409, c.keyboard});
        std::uint16_t code_page = 0;
        std::uint8_t character_set = 0xEE;
        WshGetInfoFromKeyboard(&code_page, nullptr);
        WshGetInfoFromKeyboard(nullptr, &character_set);
        WshGetInfoFromKeyboard(nullptr, nullptr);
        EXPECT_EQ(code_page, c.code_page);
        EXPECT_EQ(character_set, c.character_set) << c.keyboard;
    }
}

} // namespace
