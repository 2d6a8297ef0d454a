#include <immintrin.h>

#include "simd/scan_loops.h"

namespace kxstr::simd::avx512 {
namespace {

constexpr std::size_t kBlock = sizeof(__m512i) / sizeof(std::uint16_t);

__m512i all(std::uint16_t unit) noexcept {
    return _mm512_set1_epi16(static_cast<short>(unit));
}

__mmask32 in_range(__m512i units, __m512i first, __m512i span) noexcept {
    return _mm512_cmple_epu16_mask(_mm512_sub_epi16(units, first), span);
}

// The forms without a mask make gcc 12 warn of its own header.
constexpr __mmask64 kAllBytes = ~__mmask64{0};

__m512i permuted(__m512i slots, __m512i table) noexcept {
    return _mm512_maskz_permutexvar_epi8(kAllBytes, slots, table);
}

// What a map of one direction makes of a block.
template <bool Lower> class Mapping {
  public:
    explicit Mapping(const CaseMap &map) noexcept
        : first_(_mm512_load_si512(map.first)),
          span_(_mm512_load_si512(map.span)),
          step_(_mm512_load_si512(map.step)),
          map_(map),
          has_rest_(map.count != map.slotted) {}

    __m512i operator()(__m512i units) const noexcept {
        // The byte permutations look at 6 bits: the low 5 of the set, which lie from bit 8 of the unit on, and below
        // them the bit that tells the two bytes of a slot apart.
        constexpr int kThirdWhereSecond = 0xB8; // bits of the third operand where the second has 1, else of the first
        const __m512i from_bit_7 = _mm512_set1_epi64(0x3737'2727'1717'0707);
        const __m512i slots =
            _mm512_ternarylogic_epi32(_mm512_maskz_multishift_epi64_epi8(kAllBytes, from_bit_7, units), all(0x0101),
                                      all(0x0100), kThirdWhereSecond);
        const __mmask32 hits = in_range(units, permuted(slots, first_), permuted(slots, span_));
        const __m512i result = moved(units, hits, units, permuted(slots, step_), all(1));
        if (!has_rest_) return result;
        if (in_range(units, all(map_.behind_slotted.first), all(map_.behind_slotted.span)) == 0) [[likely]]
            return result;
        return map_rest(units, result);
    }

  private:
    // The hits of `units` moved by the step. Where it has its lowest bit and that is one of `pairs`, only those that
    // stand in the other case.
    static __m512i moved(__m512i others, __mmask32 hits, __m512i units, __m512i step, __m512i pairs) noexcept {
        constexpr int kUnlessBoth = 0x70, kUnlessOnlyThird = 0xD0; // the first operand, unless the others say so
        if constexpr (Lower) {
            step = _mm512_ternarylogic_epi32(step, units, pairs, kUnlessBoth);
            return _mm512_mask_add_epi16(others, hits, units, step);
        } else {
            step = _mm512_ternarylogic_epi32(step, units, pairs, kUnlessOnlyThird);
            return _mm512_mask_sub_epi16(others, hits, units, step);
        }
    }

    [[gnu::noinline]] __m512i map_rest(__m512i units, __m512i result) const noexcept {
        for (std::size_t i = map_.slotted; i < map_.count; ++i) {
            const CaseRange &range = map_.ranges[i];
            const __mmask32 hits = in_range(units, all(range.first), all(range.span));
            result = moved(result, hits, units, all(range.step), all(range.pairs));
        }
        return result;
    }

    __m512i first_, span_, step_;
    const CaseMap &map_;
    bool has_rest_;
};

struct Words {
    using Unit = std::uint16_t;
    using Vector = __m512i;
    static constexpr unsigned kBits = 1;
    static Vector all(Unit unit) noexcept { return _mm512_set1_epi16(static_cast<short>(unit)); }
    static Vector least(Vector a, Vector b) noexcept { return _mm512_min_epu16(a, b); }
    static std::uint64_t ends(Vector apart, Vector units) noexcept {
        return _mm512_test_epi16_mask(apart, apart) | _mm512_testn_epi16_mask(units, units);
    }
    static std::uint64_t zeros(Vector units) noexcept { return _mm512_testn_epi16_mask(units, units); }
    static Vector load_anywhere(const void *place) noexcept { return _mm512_loadu_si512(place); }
};

// The first `count` of a block's units; all of them from a whole block on.
__mmask32 first_units(std::size_t count) noexcept {
    return count < kBlock ? (std::uint32_t{1} << count) - 1 : ~std::uint32_t{0};
}

template <bool Lower>
std::size_t map_string(const CaseMap &map, const std::uint16_t *from, std::uint16_t *to, std::size_t limit) noexcept {
    const Mapping<Lower> mapping(map);
    const auto before_end = [](std::uint32_t ends, std::size_t size) noexcept -> __mmask32 {
        return ((ends & (0 - ends)) - 1) & first_units(size);
    };
    // At first up to a multiple of the block, of what lies in the page; or up to the terminator, which is mostly near.
    const bool is_whole = left_in_page(from) >= sizeof(__m512i);
    std::size_t size = kBlock - address(from) / sizeof *from % kBlock;
    __m512i units = is_whole ? _mm512_loadu_si512(from) : _mm512_maskz_loadu_epi16(first_units(size), from);
    if (const std::uint32_t ends = _mm512_testn_epi16_mask(units, units); is_whole && ends != 0) {
        const __mmask32 mapped = before_end(ends, limit);
        _mm512_mask_storeu_epi16(to, mapped, mapping(units));
        return static_cast<std::size_t>(__builtin_popcount(mapped));
    }
    for (std::size_t done = 0;;) {
        const std::size_t most = size < limit - done ? size : limit - done;
        const __mmask32 mapped = before_end(_mm512_testn_epi16_mask(units, units), most);
        _mm512_mask_storeu_epi16(to + done, mapped, mapping(units));
        done += static_cast<std::size_t>(__builtin_popcount(mapped));
        if (mapped != first_units(size) || done == limit) return done;
        size = kBlock;
        for (; limit - done >= 2 * kBlock; done += 2 * kBlock) {
            units = _mm512_load_si512(from + done);
            if (address(from + done) % (2 * sizeof units) != 0) break; // the second block is of the first one's page
            const __m512i second = _mm512_load_si512(from + done + kBlock), least = _mm512_min_epu16(units, second);
            if (_mm512_testn_epi16_mask(least, least) != 0) break;
            _mm512_storeu_si512(to + done, mapping(units));
            _mm512_storeu_si512(to + done + kBlock, mapping(second));
        }
        units = _mm512_load_si512(from + done);
    }
}

template <bool Lower>
std::size_t mismatch_mapped(const CaseMap &map, const std::uint16_t *a, const std::uint16_t *b,
                            std::size_t limit) noexcept {
    const Mapping<Lower> mapping(map);
    return mismatch<Words>(a, b, limit, [&mapping](__m512i x, __m512i y) { return mapping(x) ^ mapping(y); });
}

} // namespace

std::size_t map_case16(const CaseMap &map, const std::uint16_t *from, std::uint16_t *to, std::size_t limit) noexcept {
    if (is_odd(from) || limit == 0) return plain::map_case16(map, from, to, limit);
    return map.lower ? map_string<true>(map, from, to, limit) : map_string<false>(map, from, to, limit);
}

std::size_t mismatch_by_case16(const CaseMap &map, const std::uint16_t *a, const std::uint16_t *b,
                               std::size_t limit) noexcept {
    return map.lower ? mismatch_mapped<true>(map, a, b, limit) : mismatch_mapped<false>(map, a, b, limit);
}

} // namespace kxstr::simd::avx512
