#include <algorithm>
#include <charconv>
#include <cstdio>
#include <cstring>
#include <kxstr/codepage.h>
#include <kxstr/core.h>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "codepage/convert.h"
#include "codepage/country.h"
#include "codepage/descriptor.h"
#include "codepage/double_byte.h"
#include "codepage/selection.h"
#include "command.h"
#include "core/kx_char.h"
#include "encodings.h"
#include "files.h"
#include "languages.h"
#include "options.h"
#include "platform/ansi_text.h"
#include "platform/bytes.h"
#include "platform/system.h"
#include "platform/utf8.h"
#include "registry.h"
#include "registry/key.h"
#include "registry/values.h"
#include "tables/code_pages.h"
#include "unicode/map.h"

namespace kx {
namespace {

namespace codepage = kxstr::codepage;
namespace platform = kxstr::platform;

constexpr std::size_t kMaxLanguage = 7; // bytes that the library keeps

constexpr int kDosOption = 256;
constexpr int kWindowsOption = 257;
constexpr Option kOptions[] = {
    {'l', "language", "LANG", "tell what is in force for LANG too, such as FR or french"},
    {kDosOption, "dos", "PAGE", "with set: the DOS code page"},
    {kWindowsOption, "windows", "PAGE", "with set: the Windows code page"},
};

constexpr Usage kUsageText{
    "kx codepages", "[-l LANG]... | PAGE | set LANG [--dos PAGE] [--windows PAGE]",
    "Lists the code pages that have tables, and the DOS and Windows code pages that are in force:\n"
    "for the language EN, for the languages that have settings, and for each LANG.\n"
    "With a PAGE, such as 852, shows its characters by their bytes. set stores the code pages of a\n"
    "language, as programs that use the library do, where links lead.",
    kOptions,
    "A table's size is in bytes; the reverse table also tells how many characters it holds. What is\n"
    "in force is a stored value, else the default of the country, else the system's code page."};

// Nothing for text that names no code page of the library.
std::optional<std::uint16_t> parse_page(const std::string &text) {
    std::uint16_t number = 0;
    const char *const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number);
    if (error == std::errc{} && stop == end &&
        (codepage::find_code_page(number) != nullptr || codepage::has_double_byte_rule(number)))
        return number;
    std::optional<CodePage> page;
    if (!take_page(page, text).empty()) return std::nullopt;
    return static_cast<std::uint16_t>(page->kx_number);
}

// Capital letters are what the settings have; other names are those of kx sort, and become its code. Returns what is
// wrong with the name, or an empty string.
std::string take_language(std::string &language, const std::string &name) {
    const bool is_code = std::ranges::all_of(name, [](char letter) { return letter >= 'A' && letter <= 'Z'; });
    language = name;
    if (is_code) return name.empty() || name.size() > kMaxLanguage ? "a language has at most 7 bytes" : "";
    const FoundLanguage found = find_language(name);
    if (found.language != nullptr) language = found.language->code;
    if (language == "US") language = "EN"; // which the library starts with
    return found.fault;
}

std::string no_page(const std::string &text) {
    return "no code page '" + text + "'; `kx codepages` lists them";
}

// The character of a byte, as KX text has it; empty where there is none.
std::string character_of(const KxCodePage &page, std::uint8_t byte) {
    const KxChar ch = codepage::to_kx(page, byte, false);
    if (ch == KX_NONE || kxstr::is_code(ch) || kxstr::set_of(ch) == kxstr::kNativeByteSet) return {};
    const std::uint16_t unit = kxstr::unicode::from_kx(ch, page.input_code_page);
    if (unit == KX_NONE || unit < ' ') return {};
    char bytes[kxstr::kMostUtf8Bytes];
    return {bytes, kxstr::write_utf8(unit, bytes)};
}

int print_page(std::uint16_t number) {
    KxCodePage page{};
    codepage::set_code_page(page, number, codepage::kTowardsKx);
    std::string text = "   ";
    const auto digit = [](unsigned value) { return "0123456789ABCDEF"[value]; };
    for (unsigned column = 0; column < 16; ++column)
        (text += ' ') += digit(column);
    for (unsigned byte = 0; byte < 0x100; ++byte) {
        if (byte % 16 == 0) ((text += '\n') += digit(byte / 16)) += "0 ";
        const std::string character = character_of(page, static_cast<std::uint8_t>(byte));
        (text += ' ') += character.empty() ? " " : character;
    }
    while (text.find(" \n") != std::string::npos)
        text.erase(text.find(" \n"), 1);
    std::printf("%s\n", text.erase(text.find_last_not_of(' ') + 1).c_str());
    if (codepage::has_double_byte_rule(number)) {
        std::printf("\nIts double-byte characters go by a rule: `kx dump` and `kx convert` show them.\n");
    }
    return kSuccess;
}

int set_pages(const std::string &language, const std::optional<std::uint16_t> &dos,
              const std::optional<std::uint16_t> &windows) {
    VaskSetLanguage(language.c_str());
    kxstr::registry::CYWKey key(codepage::settings_key(), 0);
    std::uint32_t status = key.status;
    for (const auto &[name, number] :
         {std::pair(codepage::kDosValue, dos), std::pair(codepage::kWindowsValue, windows)}) {
        if (!number || status != platform::kSuccess) continue;
        std::uint8_t bytes[2];
        kxstr::store_u16le(bytes, *number);
        status = key.SetValue(name, kxstr::registry::kCodePageType, bytes, sizeof bytes, 1, 0);
    }
    if (status == platform::kSuccess) return kSuccess;
    report(kUsageText.command, "the code pages of " + language + " cannot be stored (status " + std::to_string(status) +
                                   ")" +
                                   (status == platform::kAccessDenied ? ": access denied, or write-protected" : ""));
    return kFailure;
}

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
    std::optional<std::uint16_t> dos, windows;
    const Parsed parsed =
        parse_options(argc, argv, kUsageText, [&](int id, const std::string &argument) -> std::string {
            if (id == kDosOption || id == kWindowsOption) {
                const auto page = (id == kDosOption ? dos : windows) = parse_page(argument);
                return page ? "" : no_page(argument);
            }
            return take_language(languages.emplace_back(), argument);
        });
    if (parsed.stop) return parsed.status;
    const std::vector<std::string> operands(argv + parsed.first_operand, argv + argc);
    if (!operands.empty() && operands[0] == "set") {
        if (operands.size() != 2) return usage_error(kUsageText, "set takes a language");
        std::string language;
        if (const std::string fault = take_language(language, operands[1]); !fault.empty())
            return usage_error(kUsageText, fault);
        if (!dos && !windows) return usage_error(kUsageText, "set needs --dos or --windows");
        return set_pages(language, dos, windows);
    }
    if (dos || windows) return usage_error(kUsageText, "--dos and --windows go with set");
    if (operands.size() > 1) return usage_error(kUsageText, "one page at a time");
    if (operands.size() == 1) {
        const auto page = parse_page(operands[0]);
        return page ? print_page(*page) : usage_error(kUsageText, no_page(operands[0]));
    }
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
