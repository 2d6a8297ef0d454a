#include "platform/portable/languages.h"

#include <algorithm>

#include "platform/system.h"

namespace kxstr::platform {
namespace {

struct CharacterSet {
    std::uint16_t code_page;
    std::uint8_t character_set;
};

// 42 is the page of symbol fonts, 65001 is UTF-8.
constexpr CharacterSet kCharacterSets[] = {
    {42, 2},     {874, 222},  {932, 128},  {936, 134},  {949, 129},  {950, 136},  {1250, 238}, {1251, 204},  {1252, 0},
    {1253, 161}, {1254, 162}, {1255, 177}, {1256, 178}, {1257, 186}, {1258, 163}, {1361, 130}, {65001, 254},
};

// 0x0000, 0x0400, ... 0x1400 name no language but the default one of the user, the system or the user interface, which
// are one and the same here.
constexpr bool means_default(std::uint16_t language) noexcept {
    return (language & 0x03FF) == 0 && language <= 0x1400;
}

} // namespace

const tables::Language *find_language(std::uint16_t identifier) noexcept {
    const auto found = std::ranges::lower_bound(tables::kLanguages, identifier, {}, &tables::Language::identifier);
    return found != tables::kLanguages.end() && found->identifier == identifier ? &*found : nullptr;
}

std::optional<std::uint32_t> ansi_code_page_of(std::uint16_t language) noexcept {
    const auto *const found = find_language(means_default(language) ? system_language() : language);
    if (found == nullptr) return std::nullopt;
    return found->ansi_code_page;
}

std::optional<std::uint8_t> character_set_of(std::uint32_t code_page) noexcept {
    const auto *const found = std::ranges::find(kCharacterSets, code_page, &CharacterSet::code_page);
    if (found == std::end(kCharacterSets)) return std::nullopt;
    return found->character_set;
}

} // namespace kxstr::platform
