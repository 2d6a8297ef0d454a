// A first look at strings of bytes, in place: most are short, and the way to a kernel or to the C library would take a
// third of the time that such a string takes. By vectors that every processor of the family has; where it has none, and
// where the plain forms are asked for, no look tells anything.
//
// Like the kernels a look reads no page that a walk would not read, but behind the terminator: nothing for a build with
// AddressSanitizer.
#pragma once

#include <cstddef>
#include <cstdint>

#include "simd/kernels.h"

#if defined(__SANITIZE_ADDRESS__)
#    define KXSTR_NO_LOOK
#elif defined(__has_feature)
#    if __has_feature(address_sanitizer)
#        define KXSTR_NO_LOOK
#    endif
#endif
#if defined(__x86_64__) && !defined(_WIN32) && !defined(KXSTR_NO_LOOK)
#    define KXSTR_LOOK
#    include <emmintrin.h>
#endif

namespace kxstr::simd {

inline constexpr std::size_t kNotSeen = SIZE_MAX;

#ifdef KXSTR_LOOK
namespace look {

inline constexpr std::size_t kBlock = sizeof(__m128i), kSize = 2 * kBlock;

inline bool may_read(const std::uint8_t *string) noexcept {
    constexpr std::uintptr_t kPage = 4096; // the smallest there is
    return reinterpret_cast<std::uintptr_t>(string) % kPage <= kPage - kSize;
}
inline __m128i load(const std::uint8_t *bytes) noexcept {
    return _mm_loadu_si128(reinterpret_cast<const __m128i *>(bytes));
}
inline __m128i all(std::uint8_t byte) noexcept {
    return _mm_set1_epi8(static_cast<char>(byte));
}
// The first lane of two blocks that is 0.
inline std::size_t first_zero(__m128i first, __m128i second) noexcept {
    const auto zeros = [](__m128i block) {
        return static_cast<std::uint32_t>(_mm_movemask_epi8(_mm_cmpeq_epi8(block, __m128i{})));
    };
    const std::uint32_t found = zeros(first) | zeros(second) << kBlock;
    return found != 0 ? static_cast<std::size_t>(__builtin_ctz(found)) : kNotSeen;
}

// 0 in the lanes that are equal, in the second form but for case.
inline __m128i apart(__m128i a, __m128i b) noexcept {
    return _mm_xor_si128(a, b);
}
inline __m128i apart_caseless(__m128i a, __m128i b) noexcept {
    const __m128i from_a = _mm_sub_epi8(_mm_or_si128(a, all(0x20)), all('a'));
    const __m128i is_letter = _mm_cmpeq_epi8(_mm_min_epu8(from_a, all('z' - 'a')), from_a);
    return _mm_andnot_si128(_mm_and_si128(is_letter, all(0x20)), _mm_xor_si128(a, b));
}
// A lane of 0 where `apart` is not 0 or `a` is.
inline __m128i differ_or_end(__m128i apart, __m128i a) noexcept {
    return _mm_andnot_si128(_mm_cmpeq_epi8(a, __m128i{}), _mm_cmpeq_epi8(apart, __m128i{}));
}
template <class Apart> std::size_t first_apart(const std::uint8_t *a, const std::uint8_t *b, Apart apart_of) noexcept {
    if (!has_vectors || !may_read(a) || !may_read(b)) return kNotSeen;
    const __m128i a0 = load(a), a1 = load(a + kBlock);
    return first_zero(differ_or_end(apart_of(a0, load(b)), a0), differ_or_end(apart_of(a1, load(b + kBlock)), a1));
}

} // namespace look

// Bytes before the first one that is `wanted` or the terminator.
inline std::size_t look_for(const std::uint8_t *string, std::uint8_t wanted) noexcept {
    if (!has_vectors || !look::may_read(string)) return kNotSeen;
    const __m128i first = look::load(string), second = look::load(string + look::kBlock), sought = look::all(wanted);
    return look::first_zero(_mm_min_epu8(first, _mm_xor_si128(first, sought)),
                            _mm_min_epu8(second, _mm_xor_si128(second, sought)));
}

// Bytes before the first one in which two strings differ, or that ends both; a to z may be taken as A to Z.
inline std::size_t look_apart(const std::uint8_t *a, const std::uint8_t *b) noexcept {
    return look::first_apart(a, b, look::apart);
}
inline std::size_t look_apart_caseless(const std::uint8_t *a, const std::uint8_t *b) noexcept {
    return look::first_apart(a, b, look::apart_caseless);
}

#else

inline std::size_t look_for(const std::uint8_t *, std::uint8_t) noexcept {
    return kNotSeen;
}
inline std::size_t look_apart(const std::uint8_t *, const std::uint8_t *) noexcept {
    return kNotSeen;
}
inline std::size_t look_apart_caseless(const std::uint8_t *, const std::uint8_t *) noexcept {
    return kNotSeen;
}

#endif

} // namespace kxstr::simd
