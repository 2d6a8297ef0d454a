#include <immintrin.h>

#include "simd/block_order.h"
#include "simd/order_values.h"
#include "simd/scan_loops.h"

namespace kxstr::simd::avx2 {
namespace {

constexpr std::uint8_t kCase = 'a' - 'A'; // the bit that a letter and its capital differ in

// Comparisons give 0xFF in every byte of a lane, and a mask has a bit for each byte.
struct Lanes {
    using Vector = __m256i;
    static Vector load(const void *block) noexcept { return _mm256_load_si256(static_cast<const Vector *>(block)); }
    static Vector load_anywhere(const void *place) noexcept {
        return _mm256_loadu_si256(static_cast<const Vector *>(place));
    }
    static void store_anywhere(void *place, Vector units) noexcept {
        _mm256_storeu_si256(static_cast<Vector *>(place), units);
    }
    static std::uint64_t mask(Vector lanes) noexcept { return static_cast<std::uint32_t>(_mm256_movemask_epi8(lanes)); }
};

struct Bytes : Lanes {
    using Unit = std::uint8_t;
    static constexpr unsigned kBits = 1;
    static Vector all(Unit unit) noexcept { return _mm256_set1_epi8(static_cast<char>(unit)); }
    static Vector least(Vector a, Vector b) noexcept { return _mm256_min_epu8(a, b); }
    static std::uint64_t ends(Vector apart, Vector units) noexcept {
        const Vector zero = _mm256_setzero_si256();
        return mask(_mm256_andnot_si256(_mm256_cmpeq_epi8(units, zero), _mm256_cmpeq_epi8(apart, zero))) ^ 0xFFFFFFFF;
    }
    static bool any_end(Vector apart, Vector units) noexcept { return ends(apart, units) != 0; }
    static Vector inside(Vector units, Vector low, Vector span) noexcept {
        const Vector above = _mm256_sub_epi8(units, low);
        return _mm256_cmpeq_epi8(least(above, span), above);
    }
    static Vector apart(Vector a, Vector b) noexcept {
        const Vector letters = inside(a | all(kCase), all('a'), all('z' - 'a'));
        return _mm256_andnot_si256(letters & all(kCase), a ^ b);
    }
    static std::uint64_t zeros(Vector units) noexcept { return mask(_mm256_cmpeq_epi8(units, _mm256_setzero_si256())); }
};

struct Words : Lanes {
    using Unit = std::uint16_t;
    static constexpr unsigned kBits = 2;
    static Vector all(Unit unit) noexcept { return _mm256_set1_epi16(static_cast<short>(unit)); }
    static Vector least(Vector a, Vector b) noexcept { return _mm256_min_epu16(a, b); }
    static std::uint64_t ends(Vector apart, Vector units) noexcept {
        const Vector zero = _mm256_setzero_si256();
        return mask(_mm256_andnot_si256(_mm256_cmpeq_epi16(units, zero), _mm256_cmpeq_epi16(apart, zero))) ^ 0xFFFFFFFF;
    }
    static bool any_end(Vector apart, Vector units) noexcept { return ends(apart, units) != 0; }
    static Vector inside(Vector units, Vector low, Vector span) noexcept {
        const Vector above = _mm256_sub_epi16(units, low);
        return _mm256_cmpeq_epi16(least(above, span), above);
    }
    static Vector apart(Vector a, Vector b) noexcept {
        const Vector letters = inside(a | all(kCase), all('a'), all('z' - 'a'));
        return _mm256_andnot_si256(letters & all(kCase), a ^ b);
    }
    static std::uint64_t zeros(Vector units) noexcept {
        return mask(_mm256_cmpeq_epi16(units, _mm256_setzero_si256()));
    }
};

template <class Piece> Piece piece_at(const void *place) noexcept {
    Piece piece;
    __builtin_memcpy(&piece, place, sizeof piece);
    return piece;
}
template <> __m128i piece_at(const void *place) noexcept {
    return _mm_loadu_si128(static_cast<const __m128i *>(place));
}
template <> __m256i piece_at(const void *place) noexcept {
    return _mm256_loadu_si256(static_cast<const __m256i *>(place));
}

// From one to two pieces, that may overlap each other; both are read before one is written.
template <class Piece> void copy_pieces(void *destination, const void *source, std::size_t size) noexcept {
    const std::size_t to_last = size - sizeof(Piece);
    const Piece first = piece_at<Piece>(source), last = piece_at<Piece>(static_cast<const char *>(source) + to_last);
    __builtin_memcpy(destination, &first, sizeof first);
    __builtin_memcpy(static_cast<char *>(destination) + to_last, &last, sizeof last);
}

// Looks at the values of units that differ, one pair after the other.
[[gnu::noinline]] int order_by_vector(const std::uint16_t *a, const std::uint16_t *b, const OrderValues &values,
                                      std::uint32_t flag, std::uint32_t other_flag) noexcept {
    if (!fits_in_page<sizeof(__m256i)>(a) || !fits_in_page<sizeof(__m256i)>(b)) [[unlikely]]
        return values.go_on(a, b, values, flag, other_flag);
    const auto units = Words::load_anywhere(a);
    // A letter and its capital have one value.
    std::uint64_t hits = Words::ends(Words::apart(units, Words::load_anywhere(b)), units);
    // The last unit may begin a pair.
    if (values.pair_count != 0) hits &= 0x3FFFFFFF;
    for (; hits != 0; hits &= hits - 1, hits &= hits - 1) {
        const Order order = order_at(values, a, b, first_of<Words>(hits));
        if (order == kOpen) break;
        if (order != kSame) return order;
    }
    return values.go_on(a, b, values, flag, other_flag);
}

// Units that vectors are filled with, twice each: they come out of memory, which is faster than from a register.
constexpr std::uint32_t kFillings[] = {0x10001 * kCase, 0x10001 * 'a', 0x10001 * ('z' - 'a')};

// 0 in the lanes that are equal but for the case of a to z.
__m256i apart_but_for_case(__m256i a, __m256i b) noexcept {
    const std::uint32_t *fillings = kFillings;
    asm("" : "+r"(fillings)); // the compiler would have them from registers
    const auto all = [fillings](int i) noexcept { return _mm256_set1_epi32(static_cast<int>(fillings[i])); };
    const __m256i letters = Words::inside(a | all(0), all(1), all(2));
    return _mm256_andnot_si256(letters & all(0), a ^ b);
}

// Where strings differ within a vector.
template <bool case_counts>
[[gnu::always_inline]] inline int order_by_block(const std::uint16_t *a, const std::uint16_t *b,
                                                 const std::uint8_t *block, Compare16 *go_on) noexcept {
    if (!fits_in_page<sizeof(__m256i)>(a) || !fits_in_page<sizeof(__m256i)>(b)) [[unlikely]]
        return go_on(a, b);
    const auto units = held(Words::load_anywhere(a)), others = Words::load_anywhere(b);
    const std::uint64_t hits = Words::ends(case_counts ? units ^ others : apart_but_for_case(units, others), units);
    if (hits == 0) [[unlikely]]
        return go_on(a, b);
    return order_at_place<case_counts>(block, a, b, first_of<Words>(hits), go_on);
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
    return first != kSame ? first : order_by_vector(a, b, values, flag, other_flag);
}

int order_by_block16(const std::uint16_t *a, const std::uint16_t *b, const std::uint8_t *block,
                     Compare16 *go_on) noexcept {
    return order_by_block<true>(a, b, block, go_on);
}

int order_by_block16_caseless(const std::uint16_t *a, const std::uint16_t *b, const std::uint8_t *block,
                              Compare16 *go_on) noexcept {
    return order_by_block<false>(a, b, block, go_on);
}

std::uint16_t *copy16(std::uint16_t *destination, const std::uint16_t *source) noexcept {
    if (is_odd(source) || !fits_in_page<kNear>(source)) return plain::copy16(destination, source);
    const std::size_t near = near_hit<Words>(source, Words::load_anywhere);
    if (near == kNoLimit) return copy_long<Words>(destination, source);
    const std::size_t size = (near + 1) * sizeof *source;
    if (size >= sizeof(__m256i)) {
        copy_pieces<__m256i>(destination, source, size);
    } else if (size >= 16) {
        copy_pieces<__m128i>(destination, source, size);
    } else if (size >= 8) {
        copy_pieces<std::uint64_t>(destination, source, size);
    } else if (size >= 4) {
        copy_pieces<std::uint32_t>(destination, source, size);
    } else {
        *destination = 0;
    }
    return destination;
}

} // namespace kxstr::simd::avx2
