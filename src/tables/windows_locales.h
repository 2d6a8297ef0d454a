// The languages that Windows knows and the code pages that it uses for them; names of locales for these languages.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

namespace kxstr::tables {

struct Language {
    std::uint16_t identifier;
    std::uint16_t ansi_code_page; // 0: Unicode only
    std::uint16_t oem_code_page;
};

// The characters stand in the entry, and not behind an address that would have to be relocated.
struct LocaleName {
    char characters[16]; // with a terminator, without an encoding: ja_JP, sr_RS@latin
    std::uint16_t language;

    constexpr std::string_view name() const noexcept { return characters; }
};

extern const std::span<const Language> kLanguages;     // ascending by identifier
extern const std::span<const LocaleName> kLocaleNames; // ascending by name

} // namespace kxstr::tables
