// Which code pages are in force, and the settings that say so.
#include <kxstr/codepage.h>
#include <kxstr/core.h>

#include "codepage/selection.h"
#include "settings_folder.h"
#include "support/test.h"

namespace kxstr::codepage {
namespace {

using namespace kxstr::test;

constexpr std::string_view kKey = "[HKEY_CURRENT_USER\\Software\\Norvane\\Conversions\\21\\CodePageData\\EN]\n";

class Selection : public ::testing::Test {
  protected:
    Selection() { VaskSetLanguage("EN"); }
    void start(const System &system) { run_on(system, folder_.file().c_str()); }
    void store(std::string_view values) { folder_.write(std::string(kKey).append(values)); }

    SettingsFolder folder_;
};

TEST_F(Selection, DefaultsOfEverySystem) {
    const struct {
        System system;
        std::uint8_t country;
        std::uint16_t dos, windows;
        std::uint8_t character_set; // of the keyboard
    } cases[] = {
        {kWestern, 0, 437, 1252, 0},
        {kJapanese, 1, 932, 932, 128},
        {kKorean, 2, 934, 949, 129},
        {kTraditionalChinese, 3, 938, 950, 136},
        {kSimplifiedChinese, 4, 936, 936, 134},
        {kArabic, 5, 710, 1256, 178},
        {kHebrew, 6, 862, 1255, 177},
        {kRussian, 0, 866, 1251, 204},
    };
    for (const auto &c : cases) {
        if (!runs_on(c.system, folder_.file().c_str())) continue;
        EXPECT_EQ(WtpiGetCountryID(), c.country);
        EXPECT_EQ(WcvtGetDOSCodepage(), c.dos) << "country " << int{c.country};
        EXPECT_EQ(WcvtGetWinCodepage(), c.windows) << "country " << int{c.country};
        std::uint16_t code_page = 0;
        std::uint8_t character_set = 0xEE;
        WshGetInfoFromKeyboard(&code_page, &character_set);
        EXPECT_EQ(code_page, c.windows);
        EXPECT_EQ(character_set, c.character_set) << c.windows;
    }
}

TEST_F(Selection, StoredNumbers) {
    const auto rows = reference::read_rows("../tests/codepage/stored_numbers.txt");
    EXPECT_EQ(rows.size(), 12u);
    for (const auto &row : rows) {
        store("\"DOS Code Page\"=" + row[0] + "\n");
        start(kWestern);
        EXPECT_EQ(std::to_string(WcvtGetDOSCodepage()), row[1]) << row[0];
    }
}

TEST_F(Selection, LinksAreFollowed) {
    // <K\Page>, <K\Text>, <K\Next>
    store("\"DOS Code Page\"=hex(80000008):3c,00,4b,00,5c,00,50,00,61,00,67,00,65,00,3e,00\n"
          "\"Windows Code Page\"=hex(80000008):3c,00,4b,00,5c,00,4e,00,65,00,78,00,74,00,3e,00\n"
          "[HKEY_CURRENT_USER\\Software\\K]\n\"Page\"=hex(80000002):54,03,99\n"
          "\"Next\"=hex(c0000008):3c,00,4b,00,5c,00,50,00,61,00,67,00,65,00,3e,00\n");
    start(kWestern);
    EXPECT_EQ(WcvtGetDOSCodepage(), 852) << "the first two bytes count";
    EXPECT_EQ(WcvtGetWinCodepage(), 852) << "a link to a link";
    EXPECT_EQ(WcvtSetWinCodepage(1251), 1u);
    EXPECT_NE(folder_.read().find("[HKEY_CURRENT_USER\\K]\n\"Page\"=hex(80000002):e3,04\n"), std::string::npos);
    EXPECT_EQ(WcvtGetWinCodepage(), 1251);
    EXPECT_EQ(WcvtGetDOSCodepage(), 852) << "reading looks below Software";
}

TEST_F(Selection, TheWindowsCodePageIsDecidedOnceTheDosCodePageEveryTime) {
    store("\"DOS Code Page\"=hex(80000002):54,03\n\"Windows Code Page\"=hex(80000002):e2,04\n");
    start(kWestern);
    EXPECT_EQ(WcvtGetDOSCodepage(), 852);
    EXPECT_EQ(WcvtGetWinCodepage(), 1250);
    store("\"DOS Code Page\"=hex(80000002):57,03\n\"Windows Code Page\"=hex(80000002):e3,04\n");
    EXPECT_EQ(WcvtGetDOSCodepage(), 855);
    EXPECT_EQ(WcvtGetWinCodepage(), 1250);
    VaskSetLanguage("FR");
    EXPECT_EQ(WcvtGetDOSCodepage(), 437) << "nothing is stored for this language";
    EXPECT_EQ(WcvtGetWinCodepage(), 1250);
    EXPECT_NE(folder_.read().find("CodePageData\\FR]\n"), std::string::npos) << "asking leaves the key behind";
}

TEST_F(Selection, StoringPutsInForceWhatIsStored) {
    start(kWestern);
    EXPECT_EQ(WcvtSetWinCodepage(0xABCD04E2), 1u) << "the low 16 bits count";
    EXPECT_EQ(WcvtGetWinCodepage(), 1250);
    EXPECT_EQ(folder_.read(), std::string(SettingsFolder::kHeader) + "\n" + std::string(kKey) +
                                  "\"Windows Code Page\"=hex(80000002):e2,04\n");
    start(kWestern);
    EXPECT_EQ(WcvtGetWinCodepage(), 1250) << "the next process finds it";

    store("\"Windows Code Page\"=hex(c0000002):e2,04\n");
    const std::string before = folder_.read();
    EXPECT_EQ(WcvtSetWinCodepage(1251), 0u) << "write-protected";
    EXPECT_EQ(WcvtGetWinCodepage(), 1250);
    EXPECT_EQ(folder_.read(), before);
}

TEST_F(Selection, ThePathFollowsTheLanguageInOneBuffer) {
    const char *const path = WcvtGetRegistryLoc();
    EXPECT_STREQ(path, "HKEY_CURRENT_USER\\Software\\Norvane\\Conversions\\21\\CodePageData\\EN");
    VaskSetLanguage("LONGEST");
    EXPECT_EQ(WcvtGetRegistryLoc(), path);
    EXPECT_STREQ(path, "HKEY_CURRENT_USER\\Software\\Norvane\\Conversions\\21\\CodePageData\\LONGEST");
}

TEST_F(Selection, OwnDescriptors) {
    store("\"DOS Code Page\"=hex(80000002):54,03\n\"Windows Code Page\"=hex(80000002):e2,04\n");
    if (runs_on(kJapanese, folder_.file().c_str())) {
        EXPECT_EQ(WtpiGetOemCodepageTbl()->input_code_page, 1250u) << "one for both on a double-byte system";
    }
    start(kWestern);
    const KxCodePage *const oem = WtpiGetOemCodepageTbl();
    const KxCodePage *const ansi = WtpiGetAnsiCodepageTbl();
    EXPECT_EQ(oem->input_code_page, 852u);
    EXPECT_EQ(oem->output_code_page, 852u);
    EXPECT_EQ(oem->low_table, WcvtFindCPTable(852, 0));
    EXPECT_EQ(ansi->input_code_page, 1250u);
    EXPECT_EQ(ansi->reverse_table, WcvtFindCPTable(1250, 2));
    EXPECT_EQ(WcvtSetWinCodepage(1251), 1u);
    EXPECT_EQ(WtpiGetAnsiCodepageTbl()->input_code_page, 1250u) << "filled once";
    clear_descriptors();
    EXPECT_EQ(WtpiGetAnsiCodepageTbl()->input_code_page, 1251u);
}

} // namespace
} // namespace kxstr::codepage
