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
constexpr __mmask32 kAllUnits = ~__mmask32{0};

__m512i permuted(__m512i slots, __m512i table) noexcept {
    return _mm512_maskz_permutexvar_epi16(kAllUnits, slots, table);
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
        const __m512i result = by_slots(units);
        return has_rest(units) ? map_rest(units, result) : result;
    }
    // All of it, unless has_rest.
    __m512i by_slots(__m512i units) const noexcept {
        static_assert(CaseMap::kSlots == kBlock); // of the sets, the permutations look at the low 5 bits
        const __m512i slots = _mm512_srli_epi16(units, 8);
        const __mmask32 hits = in_range(units, permuted(slots, first_), permuted(slots, span_));
        return moved(units, hits, units, permuted(slots, step_), all(1));
    }
    bool has_rest(__m512i units) const noexcept {
        const CaseRange &rest = map_.behind_slotted;
        return has_rest_ && in_range(units, all(rest.first), all(rest.span)) != 0;
    }
    // The same of a map that has no ranges but the common ones: the cases differ by bits.
    __m512i by_bits(__m512i units) const noexcept {
        const __m512i slots = _mm512_srli_epi16(units, 8);
        const __mmask32 hits = in_range(units, permuted(slots, first_), permuted(slots, span_));
        const __m512i bits = _mm512_maskz_permutexvar_epi16(hits, slots, step_);
        if constexpr (Lower) return _mm512_or_si512(units, bits);
        return _mm512_andnot_si512(bits, units);
    }
    // The same of blocks of ASCII and codes alone.
    __m512i of_ascii(__m512i units) const noexcept {
        const CaseRange &letters = map_.ranges[0];
        const __mmask32 hits = in_range(units, all(letters.first), all(letters.span));
        if constexpr (Lower) return _mm512_mask_add_epi16(units, hits, units, all(letters.step));
        return _mm512_mask_sub_epi16(units, hits, units, all(letters.step));
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

std::size_t lesser(std::size_t a, std::size_t b) noexcept {
    return a < b ? a : b;
}

// The first `count` of a block's units; all of them from a whole block on.
__mmask32 first_units(std::size_t count) noexcept {
    return count < kBlock ? (std::uint32_t{1} << count) - 1 : ~std::uint32_t{0};
}

// Those of so many units, the lowest of the mask, that stand before an end.
__mmask32 before_end(std::uint32_t ends, std::size_t size) noexcept {
    return ((ends & (0 - ends)) - 1) & first_units(size);
}

// The beginning of a string, which is mostly all of it, and mostly just written, by two stores that overlap: a load
// that needs both of them waits until they have reached the cache. The first unit by itself and small loads behind it
// find what they need in one store each where that copied 8 or 16 characters with their terminator, and mostly else.
// Gives the units mapped: if they are kHead, the string may go on, if they are none, it may begin.
constexpr std::size_t kHead = 1 + kBlock / 2;

template <bool Lower>
[[gnu::always_inline]] inline std::size_t map_head(const Mapping<Lower> &mapping, const std::uint16_t *from,
                                                   std::uint16_t *to, std::size_t limit) noexcept {
    const auto load8 = [from](std::size_t at) { return _mm_loadu_si128(reinterpret_cast<const __m128i *>(from + at)); };
    const __m256i others = _mm256_inserti128_si256(_mm256_castsi128_si256(load8(1)), load8(1 + kBlock / 4), 1);
    // The first unit goes behind the others.
    const __m512i units =
        _mm512_inserti64x4(_mm512_castsi256_si512(others), _mm256_zextsi128_si256(_mm_cvtsi32_si128(*from)), 1);
    if (mapping.has_rest(units)) return 0;
    const __m512i values = mapping.by_slots(units);
    const __mmask32 mapped = before_end(_mm256_testn_epi16_mask(others, others), lesser(limit, kHead) - 1) & 0xFFFF;
    *to = static_cast<std::uint16_t>(_mm_cvtsi128_si32(_mm512_extracti32x4_epi32(values, 2)));
    _mm256_mask_storeu_epi16(to + 1, static_cast<__mmask16>(mapped), _mm512_castsi512_si256(values));
    return 1 + static_cast<std::size_t>(__builtin_popcount(mapped));
}

constexpr std::size_t kGroup = 4; // blocks, none of which a page's end divides from the others

struct Group {
    __m512i blocks[kGroup];

    explicit Group(const std::uint16_t *units) noexcept {
        for (std::size_t i = 0; i < kGroup; ++i)
            blocks[i] = _mm512_load_si512(units + i * kBlock);
    }
    bool has_zero() const noexcept { return has({0, 0, 0, 0}); }
    bool has(const CaseRange &range) const noexcept {
        const auto above = [&](std::size_t i) { return _mm512_sub_epi16(blocks[i], all(range.first)); };
        const __m512i least =
            _mm512_min_epu16(_mm512_min_epu16(above(0), above(1)), _mm512_min_epu16(above(2), above(3)));
        return _mm512_cmple_epu16_mask(least, all(range.span)) != 0;
    }
    // Whether all units are ASCII or more than 0x7FFF, as codes are.
    bool is_ascii() const noexcept {
        const __m512i greatest =
            _mm512_max_epi16(_mm512_max_epi16(blocks[0], blocks[1]), _mm512_max_epi16(blocks[2], blocks[3]));
        return _mm512_cmpgt_epi16_mask(greatest, all(0x7F)) == 0;
    }
};

// What stands behind the head, or does not fit in its page. A function of its own, so that short strings pay for no
// frame.
template <bool Lower>
[[gnu::noinline]] std::size_t map_rest(const CaseMap &map, const std::uint16_t *from, std::uint16_t *to,
                                       std::size_t limit, std::size_t done) noexcept {
    constexpr unsigned kMixedTurns = 16;
    const Mapping<Lower> mapping(map);
    const CaseRange &behind = map.behind_common;
    const bool ascii_is_told = behind.first >= 0xF900 || behind.first + behind.span < 0x8000;
    const bool is_common = map.count == CaseMap::kCommon;
    unsigned mixed = 0; // groups to map anyhow before ASCII is looked for again
    for (std::size_t size = kBlock - address(from + done) / sizeof *from % kBlock;; size = kBlock) {
        const std::size_t most = lesser(size, limit - done);
        const __m512i units = _mm512_maskz_loadu_epi16(first_units(most), from + done);
        const __mmask32 mapped = before_end(_mm512_testn_epi16_mask(units, units), most);
        _mm512_mask_storeu_epi16(to + done, mapped, mapping(units));
        done += static_cast<std::size_t>(__builtin_popcount(mapped));
        if (mapped != first_units(size) || done == limit) return done;
        for (std::size_t step = kBlock; limit - done >= kBlock; done += step) {
            step = kBlock;
            if (limit - done >= kGroup * kBlock && address(from + done) % (kGroup * sizeof units) == 0) {
                if (const Group group(from + done); !group.has_zero()) {
                    step = kGroup * kBlock;
                    const auto store = [&](auto map_block) {
                        for (std::size_t i = 0; i < kGroup; ++i)
                            _mm512_storeu_si512(to + done + i * kBlock, map_block(group.blocks[i]));
                    };
                    if (mixed == 0 && ascii_is_told && group.is_ascii()) {
                        store([&](__m512i block) { return mapping.of_ascii(block); });
                        continue;
                    }
                    mixed = mixed != 0 ? mixed - 1 : kMixedTurns;
                    if (is_common)
                        store([&](__m512i block) { return mapping.by_bits(block); });
                    else if (map.count == map.slotted || !group.has(map.behind_slotted))
                        store([&](__m512i block) { return mapping.by_slots(block); });
                    else
                        store(mapping);
                    continue;
                }
            }
            const __m512i block = _mm512_load_si512(from + done);
            if (_mm512_testn_epi16_mask(block, block) != 0) break;
            _mm512_storeu_si512(to + done, mapping(block));
        }
    }
}

template <bool Lower>
std::size_t map_string(const CaseMap &map, const std::uint16_t *from, std::uint16_t *to, std::size_t limit) noexcept {
    std::size_t done = 0;
    if (*from == 0) return 0;
    if (fits_in_page<kHead * sizeof *from>(from)) {
        done = map_head(Mapping<Lower>(map), from, to, limit);
        if ((done != kHead && done != 0) || done == limit) return done;
    }
    return map_rest<Lower>(map, from, to, limit, done);
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

std::uint16_t *change_case16(const CaseMap &map, std::uint16_t *string) noexcept {
    if (is_odd(string)) return plain::change_case16(map, string);
    map.lower ? map_string<true>(map, string, string, SIZE_MAX) : map_string<false>(map, string, string, SIZE_MAX);
    return string;
}

std::size_t mismatch_by_case16(const CaseMap &map, const std::uint16_t *a, const std::uint16_t *b,
                               std::size_t limit) noexcept {
    return map.lower ? mismatch_mapped<true>(map, a, b, limit) : mismatch_mapped<false>(map, a, b, limit);
}

} // namespace kxstr::simd::avx512
