// Values of a map of 16-bit units, for the families that have vectors. Like scan_loops.h: for their files alone.
#pragma once

#include <immintrin.h>

#include <cstddef>
#include <cstdint>

namespace kxstr::simd {
namespace { // NOLINT(cert-dcl59-cpp): each family's file has these compiled for it

// The values of the four units of so many bits that a word has lowest.
template <unsigned Bits>
[[gnu::always_inline]] inline __m128i look_up4(const std::uint16_t *map, std::uint64_t units) noexcept {
    constexpr std::uint64_t kUnit = (std::uint64_t{1} << Bits) - 1;
    __m128i values = _mm_cvtsi32_si128(map[units & kUnit]);
    values = _mm_insert_epi16(values, map[units >> Bits & kUnit], 1);
    values = _mm_insert_epi16(values, map[units >> 2 * Bits & kUnit], 2);
    return _mm_insert_epi16(values, map[units >> 3 * Bits & kUnit], 3);
}

// The values of eight units, by one load each: on many processors a gather takes longer.
[[gnu::always_inline]] inline __m128i look_up8(const std::uint16_t *map, const std::uint16_t *units) noexcept {
    std::uint64_t first = 0, second = 0;
    __builtin_memcpy(&first, units, sizeof first);
    __builtin_memcpy(&second, units + 4, sizeof second);
    return _mm_unpacklo_epi64(look_up4<16>(map, first), look_up4<16>(map, second));
}
[[gnu::always_inline]] inline __m128i look_up8(const std::uint16_t *map, const std::uint8_t *bytes) noexcept {
    std::uint64_t all = 0;
    __builtin_memcpy(&all, bytes, sizeof all);
    return _mm_unpacklo_epi64(look_up4<8>(map, all), look_up4<8>(map, all >> 32));
}

} // namespace
} // namespace kxstr::simd
