#include <immintrin.h>

#include "simd/order_values.h"
#include "simd/scan_loops.h"

namespace kxstr::simd::avx512 {
namespace {

constexpr std::uint8_t kCase = 'a' - 'A'; // the bit that a letter and its capital differ in

// A mask has a bit for each lane.
struct Lanes {
    using Vector = __m512i;
    static constexpr unsigned kBits = 1;
    static Vector load(const void *block) noexcept { return _mm512_load_si512(block); }
    static Vector load_anywhere(const void *place) noexcept { return _mm512_loadu_si512(place); }
    static void store_anywhere(void *place, Vector units) noexcept { _mm512_storeu_si512(place, units); }
};

struct Bytes : Lanes {
    using Unit = std::uint8_t;
    static Vector all(Unit unit) noexcept { return _mm512_set1_epi8(static_cast<char>(unit)); }
    static Vector least(Vector a, Vector b) noexcept { return _mm512_min_epu8(a, b); }
    static std::uint64_t ends(Vector apart, Vector units) noexcept {
        return _mm512_test_epi8_mask(apart, apart) | _mm512_testn_epi8_mask(units, units);
    }
    static bool any_end(Vector apart, Vector units) noexcept {
        return _kortestz_mask64_u8(_mm512_test_epi8_mask(apart, apart), _mm512_testn_epi8_mask(units, units)) == 0;
    }
    static Vector inside(Vector units, Vector low, Vector span) noexcept {
        return _mm512_movm_epi8(_mm512_cmple_epu8_mask(_mm512_sub_epi8(units, low), span));
    }
    static std::uint64_t zeros(Vector units) noexcept { return _mm512_testn_epi8_mask(units, units); }
    static Vector apart(Vector a, Vector b) noexcept {
        const Vector from_a = _mm512_sub_epi8(a | all(kCase), all('a')), both = a ^ b;
        return _mm512_mask_sub_epi8(both, _mm512_cmple_epu8_mask(from_a, all('z' - 'a')), both, both & all(kCase));
    }
};

struct Words : Lanes {
    using Unit = std::uint16_t;
    static Vector all(Unit unit) noexcept { return _mm512_set1_epi16(static_cast<short>(unit)); }
    static Vector least(Vector a, Vector b) noexcept { return _mm512_min_epu16(a, b); }
    static std::uint64_t ends(Vector apart, Vector units) noexcept {
        return _mm512_test_epi16_mask(apart, apart) | _mm512_testn_epi16_mask(units, units);
    }
    static bool any_end(Vector apart, Vector units) noexcept {
        return _kortestz_mask32_u8(_mm512_test_epi16_mask(apart, apart), _mm512_testn_epi16_mask(units, units)) == 0;
    }
    static Vector inside(Vector units, Vector low, Vector span) noexcept {
        return _mm512_movm_epi16(_mm512_cmple_epu16_mask(_mm512_sub_epi16(units, low), span));
    }
    static Vector apart(Vector a, Vector b) noexcept {
        const Vector from_a = _mm512_sub_epi16(a | all(kCase), all('a')), both = a ^ b;
        return _mm512_mask_sub_epi16(both, _mm512_cmple_epu16_mask(from_a, all('z' - 'a')), both, both & all(kCase));
    }
    static std::uint64_t zeros(Vector units) noexcept { return _mm512_testn_epi16_mask(units, units); }
};

// Out of the mask registers, in which compilers would go on reckoning at three times the cost.
std::uint32_t number(std::uint32_t mask) noexcept {
    asm("" : "+r"(mask));
    return mask;
}

// Units that vectors are filled with, twice each: so they come out of memory, which is faster than from a register.
enum Filling { kEndOfAscii, kFirstLatin, kLatinSpan, kNotTold, kOne, kTold };
constexpr std::uint32_t kFillings[] = {
    0x10001 * 0x80,
    0x10001 * OrderValues::kFirstLatin,
    0x10001 * (OrderValues::kEndLatin - OrderValues::kFirstLatin),
    0x10001 * OrderValues::kNotTold,
    0x10001 * 1,
    0x10001 * 0xFE,
};

[[gnu::noinline]] int order_by_pairs(const std::uint16_t *a, const std::uint16_t *b, const OrderValues &values,
                                     std::uint32_t flag, std::uint32_t other_flag, std::size_t place) noexcept {
    const Order order = order_with_pairs(values, a, b, place);
    return order != kOpen ? order : values.go_on(a, b, values, flag, other_flag);
}

// Both strings in one vector, the units of `a` below those of `b`. `known` of each are the strings' own, what is behind
// them is not known. Without a jump that hangs on the strings but the last ones: what a comparison finds nobody can
// predict.
template <bool has_pairs>
[[gnu::always_inline]] inline int
order_by_units(__m256i units_a, __m256i units_b, unsigned known, const std::uint16_t *a, const std::uint16_t *b,
               const OrderValues &values, std::uint32_t flag, std::uint32_t other_flag) noexcept {
    const std::uint32_t *fillings = kFillings;
    asm("" : "+r"(fillings)); // the compiler would have them from registers
    const auto all = [fillings](Filling unit) noexcept { return _mm512_set1_epi32(static_cast<int>(fillings[unit])); };
    const auto half = [fillings](Filling unit) noexcept { return _mm256_set1_epi32(static_cast<int>(fillings[unit])); };
    const auto look_up = [](const std::uint8_t *table, __m512i indices) noexcept {
        return _mm512_permutex2var_epi8(_mm512_load_si512(table), indices, _mm512_load_si512(table + 64));
    };
    const __m512i units = _mm512_inserti64x4(_mm512_castsi256_si512(units_a), units_b, 1);
    const __mmask32 is_ascii = _mm512_cmplt_epu16_mask(units, all(kEndOfAscii));
    const __mmask32 is_latin = _mm512_cmplt_epu16_mask(_mm512_sub_epi16(units, all(kFirstLatin)), all(kLatinSpan));
    // The high bytes, 0 where the values count, find the first of each table, which is 0.
    __m512i found = _mm512_mask_mov_epi16(all(kNotTold), is_ascii, look_up(values.ascii, units));
    found = _mm512_mask_mov_epi16(found, is_latin, look_up(values.latin, _mm512_srli_epi16(units, 1)));

    // A bit for each two units.
    const __m256i found_a = _mm512_castsi512_si256(found), found_b = _mm512_extracti64x4_epi64(found, 1);
    const std::uint32_t differ = number(_mm256_cmpneq_epi16_mask(found_a, found_b));
    const __mmask16 less = _mm256_cmplt_epu16_mask(found_a, found_b);
    // Neither 0 in both, where the strings end, nor kNotTold in one. The last unit may begin a pair.
    const __m256i behind = _mm256_add_epi16(_mm256_max_epu16(found_a, found_b), half(kOne));
    const std::uint32_t stops =
        number(_mm256_testn_epi16_mask(behind, half(kTold))) | (has_pairs ? 3u << (known - 1) : 1u << known);
    const std::uint32_t up_to_place = differ ^ (differ - 1);
    if ((stops & up_to_place) != 0) [[unlikely]]
        return values.go_on(a, b, values, flag, other_flag);
    if constexpr (!has_pairs) return (number(less) & up_to_place) != 0 ? -1 : 1;
    const std::size_t place = static_cast<unsigned>(__builtin_ctz(differ));
    if (may_be_paired(values, a, b, place)) [[unlikely]]
        return order_by_pairs(a, b, values, flag, other_flag, place);
    return -static_cast<int>(number(less) >> place & 1) | 1;
}

constexpr unsigned kUnitsAtOnce = sizeof(__m256i) / sizeof(std::uint16_t);

// Near the end of a page nothing behind it is read.
template <bool has_pairs>
[[gnu::noinline]] int order_by_page_end(const std::uint16_t *a, const std::uint16_t *b, const OrderValues &values,
                                        std::uint32_t flag, std::uint32_t other_flag) noexcept {
    const std::size_t left_a = left_in_page(a), left_b = left_in_page(b), left = left_a < left_b ? left_a : left_b;
    const auto known = static_cast<unsigned>(left / sizeof *a);
    if (known == 0) return values.go_on(a, b, values, flag, other_flag);
    const auto of_page = static_cast<__mmask16>((1u << known) - 1);
    return order_by_units<has_pairs>(_mm256_maskz_loadu_epi16(of_page, a), _mm256_maskz_loadu_epi16(of_page, b), known,
                                     a, b, values, flag, other_flag);
}

template <bool has_pairs>
[[gnu::noinline]] int order_by_vector(const std::uint16_t *a, const std::uint16_t *b, const OrderValues &values,
                                      std::uint32_t flag, std::uint32_t other_flag) noexcept {
    if (!fits_in_page<sizeof(__m256i)>(a) || !fits_in_page<sizeof(__m256i)>(b)) [[unlikely]]
        return order_by_page_end<has_pairs>(a, b, values, flag, other_flag);
    const __m256i units_a = _mm256_loadu_si256(reinterpret_cast<const __m256i *>(a));
    const __m256i units_b = _mm256_loadu_si256(reinterpret_cast<const __m256i *>(b));
    return order_by_units<has_pairs>(units_a, units_b, kUnitsAtOnce, a, b, values, flag, other_flag);
}

} // namespace

const std::uint16_t *find_zero16(const std::uint16_t *string) noexcept {
    return is_odd(string) ? plain::find_zero16(string) : find_zero<Words>(string);
}

std::uint32_t size8(const std::uint8_t *string) noexcept {
    return size<Bytes>(string);
}

std::uint32_t size16(const std::uint16_t *string) noexcept {
    return is_odd(string) ? plain::size16(string) : size<Words>(string);
}

const std::uint8_t *find8(const std::uint8_t *string, std::uint8_t wanted) noexcept {
    return find<Bytes>(string, wanted);
}

const std::uint16_t *find16(const std::uint16_t *string, std::uint16_t wanted) noexcept {
    return is_odd(string) ? plain::find16(string, wanted) : find<Words>(string, wanted);
}

const std::uint16_t *find_last16(const std::uint16_t *string, std::uint16_t wanted) noexcept {
    return is_odd(string) ? plain::find_last16(string, wanted) : find_last<Words>(string, wanted);
}

std::size_t find_within16(const std::uint16_t *units, std::size_t count, std::uint16_t wanted) noexcept {
    return is_odd(units) ? plain::find_within16(units, count, wanted) : find_within<Words>(units, count, wanted);
}

const std::uint16_t *find_signs16(const std::uint16_t *string, const Signs16 &signs) noexcept {
    return is_odd(string) ? plain::find_signs16(string, signs) : find_signs<Words>(string, signs);
}

Found16 find_short16(const std::uint16_t *string, const std::uint16_t *wanted) noexcept {
    return is_odd(string) ? plain::find_short16(string, wanted) : find_short<Words>(string, wanted);
}

std::size_t outside8(const std::uint8_t *bytes, std::size_t count, std::uint8_t low, std::uint8_t high) noexcept {
    return outside<Bytes>(bytes, count, low, high);
}

std::size_t outside16(const std::uint16_t *units, std::size_t count, std::uint16_t low, std::uint16_t high) noexcept {
    return is_odd(units) ? plain::outside16(units, count, low, high) : outside<Words>(units, count, low, high);
}

std::size_t mismatch8(const std::uint8_t *a, const std::uint8_t *b, std::size_t limit) noexcept {
    return mismatch<Bytes>(a, b, limit);
}

std::size_t mismatch16(const std::uint16_t *a, const std::uint16_t *b, std::size_t limit) noexcept {
    return mismatch<Words>(a, b, limit);
}

std::size_t mismatch16_caseless(const std::uint16_t *a, const std::uint16_t *b, std::size_t limit) noexcept {
    return mismatch<Words>(a, b, limit, Words::apart);
}

int compare8(const std::uint8_t *a, const std::uint8_t *b) noexcept {
    return compare<Bytes>(a, b);
}

int compare8_caseless(const std::uint8_t *a, const std::uint8_t *b) noexcept {
    return compare<Bytes, ButForCase<Bytes>>(a, b);
}

int compare16(const std::uint16_t *a, const std::uint16_t *b) noexcept {
    return compare<Words>(a, b);
}

int order_by_values16(const std::uint16_t *a, const std::uint16_t *b, const OrderValues &values, std::uint32_t flag,
                      std::uint32_t other_flag) noexcept {
    const Order first = order_of_first(values, a, b);
    if (first == kOpen) [[unlikely]]
        return values.go_on(a, b, values, flag, other_flag);
    if (first != kSame) return first;
    return values.pair_count != 0 ? order_by_vector<true>(a, b, values, flag, other_flag)
                                  : order_by_vector<false>(a, b, values, flag, other_flag);
}

std::uint16_t *copy16(std::uint16_t *destination, const std::uint16_t *source) noexcept {
    if (is_odd(source) || !fits_in_page<sizeof(__m512i)>(source)) return plain::copy16(destination, source);
    const __m512i units = Words::load_anywhere(source);
    const std::uint64_t zeros = Words::zeros(units);
    if (zeros == 0) return copy_long<Words>(destination, source);
    // The bits up to the lowest one: the string and its terminator.
    _mm512_mask_storeu_epi16(destination, static_cast<__mmask32>(zeros ^ (zeros - 1)), units);
    return destination;
}

} // namespace kxstr::simd::avx512
