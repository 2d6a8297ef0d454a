#include <cstdlib>
#include <cstring>
#include <gtest/gtest.h>
#include <map>
#include <string>

#include "platform/portable/environment.h"
#include "platform/system.h"
#include "support/process_state.h"

using namespace kxstr;

namespace {

using Variables = std::map<std::string, std::string>;

KxPlatformSettings settings_of(const Variables &variables) {
    static const Variables *current;
    current = &variables;
    return platform::settings_from([](const char *name) -> const char * {
        const auto found = current->find(name);
        return found == current->end() ? nullptr : found->second.c_str();
    });
}

std::string text_of(const KxPlatformSettings &settings) {
    char text[64];
    std::snprintf(text, sizeof text, "%u %u %u %04X %04X", settings.ansi_code_page, settings.oem_code_page,
                  settings.double_byte, settings.system_language, settings.keyboard_language);
    return text;
}

// As a host's initialiser finds them, before main.
const KxPlatformSettings at_start = [] {
    KxPlatformSettings settings;
    KxPlatformGet(&settings);
    return settings;
}();

} // namespace

// CTest runs this once more with variables set, so that the environment is not what the settings would be anyway.
TEST(Settings, AreThereBeforeMain) {
    const auto wanted = platform::settings_from([](const char *name) -> const char * { return std::getenv(name); });
    EXPECT_EQ(text_of(at_start), text_of(wanted));
    EXPECT_STREQ(at_start.registry_path, wanted.registry_path);
}

TEST(Settings, FollowTheLocale) {
    const struct {
        Variables variables;
        const char *settings;
    } cases[] = {
        {{}, "1252 437 0 0409 0409"},
        {{{"LANG", "C.UTF-8"}}, "1252 437 0 0409 0409"},
        {{{"LANG", "POSIX"}}, "1252 437 0 0409 0409"},
        {{{"LANG", "de_DE"}}, "1252 850 0 0407 0407"},
        {{{"LANG", "de"}}, "1252 850 0 0407 0407"},
        {{{"LANG", "de_DE.ISO-8859-15@euro"}}, "1252 850 0 0407 0407"},
        {{{"LANG", "en_GB.UTF-8"}}, "1252 850 0 0809 0809"},
        {{{"LANG", "cs_CZ.UTF-8"}}, "1250 852 0 0405 0405"},
        {{{"LANG", "ru_RU.KOI8-R"}}, "1251 866 0 0419 0419"},
        {{{"LANG", "sr_RS"}}, "1251 855 0 281A 281A"},
        {{{"LANG", "sr_RS.UTF-8@latin"}}, "1250 852 0 241A 241A"},
        {{{"LANG", "ar_EG"}}, "1256 720 0 0C01 0C01"},
        {{{"LANG", "he_IL"}}, "1255 862 0 040D 040D"},
        {{{"LANG", "th_TH"}}, "874 874 0 041E 041E"},
        {{{"LANG", "ja_JP.eucJP"}}, "932 932 1 0411 0411"},
        {{{"LANG", "zh_CN.UTF-8"}}, "936 936 1 0804 0804"},
        {{{"LANG", "ko_KR"}}, "949 949 1 0412 0412"},
        {{{"LANG", "zh_HK"}}, "950 950 1 0C04 0C04"},
        {{{"LANG", "hi_IN.UTF-8"}}, "1252 437 0 0409 0409"},  // Unicode only
        {{{"LANG", "ja_JP_x"}}, "1252 437 0 0409 0409"},      // neither cut short
        {{{"LANG", "a"}}, "1252 437 0 0409 0409"},            // nor taken for a beginning
        {{{"LANG", ".UTF-8@latin"}}, "1252 437 0 0409 0409"}, // no name at all
        {{{"LC_ALL", "ja_JP"}, {"LC_CTYPE", "ko_KR"}, {"LANG", "de_DE"}}, "932 932 1 0411 0411"},
        {{{"LC_ALL", ""}, {"LC_CTYPE", "ko_KR"}, {"LANG", "de_DE"}}, "949 949 1 0412 0412"},
        {{{"LC_ALL", "C"}, {"LANG", "ja_JP"}}, "1252 437 0 0409 0409"}, // unknown, but not empty
    };
    for (const auto &c : cases)
        EXPECT_EQ(text_of(settings_of(c.variables)), c.settings)
            << (c.variables.empty() ? "" : c.variables.begin()->second);
}

TEST(Settings, VariablesComeBeforeTheLocale) {
    const struct {
        const char *why;
        Variables variables;
        const char *settings;
    } cases[] = {
        {"each by itself", {{"KX_ANSI_CODEPAGE", "1250"}}, "1250 850 0 0407 0407"},
        {"OEM", {{"KX_OEM_CODEPAGE", "852"}}, "1252 852 0 0407 0407"},
        {"the double-byte flag follows the code page in force", {{"KX_ANSI_CODEPAGE", "932"}}, "932 850 1 0407 0407"},
        {"but not the OEM one", {{"KX_OEM_CODEPAGE", "932"}}, "1252 932 0 0407 0407"},
        {"unless told", {{"KX_ANSI_CODEPAGE", "932"}, {"KX_DBCS", "0"}}, "932 850 0 0407 0407"},
        {"either way", {{"KX_DBCS", "1"}}, "1252 850 1 0407 0407"},
        {"a flag that does not parse", {{"KX_ANSI_CODEPAGE", "950"}, {"KX_DBCS", "no"}}, "950 850 1 0407 0407"},
        {"no other number", {{"KX_DBCS", "2"}}, "1252 850 0 0407 0407"},
        {"the keyboard follows the system", {{"KX_SYSTEM_LANGID", "0x0411"}}, "1252 850 0 0411 0411"},
        {"unless told", {{"KX_KEYBOARD_LANGID", "0X404"}}, "1252 850 0 0407 0404"},
        {"without prefix", {{"KX_SYSTEM_LANGID", "c04"}}, "1252 850 0 0C04 0C04"},
        {"17 bits", {{"KX_SYSTEM_LANGID", "0x10411"}}, "1252 850 0 0407 0407"},
        {"prefix only", {{"KX_SYSTEM_LANGID", "0x"}}, "1252 850 0 0407 0407"},
        {"prefix twice", {{"KX_SYSTEM_LANGID", "0x0x411"}}, "1252 850 0 0407 0407"},
        {"empty", {{"KX_ANSI_CODEPAGE", ""}, {"KX_DBCS", ""}, {"KX_SYSTEM_LANGID", ""}}, "1252 850 0 0407 0407"},
        {"hexadecimal", {{"KX_ANSI_CODEPAGE", "0x3A4"}}, "1252 850 0 0407 0407"},
        {"trailing text", {{"KX_ANSI_CODEPAGE", "932 "}}, "1252 850 0 0407 0407"},
        {"sign", {{"KX_ANSI_CODEPAGE", "+932"}}, "1252 850 0 0407 0407"},
        {"no code page", {{"KX_ANSI_CODEPAGE", "0"}, {"KX_OEM_CODEPAGE", "65536"}}, "1252 850 0 0407 0407"},
        {"the last code page", {{"KX_ANSI_CODEPAGE", "65535"}}, "65535 850 0 0407 0407"},
    };
    for (auto c : cases) {
        c.variables["LANG"] = "de_DE";
        EXPECT_EQ(text_of(settings_of(c.variables)), c.settings) << c.why;
    }
}

TEST(Settings, PathOfTheSettingsFile) {
    const std::string longest(KX_REGISTRY_PATH_SIZE - 1, 'r');
    const struct {
        const char *why;
        Variables variables;
        std::string path;
    } cases[] = {
        {"nothing known", {}, ""},
        {"home", {{"HOME", "/h"}}, "/h/.config/kxstr/registry.reg"},
        {"configuration folder", {{"HOME", "/h"}, {"XDG_CONFIG_HOME", "/c"}}, "/c/kxstr/registry.reg"},
        {"an empty one", {{"HOME", "/h"}, {"XDG_CONFIG_HOME", ""}}, "/h/.config/kxstr/registry.reg"},
        {"a relative one", {{"HOME", "/h"}, {"XDG_CONFIG_HOME", "c"}}, "/h/.config/kxstr/registry.reg"},
        {"told", {{"HOME", "/h"}, {"XDG_CONFIG_HOME", "/c"}, {"KX_REGISTRY", "r.reg"}}, "r.reg"},
        {"told that there is none", {{"HOME", "/h"}, {"KX_REGISTRY", ""}}, ""},
        {"the longest", {{"HOME", "/h"}, {"KX_REGISTRY", longest}}, longest},
        {"too long", {{"HOME", "/h"}, {"KX_REGISTRY", longest + "r"}}, "/h/.config/kxstr/registry.reg"},
        {"too long with the rest", {{"HOME", longest}}, ""},
    };
    for (const auto &c : cases)
        EXPECT_EQ(settings_of(c.variables).registry_path, c.path) << c.why;
}

TEST(Settings, AHostReplacesThemAndTheNextQuerySeesIt) {
    KxPlatformSettings wanted{932, 866, 5, 0x0411, 0x0419, {}};
    std::memset(wanted.registry_path, 'p', sizeof wanted.registry_path);
    KxPlatformSet(&wanted);
    KxPlatformSet(nullptr);
    KxPlatformGet(nullptr);
    EXPECT_EQ(platform::ansi_code_page(), 932u);
    EXPECT_EQ(platform::oem_code_page(), 866u);
    EXPECT_TRUE(platform::is_double_byte_system());
    EXPECT_EQ(platform::system_language(), 0x0411);
    EXPECT_EQ(platform::keyboard_language(), 0x0419);
    EXPECT_TRUE(platform::is_lead_byte(0xE0));
    KxPlatformSettings found;
    KxPlatformGet(&found);
    EXPECT_EQ(text_of(found), "932 866 5 0411 0419");
    EXPECT_EQ(std::strlen(found.registry_path), KX_REGISTRY_PATH_SIZE - 1u);

    found.ansi_code_page = 1252;
    KxPlatformSet(&found);
    EXPECT_FALSE(platform::is_lead_byte(0xE0));
}

TEST(Languages, CodePagesAndCharacterSets) {
    test::run_on(test::kKorean);
    const struct {
        std::uint16_t language;
        std::optional<std::uint32_t> code_page;
    } languages[] = {
        {0x0001, 1256},         {0x0401, 1256},         {0x0404, 950},          {0x1004, 936},
        {0x040D, 1255},         {0x081A, 1250},         {0x0C1A, 1251},         {0x0439, 0},
        {0x7C92, 1256},         {0x0000, 949},          {0x0400, 949},          {0x0800, 949},
        {0x1800, std::nullopt}, {0x03FF, std::nullopt}, {0xFFFF, std::nullopt},
    };
    for (const auto &c : languages)
        EXPECT_EQ(platform::ansi_code_page_of(c.language), c.code_page) << std::hex << c.language;

    test::run_on({.language = 0}); // the default language is no language: no answer, and no going round in circles
    EXPECT_EQ(platform::ansi_code_page_of(0x0400), std::nullopt);

    // Every code page with a character set of its own; 0 is none, though languages without a code page answer 0.
    const std::map<std::uint32_t, int> sets{{42, 2},     {874, 222},  {932, 128},  {936, 134},  {949, 129},
                                            {950, 136},  {1250, 238}, {1251, 204}, {1252, 0},   {1253, 161},
                                            {1254, 162}, {1255, 177}, {1256, 178}, {1257, 186}, {1258, 163},
                                            {1361, 130}, {65001, 254}};
    std::map<std::uint32_t, int> found;
    for (std::uint32_t page = 0; page <= 0x10000; ++page)
        if (const auto set = platform::character_set_of(page)) found[page] = *set;
    EXPECT_EQ(found, sets);
}
