#include "simd/avx512_blocks.h"
#include "simd/look_up.h"
#include "simd/scan_loops.h"

// Bytes to characters where some codes have two bytes. Which bytes are first ones of two the carry of a subtraction
// tells for a block at once.
namespace kxstr::simd::avx512 {
namespace {

// The lowest `count` bits that are set.
std::uint64_t first_ones(std::uint64_t bits, std::size_t count) noexcept {
    return count_of(bits) <= count ? bits : _pdep_u64(first_bits(count), bits);
}
std::uint32_t bits_of(__m256i bytes) noexcept {
    return static_cast<std::uint32_t>(_mm256_movemask_epi8(bytes));
}
bool is_text(__m512i bytes, __mmask64 live) noexcept {
    const __m512i place = _mm512_sub_epi8(bytes, _mm512_set1_epi8(0x20));
    return _mm512_mask_cmpgt_epu8_mask(live, place, _mm512_set1_epi8(0x7E - 0x20)) == 0;
}

__mmask32 not_text(__m256i bytes, __mmask32 live) noexcept {
    const __m256i place = _mm256_sub_epi8(bytes, _mm256_set1_epi8(0x20));
    return _mm256_mask_cmpgt_epu8_mask(live, place, _mm256_set1_epi8(0x7E - 0x20));
}

void widen(std::uint16_t *place, __m512i bytes, __mmask64 here) noexcept {
    _mm512_mask_storeu_epi16(place, static_cast<__mmask32>(here), _mm512_cvtepu8_epi16(_mm512_castsi512_si256(bytes)));
    _mm512_mask_storeu_epi16(place + kHalf, static_cast<__mmask32>(here >> kHalf),
                             _mm512_cvtepu8_epi16(_mm512_extracti64x4_epi64(bytes, 1)));
}

// ---- By a map's pairs ----

// Tables of 256 bytes.
struct Table {
    __m512i parts[4];
};
Table load_table(const std::uint8_t *bytes) noexcept {
    return {{load(bytes), load(bytes + 0x40), load(bytes + 0x80), load(bytes + 0xC0)}};
}
[[gnu::always_inline]] inline __m512i look_up(const Table &table, __m512i bytes) noexcept {
    return _mm512_mask_blend_epi8(_mm512_movepi8_mask(bytes),
                                  _mm512_permutex2var_epi8(table.parts[0], bytes, table.parts[1]),
                                  _mm512_permutex2var_epi8(table.parts[2], bytes, table.parts[3]));
}

// What the bytes of a block are: first ones of two, second ones, and those that end a code.
struct Codes {
    std::uint64_t first, second, ends;
};
// `able`: the bytes that can be first ones, of which in a run of them every other one is, as in a run of backslashes
// every other one escapes: the carry of a subtraction runs through. `is_open`: the byte in front opens a pair.
[[gnu::always_inline]] inline Codes find_codes(std::uint64_t able, std::uint64_t live, bool is_open) noexcept {
    constexpr std::uint64_t kOdd = 0xAAAAAAAAAAAAAAAA;
    const std::uint64_t open = is_open ? 1 : 0, able_first = able & ~open;
    const std::uint64_t series = (((able_first << 1) | kOdd) - able_first) ^ kOdd;
    const std::uint64_t first = series & able & live;
    return {first, (series ^ (able | open)) & live, live & ~first};
}

static_assert(PairValues::kAskHigh == 0 && PairValues::kAskLow == 0xFF);
__mmask32 asks_high(__mmask32 some, __m256i values) noexcept {
    return _mm256_mask_testn_epi8_mask(some, values, values);
}
__mmask32 asks_low(__mmask32 some, __m256i values) noexcept {
    return _mm256_mask_cmpeq_epi8_mask(some, values, _mm256_set1_epi8(-1));
}

struct Characters {
    __m512i low, high; // at the bytes that end their codes
    bool are_known;    // else there is a pair for which the map must be asked
};
[[gnu::always_inline]] inline Characters characters_of(__m512i low, __m512i high, __mmask64 second) noexcept {
    const __mmask64 asked = _mm512_mask_testn_epi8_mask(second, high, high) |
                            _mm512_mask_cmpeq_epi8_mask(second, low, _mm512_set1_epi8(-1));
    return {low, high, asked == 0};
}
// Side by side, the first `count` of them and of what is 0 behind them.
[[gnu::always_inline]] inline void store_characters(std::uint16_t *place, std::size_t count, Characters characters,
                                                    __mmask64 ends) noexcept {
    const __m512i order = _mm512_setr_epi64(0, 4, 1, 5, 2, 6, 3, 7);
    const __m512i low = _mm512_permutexvar_epi64(order, _mm512_maskz_compress_epi8(ends, characters.low));
    const __m512i high = _mm512_permutexvar_epi64(order, _mm512_maskz_compress_epi8(ends, characters.high));
    const std::uint64_t here = first_bits(count);
    _mm512_mask_storeu_epi16(place, static_cast<__mmask32>(here), _mm512_unpacklo_epi8(low, high));
    if (count > kHalf)
        _mm512_mask_storeu_epi16(place + kHalf, static_cast<__mmask32>(here >> kHalf), _mm512_unpackhi_epi8(low, high));
}

// Bytes i and 64 + i - 1 of two registers for each i: the second ones are in front of the first ones.
struct PairsOfBytes {
    std::uint8_t places[kBlock];

    constexpr PairsOfBytes() noexcept : places() {
        for (std::size_t i = 0; i < kHalf; ++i) {
            places[2 * i] = static_cast<std::uint8_t>(i);
            places[2 * i + 1] = static_cast<std::uint8_t>(kBlock + (i + kBlock - 1) % kBlock);
        }
    }
};
alignas(64) constexpr PairsOfBytes kPairsOfBytes;

struct Decoder {
    __m512i leads, more_leads; // of the bytes from 0x80 on
    Table high;                // of a first byte of two and of a byte alone
    Table low, single_low;     // of a second byte and of a byte alone

    [[gnu::always_inline]] inline Codes find(__m512i bytes, std::uint64_t live, bool is_open) const noexcept {
        const std::uint64_t able = _mm512_movepi8_mask(_mm512_permutex2var_epi8(leads, bytes, more_leads));
        return find_codes(able & _mm512_movepi8_mask(bytes), live, is_open);
    }
    // `before`: the same bytes, each the one in front of it.
    [[gnu::always_inline]] inline Characters decode(__m512i bytes, __m512i before, __mmask64 second) const noexcept {
        const __m512i of_alone = look_up(single_low, bytes), of_second = look_up(low, bytes);
        return characters_of(_mm512_mask_blend_epi8(second, of_alone, of_second),
                             look_up(high, _mm512_mask_mov_epi8(bytes, second, before)), second);
    }
};
const PairValues &pairs_of(const std::uint16_t *map) noexcept {
    return reinterpret_cast<const PairMap *>(map)->pairs;
}
[[gnu::always_inline]] inline Decoder decoder_of(const std::uint16_t *map, const std::uint8_t *leads) noexcept {
    const PairValues &pairs = pairs_of(map);
    const __m512i some_leads = load(leads + 0x80), more_leads = load(leads + 0xC0);
    Table high = load_table(pairs.single_high);
    high.parts[2] = _mm512_mask_loadu_epi8(high.parts[2], _mm512_movepi8_mask(some_leads), pairs.high + 0x80);
    high.parts[3] = _mm512_mask_loadu_epi8(high.parts[3], _mm512_movepi8_mask(more_leads), pairs.high + 0xC0);
    return {some_leads, more_leads, high, load_table(pairs.low), load_table(pairs.single_low)};
}

// A string of less than half a register that has no byte alone but text, as most are: half the tables do.
struct Shortest {
    __m512i characters; // at the bytes that end their codes
    __mmask32 ends;
    bool is_known;
};
[[gnu::always_inline]] inline Shortest decode_shortest(const std::uint16_t *map, const std::uint8_t *leads,
                                                       const std::uint8_t *source) noexcept {
    const __m256i some_bytes = _mm256_loadu_si256(reinterpret_cast<const __m256i *>(source));
    const std::uint32_t zeros = bits_of(_mm256_cmpeq_epi8(some_bytes, _mm256_setzero_si256()));
    const PairValues &pairs = pairs_of(map);
    const __m512i bytes = _mm512_zextsi256_si512(some_bytes);
    if (zeros == 0) return {bytes, 0, false};
    const __m512i lead = _mm512_permutex2var_epi8(load(leads + 0x80), bytes, load(leads + 0xC0));
    const std::uint32_t able = bits_of(_mm256_and_si256(some_bytes, _mm512_castsi512_si256(lead)));
    const Codes codes = find_codes(able, up_to_first(zeros) >> 1, false);
    const auto first = static_cast<__mmask32>(codes.first), second = static_cast<__mmask32>(codes.second);
    const __m512i high = _mm512_permutex2var_epi8(load(pairs.high + 0x80), bytes, load(pairs.high + 0xC0));
    const __m512i low = look_up(load_table(pairs.low), bytes);
    const auto alone = static_cast<__mmask32>(codes.ends & ~codes.second);
    const __mmask32 others = not_text(some_bytes, alone) | asks_high(first, _mm512_castsi512_si256(high)) |
                             asks_low(second, _mm512_castsi512_si256(low));
    // The low byte of each, and the high byte of the one in front of it.
    const __m512i both = _mm512_permutex2var_epi8(low, load(&kPairsOfBytes), high);
    return {_mm512_mask_mov_epi16(_mm512_cvtepu8_epi16(some_bytes), second, both), static_cast<__mmask32>(codes.ends),
            others == 0};
}

// Up to a block with a pair for which the map must be asked; a first byte alone is left.
Progress decode_by_pairs(const Decoder &decoder, const std::uint8_t *source, std::size_t count,
                         std::uint16_t *destination) noexcept {
    // As long as what is stored behind the characters is sure to be overwritten, whole blocks are.
    constexpr std::size_t kSurelyMore = kBlock + 4;
    Progress done{};
    bool is_open = false;
    while (done.read < count) {
        const std::uint8_t *const at = source + done.read;
        const std::size_t left = count - done.read, size = lesser(left, kBlock);
        const std::uint64_t here = first_bits(size);
        const __m512i bytes = _mm512_maskz_loadu_epi8(here, at);
        std::uint16_t *const to = destination + done.written;
        if (!is_open && is_text(bytes, here)) {
            widen(to, bytes, here);
            done = {done.read + size, done.written + size};
            continue;
        }
        const __m512i before = _mm512_maskz_loadu_epi8(done.read != 0 ? here : here & ~std::uint64_t{1}, at - 1);
        const Codes codes = decoder.find(bytes, here, is_open);
        const Characters characters = decoder.decode(bytes, before, codes.second);
        if (!characters.are_known) break;
        const std::size_t written = count_of(codes.ends);
        store_characters(to, left >= kBlock + kSurelyMore ? kBlock : written, characters, codes.ends);
        done = {done.read + size, done.written + written};
        is_open = (codes.first >> (size - 1) & 1) != 0;
    }
    done.read -= is_open ? 1 : 0;
    return done;
}

} // namespace

Progress decode_pairs(const std::uint16_t *map, const std::uint8_t *leads, const std::uint8_t *source,
                      std::size_t count, std::uint16_t *destination) noexcept {
    const __m512i leads_low = load(leads + 0x80), leads_high = load(leads + 0xC0);
    // The codes wait for their look-ups until they are many: how many a block has is hard to foretell.
    constexpr std::size_t kWaiting = 512;
    alignas(64) std::uint16_t codes[kWaiting + kBlock];
    std::size_t waiting = 0;
    Progress done{};
    const auto map_waiting = [&] {
        std::uint16_t *to = destination + done.written;
        std::size_t i = 0;
        for (; map == nullptr && i < waiting; i += kHalf)
            _mm512_mask_storeu_epi16(to + i, static_cast<__mmask32>(first_bits(waiting - i)), load(codes + i));
        for (; i + kGroup <= waiting; i += kGroup)
            _mm_storeu_si128(reinterpret_cast<__m128i *>(to + i), look_up8(map, codes + i));
        if (i < waiting)
            _mm_mask_storeu_epi16(to + i, static_cast<__mmask8>(first_bits(waiting - i)), look_up8(map, codes + i));
        done.written += waiting;
        waiting = 0;
    };
    while (done.read < count) {
        const std::size_t size = lesser(count - done.read, kBlock);
        const __mmask64 here = first_bits(size);
        const __m512i bytes = _mm512_maskz_loadu_epi8(here, source + done.read);
        if (waiting == 0 && is_text(bytes, here)) {
            widen(destination + done.written, bytes, here);
            done = {done.read + size, done.written + size};
            continue;
        }
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
        // The byte behind each, without reading behind the block: the last one begins no pair.
        const __m512i shifted = _mm512_alignr_epi8(_mm512_maskz_shuffle_i64x2(0x3F, bytes, bytes, 0b111001), bytes, 1);
        const __m512i low = _mm512_maskz_compress_epi8(begins, _mm512_mask_mov_epi8(bytes, first, shifted));
        const __m512i high = _mm512_maskz_compress_epi8(begins, _mm512_maskz_mov_epi8(first, bytes));
        const auto join = [](__m256i l, __m256i h) {
            return _mm512_or_si512(_mm512_cvtepu8_epi16(l), _mm512_slli_epi16(_mm512_cvtepu8_epi16(h), 8));
        };
        store(codes + waiting, join(_mm512_castsi512_si256(low), _mm512_castsi512_si256(high)));
        store(codes + waiting + kHalf, join(_mm512_extracti64x4_epi64(low, 1), _mm512_extracti64x4_epi64(high, 1)));
        waiting += count_of(begins);
        done.read += read;
        if (waiting >= kWaiting) map_waiting();
    }
    map_waiting();
    return done;
}

Progress decode_page(const std::uint16_t *map, const std::uint8_t *leads, const std::uint8_t *source, std::size_t count,
                     std::uint16_t *destination) noexcept {
    constexpr std::size_t kAsked = 512; // bytes for which the map is asked before the pairs are tried again
    const Decoder decoder = decoder_of(map, leads);
    Progress done{};
    const auto add = [&done](Progress more) {
        done = {done.read + more.read, done.written + more.written};
        return more.read != 0;
    };
    do
        add(decode_by_pairs(decoder, source + done.read, count - done.read, destination + done.written));
    while (count - done.read > 1 && add(decode_pairs(map, leads, source + done.read, lesser(count - done.read, kAsked),
                                                     destination + done.written)));
    return done;
}

bool decode_short(const std::uint16_t *map, const std::uint8_t *leads, const std::uint8_t *source, std::size_t limit,
                  std::uint16_t *destination) noexcept {
    if (left_in_page(source) < kBlock) return false;
    if (const Shortest string = decode_shortest(map, leads, source); string.is_known) {
        const auto ends = static_cast<__mmask32>(first_ones(string.ends, limit));
        _mm512_mask_storeu_epi16(destination, static_cast<__mmask32>(first_bits(count_of(ends) + 1)),
                                 _mm512_maskz_compress_epi16(ends, string.characters));
        return true;
    }
    const __m512i bytes = load(source);
    const std::uint64_t zeros = _mm512_testn_epi8_mask(bytes, bytes);
    if (zeros == 0) return false;
    const __m512i before = _mm512_maskz_loadu_epi8(~std::uint64_t{1}, source - 1);
    const Decoder decoder = decoder_of(map, leads);
    const Codes codes = decoder.find(bytes, up_to_first(zeros) >> 1, false);
    const Characters characters = decoder.decode(bytes, before, codes.second);
    if (!characters.are_known) return false;
    // What stands behind the characters is 0.
    const std::uint64_t ends = first_ones(codes.ends, limit);
    store_characters(destination, count_of(ends) + 1, characters, ends);
    return true;
}

std::size_t stream_of_short(const std::uint16_t *map, const std::uint8_t *leads, const std::uint8_t *source,
                            std::uint8_t *stream, std::size_t room) noexcept {
    if (left_in_page(source) < kBlock) return 0;
    const Shortest string = decode_shortest(map, leads, source);
    if (!string.is_known) return 0;
    const __m512i characters = _mm512_maskz_compress_epi16(string.ends, string.characters);
    const std::uint32_t wide = _mm512_test_epi16_mask(characters, _mm512_set1_epi16(static_cast<short>(0xFF00)));
    const std::size_t count = count_of(string.ends), size = count + 3 * count_of(wide);
    if (size > room) return 0;
    // A code is 0xF0, index, set, 0xF0; or its second byte alone.
    const auto write = [stream](__m256i units, std::uint64_t of_set, std::uint64_t codes, std::size_t at) {
        const __m512i bytes = _mm512_or_si512(_mm512_slli_epi32(_mm512_cvtepu16_epi32(units), 8),
                                              _mm512_set1_epi32(static_cast<int>(0xF00000F0)));
        const std::uint64_t stay = _pdep_u64(of_set, 0x1111111111111111) * 15 | (codes & 0x2222222222222222);
        const std::size_t written = count_of(stay);
        _mm512_mask_storeu_epi8(stream + at, first_bits(written), _mm512_maskz_compress_epi8(stay, bytes));
        return at + written;
    };
    constexpr std::size_t kCodes = kHalf / 2; // in a register
    const std::size_t first = write(_mm512_castsi512_si256(characters), wide, first_bits(4 * count), 0);
    if (count > kCodes)
        write(_mm512_extracti64x4_epi64(characters, 1), wide >> kCodes, first_bits(4 * (count - kCodes)), first);
    stream[size] = 0;
    return size + 1;
}

} // namespace kxstr::simd::avx512
