#include "platform/portable/environment.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string_view>

#include "platform/portable/languages.h"
#include "tables/windows_locales.h"

namespace kxstr::platform {
namespace {

constexpr tables::Language kDefault{0x0409, 1252, 437}; // C, POSIX and unknown locales

std::string_view value_of(ReadVariable read, const char *name) noexcept {
    const char *const value = read(name);
    return value == nullptr ? std::string_view{} : std::string_view{value};
}

// The whole text as a 16-bit number; nothing for signs, blanks and anything else that is no digit.
std::optional<std::uint16_t> parse_number(std::string_view text, int base) noexcept {
    std::uint16_t number = 0;
    const char *const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number, base);
    if (error != std::errc{} || stop != end) return std::nullopt;
    return number;
}

std::optional<std::uint16_t> parse_code_page(std::string_view text) noexcept {
    const auto number = parse_number(text, 10);
    return number == 0 ? std::nullopt : number;
}

std::optional<std::uint16_t> parse_language(std::string_view text) noexcept {
    if (text.starts_with("0x") || text.starts_with("0X")) text.remove_prefix(2);
    return parse_number(text, 16);
}

std::optional<std::uint16_t> parse_flag(std::string_view text) noexcept {
    if (text == "0") return 0;
    if (text == "1") return 1;
    return std::nullopt;
}

constexpr bool is_double_byte_page(std::uint32_t code_page) noexcept {
    return code_page == 932 || code_page == 936 || code_page == 949 || code_page == 950;
}

struct LocaleVariable {
    const char *name; // null: none is set
    std::string_view value;
};

LocaleVariable locale_variable(ReadVariable read) noexcept {
    for (const char *variable : {"LC_ALL", "LC_CTYPE", "LANG"})
        if (const auto value = value_of(read, variable); !value.empty()) return {variable, value};
    return {nullptr, {}};
}

// language_COUNTRY.ENCODING@modifier: the encoding does not count, the modifier only where it names another script.
std::optional<tables::Language> language_of_locale(std::string_view name) noexcept {
    const std::string_view modifier = name.substr(std::min(name.find('@'), name.size()));
    const std::string_view country = name.substr(0, name.find_first_of(".@"));
    if (country.empty() || country == "C" || country == "POSIX") return std::nullopt; // no need to read the table
    for (const std::string_view suffix : {modifier, std::string_view{}}) {
        const auto found = std::ranges::find_if(tables::kLocaleNames, [&](const tables::LocaleName &entry) {
            const std::string_view known = entry.name();
            return known.size() == country.size() + suffix.size() && known.starts_with(country) &&
                   known.ends_with(suffix);
        });
        if (found != tables::kLocaleNames.end()) return *find_language(found->language);
    }
    return std::nullopt;
}

// Joins the parts into the path; nothing is written when they do not fit.
bool set_path(KxPlatformSettings &settings, std::string_view folder, std::string_view file) noexcept {
    if (folder.size() + file.size() >= sizeof settings.registry_path) return false;
    char *const end = std::ranges::copy(folder, settings.registry_path).out;
    std::ranges::copy(file, end);
    return true;
}

// Without HOME there is no settings file: asking the user database could mean asking the network, which has no place in
// the loading of a library. Returns the variable that leads there.
const char *find_registry(KxPlatformSettings &settings, ReadVariable read) noexcept {
    if (const char *const path = read("KX_REGISTRY"); path != nullptr && set_path(settings, path, {}))
        return "KX_REGISTRY";
    if (const auto folder = value_of(read, "XDG_CONFIG_HOME"); folder.starts_with('/')) {
        if (set_path(settings, folder, "/kxstr/registry.reg")) return "XDG_CONFIG_HOME";
    } else if (const auto home = value_of(read, "HOME"); !home.empty()) {
        if (set_path(settings, home, "/.config/kxstr/registry.reg")) return "HOME";
    }
    return "default";
}

} // namespace

KxPlatformSettings settings_from(ReadVariable read, Origins *origins) noexcept {
    const LocaleVariable variable = locale_variable(read);
    const auto known = language_of_locale(variable.value);
    const tables::Language locale = known.value_or(kDefault);
    const char *const from_locale = known ? variable.name : "default";
    Origins from{};
    // From its variable when that parses; else the value that something else gives it.
    const auto choose = [&](const char *&origin, const char *name, auto parse, const char *otherwise_from,
                            auto otherwise) {
        const auto told = parse(value_of(read, name));
        origin = told ? name : otherwise_from;
        return told ? *told : otherwise;
    };
    const auto page = [](std::string_view text) { return std::optional<std::uint32_t>(parse_code_page(text)); };
    const auto flag = [](std::string_view text) { return std::optional<std::uint32_t>(parse_flag(text)); };
    KxPlatformSettings settings{};
    settings.ansi_code_page = choose(from.ansi_code_page, "KX_ANSI_CODEPAGE", page, from_locale, locale.ansi_code_page);
    settings.oem_code_page = choose(from.oem_code_page, "KX_OEM_CODEPAGE", page, from_locale, locale.oem_code_page);
    settings.double_byte = choose(from.double_byte, "KX_DBCS", flag, "the ANSI code page",
                                  is_double_byte_page(settings.ansi_code_page) ? 1U : 0U);
    settings.system_language =
        choose(from.system_language, "KX_SYSTEM_LANGID", parse_language, from_locale, locale.identifier);
    settings.keyboard_language = choose(from.keyboard_language, "KX_KEYBOARD_LANGID", parse_language,
                                        "the system language", settings.system_language);
    from.store = find_registry(settings, read);
    if (origins != nullptr) *origins = from;
    return settings;
}

} // namespace kxstr::platform
