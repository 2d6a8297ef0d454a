#include "simd/families.h"

namespace kxstr::simd::plain {
std::size_t map_case16(const CaseMap &map, const std::uint16_t *from, std::uint16_t *to, std::size_t limit) noexcept {
    std::size_t i = 0;
    for (; i < limit && from[i] != 0; ++i)
        to[i] = map.of(from[i]);
    return i;
}

std::uint16_t *change_case16(const CaseMap &map, std::uint16_t *string) noexcept {
    map_case16(map, string, string, SIZE_MAX);
    return string;
}

std::size_t mismatch_by_case16(const CaseMap &map, const std::uint16_t *a, const std::uint16_t *b,
                               std::size_t limit) noexcept {
    std::size_t i = 0;
    for (; i < limit; ++i) {
        if (a[i] != b[i] && map.of(a[i]) != map.of(b[i])) break;
        if (a[i] == 0) break;
    }
    return i;
}

} // namespace kxstr::simd::plain
