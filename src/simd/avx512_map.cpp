#include <immintrin.h>

#include "simd/families.h"

// Long texts look their units up in registers, a page of 256 units at a time, as long as a block needs only a few
// pages; the others, and short texts, fetch each value from the map.
namespace kxstr::simd::avx512 {
namespace {

constexpr std::size_t kBlock = 64; // units or bytes
constexpr std::size_t kHalf = 32;  // units in a register
constexpr std::size_t kFetched = 16;

__m512i load(const void *place) noexcept {
    return _mm512_loadu_si512(place);
}
void store(void *place, __m512i value) noexcept {
    _mm512_storeu_si512(place, value);
}

// The lowest `count` bits.
std::uint64_t first_bits(std::size_t count) noexcept {
    return _bzhi_u64(~std::uint64_t{0}, static_cast<unsigned>(count));
}
std::uint16_t first_bits16(std::size_t count) noexcept {
    return static_cast<std::uint16_t>(_bzhi_u32(0xFFFF, static_cast<unsigned>(count)));
}

// ---- Fetching from the map ----

__m256i fetch(const std::uint16_t *map, __m512i units32) noexcept {
    return _mm512_cvtepi32_epi16(_mm512_i32gather_epi32(units32, map, 2));
}
__m256i fetch_units(const std::uint16_t *map, __m256i units) noexcept {
    return fetch(map, _mm512_cvtepu16_epi32(units));
}
// The same for texts that may well be plain.
__m256i fetch_text(const std::uint16_t *map, __m256i units, __mmask16 here) noexcept {
    const __m256i place = _mm256_sub_epi16(units, _mm256_set1_epi16(0x20));
    if (_mm256_mask_cmpgt_epu16_mask(here, place, _mm256_set1_epi16(0x7E - 0x20)) == 0) return units;
    return fetch_units(map, units);
}
__m512i fetch_block(const std::uint16_t *map, __m512i units) noexcept {
    const __m256i low = fetch_units(map, _mm512_castsi512_si256(units));
    const __m256i high = fetch_units(map, _mm512_extracti64x4_epi64(units, 1));
    return _mm512_inserti64x4(_mm512_castsi256_si512(low), high, 1);
}

// ---- Looking up in registers ----

// A page of a map, its values' low and high bytes apart.
struct Page {
    __m512i low[4], high[4];
};

__m512i join(__m256i low, __m256i high) noexcept {
    return _mm512_inserti64x4(_mm512_castsi256_si512(low), high, 1);
}

void split(const std::uint16_t *values, Page &page) noexcept {
    for (std::size_t i = 0; i < 4; ++i) {
        const __m512i a = load(values + 64 * i), b = load(values + 64 * i + 32);
        page.low[i] = join(_mm512_cvtepi16_epi8(a), _mm512_cvtepi16_epi8(b));
        page.high[i] =
            join(_mm512_cvtepi16_epi8(_mm512_srli_epi16(a, 8)), _mm512_cvtepi16_epi8(_mm512_srli_epi16(b, 8)));
    }
}

// The values' bytes, low and high ones apart.
struct Values {
    __m512i low, high;
};

// Puts the values of the bytes `here` in. Texts mostly keep to one half of a page.
[[gnu::always_inline]] inline void look_up(Values &values, const Page &page, __m512i index, __mmask64 here) noexcept {
    const __mmask64 upper = _mm512_movepi8_mask(index);
    const __mmask64 odd = _mm512_test_epi8_mask(index, _mm512_set1_epi8(0x40)); // the second quarter of a half
    for (std::size_t half = 0; half < 2; ++half) {
        const __mmask64 among = half == 0 ? here & ~upper : here & upper;
        if (among == 0) continue;
        const __mmask64 first = among & ~odd, second = among & odd;
        values.low = _mm512_mask_permutexvar_epi8(values.low, first, index, page.low[2 * half]);
        values.low = _mm512_mask_permutexvar_epi8(values.low, second, index, page.low[2 * half + 1]);
        values.high = _mm512_mask_permutexvar_epi8(values.high, first, index, page.high[2 * half]);
        values.high = _mm512_mask_permutexvar_epi8(values.high, second, index, page.high[2 * half + 1]);
    }
}

// What the blocks before used: a few pages, each in one place; the one of them that most units needed; and one unit
// that stood alone in its page, such as a line end.
struct PageCache {
    static constexpr unsigned kPlaces = 8;
    Page pages[kPlaces];
    int numbers[kPlaces] = {-1, -1, -1, -1, -1, -1, -1, -1};
    unsigned current = 0;
    std::uint16_t lone_unit = ' ', lone_value = ' ';
    unsigned fetch_turns = 0; // blocks to fetch before pages are tried again
};

const Page &page_of(PageCache &cache, const std::uint16_t *map, unsigned number) noexcept {
    const unsigned place = (number ^ number >> 4) % PageCache::kPlaces;
    if (cache.numbers[place] != static_cast<int>(number)) {
        split(map + std::size_t{256} * number, cache.pages[place]);
        cache.numbers[place] = static_cast<int>(number);
    }
    return cache.pages[place];
}

struct Block {
    __m512i first, second;
};

__mmask32 not_text(__m512i units) noexcept {
    return _mm512_cmpgt_epu16_mask(_mm512_sub_epi16(units, _mm512_set1_epi16(0x20)), _mm512_set1_epi16(0x7E - 0x20));
}

// The values of 64 units. Inline: blocks passed through memory would double the time.
[[gnu::always_inline]] inline Block map_block(PageCache &cache, const std::uint16_t *map, const std::uint16_t *source,
                                              Block units) noexcept {
    constexpr int kMostPages = 3;
    constexpr unsigned kFetchTurns = 16;
    if (cache.fetch_turns != 0) {
        --cache.fetch_turns;
        return {fetch_block(map, units.first), fetch_block(map, units.second)};
    }
    // Low and high bytes apart, eight units of the first half and eight of the second in turn.
    const __m512i low_bytes = _mm512_set1_epi16(0xFF);
    const __m512i low =
        _mm512_packus_epi16(_mm512_and_si512(units.first, low_bytes), _mm512_and_si512(units.second, low_bytes));
    const __m512i high = _mm512_packus_epi16(_mm512_srli_epi16(units.first, 8), _mm512_srli_epi16(units.second, 8));
    const __mmask64 text =
        _mm512_testn_epi8_mask(high, high) &
        _mm512_cmple_epu8_mask(_mm512_sub_epi8(low, _mm512_set1_epi8(0x20)), _mm512_set1_epi8(0x7E - 0x20));
    if (text == ~__mmask64{0}) return units;
    Values values{low, _mm512_setzero_si512()};
    const auto look_up_page = [&](unsigned number, __mmask64 among) {
        const __mmask64 here = _mm512_mask_cmpeq_epi8_mask(among, high, _mm512_set1_epi8(static_cast<char>(number)));
        look_up(values, page_of(cache, map, number), low, here);
        return here;
    };
    const __mmask64 here = look_up_page(cache.current, ~text);
    const __mmask64 lone = _mm512_cmpeq_epi8_mask(low, _mm512_set1_epi8(static_cast<char>(cache.lone_unit))) &
                           _mm512_cmpeq_epi8_mask(high, _mm512_set1_epi8(static_cast<char>(cache.lone_unit >> 8)));
    values.low = _mm512_mask_mov_epi8(values.low, lone, _mm512_set1_epi8(static_cast<char>(cache.lone_value)));
    values.high = _mm512_mask_mov_epi8(values.high, lone, _mm512_set1_epi8(static_cast<char>(cache.lone_value >> 8)));
    int most = __builtin_popcountll(here);
    __mmask64 left = ~(text | here | lone);
    for (int turn = 0; left != 0; ++turn) {
        if (turn == kMostPages) {
            cache.fetch_turns = kFetchTurns;
            return {fetch_block(map, units.first), fetch_block(map, units.second)};
        }
        const auto at = static_cast<std::size_t>(__builtin_ctzll(left));
        const std::uint16_t unit = source[at % 16 / 8 * kHalf + at / 16 * 8 + at % 8];
        const __mmask64 found = look_up_page(unit >> 8, left);
        left &= ~found;
        const int count = __builtin_popcountll(found);
        if (count > most) {
            cache.current = unit >> 8;
            most = count;
        } else if (count == 1) {
            cache.lone_unit = unit;
            cache.lone_value = map[unit];
        }
    }
    return {_mm512_unpacklo_epi8(values.low, values.high), _mm512_unpackhi_epi8(values.low, values.high)};
}

// ---- Writing ----

// Native codes as bytes; `wanted` tells which there are.
std::uint8_t *write_codes(std::uint8_t *out, __m512i codes, __mmask32 wanted, NoCode no_code) noexcept {
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

} // namespace

void map_bytes(const std::uint16_t *map, const std::uint8_t *source, std::size_t count,
               std::uint16_t *destination) noexcept {
    if (count >= 2 * kBlock) {
        Page page;
        split(map, page);
        // Bytes 0..7 and 32..39 side by side and so on: unpacking then yields the first and the second half.
        const __m512i order = _mm512_setr_epi64(0, 4, 1, 5, 2, 6, 3, 7);
        do {
            count -= kBlock;
            const __m512i bytes = _mm512_permutexvar_epi64(order, load(source + count));
            Values values{bytes, bytes};
            look_up(values, page, bytes, ~__mmask64{0});
            store(destination + count, _mm512_unpacklo_epi8(values.low, values.high));
            store(destination + count + kHalf, _mm512_unpackhi_epi8(values.low, values.high));
        } while (count >= kBlock);
    }
    while (count != 0) {
        const std::size_t turn = count < kFetched ? count : kFetched;
        const __mmask16 here = first_bits16(turn);
        count -= turn;
        const __m128i bytes = _mm_maskz_loadu_epi8(here, source + count);
        _mm256_mask_storeu_epi16(destination + count, here, fetch_text(map, _mm256_cvtepu8_epi16(bytes), here));
    }
}

std::size_t map_units(const std::uint16_t *map, const std::uint16_t *source, std::size_t count,
                      std::uint16_t *destination) noexcept {
    std::size_t done = 0;
    if (count >= kBlock) {
        PageCache cache;
        for (; count - done >= kBlock; done += kBlock) {
            const Block units =
                map_block(cache, map, source + done, {load(source + done), load(source + done + kHalf)});
            const __m512i smaller = _mm512_min_epu16(units.first, units.second);
            if (_mm512_testn_epi16_mask(smaller, smaller) != 0) {
                const std::uint64_t zeros =
                    _mm512_testn_epi16_mask(units.first, units.first) |
                    static_cast<std::uint64_t>(_mm512_testn_epi16_mask(units.second, units.second)) << kHalf;
                const std::uint64_t stored = zeros ^ (zeros - 1); // up to the first
                _mm512_mask_storeu_epi16(destination + done, static_cast<__mmask32>(stored), units.first);
                _mm512_mask_storeu_epi16(destination + done + kHalf, static_cast<__mmask32>(stored >> kHalf),
                                         units.second);
                return done + static_cast<std::size_t>(__builtin_popcountll(stored));
            }
            store(destination + done, units.first);
            store(destination + done + kHalf, units.second);
        }
    }
    while (done < count) {
        const std::size_t turn = count - done < kFetched ? count - done : kFetched;
        const __mmask16 here = first_bits16(turn);
        const __m256i values = fetch_text(map, _mm256_maskz_loadu_epi16(here, source + done), here);
        const unsigned zeros = _mm256_mask_testn_epi16_mask(here, values, values);
        if (zeros != 0) {
            const unsigned stored = zeros ^ (zeros - 1);
            _mm256_mask_storeu_epi16(destination + done, static_cast<__mmask16>(stored), values);
            return done + static_cast<std::size_t>(__builtin_popcount(stored));
        }
        _mm256_mask_storeu_epi16(destination + done, here, values);
        done += turn;
    }
    return done;
}

std::size_t encode_units(const std::uint16_t *map, const std::uint16_t *source, std::size_t count,
                         std::uint8_t *destination, NoCode no_code) noexcept {
    std::uint8_t *out = destination;
    if (count >= kBlock) {
        PageCache cache;
        for (; count >= kBlock; count -= kBlock, source += kBlock) {
            Block units{load(source), load(source + kHalf)};
            if ((not_text(units.first) | not_text(units.second)) == 0) {
                store(out, join(_mm512_cvtepi16_epi8(units.first), _mm512_cvtepi16_epi8(units.second)));
                out += kBlock;
                continue;
            }
            units = map_block(cache, map, source, units);
            out = write_codes(out, units.first, ~__mmask32{0}, no_code);
            out = write_codes(out, units.second, ~__mmask32{0}, no_code);
        }
    }
    for (std::size_t turn; count != 0; count -= turn, source += turn) {
        turn = count < kFetched ? count : kFetched;
        const __mmask16 here = first_bits16(turn);
        const __m256i codes = fetch_text(map, _mm256_maskz_loadu_epi16(here, source), here);
        out = write_codes(out, _mm512_castsi256_si512(codes), here, no_code);
    }
    return static_cast<std::size_t>(out - destination);
}

Decoded decode_pairs(const std::uint16_t *map, const std::uint8_t *leads, const std::uint8_t *source, std::size_t count,
                     std::uint16_t *destination) noexcept {
    const __m512i leads_low = load(leads + 0x80), leads_high = load(leads + 0xC0);
    Decoded done{};
    while (done.read < count) {
        const std::size_t left = count - done.read;
        const std::size_t size = left < kBlock ? left : kBlock;
        const __mmask64 here = first_bits(size);
        const std::uint8_t *const at = source + done.read;
        const __m512i bytes = left >= kBlock ? load(at) : _mm512_maskz_loadu_epi8(here, at);
        const __mmask64 upper = _mm512_movepi8_mask(bytes);
        // Bytes that can be first ones. In a run of them every other one is, as in a run of backslashes every other
        // one escapes: the carry of a subtraction runs through.
        const std::uint64_t able = _mm512_movepi8_mask(_mm512_permutex2var_epi8(leads_low, bytes, leads_high)) & upper;
        constexpr std::uint64_t kOdd = 0xAAAAAAAAAAAAAAAA;
        const std::uint64_t series = (((able << 1) | kOdd) - able) ^ kOdd;
        std::uint64_t second = series ^ able; // the bytes behind first ones
        std::uint64_t first = series & able;
        std::size_t read = size;
        if ((first >> (size - 1) & 1) != 0) {
            if (size == 1) break;
            first &= first_bits(--read);
        }
        second &= first_bits(read);
        const std::uint64_t begins = first_bits(read) & ~second;
        const auto written = static_cast<std::size_t>(__builtin_popcountll(begins));
        std::uint16_t *const to = destination + done.written;
        // The byte behind each, without reading behind the block: the last one begins no pair.
        const __m512i shifted = _mm512_alignr_epi8(_mm512_maskz_shuffle_i64x2(0x3F, bytes, bytes, 0b111001), bytes, 1);
        const __m512i low = _mm512_maskz_compress_epi8(begins, _mm512_mask_mov_epi8(bytes, first, shifted));
        const __m512i high = _mm512_maskz_compress_epi8(begins, _mm512_maskz_mov_epi8(first, bytes));
        __m128i lows[4], highs[4];
        _mm512_storeu_si512(lows, low);
        _mm512_storeu_si512(highs, high);
        for (std::size_t i = 0; i < written; i += kFetched) {
            const __m512i codes = _mm512_or_si512(_mm512_cvtepu8_epi32(lows[i / kFetched]),
                                                  _mm512_slli_epi32(_mm512_cvtepu8_epi32(highs[i / kFetched]), 8));
            const std::size_t turn = written - i < kFetched ? written - i : kFetched;
            _mm256_mask_storeu_epi16(to + i, first_bits16(turn), fetch(map, codes));
        }
        done = {done.read + read, done.written + written};
    }
    return done;
}

} // namespace kxstr::simd::avx512
