// The first 32 bytes of byte strings, for the exported functions: short strings end there, and the way to a kernel
// would take as long as looking at them. By vectors that every processor of the architecture has (SSE2), so there is
// nothing to choose, and in place. Where it is not told here, the kernel tells. The functions begin a line of the cache
// (gnu::aligned): they are so short that one line more is a tenth of their time.
//
// KXSTR_NEAREST says that this is compiled in: not for sanitizers, which would object to what is read behind a
// terminator, and nowhere where there are the plain kernels alone.
#pragma once

#include <cstdint>

#ifdef KXSTR_NEAREST
#    include <emmintrin.h>
#endif

namespace kxstr::simd {

// The bytes are read where they begin behind the first byte of a page and less than this behind it: nowhere, where the
// plain kernels are chosen. At the first byte they are not, so that null need not be asked for.
#pragma GCC visibility push(hidden)
extern constinit std::uint32_t nearest_end;
#pragma GCC visibility pop

inline constexpr std::uint32_t kNearest = 32;
inline constexpr std::uint32_t kNearestEnd = 4096 - kNearest;

// All of these: a bit for each byte of the first 32, from the lowest on, at which they find what they look for. Only
// the lowest one set counts. 0: not told.

#ifdef KXSTR_NEAREST

inline bool can_be_read(const std::uint8_t *bytes) noexcept {
    return (reinterpret_cast<std::uintptr_t>(bytes) - 1) % 4096 < nearest_end;
}
inline __m128i half_at(const std::uint8_t *bytes) noexcept {
    return _mm_loadu_si128(reinterpret_cast<const __m128i *>(bytes));
}
inline __m128i all(char byte) noexcept {
    return _mm_set1_epi8(byte);
}
inline std::uint32_t zeros_of(__m128i low, __m128i high) noexcept {
    const __m128i zero = _mm_setzero_si128();
    const auto in_low = static_cast<std::uint32_t>(_mm_movemask_epi8(_mm_cmpeq_epi8(low, zero)));
    const auto in_high = static_cast<std::uint32_t>(_mm_movemask_epi8(_mm_cmpeq_epi8(high, zero)));
    return in_low | in_high << 16;
}

// The terminator.
inline std::uint32_t nearest_end_of(const std::uint8_t *string) noexcept {
    return can_be_read(string) ? zeros_of(half_at(string), half_at(string + 16)) : 0;
}

// A byte or the terminator.
inline std::uint32_t nearest_of(const std::uint8_t *string, std::uint8_t wanted) noexcept {
    if (!can_be_read(string)) return 0;
    const __m128i sought = all(static_cast<char>(wanted)), low = half_at(string), high = half_at(string + 16);
    return zeros_of(_mm_min_epu8(low, _mm_xor_si128(low, sought)), _mm_min_epu8(high, _mm_xor_si128(high, sought)));
}

// Where two strings differ, or both end.
inline std::uint32_t nearest_difference(const std::uint8_t *a, const std::uint8_t *b) noexcept {
    if (!can_be_read(a) || !can_be_read(b)) return 0;
    const __m128i low = half_at(a), high = half_at(a + 16);
    return zeros_of(_mm_min_epu8(_mm_cmpeq_epi8(low, half_at(b)), low),
                    _mm_min_epu8(_mm_cmpeq_epi8(high, half_at(b + 16)), high));
}

// The same; a to z are taken as A to Z, which in the second half is too much for so short a way: a difference there may
// be none.
inline std::uint32_t nearest_caseless_difference(const std::uint8_t *a, const std::uint8_t *b) noexcept {
    if (!can_be_read(a) || !can_be_read(b)) return 0;
    const __m128i low = half_at(a), high = half_at(a + 16), bit = all('a' - 'A');
    // Compared as signed: a is the least that there is.
    const __m128i from_a = _mm_add_epi8(_mm_or_si128(low, bit), all(static_cast<char>(-128 - 'a')));
    const __m128i letters = _mm_cmpgt_epi8(all(-128 + 'z' - 'a' + 1), from_a);
    // Of letters but the one bit may differ.
    const __m128i apart = _mm_andnot_si128(_mm_and_si128(letters, bit), _mm_xor_si128(low, half_at(b)));
    return zeros_of(_mm_min_epu8(_mm_cmpeq_epi8(apart, _mm_setzero_si128()), low),
                    _mm_min_epu8(_mm_cmpeq_epi8(high, half_at(b + 16)), high));
}

#else

inline std::uint32_t nearest_end_of(const std::uint8_t *) noexcept {
    return 0;
}
inline std::uint32_t nearest_of(const std::uint8_t *, std::uint8_t) noexcept {
    return 0;
}
inline std::uint32_t nearest_difference(const std::uint8_t *, const std::uint8_t *) noexcept {
    return 0;
}
inline std::uint32_t nearest_caseless_difference(const std::uint8_t *, const std::uint8_t *) noexcept {
    return 0;
}

#endif

// The place of the lowest bit.
inline std::uint32_t place_of(std::uint32_t hits) noexcept {
    return static_cast<std::uint32_t>(__builtin_ctz(hits));
}

} // namespace kxstr::simd
