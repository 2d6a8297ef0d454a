#include <immintrin.h>

#include "simd/scan_loops.h"

namespace kxstr::simd::avx2 {
namespace {

constexpr std::size_t kBlock = sizeof(__m256i) / sizeof(std::uint16_t);

struct Words {
    using Unit = std::uint16_t;
    using Vector = __m256i;
    static constexpr unsigned kBits = 2;
    static Vector all(Unit unit) noexcept { return _mm256_set1_epi16(static_cast<short>(unit)); }
    static Vector least(Vector a, Vector b) noexcept { return _mm256_min_epu16(a, b); }
    static std::uint64_t ends(Vector apart, Vector units) noexcept {
        const Vector zero = _mm256_setzero_si256();
        const Vector goes_on = _mm256_andnot_si256(_mm256_cmpeq_epi16(units, zero), _mm256_cmpeq_epi16(apart, zero));
        return static_cast<std::uint32_t>(~_mm256_movemask_epi8(goes_on));
    }
    static std::uint64_t zeros(Vector units) noexcept {
        const Vector is_zero = _mm256_cmpeq_epi16(units, _mm256_setzero_si256());
        return static_cast<std::uint32_t>(_mm256_movemask_epi8(is_zero));
    }
    static Vector load_anywhere(const void *place) noexcept {
        return _mm256_loadu_si256(static_cast<const Vector *>(place));
    }
};

// All bits of the lanes within first to first + span.
__m256i in_range(__m256i units, std::uint16_t first, std::uint16_t span) noexcept {
    const __m256i above = _mm256_sub_epi16(units, Words::all(first));
    return _mm256_cmpeq_epi16(_mm256_min_epu16(above, Words::all(span)), above);
}

bool any(__m256i lanes) noexcept {
    return _mm256_testz_si256(lanes, lanes) == 0;
}

// What a map makes of a block.
class Mapping {
  public:
    explicit Mapping(const CaseMap &map) noexcept : map_(map), flip_(Words::all(map.lower ? 0 : 1)) {}

    __m256i operator()(__m256i units) const noexcept {
        // Most blocks hold ASCII and codes alone.
        __m256i step = step_of(units, map_.ranges[0]);
        if (any(in_range(units, 0x80, 0xF8FF - 0x80))) {
            for (std::size_t i = 1; i < CaseMap::kCommon; ++i)
                step = _mm256_or_si256(step, step_of(units, map_.ranges[i]));
            if (any(in_range(units, map_.behind_common.first, map_.behind_common.span))) {
                for (std::size_t i = CaseMap::kCommon; i < map_.count; ++i)
                    step = _mm256_or_si256(step, step_of(units, map_.ranges[i]));
            }
        }
        return map_.lower ? _mm256_add_epi16(units, step) : _mm256_sub_epi16(units, step);
    }

  private:
    __m256i step_of(__m256i units, const CaseRange &range) const noexcept {
        const __m256i stays = _mm256_and_si256(_mm256_xor_si256(units, flip_), Words::all(range.pairs));
        const __m256i step = _mm256_andnot_si256(stays, Words::all(range.step)); // a pair's step is 1
        return _mm256_and_si256(in_range(units, range.first, range.span), step);
    }

    const CaseMap &map_;
    __m256i flip_;
};

// The first and the last `Half` units, which overlap.
template <std::size_t Half> void copy_by_two(std::uint16_t *to, const std::uint16_t *from, std::size_t count) noexcept {
    __builtin_memcpy(to, from, Half * sizeof *to);
    __builtin_memcpy(to + count - Half, from + count - Half, Half * sizeof *to);
}

// The first `count` of a block's units, at most all.
void store_first(std::uint16_t *to, __m256i units, std::size_t count) noexcept {
    std::uint16_t block[kBlock];
    _mm256_storeu_si256(reinterpret_cast<__m256i *>(block), units);
    if (count >= 8) {
        copy_by_two<8>(to, block, count);
    } else if (count >= 4) {
        copy_by_two<4>(to, block, count);
    } else if (count >= 2) {
        copy_by_two<2>(to, block, count);
    } else if (count != 0) {
        *to = *block;
    }
}

// The beginning of a string, which is mostly all of it, and mostly just written, by two stores that overlap: a load
// that needs both of them waits until they have reached the cache. The first unit by itself and small loads behind it
// find what they need in one store each where that copied 8 or 16 characters with their terminator, and mostly else.
// Gives the units mapped; if they are kHead, the string may go on.
constexpr std::size_t kHead = 1 + kBlock;

[[gnu::always_inline]] inline std::size_t map_head(const Mapping &mapping, const std::uint16_t *from,
                                                   std::uint16_t *to) noexcept {
    const auto load8 = [from](std::size_t at) { return _mm_loadu_si128(reinterpret_cast<const __m128i *>(from + at)); };
    if (*from == 0) return 0;
    const __m256i first = mapping(_mm256_zextsi128_si256(_mm_cvtsi32_si128(*from)));
    const __m256i others = _mm256_inserti128_si256(_mm256_castsi128_si256(load8(1)), load8(1 + kBlock / 2), 1);
    const std::uint64_t ends = Words::zeros(others);
    const std::size_t count = ends != 0 ? first_of<Words>(ends) : kBlock;
    store_first(to + 1, mapping(others), count);
    *to = static_cast<std::uint16_t>(_mm_cvtsi128_si32(_mm256_castsi256_si128(first)));
    return 1 + count;
}

} // namespace

std::size_t map_case16(const CaseMap &map, const std::uint16_t *from, std::uint16_t *to, std::size_t limit) noexcept {
    if (is_odd(from) || limit < kHead || !fits_in_page<kHead * sizeof *from>(from))
        return plain::map_case16(map, from, to, limit);
    const Mapping mapping(map);
    const std::size_t head = map_head(mapping, from, to);
    if (head != kHead) return head;
    for (std::size_t done = head; done != limit; done += kBlock) {
        // What is left of a page is read together with units mapped already; these stay as they are.
        const std::size_t left = left_in_page(from + done) / sizeof *from;
        if (left < kBlock) done -= kBlock - left;
        const __m256i units = Words::load_anywhere(from + done);
        if (const std::uint64_t ends = Words::zeros(units); ends != 0 || limit - done < kBlock) {
            std::size_t length = ends != 0 ? first_of<Words>(ends) : kBlock;
            if (length > limit - done) length = limit - done;
            store_first(to + done, mapping(units), length);
            return done + length;
        }
        _mm256_storeu_si256(reinterpret_cast<__m256i *>(to + done), mapping(units));
    }
    return limit;
}

std::uint16_t *change_case16(const CaseMap &map, std::uint16_t *string) noexcept {
    map_case16(map, string, string, SIZE_MAX);
    return string;
}

std::size_t mismatch_by_case16(const CaseMap &map, const std::uint16_t *a, const std::uint16_t *b,
                               std::size_t limit) noexcept {
    const Mapping mapping(map);
    return mismatch<Words>(a, b, limit, [&mapping](__m256i x, __m256i y) { return mapping(x) ^ mapping(y); });
}

} // namespace kxstr::simd::avx2
