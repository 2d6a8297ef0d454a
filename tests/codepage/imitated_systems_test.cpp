// What Windows under Wine is not: mixtures of code page, language and keyboard, a system without settings, and text as
// it is stored.
#include <kxstr/codepage.h>
#include <kxstr/core.h>

#include "codepage/country.h"
#include "registry/key.h"
#include "registry/link_engine.h"
#include "settings_folder.h"
#include "support/test.h"

namespace {

using namespace kxstr::test;

TEST(ImitatedSystems, DefaultsByCountryThenBySystem) {
    VaskSetLanguage("EN");
    const struct {
        std::uint16_t language, dos, windows;
    } cases[] = {{0x0411, 932, 932},  {0x0412, 934, 949},  {0x0404, 938, 950}, {0x0804, 936, 936},
                 {0x0401, 710, 1256}, {0x040D, 862, 1255}, {0x0409, 850, 1250}};
    for (const auto &c : cases) {
        run_on({.ansi = 1250, .oem = 850, .language = c.language});
        EXPECT_EQ(WcvtGetDOSCodepage(), c.dos) << std::hex << c.language;
        EXPECT_EQ(WcvtGetWinCodepage(), c.windows) << std::hex << c.language;
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
    EXPECT_EQ(nowhere.SetValue("v", 3, "x", 1, 1, 0), kxstr::platform::kBadHandle);
}

TEST(ImitatedSystems, ATextOfTwoBytesIsANumber) {
    const SettingsFolder folder;
    folder.write("[HKEY_CURRENT_USER\\Software\\Norvane\\Conversions\\21\\CodePageData\\EN]\n"
                 "\"DOS Code Page\"=hex(1):34,03\n");
    VaskSetLanguage("EN");
    run_on(kWestern, folder.file().c_str());
    EXPECT_EQ(WcvtGetDOSCodepage(), 820);
}

TEST(Country, ByLanguageThenByKeyboardOnADoubleByteSystem) {
    const auto rows = kxstr::reference::read_rows("../tests/codepage/countries.txt");
    EXPECT_EQ(rows.size(), 17u);
    for (const auto &row : rows) {
        const auto number = [&row](std::size_t column, int base = 10) {
            return static_cast<std::uint16_t>(std::stoul(row[column], nullptr, base));
        };
        for (const bool double_byte : {false, true}) {
            run_on({number(2), 437, double_byte, number(0, 16), number(1, 16)});
            EXPECT_EQ(WtpiGetCountryID(), number(double_byte ? 4 : 3)) << row[0] << ' ' << row[1];
        }
        std::uint16_t code_page = 0;
        std::uint8_t character_set = 0xEE;
        WshGetInfoFromKeyboard(&code_page, nullptr);
        WshGetInfoFromKeyboard(nullptr, &character_set);
        WshGetInfoFromKeyboard(nullptr, nullptr);
        EXPECT_EQ(code_page, number(5)) << row[1];
        EXPECT_EQ(character_set, number(6)) << row[1];
    }
}

TEST(Country, IsKeptForTheLifeOfTheProcess) {
    run_on(kWestern);
    EXPECT_EQ(WtpiGetCountryID(), 0); // a decision for none is a decision
    const std::uint8_t decided = kxstr::codepage::country_id();
    run_on(kJapanese);
    kxstr::codepage::set_country(decided);
    EXPECT_EQ(WtpiGetCountryID(), 0);
}

} // namespace
