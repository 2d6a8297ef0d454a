#include <immintrin.h>

#include "simd/families.h"

// Blocks of plain text go over at once; others unit by unit, since gathers gain nothing on many processors of this
// family.
namespace kxstr::simd::avx2 {
namespace {

constexpr std::size_t kBytes = 32;
constexpr std::size_t kUnits = 16;

__m256i load(const void *place) noexcept {
    return _mm256_loadu_si256(static_cast<const __m256i *>(place));
}
void store(void *place, __m256i value) noexcept {
    _mm256_storeu_si256(static_cast<__m256i *>(place), value);
}

// Whether all bytes lie in 0x20..0x7E. As signed numbers those above are negative.
bool is_text_of_bytes(__m256i bytes) noexcept {
    const __m256i inside = _mm256_cmpgt_epi8(bytes, _mm256_set1_epi8(0x1F));
    const __m256i last = _mm256_cmpeq_epi8(bytes, _mm256_set1_epi8(0x7F));
    return _mm256_movemask_epi8(_mm256_andnot_si256(last, inside)) == -1;
}
bool is_text_of_units(__m256i units) noexcept {
    const __m256i inside = _mm256_cmpgt_epi16(units, _mm256_set1_epi16(0x1F));
    const __m256i above = _mm256_cmpgt_epi16(units, _mm256_set1_epi16(0x7E));
    return _mm256_movemask_epi8(_mm256_andnot_si256(above, inside)) == -1;
}

void widen(__m256i bytes, std::uint16_t *destination) noexcept {
    store(destination, _mm256_cvtepu8_epi16(_mm256_castsi256_si128(bytes)));
    store(destination + kUnits, _mm256_cvtepu8_epi16(_mm256_extracti128_si256(bytes, 1)));
}

} // namespace

void map_bytes(const std::uint16_t *map, const std::uint8_t *source, std::size_t count,
               std::uint16_t *destination) noexcept {
    for (; count >= kBytes; count -= kBytes) {
        const std::size_t at = count - kBytes;
        const __m256i bytes = load(source + at);
        if (is_text_of_bytes(bytes)) {
            widen(bytes, destination + at);
        } else {
            plain::map_bytes(map, source + at, kBytes, destination + at);
        }
    }
    plain::map_bytes(map, source, count, destination);
}

std::size_t map_units(const std::uint16_t *map, const std::uint16_t *source, std::size_t count,
                      std::uint16_t *destination) noexcept {
    std::size_t done = 0;
    for (; count - done >= kUnits; done += kUnits) {
        const __m256i units = load(source + done);
        if (is_text_of_units(units)) {
            store(destination + done, units);
        } else if (const std::size_t stored = plain::map_units(map, source + done, kUnits, destination + done);
                   stored < kUnits || destination[done + kUnits - 1] == 0) {
            return done + stored;
        }
    }
    return done + plain::map_units(map, source + done, count - done, destination + done);
}

std::size_t encode_units(const std::uint16_t *map, const std::uint16_t *source, std::size_t count,
                         std::uint8_t *destination, NoCode no_code) noexcept {
    std::uint8_t *out = destination;
    for (; count >= kUnits; count -= kUnits, source += kUnits) {
        const __m256i units = load(source);
        if (is_text_of_units(units)) {
            const __m256i packed = _mm256_permute4x64_epi64(_mm256_packus_epi16(units, units), 0b1000);
            _mm_storeu_si128(reinterpret_cast<__m128i *>(out), _mm256_castsi256_si128(packed));
            out += kUnits;
        } else {
            out += plain::encode_units(map, source, kUnits, out, no_code);
        }
    }
    out += plain::encode_units(map, source, count, out, no_code);
    return static_cast<std::size_t>(out - destination);
}

Decoded decode_pairs(const std::uint16_t *map, const std::uint8_t *leads, const std::uint8_t *source, std::size_t count,
                     std::uint16_t *destination) noexcept {
    Decoded done{};
    while (count - done.read >= kBytes) {
        const __m256i bytes = load(source + done.read);
        Decoded step{kBytes, kBytes};
        if (is_text_of_bytes(bytes)) {
            widen(bytes, destination + done.written);
        } else {
            step = plain::decode_pairs(map, leads, source + done.read, kBytes, destination + done.written);
        }
        done = {done.read + step.read, done.written + step.written};
    }
    const Decoded rest =
        plain::decode_pairs(map, leads, source + done.read, count - done.read, destination + done.written);
    return {done.read + rest.read, done.written + rest.written};
}

} // namespace kxstr::simd::avx2
