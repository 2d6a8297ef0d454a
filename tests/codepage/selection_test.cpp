// Which code pages are in force, and the settings that say so.
#include <gtest/gtest.h>
#include <kxstr/codepage.h>
#include <kxstr/frame.h>

#include "codepage/selection.h"
#include "support/countries.h"
#include "support/process_state.h"
#include "support/settings_folder.h"

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

TEST_F(Selection, DefaultsByCountryThenBySystem) {
    const struct {
        std::uint16_t language;
        std::uint16_t dos;
        std::uint16_t windows;
    } cases[] = {
        {0x0411, 932, 932},  {0x0412, 934, 949},  {0x0404, 938, 950},  {0x0804, 936, 936},
        {0x0401, 710, 1256}, {0x040D, 862, 1255}, {0x0409, 850, 1250},
    };
    for (const auto &c : cases) {
        for (const bool with_file : {true, false}) {
            const System system{.ansi = 1250, .oem = 850, .language = c.language};
            run_on(system, with_file ? folder_.file().c_str() : "");
            EXPECT_EQ(WcvtGetDOSCodepage(), c.dos) << std::hex << c.language;
            EXPECT_EQ(WcvtGetWinCodepage(), c.windows) << std::hex << c.language;
        }
    }
}

TEST_F(Selection, StoredNumbers) {
    const struct {
        const char *why;
        const char *data;
        std::uint16_t dos;
    } cases[] = {
        {"the type that the library writes", "hex(80000002):34,03", 0x0334},
        {"any type will do", "hex:34,03", 0x0334},
        {"also the write-protected one", "hex(c0000002):34,03", 0x0334},
        {"one byte is a number", "hex:e8", 0xE8},
        {"a double word is too long", "dword:00000334", 437},
        {"three bytes are too long", "hex:34,03,00", 437},
        {"zero is no number", "hex:00,00", 437},
        {"no data is no number", "hex:", 437},
        {"two bytes under a string type are the number", "hex(1):34,03", 0x0334},
        {"a text of one character and its terminator are two bytes", "\"8\"", 0x38},
        {"a longer text is too long", "\"850\"", 437},
        {"a link that goes nowhere", "hex(80000008):3c,00,61,00,3e,00", 437},
        {"an unterminated link of two bytes is no number either", "hex(80000008):3c,00", 437},
    };
    for (const auto &c : cases) {
        store(std::string("\"DOS Code Page\"=") + c.data + "\n");
        start(kWestern);
        EXPECT_EQ(WcvtGetDOSCodepage(), c.dos) << c.why;
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
    EXPECT_NE(folder_.read().find("\"Page\"=hex(80000002):e3,04\n"), std::string::npos);
    EXPECT_EQ(WcvtGetDOSCodepage(), 1251);
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

    run_on(kWestern);
    EXPECT_EQ(WcvtSetWinCodepage(1251), 0u) << "no settings file";
    EXPECT_EQ(WcvtGetWinCodepage(), 1252);
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
    KxCodePage page{};
    WcvtSetCodepage(KX_WINDOWS_CODE_PAGE, KX_BOTH_DIRECTIONS, &page);
    EXPECT_EQ(page.input_code_page, 1251u);

    start(kJapanese);
    EXPECT_EQ(WtpiGetOemCodepageTbl()->input_code_page, 1251u) << "a double-byte system has one code page for both";
}

} // namespace
} // namespace kxstr::codepage
