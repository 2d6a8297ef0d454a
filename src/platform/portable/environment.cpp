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

std::string_view locale_name(ReadVariable read) noexcept {
    for (const char *variable : {"LC_ALL", "LC_CTYPE", "LANG"})
        if (const auto value = value_of(read, variable); !value.empty()) return value;
    return {};
}

// language_COUNTRY.ENCODING@modifier: the encoding does not count, the modifier only where it names another script.
tables::Language language_of_locale(std::string_view name) noexcept {
    const std::string_view modifier = name.substr(std::min(name.find('@'), name.size()));
    const std::string_view country = name.substr(0, name.find_first_of(".@"));
    for (const std::string_view suffix : {modifier, std::string_view{}}) {
        const auto found = std::ranges::find_if(tables::kLocaleNames, [&](const tables::LocaleName &entry) {
            const std::string_view known = entry.name();
            return known.size() == country.size() + suffix.size() && known.starts_with(country) &&
                   known.ends_with(suffix);
        });
        if (found != tables::kLocaleNames.end()) return *find_language(found->language);
    }
    return kDefault;
}

// Joins the parts into the path; nothing is written when they do not fit.
bool set_path(KxPlatformSettings &settings, std::string_view folder, std::string_view file) noexcept {
    if (folder.size() + file.size() >= sizeof settings.registry_path) return false;
    char *const end = std::ranges::copy(folder, settings.registry_path).out;
    std::ranges::copy(file, end);
    return true;
}

// Without HOME there is no settings file: asking the user database could mean asking the network, which has no place in
// the loading of a library.
void find_registry(KxPlatformSettings &settings, ReadVariable read) noexcept {
    if (const char *const path = read("KX_REGISTRY"); path != nullptr && set_path(settings, path, {})) return;
    if (const auto folder = value_of(read, "XDG_CONFIG_HOME"); folder.starts_with('/')) {
        set_path(settings, folder, "/kxstr/registry.reg");
    } else if (const auto home = value_of(read, "HOME"); !home.empty()) {
        set_path(settings, home, "/.config/kxstr/registry.reg");
    }
}

} // namespace

KxPlatformSettings settings_from(ReadVariable read) noexcept {
    const tables::Language locale = language_of_locale(locale_name(read));
    KxPlatformSettings settings{};
    settings.ansi_code_page = parse_code_page(value_of(read, "KX_ANSI_CODEPAGE")).value_or(locale.ansi_code_page);
    settings.oem_code_page = parse_code_page(value_of(read, "KX_OEM_CODEPAGE")).value_or(locale.oem_code_page);
    const bool double_byte = is_double_byte_page(settings.ansi_code_page);
    settings.double_byte = parse_flag(value_of(read, "KX_DBCS")).value_or(double_byte ? 1 : 0);
    settings.system_language = parse_language(value_of(read, "KX_SYSTEM_LANGID")).value_or(locale.identifier);
    settings.keyboard_language =
        parse_language(value_of(read, "KX_KEYBOARD_LANGID")).value_or(settings.system_language);
    find_registry(settings, read);
    return settings;
}

} // namespace kxstr::platform
