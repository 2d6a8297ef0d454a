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

} // namespace

std::size_t map_case16(const CaseMap &map, const std::uint16_t *from, std::uint16_t *to, std::size_t limit) noexcept {
    if (is_odd(from) || limit < kBlock || left_in_page(from) < sizeof(__m256i))
        return plain::map_case16(map, from, to, limit);
    const Mapping mapping(map);
    const auto store = [to](std::size_t at, __m256i units) {
        _mm256_storeu_si256(reinterpret_cast<__m256i *>(to + at), units);
    };
    // The units before the terminator, when the block has it or the limit ends in it.
    const auto store_last = [&](std::size_t at, __m256i units) {
        const std::uint64_t ends = Words::zeros(units);
        std::size_t length = ends != 0 ? first_of<Words>(ends) : kBlock;
        if (length > limit - at) length = limit - at;
        std::uint16_t block[kBlock];
        _mm256_storeu_si256(reinterpret_cast<__m256i *>(block), mapping(units));
        __builtin_memcpy(to + at, block, length * sizeof *to);
        return at + length;
    };
    for (std::size_t done = 0; done != limit; done += kBlock) {
        // What is left of a page is read together with units mapped already; these stay as they are.
        const std::size_t left = left_in_page(from + done) / sizeof *from;
        if (left < kBlock) done -= kBlock - left;
        const __m256i units = Words::load_anywhere(from + done);
        if (Words::zeros(units) != 0 || limit - done < kBlock) return store_last(done, units);
        store(done, mapping(units));
    }
    return limit;
}

std::size_t mismatch_by_case16(const CaseMap &map, const std::uint16_t *a, const std::uint16_t *b,
                               std::size_t limit) noexcept {
    const Mapping mapping(map);
    return mismatch<Words>(a, b, limit, [&mapping](__m256i x, __m256i y) { return mapping(x) ^ mapping(y); });
}

} // namespace kxstr::simd::avx2
