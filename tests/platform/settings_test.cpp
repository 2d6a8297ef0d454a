#include <cstdlib>
#include <sstream>

#include "platform/portable/environment.h"
#include "platform/system.h"
#include "support/test.h"

using namespace kxstr;

namespace {

// The settings with variables such as "LANG=de_DE;KX_DBCS=1".
KxPlatformSettings settings_of(const std::string &variables) {
    static std::map<std::string, std::string> current;
    current.clear();
    std::istringstream all(variables);
    for (std::string one; std::getline(all, one, ';');)
        current[one.substr(0, one.find('='))] = one.substr(one.find('=') + 1);
    return platform::settings_from([](const char *name) -> const char * {
        const auto found = current.find(name);
        return found == current.end() ? nullptr : found->second.c_str();
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

TEST(Settings, FollowTheLocaleAndVariablesComeBeforeIt) {
    const auto rows = reference::read_rows("../tests/platform/settings.txt");
    EXPECT_EQ(rows.size(), 37u);
    for (const auto &row : rows) {
        const std::string wanted = row[1] + ' ' + row[2] + ' ' + row[3] + ' ' + row[4] + ' ' + row[5];
        EXPECT_EQ(text_of(settings_of(row[0])), wanted) << row[0];
    }
    EXPECT_EQ(settings_of("KX_ANSI_CODEPAGE=932 ").ansi_code_page, 1252u);
}

TEST(Settings, PathOfTheSettingsFile) {
    const std::string longest(KX_REGISTRY_PATH_SIZE - 1, 'r');
    const struct {
        const char *why;
        std::string variables;
        std::string path;
    } cases[] = {
        {"nothing known", "", ""},
        {"home", "HOME=/h", "/h/.config/kxstr/registry.reg"},
        {"configuration folder", "HOME=/h;XDG_CONFIG_HOME=/c", "/c/kxstr/registry.reg"},
        {"a relative one", "HOME=/h;XDG_CONFIG_HOME=c", "/h/.config/kxstr/registry.reg"},
        {"told", "HOME=/h;XDG_CONFIG_HOME=/c;KX_REGISTRY=r.reg", "r.reg"},
        {"told that there is none", "HOME=/h;KX_REGISTRY=", ""},
        {"the longest", "HOME=/h;KX_REGISTRY=" + longest, longest},
        {"too long", "HOME=/h;KX_REGISTRY=r" + longest, "/h/.config/kxstr/registry.reg"},
        {"too long with the rest", "HOME=" + longest, ""},
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
    EXPECT_STREQ(platform::origins().oem_code_page, "KxPlatformSet");
    KxPlatformSettings found;
    KxPlatformGet(&found);
    EXPECT_EQ(text_of(found), "932 866 5 0411 0419");
    EXPECT_EQ(std::strlen(found.registry_path), KX_REGISTRY_PATH_SIZE - 1u);
    EXPECT_EQ(platform::oem_code_page(), 866u);
    EXPECT_TRUE(platform::is_double_byte_system());
    EXPECT_EQ(platform::keyboard_language(), 0x0419);
}

TEST(Languages, CodePagesAndCharacterSets) {
    test::run_on({.ansi = 949, .language = 0x0412}); // where the default language leads
    const std::map<std::uint16_t, std::optional<std::uint32_t>> languages{
        {0x0001, 1256},        {0x0401, 1256}, {0x0404, 950},          {0x040D, 1255},
        {0x081A, 1250},        {0x0439, 0},    {0x7C92, 1256},         {0x0000, 949},
        {0x0400, 949},         {0x0800, 949},  {0x1800, std::nullopt}, {0x03FF, std::nullopt},
        {0xFFFF, std::nullopt}};
    for (const auto &[language, code_page] : languages)
        EXPECT_EQ(platform::ansi_code_page_of(language), code_page) << std::hex << language;

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
