#include <immintrin.h>

#include "simd/families.h"
#include "simd/stream_blocks.h"

namespace kxstr::simd::avx512 {

Narrowed narrow_stream(std::uint8_t *stream, std::size_t length, const std::uint16_t *codes) noexcept {
    constexpr std::uint64_t all = ~std::uint64_t{0};
    if (length <= 64) return plain::narrow_stream(stream, length, codes); // a gather takes longer
    std::size_t written = 0;
    std::size_t dropped = 0;
    for (std::size_t read = 0; read < length;) {
        const std::size_t left = length - read;
        const std::uint64_t live = left < 64 ? _bzhi_u64(all, static_cast<unsigned>(left)) : all;
        const __m512i bytes = _mm512_maskz_loadu_epi8(live, stream + read);
        const std::uint64_t extended = _mm512_cmpeq_epi8_mask(bytes, _mm512_set1_epi8(static_cast<char>(0xF0)));
        if (extended == 0) {
            _mm512_mask_storeu_epi8(stream + written, live, bytes);
            written += left < 64 ? left : 64;
            read += 64;
            continue;
        }
        const StreamCodes found = find_codes({0, extended}, 0);
        // Whole codes only: up to the first that is odd or reaches over the end.
        std::uint64_t openers = found.openers;
        unsigned end = left < 64 ? static_cast<unsigned>(left) : 64;
        if (found.odd != 0) {
            openers &= (found.odd & -found.odd) - 1;
            end = 63 - static_cast<unsigned>(__builtin_clzll(openers));
        } else if (end == 64 && openers >> 61 != 0) {
            end = 63 - static_cast<unsigned>(__builtin_clzll(openers));
        }
        if (end == 0) {
            // An odd one by itself: its closing byte is not looked at.
            const unsigned code = codes[stream[read + 1] | stream[read + 2] << 8];
            read += 4;
            if (code == 0xFFFF) {
                ++dropped;
                continue;
            }
            if (code > 0xFF) stream[written++] = static_cast<std::uint8_t>(code >> 8);
            stream[written++] = static_cast<std::uint8_t>(code);
            continue;
        }
        const std::uint64_t used = _bzhi_u64(all, end);
        openers = found.openers & used;
        const std::uint64_t inside = openers << 1 | openers << 2 | openers << 3;
        const __m512i characters = _mm512_cvtepu16_epi32(
            _mm512_castsi512_si256(_mm512_maskz_compress_epi8(openers << 1 | openers << 2, bytes)));
        const auto some = static_cast<__mmask16>(_bzhi_u64(all, static_cast<unsigned>(_mm_popcnt_u64(openers))));
        const __m512i values = _mm512_and_si512(
            _mm512_mask_i32gather_epi32(_mm512_setzero_si512(), some, characters, codes, 2), _mm512_set1_epi32(0xFFFF));
        const __mmask16 none = _mm512_cmpeq_epi32_mask(values, _mm512_set1_epi32(0xFFFF));
        const __mmask16 doubles = _mm512_cmpgt_epi32_mask(values, _mm512_set1_epi32(0xFF));
        // Lead byte in place of the opener, trail or only byte behind it.
        const __m256i units = _mm512_cvtepi32_epi16(values);
        const __m256i swapped = _mm256_or_si256(_mm256_slli_epi16(units, 8), _mm256_srli_epi16(units, 8));
        const std::uint64_t places = openers | openers << 1;
        const __m512i result = _mm512_mask_expand_epi8(bytes, places, _mm512_castsi256_si512(swapped));
        const auto kept = static_cast<std::uint16_t>(~none);
        const std::uint64_t stay =
            (live & used & ~openers & ~inside) | _pdep_u64(kept & doubles, openers) | _pdep_u64(kept, openers) << 1;
        const auto size = static_cast<unsigned>(_mm_popcnt_u64(stay));
        _mm512_mask_storeu_epi8(stream + written, _bzhi_u64(all, size), _mm512_maskz_compress_epi8(stay, result));
        written += size;
        dropped += static_cast<unsigned>(__builtin_popcount(none & some));
        read += end;
    }
    return {written, dropped};
}

} // namespace kxstr::simd::avx512
