// Systems that no locale gives: mixtures of code page, language and keyboard, and a system without settings.
#include <gtest/gtest.h>
#include <kxstr/codepage.h>
#include <kxstr/frame.h>

#include "codepage/state.h"
#include "registry/key.h"
#include "registry/link_engine.h"
#include "settings_folder.h"
#include "support/process_state.h"

namespace {

using kxstr::test::kJapanese;
using kxstr::test::kWestern;
using kxstr::test::run_on;
using kxstr::test::SettingsFolder;
using kxstr::test::System;

TEST(ImitatedSystems, DefaultsByCountryThenBySystem) {
    const SettingsFolder folder;
    VaskSetLanguage("EN");
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
            run_on(system, with_file ? folder.file().c_str() : "");
            EXPECT_EQ(WcvtGetDOSCodepage(), c.dos) << std::hex << c.language;
            EXPECT_EQ(WcvtGetWinCodepage(), c.windows) << std::hex << c.language;
        }
    }
}

TEST(ImitatedSystems, NothingIsStoredWithoutASettingsFile) {
    run_on(kWestern);
    EXPECT_EQ(WcvtSetWinCodepage(1251), 0u);
    EXPECT_EQ(WcvtGetWinCodepage(), 1252);
    kxstr::registry::CYWKey nowhere(0, "Software");
    EXPECT_FALSE(nowhere.is_open());
    EXPECT_EQ(nowhere.GetLinkEngine(), 0u);
    EXPECT_EQ(nowhere.link_engine->last_error, kxstr::platform::kCannotOpen);
    constexpr std::uint32_t binary = 3;
    EXPECT_EQ(nowhere.SetValue("v", binary, "x", 1, 1, 0), kxstr::platform::kBadHandle);
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
