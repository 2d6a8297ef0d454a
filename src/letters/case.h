// Letter case of KX characters: every comparison without case and the collation rest on these two functions.
#pragma once

#include <array>
#include <cstddef>
#include <kxstr/letters.h>

#include "codepage/country.h"
#include "core/kx_char.h"
#include "simd/kernels.h"

namespace kxstr::letters {

// From this set on, letters are paired by the East Asian letters of the country; below, by rule.
inline constexpr std::uint8_t kFirstSetByCountry = 16;

// Whether a character of the sets 1 to 15 lies in the case range of its set.
inline bool has_case(KxChar ch) noexcept {
    const std::uint8_t *range = rngchr + std::ptrdiff_t{2} * (set_of(ch) - 1);
    return range[1] != 0 && range[0] <= index_of(ch) && index_of(ch) <= range[1];
}

// What the two functions below do to each unit of a text, for the kernels. Each asks for the country; the maps stay.
struct BothMaps {
    simd::CaseMap lower, upper;
};
#pragma GCC visibility push(hidden)
extern const std::array<BothMaps, 5> maps_by_country; // [0]: of all countries without letters of their own
#pragma GCC visibility pop
inline const BothMaps &maps() noexcept {
    static_assert(codepage::kNoCountry == 0 && codepage::kJapanese == 1 && codepage::kSimplifiedChinese == 4);
    std::uint8_t country = codepage::decided_country.load(std::memory_order_relaxed);
    if (country == codepage::kUndecided) [[unlikely]]
        country = codepage::country_id();
    return maps_by_country[country < maps_by_country.size() ? country : 0];
}
inline const simd::CaseMap &lower_map() noexcept {
    return maps().lower;
}
inline const simd::CaseMap &upper_map() noexcept {
    return maps().upper;
}

// For characters from kFirstSetByCountry on.
KxChar to_lower_by_country(KxChar ch) noexcept;
KxChar to_upper_by_country(KxChar ch) noexcept;

// The character itself where it has no other case. Codes of KX strings (from 0xF900 up) come back unchanged.
inline KxChar to_lower(KxChar ch) noexcept {
    if (set_of(ch) == kAsciiSet) return ch >= 'A' && ch <= 'Z' ? static_cast<KxChar>(ch | 0x20) : ch;
    if (set_of(ch) >= kFirstSetByCountry) return to_lower_by_country(ch);
    return has_case(ch) ? static_cast<KxChar>(ch | 1) : ch;
}

inline KxChar to_upper(KxChar ch) noexcept {
    if (set_of(ch) == kAsciiSet) return ch >= 'a' && ch <= 'z' ? static_cast<KxChar>(ch & 0xDF) : ch;
    if (set_of(ch) >= kFirstSetByCountry) return to_upper_by_country(ch);
    return has_case(ch) ? static_cast<KxChar>(ch & 0xFFFE) : ch;
}

} // namespace kxstr::letters
