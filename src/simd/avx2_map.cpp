#include <cstring>

#include "simd/look_up.h"
#include "simd/scan_loops.h"

// Blocks of plain text go over at once. Of other blocks each value is loaded by itself.
namespace kxstr::simd::avx2 {
namespace {

constexpr std::size_t kBytes = 32;
constexpr std::size_t kUnits = 16;
constexpr std::size_t kGroup = 8; // units that are looked up together

__m256i load(const void *place) noexcept {
    return _mm256_loadu_si256(static_cast<const __m256i *>(place));
}
void store(void *place, __m256i value) noexcept {
    _mm256_storeu_si256(static_cast<__m256i *>(place), value);
}
void store(void *place, __m128i value) noexcept {
    _mm_storeu_si128(static_cast<__m128i *>(place), value);
}

// Whether all bytes lie in 0x20..0x7E. As signed numbers those above are negative.
bool is_text(__m256i bytes) noexcept {
    const __m256i inside = _mm256_cmpgt_epi8(bytes, _mm256_set1_epi8(0x1F));
    const __m256i last = _mm256_cmpeq_epi8(bytes, _mm256_set1_epi8(0x7F));
    return _mm256_movemask_epi8(_mm256_andnot_si256(last, inside)) == -1;
}
// Whether no unit is 0 or above kLastSame.
bool is_same(__m256i units) noexcept {
    const __m256i less = _mm256_sub_epi16(units, _mm256_set1_epi16(1)), last = _mm256_set1_epi16(kLastSame - 1);
    return _mm256_movemask_epi8(_mm256_cmpeq_epi16(_mm256_min_epu16(less, last), less)) == -1;
}
bool has_zero(__m256i units) noexcept {
    return _mm256_movemask_epi8(_mm256_cmpeq_epi16(units, _mm256_setzero_si256())) != 0;
}

template <class Unit> __m256i look_up16(const std::uint16_t *map, const Unit *units) noexcept {
    return _mm256_inserti128_si256(_mm256_castsi128_si256(look_up8(map, units)), look_up8(map, units + kGroup), 1);
}

void widen(__m256i bytes, std::uint16_t *destination) noexcept {
    store(destination, _mm256_cvtepu8_epi16(_mm256_castsi256_si128(bytes)));
    store(destination + kUnits, _mm256_cvtepu8_epi16(_mm256_extracti128_si256(bytes, 1)));
}
__m128i narrow(__m256i units) noexcept {
    return _mm_packus_epi16(_mm256_castsi256_si128(units), _mm256_extracti128_si256(units, 1));
}

// The values of 16 bytes.
void map_block(const std::uint16_t *map, const std::uint8_t *source, std::uint16_t *destination) noexcept {
    const __m256i units = _mm256_cvtepu8_epi16(_mm_loadu_si128(reinterpret_cast<const __m128i *>(source)));
    const __m256i place = _mm256_sub_epi16(units, _mm256_set1_epi16(0x20)), last = _mm256_set1_epi16(0x7E - 0x20);
    if (_mm256_movemask_epi8(_mm256_cmpeq_epi16(_mm256_min_epu16(place, last), place)) == -1) {
        store(destination, units);
        return;
    }
    store(destination, look_up16(map, source));
}

} // namespace

std::size_t map_bytes(const std::uint16_t *map, const std::uint8_t *source, std::size_t limit,
                      std::uint16_t *destination) noexcept {
    const auto *const text = reinterpret_cast<const char *>(source);
    const std::size_t length = limit == SIZE_MAX ? __builtin_strlen(text) : strnlen(text, limit);
    destination[length] = 0;
    std::size_t left = length;
    for (; left >= kUnits; left -= kUnits)
        map_block(map, source + left - kUnits, destination + left - kUnits);
    while (left-- > 0)
        destination[left] = map[source[left]];
    return length;
}

std::size_t map_units(const std::uint16_t *map, const std::uint16_t *source, std::size_t limit,
                      std::uint16_t *destination) noexcept {
    std::size_t done = 0;
    while (limit - done >= kUnits) {
        if (left_in_page(source + done) < sizeof(__m256i)) {
            const std::size_t more = plain::map_units(map, source + done, kUnits, destination + done);
            done += more;
            if (more < kUnits) return done;
            continue;
        }
        const __m256i units = load(source + done);
        __m256i values = units;
        if (!is_same(units)) {
            if (has_zero(units)) break;
            values = look_up16(map, source + done);
            if (has_zero(values)) break;
        }
        store(destination + done, values);
        done += kUnits;
    }
    return done + plain::map_units(map, source + done, limit - done, destination + done);
}

Progress encode_units(const std::uint16_t *map, const std::uint16_t *source, std::size_t limit,
                      std::uint8_t *destination, NoCode no_code) noexcept {
    Progress done{};
    const auto go_on_plainly = [&](std::size_t count) {
        const Progress more = plain::encode_units(map, source + done.read, count, destination + done.written, no_code);
        done = {done.read + more.read, done.written + more.written};
        return more.read == count;
    };
    while (limit - done.read >= kUnits) {
        if (left_in_page(source + done.read) < sizeof(__m256i)) {
            if (!go_on_plainly(kUnits)) return done;
            continue;
        }
        const __m256i units = load(source + done.read);
        __m256i values = units;
        if (!is_same(units)) {
            if (has_zero(units)) break;
            values = look_up16(map, source + done.read);
            if (_mm256_testz_si256(values, _mm256_set1_epi16(static_cast<short>(0xFF00))) == 0) {
                go_on_plainly(kUnits);
                continue;
            }
        }
        store(destination + done.written, narrow(values));
        done = {done.read + kUnits, done.written + kUnits};
    }
    go_on_plainly(limit - done.read);
    return done;
}

Progress decode_pairs(const std::uint16_t *map, const std::uint8_t *leads, const std::uint8_t *source,
                      std::size_t count, std::uint16_t *destination) noexcept {
    Progress done{};
    while (count - done.read >= kBytes) {
        const __m256i bytes = load(source + done.read);
        Progress step{kBytes, kBytes};
        if (is_text(bytes)) {
            widen(bytes, destination + done.written);
        } else {
            step = plain::decode_pairs(map, leads, source + done.read, kBytes, destination + done.written);
        }
        done = {done.read + step.read, done.written + step.written};
    }
    const Progress rest =
        plain::decode_pairs(map, leads, source + done.read, count - done.read, destination + done.written);
    return {done.read + rest.read, done.written + rest.written};
}

Progress decode_page(const std::uint16_t *map, const std::uint8_t *leads, const std::uint8_t *source, std::size_t count,
                     std::uint16_t *destination) noexcept {
    return decode_pairs(map, leads, source, count, destination);
}

} // namespace kxstr::simd::avx2
