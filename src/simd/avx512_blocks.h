// What the files of this family that go by blocks of 64 have in common.
#pragma once

#include <immintrin.h>

#include <cstddef>
#include <cstdint>

namespace kxstr::simd::avx512 {
namespace { // NOLINT(cert-dcl59-cpp): each file has these compiled for its family

inline constexpr std::size_t kBlock = 64; // units or bytes
inline constexpr std::size_t kHalf = 32;  // units in a register
inline constexpr std::size_t kGroup = 8;  // units that are looked up together

// Bytes from which on what is written would not stay in the caches until somebody reads it.
inline constexpr std::size_t kPastCaches = std::size_t{1} << 24;

inline __m512i load(const void *place) noexcept {
    return _mm512_loadu_si512(place);
}
inline void store(void *place, __m512i value) noexcept {
    _mm512_storeu_si512(place, value);
}
// Past the caches, to an aligned address; _mm_sfence() follows the last one.
inline void stream(void *place, __m512i value) noexcept {
    _mm512_stream_si512(static_cast<__m512i *>(place), value);
}
inline std::size_t lesser(std::size_t a, std::size_t b) noexcept {
    return a < b ? a : b;
}
// The lowest `count` bits.
inline std::uint64_t first_bits(std::size_t count) noexcept {
    return _bzhi_u64(~std::uint64_t{0}, static_cast<unsigned>(lesser(count, kBlock)));
}
inline std::size_t count_of(std::uint64_t bits) noexcept {
    return static_cast<std::size_t>(__builtin_popcountll(bits));
}
// The lowest bit that is set, and those below it.
inline std::uint64_t up_to_first(std::uint64_t bits) noexcept {
    return bits ^ (bits - 1);
}

} // namespace
} // namespace kxstr::simd::avx512
