// The values of single characters in the collation by language number, and composite characters.
#pragma once

#include <algorithm>
#include <iterator>

#include "collate/collation_sequence.h"
#include "core/kx_char.h"
#include "letters/case.h"
#include "tables/collation.h"

namespace kxstr::collate {

using tables::LanguageKind;
using tables::LanguageRules;

// Ignorable at the first level; Hebrew and Arabic languages only.
inline constexpr std::uint8_t kIgnorable = 0xFD;

// Every number past the last follows the rules of the last, an East Asian language.
inline const LanguageRules &rules_of(std::uint16_t language) noexcept {
    return tables::kCollationLanguages[std::min<std::size_t>(language, std::size(tables::kCollationLanguages) - 1)];
}

// The East Asian letters have no case here.
inline bool is_lower(KxChar ch) noexcept {
    return set_of(ch) < letters::kFirstSetByCountry && letters::to_upper(ch) != ch;
}
// The value of the third level: lowercase letters before everything else.
inline std::uint8_t case_value(KxChar ch) noexcept {
    return is_lower(ch) ? 0 : 1;
}

// First level.
std::uint8_t primary_value(KxChar ch, const LanguageRules &rules) noexcept;

// Second level, for a character and its primary value: diacritics and variants.
std::uint16_t secondary_value(KxChar ch, std::uint8_t primary, const LanguageRules &rules) noexcept;

// The parts of a composite character, or null.
const tables::Composite *find_composite(KxChar ch) noexcept;

} // namespace kxstr::collate
