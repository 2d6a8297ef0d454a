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
#include "option_list.h"
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

constexpr Option kOptions[] = {said(option::kLanguage, "tell what is in force for LANG too, such as FR or french"),
                               option::kDos, option::kWindows, option::kOutput};

constexpr Action kActions[] = {{"set", "LANG", "store the code pages of a language"}};

constexpr Example kExamples[] = {
    {"kx codepages 852", "the characters of a page, by their bytes"},
    {"kx codepages set FR --dos 850 --windows 1252", "the code pages of French texts"},
};

constexpr Usage kUsageText{
    "kx codepages",
    "[-l LANG]... [-o OUT] | PAGE [-o OUT] | set LANG [--dos PAGE] [--windows PAGE]",
    "Lists the code pages that have tables, and the DOS and Windows code pages that are in force:\n"
    "for the language EN, for the languages that have settings, and for each LANG.\n"
    "With a PAGE, such as 852, shows its characters by their bytes. set stores the code pages of a\n"
    "language, as programs that use the library do, where links lead.",
    kOptions,
    "A table's size is in bytes; the reverse table also tells how many characters it holds. What is\n"
    "in force is a stored value, else the default of the country, else the system's code page.",
    kExamples,
    "done",
    "the settings cannot be read or written, or the output not be written",
    kActions,
};

// Nothing for text that names no code page of the library; then the fault says so.
std::optional<std::uint16_t> parse_page(const std::string &text, std::string &fault) {
    std::uint16_t number = 0;
    const char *const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number);
    if (error == std::errc{} && stop == end &&
        (codepage::find_code_page(number) != nullptr || codepage::has_double_byte_rule(number)))
        return number;
    std::optional<CodePage> page;
    fault = take_page(page, text);
    if (!page) return std::nullopt;
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

// The character of a byte, as KX text has it; empty where there is none.
std::string character_of(const KxCodePage &page, std::uint8_t byte) {
    const KxChar ch = codepage::to_kx(page, byte, false);
    if (ch == KX_NONE || kxstr::is_code(ch) || kxstr::set_of(ch) == kxstr::kNativeByteSet) return {};
    const std::uint16_t unit = kxstr::unicode::from_kx(ch, page.input_code_page);
    if (unit == KX_NONE || unit < ' ') return {};
    char bytes[kxstr::kMostUtf8Bytes];
    return {bytes, kxstr::write_utf8(unit, bytes)};
}

std::string characters_of(std::uint16_t number) {
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
    text.erase(text.find_last_not_of(' ') + 1) += '\n';
    if (codepage::has_double_byte_rule(number))
        text += "\nIts double-byte characters go by a rule: `kx dump` and `kx convert` show them.\n";
    return text;
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

struct Cell {
    std::string text;
    std::size_t width; // 0: the last of its row
};

std::string row(std::initializer_list<Cell> cells) {
    std::string text;
    for (const auto &[cell, width] : cells) {
        text += cell;
        if (width != 0) text.append(std::max(width, cell.size()) - cell.size() + 1, ' ');
    }
    return text + '\n';
}

std::string tables() {
    std::string text = row({{"page", 6}, {"Windows", 8}, {"low table", 11}, {"high table", 11}, {"reverse table", 0}});
    for (const auto &page : kxstr::tables::kCodePages) {
        const unsigned entries = kxstr::load_u16le(page.reverse());
        text += row({{std::to_string(page.kx_number), 6},
                     {std::to_string(page.windows_number), 8},
                     {range_of(page.low()), 11},
                     {range_of(page.high()), 11},
                     {std::to_string(entries) + " in " + std::to_string(2 + 3 * entries), 0}});
    }
    text += "\nBy rule, for their double-byte characters:";
    for (std::uint32_t number = 0; number <= 0xFFFF; ++number)
        if (codepage::has_double_byte_rule(number)) text.append(" ").append(std::to_string(number));
    return text + "\n\n";
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

struct InForce {
    std::string page, origin;
};
InForce in_force(const char *value_name, const codepage::DefaultCodePage &otherwise) {
    if (const std::uint16_t number = stored(value_name); number != 0) return {std::to_string(number), "stored"};
    return {std::to_string(otherwise.number), otherwise.by_country ? "default of the country" : "the system's"};
}

std::string in_force(const std::vector<std::string> &languages) {
    static constexpr const char *kCountries[] = {"none of the special ones", "Japan",  "Korea", "Taiwan and Hong Kong",
                                                 "China and Singapore",      "Arabic", "Israel"};
    char start[128];
    std::snprintf(start, sizeof start, "Country: %u (%s). Language identifier of the system: 0x%04X.\n\n",
                  codepage::country_id(), kCountries[codepage::country_id()], platform::system_language());
    std::string text = start + row({{"language", 9}, {"DOS code page", 32}, {"Windows code page", 0}});
    for (const std::string &language : languages) {
        const PagesInForce pages = pages_in_force(language.c_str());
        text += row({{language, 9},
                     {pages.dos + ", " + pages.dos_origin, 32},
                     {pages.windows + ", " + pages.windows_origin, 0}});
    }
    if (platform::is_double_byte_system())
        text += "\nOn this double-byte system OEM strings are in the Windows code page, too.\n";
    return text;
}

} // namespace

PagesInForce pages_in_force(const char *language) {
    VaskSetLanguage(language);
    const InForce dos = in_force(codepage::kDosValue, codepage::default_dos_code_page());
    const InForce windows = in_force(codepage::kWindowsValue, codepage::default_windows_code_page());
    return {dos.page, dos.origin, windows.page, windows.origin};
}

int run_codepages(int argc, char **argv) {
    std::vector<std::string> languages{"EN"};
    std::string output;
    std::optional<std::uint16_t> dos, windows;
    const Parsed parsed = parse_options(argc, argv, kUsageText, [&](int id, const Argument &argument) -> std::string {
        if (id == 'o') {
            output = argument;
            return "";
        }
        if (id == kDosId || id == kWindowsId) {
            std::string fault;
            (id == kDosId ? dos : windows) = parse_page(argument.text, fault);
            return fault;
        }
        return take_language(languages.emplace_back(), argument.text);
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
        std::string fault;
        const auto page = parse_page(operands[0], fault);
        if (!page) return usage_error(kUsageText, fault);
        return write_text(kUsageText.command, output, characters_of(*page)) ? kSuccess : kFailure;
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
    if (!write_text(kUsageText.command, output, tables() + in_force(once))) return kFailure;
    const std::uint32_t status = settings_status();
    if (status == platform::kDamaged || status == platform::kAccessDenied) {
        report(kUsageText.command,
               "the settings file cannot be read (status " + std::to_string(status) + "); nothing stored counts");
        return kFailure;
    }
    return kSuccess;
}

} // namespace kx
