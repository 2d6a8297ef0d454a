#include "letters/case.h"

#include <algorithm>
#include <array>
#include <span>

#include "codepage/country.h"
#include "tables/case_ranges.h"

extern "C" constexpr uint8_t rngchr[30] = {
    0x1A, 0xF1,                               // set 1, Latin
    0,    0,    0, 0, 0, 0, 0, 0, 0, 0, 0, 0, // 2 to 7
    0x00, 0x45,                               // 8, Greek
    0,    0,                                  // 9
    0x00, 0xC7,                               // 10, Cyrillic
    0,    0,    0, 0, 0, 0, 0, 0, 0, 0,       // 11 to 15
};

namespace kxstr::letters {
namespace {

using simd::CaseMap;
using simd::CaseRange;

constexpr CaseRange make_range(int first, int last, int step, bool pairs) {
    return {static_cast<std::uint16_t>(first), static_cast<std::uint16_t>(last - first),
            static_cast<std::uint16_t>(step), pairs ? std::uint16_t{1} : std::uint16_t{0}};
}

constexpr bool give_slot(CaseMap &map, const CaseRange &range) {
    const std::size_t slot = (range.first >> 8) % CaseMap::kSlots;
    if (map.step[slot] != 0 || range.step % 2 != range.pairs) return false;
    map.first[slot] = range.first;
    map.span[slot] = range.span;
    map.step[slot] = range.step;
    return true;
}

// From the first character of the ranges to the last one; without ranges, a place where no character has case.
constexpr CaseRange hull_of(std::span<const CaseRange> ranges) {
    int first = kNone, last = ranges.empty() ? int{kNone} : 0;
    for (const CaseRange &range : ranges) {
        first = std::min<int>(first, range.first);
        last = std::max(last, range.first + range.span);
    }
    return make_range(first, last, 0, false);
}

constexpr CaseMap make_map(bool lower, std::span<const tables::CaseRange> of_country) {
    CaseMap map{};
    map.lower = lower;
    std::size_t &count = map.count;
    // Steps are counted in the map's direction.
    const auto distant = [lower](int first, int last, int distance) {
        return make_range(first, last, lower ? distance : -distance, false);
    };
    map.ranges[count++] = lower ? distant('A', 'Z', 'a' - 'A') : distant('a', 'z', 'A' - 'a');
    for (unsigned set = 1; set < kFirstSetByCountry; ++set) { // pairs: a capital is even
        const int first = make_char(set, rngchr[2 * set - 2]), last = make_char(set, rngchr[2 * set - 1]);
        if (index_of(static_cast<KxChar>(last)) != 0) map.ranges[count++] = make_range(first, last, 1, true);
    }
    for (const CaseRange &range : std::span(map.ranges).first(count))
        give_slot(map, range);

    CaseRange rest[std::size(map.ranges)]{};
    std::size_t rest_count = 0;
    for (const tables::CaseRange &letters : of_country) {
        if (letters.first == 0) break;
        const CaseRange range = distant(letters.first, letters.last, letters.distance);
        (give_slot(map, range) ? map.ranges[count++] : rest[rest_count++]) = range;
    }
    map.slotted = count;
    for (const CaseRange &range : std::span(rest).first(rest_count))
        map.ranges[count++] = range;
    map.behind_common = hull_of(std::span(map.ranges).first(count).subspan(CaseMap::kCommon));
    map.behind_slotted = hull_of(std::span(map.ranges).first(count).subspan(map.slotted));
    return map;
}

constexpr BothMaps make_maps(std::size_t country) {
    return {make_map(true, tables::kCapitalRanges[country]), make_map(false, tables::kSmallLetterRanges[country])};
}

} // namespace

constexpr std::array<BothMaps, 5> maps_by_country{
    {{make_map(true, {}), make_map(false, {})}, make_maps(0), make_maps(1), make_maps(2), make_maps(3)}};

KxChar to_lower_by_country(KxChar ch) noexcept {
    return lower_map().of(ch);
}

KxChar to_upper_by_country(KxChar ch) noexcept {
    return upper_map().of(ch);
}

} // namespace kxstr::letters

extern "C" {

uint16_t wtolower(uint32_t ch) {
    return kxstr::letters::to_lower(kxstr::low16(ch));
}

uint16_t wtoupper(uint32_t ch) {
    return kxstr::letters::to_upper(kxstr::low16(ch));
}

uint16_t W6wstrLowerCh(uint32_t ch) {
    return wtolower(ch);
}

uint16_t W6wstrUpperCh(uint32_t ch) {
    return wtoupper(ch);
}
}
