// Where the bytes of eight characters go in a document stream. For the files of the families that have vectors alone.
#pragma once

#include <immintrin.h>

#include <cstddef>
#include <cstdint>

namespace kxstr::simd {

// By the bits of those of eight that are extended characters: for each byte of their codes the byte of the eight
// characters that comes there, 0x80 for 0xF0; and how many bytes these codes take.
struct StreamPlaces {
    alignas(32) std::uint8_t from[0x100][32];
    std::uint64_t sizes[0x100];
};
#pragma GCC visibility push(hidden)
extern constinit const StreamPlaces kStreamPlaces;
#pragma GCC visibility pop

namespace { // NOLINT(cert-dcl59-cpp): each family's file has these compiled for it

// 32 bytes are stored, first the codes of the eight characters that `twice` holds in both halves, each byte with the
// bits turned that 0xF0 has. The lowest bits of `wide` tell the extended ones. Gives the place behind the codes.
[[gnu::always_inline]] inline std::uint8_t *write_octet(std::uint8_t *stream, __m256i twice,
                                                        std::uint64_t wide) noexcept {
    const std::uint64_t index = wide & 0xFF;
    const __m256i places = _mm256_load_si256(reinterpret_cast<const __m256i *>(kStreamPlaces.from[index]));
    const __m256i codes =
        _mm256_xor_si256(_mm256_shuffle_epi8(twice, places), _mm256_set1_epi8(static_cast<char>(0xF0)));
    _mm256_storeu_si256(reinterpret_cast<__m256i *>(stream), codes);
    return stream + kStreamPlaces.sizes[index];
}

// 16 characters. What is stored reaches up to 24 bytes behind the codes.
[[gnu::always_inline]] inline std::uint8_t *write_octets(std::uint8_t *stream, __m256i characters,
                                                         std::uint64_t wide) noexcept {
    constexpr int kFirst = 0x44, kSecond = 0xEE; // a half in both
    characters = _mm256_xor_si256(characters, _mm256_set1_epi8(static_cast<char>(0xF0)));
    stream = write_octet(stream, _mm256_permute4x64_epi64(characters, kFirst), wide);
    return write_octet(stream, _mm256_permute4x64_epi64(characters, kSecond), wide >> 8);
}

} // namespace
} // namespace kxstr::simd
