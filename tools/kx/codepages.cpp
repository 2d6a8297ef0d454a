#include <algorithm>
#include <cstdio>
#include <cstring>
#include <kxstr/codepage.h>
#include <kxstr/core.h>
#include <string>
#include <vector>

#include "codepage/country.h"
#include "codepage/double_byte.h"
#include "codepage/selection.h"
#include "command.h"
#include "files.h"
#include "options.h"
#include "platform/ansi_text.h"
#include "platform/bytes.h"
#include "platform/system.h"
#include "registry.h"
#include "tables/code_pages.h"

namespace kx {
namespace {

namespace codepage = kxstr::codepage;
namespace platform = kxstr::platform;

constexpr std::size_t kMaxLanguage = 7; // bytes that the library keeps

constexpr Option kOptions[] = {
    {'l', "language", "LANG", "tell what is in force for LANG too, such as FR"},
};

constexpr Usage kUsageText{
    "kx codepages", "[-l LANG]...",
    "Lists the code pages that have tables, and the DOS and Windows code pages that are in force:\n"
    "for the language EN, for the languages that have settings, and for each LANG.",
    kOptions,
    "A table's size is in bytes; the reverse table also tells how many characters it holds. What is\n"
    "in force is a stored value, else the default of the country, else the system's code page."};

std::string range_of(const std::uint8_t *table) {
    if (table == nullptr) return "-";
    char text[32];
    std::snprintf(text, sizeof text, "%02X..%02X %3d", table[0], table[1], 2 + 2 * (table[1] - table[0] + 1));
    return text;
}

void print_tables() {
    std::printf("%-6s %-8s %-11s %-11s %s\n", "page", "Windows", "low table", "high table", "reverse table");
    for (const auto &page : kxstr::tables::kCodePages) {
        const unsigned entries = kxstr::load_u16le(page.reverse());
        std::printf("%-6u %-8u %-11s %-11s %u in %u\n", page.kx_number, page.windows_number,
                    range_of(page.low()).c_str(), range_of(page.high()).c_str(), entries, 2 + 3 * entries);
    }
    std::printf("\nBy rule, for their double-byte characters:");
    for (std::uint32_t number = 0; number <= 0xFFFF; ++number)
        if (codepage::has_double_byte_rule(number)) std::printf(" %u", number);
    std::printf("\n\n");
}

// The languages that have a key of settings, as their keys spell them.
std::vector<std::string> languages_with_settings() {
    VaskSetLanguage("");
    std::vector<std::string> languages = keys_below(codepage::settings_key()); // ends with a backslash
    std::erase_if(languages, [](const std::string &language) { return language.size() > kMaxLanguage; });
    return languages;
}

// Unlike a program that asks, this leaves no key behind.
std::uint16_t stored(const char *value_name) {
    platform::KeyHandle key{};
    const char *const below_root = std::strchr(codepage::settings_key(), '\\') + 1;
    if (platform::open_key(platform::kCurrentUser, below_root, platform::kReadAndWrite, key) != platform::kSuccess) {
        return 0;
    }
    platform::close_key(key);
    return codepage::stored_code_page(value_name);
}

std::string in_force(const char *value_name, const codepage::DefaultCodePage &otherwise) {
    if (const std::uint16_t number = stored(value_name); number != 0) return std::to_string(number) + ", stored";
    return std::to_string(otherwise.number) + (otherwise.by_country ? ", default of the country" : ", the system's");
}

void print_in_force(const std::vector<std::string> &languages) {
    static constexpr const char *kCountries[] = {"none of the special ones", "Japan",  "Korea", "Taiwan and Hong Kong",
                                                 "China and Singapore",      "Arabic", "Israel"};
    std::printf("Country: %u (%s). Language identifier of the system: 0x%04X.\n\n", codepage::country_id(),
                kCountries[codepage::country_id()], platform::system_language());
    std::printf("%-9s %-32s %s\n", "language", "DOS code page", "Windows code page");
    for (const std::string &language : languages) {
        VaskSetLanguage(language.c_str());
        std::printf("%-9s %-32s %s\n", language.c_str(),
                    in_force(codepage::kDosValue, codepage::default_dos_code_page()).c_str(),
                    in_force(codepage::kWindowsValue, codepage::default_windows_code_page()).c_str());
    }
    if (platform::is_double_byte_system()) {
        std::printf("\nOn this double-byte system OEM strings are in the Windows code page, too.\n");
    }
}

} // namespace

int run_codepages(int argc, char **argv) {
    std::vector<std::string> languages{"EN"};
    const Parsed parsed = parse_options(argc, argv, kUsageText, [&](int, const std::string &argument) -> std::string {
        languages.push_back(argument);
        return argument.size() <= kMaxLanguage ? "" : "a language has at most 7 bytes";
    });
    if (parsed.stop) return parsed.status;
    if (parsed.first_operand < argc) return usage_error(kUsageText, "there are no operands");
    std::ranges::copy(languages_with_settings(), std::back_inserter(languages));
    // A key and a name on the command line may differ in case: that is one language.
    const auto spelled_alike = [](const std::string &a, const std::string &b) {
        return platform::upper_case(platform::ansi_to_wide(a)) == platform::upper_case(platform::ansi_to_wide(b));
    };
    std::vector<std::string> once;
    for (const std::string &language : languages) {
        if (std::ranges::none_of(once, [&](const std::string &one) { return spelled_alike(one, language); })) {
            once.push_back(language);
        }
    }
    print_tables();
    print_in_force(once);
    const std::uint32_t status = settings_status();
    if (status == platform::kDamaged || status == platform::kAccessDenied) {
        report(kUsageText.command,
               "the settings file cannot be read (status " + std::to_string(status) + "); nothing stored counts");
        return kFailure;
    }
    return kSuccess;
}

} // namespace kx
