#include <cstring>

#include <immintrin.h>

#include "simd/avx512_blocks.h"
#include "simd/look_up.h"
#include "simd/scan_loops.h"

// Texts keep to few stretches of characters: a row of 64 values lies in two registers, and one permutation looks 32
// units up in it. Where a block needs many rows, as East Asian texts do, each value is loaded by itself.
namespace kxstr::simd::avx512 {
namespace {

constexpr __mmask64 kWhole = ~__mmask64{0};

struct Block {
    __m512i first, second;
};

__mmask64 join(__mmask32 first, __mmask32 second) noexcept {
    return _mm512_kunpackd(second, first);
}
__mmask64 zeros(Block units) noexcept {
    const __m512i least = _mm512_min_epu16(units.first, units.second);
    if (_mm512_testn_epi16_mask(least, least) == 0) return 0;
    return join(_mm512_testn_epi16_mask(units.first, units.first), _mm512_testn_epi16_mask(units.second, units.second));
}
// Units that a map may change.
__mmask32 foreign(__m512i units) noexcept {
    return _mm512_cmpgt_epu16_mask(units, _mm512_set1_epi16(kLastSame));
}
struct Foreign {
    __mmask32 first, second;
};
Foreign foreign(Block units) noexcept {
    return {foreign(units.first), foreign(units.second)};
}
void store(std::uint16_t *place, Block units, __mmask64 here) noexcept {
    if (here == kWhole) {
        store(place, units.first);
        store(place + kHalf, units.second);
        return;
    }
    _mm512_mask_storeu_epi16(place, static_cast<__mmask32>(here), units.first);
    _mm512_mask_storeu_epi16(place + kHalf, static_cast<__mmask32>(here >> kHalf), units.second);
}

[[gnu::always_inline]] inline __m256i look_up16(const std::uint16_t *map, const std::uint16_t *units) noexcept {
    return _mm256_inserti128_si256(_mm256_castsi128_si256(look_up8(map, units)), look_up8(map, units + kGroup), 1);
}
[[gnu::noinline]] __m512i look_up32(const std::uint16_t *map, const std::uint16_t *units) noexcept {
    return _mm512_inserti64x4(_mm512_castsi256_si512(look_up16(map, units)), look_up16(map, units + 2 * kGroup), 1);
}

// 64 values of a map, of the units that have `number` above their lowest 6 bits.
struct Row {
    __m512i number = _mm512_set1_epi16(-1); // in all lanes; -1: none
    __m512i low = _mm512_setzero_si512(), high = _mm512_setzero_si512();
};
Row row_of(const std::uint16_t *map, unsigned number) noexcept {
    const std::uint16_t *const values = map + kBlock * number;
    return {_mm512_set1_epi16(static_cast<short>(number)), load(values), load(values + kHalf)};
}

// The rows that the blocks before needed most.
struct Rows {
    Row usual, other;
    unsigned scattered = 0; // blocks to look up value by value before rows are tried again
};

// The values of a block of which `left` are foreign; it stands at `place`, too. Inline: blocks passed through memory
// would double the time.
[[gnu::always_inline]] inline Block map_block(Rows &rows, const std::uint16_t *map, const std::uint16_t *place,
                                              Block units, Foreign left) noexcept {
    constexpr int kMostTurns = 3;
    constexpr unsigned kScatteredTurns = 16;
    if (rows.scattered == 0) {
        const Block numbers{_mm512_srli_epi16(units.first, 6), _mm512_srli_epi16(units.second, 6)};
        Block values = units;
        // Units that are not foreign may be looked up, too: they are what the map has for them.
        const auto look_up = [&](const Row &row) {
            const __mmask32 first = _mm512_cmpeq_epi16_mask(numbers.first, row.number);
            const __mmask32 second = _mm512_cmpeq_epi16_mask(numbers.second, row.number);
            values.first = _mm512_mask2_permutex2var_epi16(row.low, values.first, first, row.high);
            values.second = _mm512_mask2_permutex2var_epi16(row.low, values.second, second, row.high);
            return Foreign{first, second};
        };
        const Foreign of_usual = look_up(rows.usual), of_other = look_up(rows.other);
        const __mmask32 left_first = left.first & ~(of_usual.first | of_other.first);
        const __mmask32 left_second = left.second & ~(of_usual.second | of_other.second);
        if ((left_first | left_second) == 0) return values;
        __mmask64 rest = join(left_first, left_second);
        std::size_t most = count_of(join(of_usual.first, of_usual.second));
        std::size_t second = count_of(join(of_other.first, of_other.second));
        for (int turn = 0; turn < kMostTurns; ++turn) {
            const Row row = row_of(map, place[__builtin_ctzll(rest)] / kBlock);
            const Foreign of_row = look_up(row);
            const __mmask64 units_of_row = join(of_row.first, of_row.second);
            const std::size_t found = count_of(units_of_row);
            rest &= ~units_of_row;
            if (found > most) {
                rows.other = rows.usual;
                rows.usual = row;
                second = most;
                most = found;
            } else if (found > second) {
                rows.other = row;
                second = found;
            }
            if (rest == 0) return values;
        }
        rows.scattered = kScatteredTurns;
    } else {
        --rows.scattered;
    }
    return {look_up32(map, place), look_up32(map, place + kHalf)};
}

// A string's blocks: at first up to a multiple of the block, then whole ones, up to `limit` or the first for which
// each(units, place, here, done) gives false; `here` tells which units there are, the others are 0.
template <class Each>
[[gnu::always_inline]] inline void for_blocks(const std::uint16_t *source, std::size_t limit, Each each) noexcept {
    std::size_t size = kBlock - address(source) / sizeof *source % kBlock;
    for (std::size_t done = 0; done < limit; size = kBlock) {
        const std::uint16_t *const at = source + done;
        const __mmask64 here = first_bits(lesser(size, limit - done));
        const Block units{_mm512_maskz_loadu_epi16(static_cast<__mmask32>(here), at),
                          _mm512_maskz_loadu_epi16(static_cast<__mmask32>(here >> kHalf), at + kHalf)};
        alignas(64) std::uint16_t copy[kBlock];
        store(copy, units, kWhole);
        if (!each(units, copy, here, done)) return;
        done += size;
        for (; done < limit && limit - done >= kBlock; done += kBlock)
            if (!each({load(source + done), load(source + done + kHalf)}, source + done, kWhole, done)) return;
    }
}

// Most strings are short: one that ends, by its terminator or the limit, in the register that it begins.
struct Short {
    __mmask32 live, end; // units before the terminator, and that; both 0 for a string that is not short
    __m512i units;
};
[[gnu::always_inline]] inline Short as_short(const std::uint16_t *source, std::size_t limit) noexcept {
    if (limit == 0 || left_in_page(source) < sizeof(__m512i)) return {0, 0, _mm512_setzero_si512()};
    const __m512i units = load(source);
    const __mmask32 behind_limit = limit < kHalf ? __mmask32{1} << limit : 0;
    const __mmask32 ends = _mm512_testn_epi16_mask(units, units) | behind_limit;
    if (ends == 0) return {0, 0, units};
    const __mmask32 end = ends & (0 - ends);
    return {end - 1, end & ~behind_limit, units};
}
// The values of a string of an alphabet, which lies in one row, or in two that make a pair; false, and nothing is done,
// for another one: what East Asia writes is scattered.
[[gnu::always_inline]] inline bool map_alphabet(const Short &string, const std::uint16_t *map,
                                                const std::uint16_t *source, __m512i &values) noexcept {
    constexpr std::uint16_t kPastAlphabets = 0x2000;
    values = string.units;
    const __mmask32 changed = foreign(values) & string.live;
    if (changed == 0) return true;
    const std::uint16_t first = source[__builtin_ctz(changed)];
    if (first >= kPastAlphabets) return false;
    const unsigned number = first / unsigned{kBlock};
    const auto not_of = [numbers = _mm512_srli_epi16(values, 6)](__mmask32 units, unsigned row) {
        return _mm512_mask_cmpneq_epi16_mask(units, numbers, _mm512_set1_epi16(static_cast<short>(row)));
    };
    const auto look_up = [&](__mmask32 units, unsigned row) {
        const Row of_units = row_of(map, row);
        values = _mm512_mask2_permutex2var_epi16(of_units.low, values, units, of_units.high);
    };
    const __mmask32 others = not_of(changed, number);
    if (others != 0 && not_of(others, number ^ 1) != 0) return false;
    look_up(changed & ~others, number);
    if (others != 0) look_up(others, number ^ 1);
    return true;
}
// Stores the values before the first 0 and that; gives how many stand before it.
[[gnu::always_inline]] inline std::size_t store_short(std::uint16_t *destination, const Short &string,
                                                      __m512i values) noexcept {
    const __mmask32 here = string.live | string.end;
    const __mmask32 ends = _mm512_mask_testn_epi16_mask(here, values, values);
    const auto stored = ends != 0 ? here & static_cast<__mmask32>(up_to_first(ends)) : here;
    _mm512_mask_storeu_epi16(destination, stored, values);
    return static_cast<std::size_t>(__builtin_popcount(stored)) - (ends != 0);
}
// A function of its own, so that others pay for no frame.
[[gnu::noinline]] std::size_t map_scattered_units(const std::uint16_t *map, const std::uint16_t *source,
                                                  std::uint16_t *destination, __m512i units, __mmask32 live,
                                                  __mmask32 end) noexcept {
    return store_short(destination, {live, end, units}, look_up32(map, source));
}

// ---- Writing ----

// Native codes as bytes; `wanted` tells which there are.
[[gnu::always_inline]] inline std::uint8_t *write_codes(std::uint8_t *out, __m512i codes, __mmask32 wanted,
                                                        NoCode no_code) noexcept {
    const __mmask32 missing = _mm512_mask_cmpeq_epi16_mask(wanted, codes, _mm512_set1_epi16(-1));
    if (no_code == NoCode::mark) {
        codes = _mm512_mask_mov_epi16(codes, missing, _mm512_set1_epi16(0x80));
    } else {
        wanted &= ~missing;
    }
    const __mmask32 wide = _mm512_mask_cmpgt_epu16_mask(wanted, codes, _mm512_set1_epi16(0xFF));
    if (wide == 0 && (wanted & (wanted + 1)) == 0) {
        _mm256_mask_storeu_epi8(out, wanted, _mm512_cvtepi16_epi8(codes));
        return out + __builtin_popcount(wanted);
    }
    const __m512i swapped = _mm512_or_si512(_mm512_slli_epi16(codes, 8), _mm512_srli_epi16(codes, 8));
    const std::uint64_t bytes = _pdep_u64(wide, 0x5555555555555555) | _pdep_u64(wanted, 0xAAAAAAAAAAAAAAAA);
    const auto count = static_cast<std::size_t>(__builtin_popcountll(bytes));
    _mm512_mask_storeu_epi8(out, first_bits(count), _mm512_maskz_compress_epi8(bytes, swapped));
    return out + count;
}

// Where all of them are text or by a map's pairs; null, and nothing is done, where not.
[[gnu::always_inline]] inline std::uint8_t *write_by_pairs(std::uint8_t *out, const PairValues &pairs, __m512i units,
                                                           __mmask32 here) noexcept {
    constexpr __mmask64 kFirst = 0x5555555555555555; // of the two bytes of each code
    const __m512i high_bytes = _mm512_set1_epi16(static_cast<short>(0xFF00));
    const std::uint64_t live = first_bits(2 * count_of(here));
    const __m512i bytes = _mm512_shldi_epi16(units, units, 8);
    const std::uint64_t wide = _mm512_test_epi8_mask(bytes, _mm512_set1_epi16(0xFF)) & live;
    const __mmask32 is_wide = _mm512_test_epi16_mask(units, high_bytes);
    const __m512i high = _mm512_permutex2var_epi8(load(pairs.high), bytes, load(pairs.high + 0x40));
    const __m512i low = _mm512_mask_blend_epi8(
        _mm512_movepi8_mask(bytes), _mm512_permutex2var_epi8(load(pairs.low), bytes, load(pairs.low + 0x40)),
        _mm512_permutex2var_epi8(load(pairs.low + 0x80), bytes, load(pairs.low + 0xC0)));
    static_assert(PairValues::kAskHigh == 0 && PairValues::kAskLow == 0xFF);
    const __m512i pair = _mm512_mask_blend_epi8(kFirst, low, high);
    // The high byte is the lower one here.
    const __mmask32 no_pair = _mm512_movepi16_mask(units) | _mm512_testn_epi16_mask(pair, _mm512_set1_epi16(0xFF)) |
                              _mm512_cmpge_epu16_mask(pair, high_bytes);
    const __mmask32 others = (no_pair & is_wide) | (foreign(units) & ~is_wide);
    if ((others & here) != 0) return nullptr;
    const std::uint64_t written = wide | (live & ~kFirst);
    const std::size_t count = count_of(written);
    const __m512i codes = _mm512_mask_mov_epi16(bytes, is_wide, pair);
    _mm512_mask_storeu_epi8(out, first_bits(count), _mm512_maskz_compress_epi8(written, codes));
    return out + count;
}

[[gnu::noinline]] Progress encode_scattered_units(const std::uint16_t *map, const std::uint16_t *source,
                                                  std::uint8_t *destination, NoCode no_code, __m512i units,
                                                  __mmask32 live) noexcept {
    const PairValues &pairs = reinterpret_cast<const PairMap *>(map)->pairs;
    const std::uint8_t *end = write_by_pairs(destination, pairs, units, live);
    if (end == nullptr) end = write_codes(destination, look_up32(map, source), live, no_code);
    return {count_of(live), static_cast<std::size_t>(end - destination)};
}

// A map of bytes, its values' low and high bytes apart.
struct Page {
    __m512i low[4], high[4];
};
Page split(const std::uint16_t *values) noexcept {
    const auto join = [](__m512i a, __m512i b) {
        return _mm512_inserti64x4(_mm512_castsi256_si512(_mm512_cvtepi16_epi8(a)), _mm512_cvtepi16_epi8(b), 1);
    };
    Page page;
    for (std::size_t i = 0; i < 4; ++i) {
        const __m512i a = load(values + kBlock * i), b = load(values + kBlock * i + kHalf);
        page.low[i] = join(a, b);
        page.high[i] = join(_mm512_srli_epi16(a, 8), _mm512_srli_epi16(b, 8));
    }
    return page;
}
__m512i look_up(const __m512i (&table)[4], __m512i bytes, __mmask64 upper) noexcept {
    return _mm512_mask_blend_epi8(upper, _mm512_permutex2var_epi8(table[0], bytes, table[1]),
                                  _mm512_permutex2var_epi8(table[2], bytes, table[3]));
}

// The same for 32 bytes, without a split map.
__m512i map_half(const std::uint16_t *map, __m256i bytes) noexcept {
    const __m512i units = _mm512_cvtepu8_epi16(bytes), numbers = _mm512_srli_epi16(units, 6);
    __m512i values = units;
    for (unsigned number = 0; number < 4; ++number) {
        const Row row = row_of(map, number);
        const __mmask32 here = _mm512_cmpeq_epi16_mask(numbers, _mm512_set1_epi16(static_cast<short>(number)));
        values = _mm512_mask2_permutex2var_epi16(row.low, values, here, row.high);
    }
    return values;
}

bool is_text(__m256i bytes, __mmask32 live) noexcept {
    const __m256i place = _mm256_sub_epi8(bytes, _mm256_set1_epi8(0x20));
    return _mm256_mask_cmpgt_epu8_mask(live, place, _mm256_set1_epi8(0x7E - 0x20)) == 0;
}

// ---- Long strings: functions of their own, so that short ones pay for no frame ----

[[gnu::noinline]] std::size_t map_long_bytes(const std::uint16_t *map, const std::uint8_t *source, std::size_t limit,
                                             std::uint16_t *destination) noexcept {
    const auto *const text = reinterpret_cast<const char *>(source);
    const std::size_t length = limit == SIZE_MAX ? __builtin_strlen(text) : strnlen(text, limit);
    destination[length] = 0;
    std::size_t left = length;
    const Page page = split(map);
    // Bytes 0..7 and 32..39 side by side and so on: unpacking then yields the first and the second half.
    const __m512i order = _mm512_setr_epi64(0, 4, 1, 5, 2, 6, 3, 7);
    const auto mapped = [&](__m512i block) -> Block {
        const __m512i bytes = _mm512_permutexvar_epi64(order, block);
        const __mmask64 upper = _mm512_movepi8_mask(bytes);
        const __m512i low = look_up(page.low, bytes, upper), high = look_up(page.high, bytes, upper);
        return {_mm512_unpacklo_epi8(low, high), _mm512_unpackhi_epi8(low, high)};
    };
    const auto map_block = [&](__m512i block, std::size_t at, __mmask64 here) {
        store(destination + at, mapped(block), here);
    };
    if (length * sizeof *destination >= kPastCaches && !is_odd(destination)) {
        // The last block by itself, then lines of the cache: to write them is not to read them first.
        map_block(load(source + left - kBlock), left - kBlock, kWhole);
        left -= address(destination + left) % sizeof(__m512i) / sizeof *destination;
        for (; left >= kBlock; left -= kBlock) {
            const Block values = mapped(load(source + left - kBlock));
            stream(destination + left - kBlock, values.first);
            stream(destination + left - kHalf, values.second);
        }
        _mm_sfence();
    }
    for (; left >= kBlock; left -= kBlock)
        map_block(load(source + left - kBlock), left - kBlock, kWhole);
    map_block(_mm512_maskz_loadu_epi8(first_bits(left), source), 0, first_bits(left));
    return length;
}

[[gnu::noinline]] std::size_t map_long_units(const std::uint16_t *map, const std::uint16_t *source, std::size_t limit,
                                             std::uint16_t *destination) noexcept {
    Rows rows;
    std::size_t result = limit;
    for_blocks(source, limit, [&](Block units, const std::uint16_t *place, __mmask64 here, std::size_t done) noexcept {
        const Foreign changed = foreign(units);
        const bool is_same = (changed.first | changed.second) == 0;
        const Block values = is_same ? units : map_block(rows, map, place, units, changed);
        const __mmask64 ends = zeros(values) & here;
        if (ends != 0) result = done + static_cast<std::size_t>(__builtin_ctzll(ends));
        store(destination + done, values, ends != 0 ? here & up_to_first(ends) : here);
        return ends == 0;
    });
    return result;
}

[[gnu::noinline]] Progress encode_long_units(const std::uint16_t *map, const std::uint16_t *source, std::size_t limit,
                                             std::uint8_t *destination, NoCode no_code) noexcept {
    alignas(64) std::uint8_t places[kBlock]; // of the low bytes of a block
    for (std::size_t i = 0; i < kBlock; ++i)
        places[i] = static_cast<std::uint8_t>(2 * i);
    const __m512i low_bytes = load(places);
    std::uint8_t *out = destination;
    std::size_t length = 0;
    Rows rows;
    for_blocks(source, limit, [&](Block units, const std::uint16_t *place, __mmask64 here, std::size_t) noexcept {
        const __mmask64 ends = zeros(units) & here;
        const __mmask64 live = ends != 0 ? up_to_first(ends) >> 1 : here;
        length += count_of(live);
        const Foreign changed = foreign(units);
        const bool is_same = (changed.first | changed.second) == 0;
        const Block values = is_same ? units : map_block(rows, map, place, units, changed);
        // Mostly all of them are there, and bytes.
        const __m512i any = _mm512_or_si512(values.first, values.second);
        if (live == kWhole && _mm512_test_epi16_mask(any, _mm512_set1_epi16(static_cast<short>(0xFF00))) == 0) {
            store(out, _mm512_permutex2var_epi8(values.first, low_bytes, values.second));
            out += kBlock;
            return true;
        }
        out = write_codes(out, values.first, static_cast<__mmask32>(live), no_code);
        out = write_codes(out, values.second, static_cast<__mmask32>(live >> kHalf), no_code);
        return ends == 0;
    });
    return {length, static_cast<std::size_t>(out - destination)};
}

} // namespace

std::size_t map_bytes(const std::uint16_t *map, const std::uint8_t *source, std::size_t limit,
                      std::uint16_t *destination) noexcept {
    if (limit != 0 && left_in_page(source) >= kHalf) {
        const __m256i bytes = _mm256_loadu_si256(reinterpret_cast<const __m256i *>(source));
        const __mmask32 zeros = _mm256_testn_epi8_mask(bytes, bytes);
        if (const __mmask32 ends = limit < kHalf ? zeros | __mmask32{1} << limit : zeros; ends != 0) {
            const auto with_end = static_cast<__mmask32>(up_to_first(ends));
            const __mmask32 live = with_end >> 1;
            const __m512i values = is_text(bytes, live) ? _mm512_cvtepu8_epi16(bytes) : map_half(map, bytes);
            _mm512_mask_storeu_epi16(destination, with_end, _mm512_maskz_mov_epi16(live, values));
            return count_of(live);
        }
    }
    return map_long_bytes(map, source, limit, destination);
}

std::size_t map_units(const std::uint16_t *map, const std::uint16_t *source, std::size_t limit,
                      std::uint16_t *destination) noexcept {
    if (is_odd(source)) return plain::map_units(map, source, limit, destination);
    if (const Short string = as_short(source, limit); (string.live | string.end) != 0) {
        __m512i values;
        if (!map_alphabet(string, map, source, values)) {
            if (string.live > 0xFFFF)
                return map_scattered_units(map, source, destination, string.units, string.live, string.end);
            values = _mm512_inserti64x4(string.units, look_up16(map, source), 0);
        }
        return store_short(destination, string, values);
    }
    return map_long_units(map, source, limit, destination);
}

Progress encode_units(const std::uint16_t *map, const std::uint16_t *source, std::size_t limit,
                      std::uint8_t *destination, NoCode no_code) noexcept {
    if (is_odd(source)) return plain::encode_units(map, source, limit, destination, no_code);
    if (const Short string = as_short(source, limit); (string.live | string.end) != 0) {
        __m512i values;
        if (!map_alphabet(string, map, source, values))
            return encode_scattered_units(map, source, destination, no_code, string.units, string.live);
        const std::uint8_t *const end = write_codes(destination, values, string.live, no_code);
        return {count_of(string.live), static_cast<std::size_t>(end - destination)};
    }
    return encode_long_units(map, source, limit, destination, no_code);
}

} // namespace kxstr::simd::avx512
