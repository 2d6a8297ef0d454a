#include "simd/look_up.h"
#include "simd/scan_loops.h"

// Bytes to characters where some codes have two bytes. Which bytes are first ones of two the carry of a subtraction
// tells for a block at once.
namespace kxstr::simd::avx512 {
namespace {

constexpr std::size_t kBlock = 64; // units or bytes
constexpr std::size_t kHalf = 32;  // units in a register
constexpr std::size_t kGroup = 8;  // units that are looked up together

__m512i load(const void *place) noexcept {
    return _mm512_loadu_si512(place);
}
void store(void *place, __m512i value) noexcept {
    _mm512_storeu_si512(place, value);
}
std::size_t lesser(std::size_t a, std::size_t b) noexcept {
    return a < b ? a : b;
}
// The lowest `count` bits.
std::uint64_t first_bits(std::size_t count) noexcept {
    return _bzhi_u64(~std::uint64_t{0}, static_cast<unsigned>(lesser(count, kBlock)));
}
std::size_t count_of(std::uint64_t bits) noexcept {
    return static_cast<std::size_t>(__builtin_popcountll(bits));
}
bool is_text(__m512i bytes, __mmask64 live) noexcept {
    const __m512i place = _mm512_sub_epi8(bytes, _mm512_set1_epi8(0x20));
    return _mm512_mask_cmpgt_epu8_mask(live, place, _mm512_set1_epi8(0x7E - 0x20)) == 0;
}

void widen(std::uint16_t *place, __m512i bytes, __mmask64 here) noexcept {
    _mm512_mask_storeu_epi16(place, static_cast<__mmask32>(here), _mm512_cvtepu8_epi16(_mm512_castsi512_si256(bytes)));
    _mm512_mask_storeu_epi16(place + kHalf, static_cast<__mmask32>(here >> kHalf),
                             _mm512_cvtepu8_epi16(_mm512_extracti64x4_epi64(bytes, 1)));
}

// The units of a block whose low and high bytes stand apart: the first `count` of them.
void store_units(std::uint16_t *place, std::size_t count, __m512i low, __m512i high) noexcept {
    const __m512i order = _mm512_setr_epi64(0, 4, 1, 5, 2, 6, 3, 7);
    low = _mm512_permutexvar_epi64(order, low);
    high = _mm512_permutexvar_epi64(order, high);
    const std::uint64_t here = first_bits(count);
    _mm512_mask_storeu_epi16(place, static_cast<__mmask32>(here), _mm512_unpacklo_epi8(low, high));
    if (count > kHalf)
        _mm512_mask_storeu_epi16(place + kHalf, static_cast<__mmask32>(here >> kHalf), _mm512_unpackhi_epi8(low, high));
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

struct Decoder {
    __m512i leads, more_leads; // of the bytes from 0x80 on
    Table high;                // of a first byte of two and of a byte alone
    Table low, single_low;     // of a second byte and of a byte alone
};
[[gnu::always_inline]] inline Decoder decoder_of(const std::uint16_t *map, const std::uint8_t *leads) noexcept {
    const PairValues &pairs = reinterpret_cast<const PairMap *>(map)->pairs;
    Decoder decoder{load(leads + 0x80), load(leads + 0xC0), load_table(pairs.single_high), load_table(pairs.low),
                    load_table(pairs.single_low)};
    __m512i *const high = decoder.high.parts;
    high[2] = _mm512_mask_loadu_epi8(high[2], _mm512_movepi8_mask(decoder.leads), pairs.high + 0x80);
    high[3] = _mm512_mask_loadu_epi8(high[3], _mm512_movepi8_mask(decoder.more_leads), pairs.high + 0xC0);
    return decoder;
}

struct Decoded {
    __m512i low, high;  // of the characters that end in the block, side by side
    std::uint64_t ends; // the bytes that end a code
    bool is_open;       // the last byte is the first one of two
    bool has_asked;     // there is a pair for which the map must be asked
};
// `before`: the same bytes, each the one in front of it; `is_open`: the one in front of the first one opens a pair.
[[gnu::always_inline]] inline Decoded decode(const Decoder &decoder, __m512i bytes, __m512i before, __mmask64 live,
                                             bool is_open) noexcept {
    constexpr std::uint64_t kOdd = 0xAAAAAAAAAAAAAAAA;
    const std::uint64_t open = is_open ? 1 : 0;
    // Bytes that can be first ones. In a run of them every other one is, as in a run of backslashes every other one
    // escapes: the carry of a subtraction runs through.
    const __mmask64 upper = _mm512_movepi8_mask(bytes);
    const std::uint64_t able =
        _mm512_movepi8_mask(_mm512_permutex2var_epi8(decoder.leads, bytes, decoder.more_leads)) & upper;
    const std::uint64_t able_first = able & ~open;
    const std::uint64_t series = (((able_first << 1) | kOdd) - able_first) ^ kOdd;
    const std::uint64_t second = (series ^ (able | open)) & live, first = series & able & live;
    const std::uint64_t ends = live & ~first;
    const __m512i low = _mm512_mask_blend_epi8(second, look_up(decoder.single_low, bytes), look_up(decoder.low, bytes));
    const __m512i high = look_up(decoder.high, _mm512_mask_mov_epi8(bytes, second, before));
    static_assert(PairValues::kAskHigh == 0 && PairValues::kAskLow == 0xFF);
    const std::uint64_t asked = _mm512_mask_testn_epi8_mask(second, high, high) |
                                _mm512_mask_cmpeq_epi8_mask(second, low, _mm512_set1_epi8(-1));
    return {_mm512_maskz_compress_epi8(ends, low), _mm512_maskz_compress_epi8(ends, high), ends, first >> 63 != 0,
            asked != 0};
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
        const Decoded block = decode(decoder, bytes, before, here, is_open);
        if (block.has_asked) break;
        const std::size_t characters = count_of(block.ends);
        store_units(to, left >= kBlock + kSurelyMore ? kBlock : characters, block.low, block.high);
        done = {done.read + size, done.written + characters};
        is_open = size == kBlock ? block.is_open : (block.ends >> (size - 1) & 1) == 0;
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
    while (done.read < count && add(decode_pairs(map, leads, source + done.read, lesser(count - done.read, kAsked),
                                                 destination + done.written)));
    return done;
}

bool decode_short(const std::uint16_t *map, const std::uint8_t *leads, const std::uint8_t *source, std::size_t limit,
                  std::uint16_t *destination) noexcept {
    if (left_in_page(source) < kBlock) return false;
    const __m512i bytes = load(source);
    const std::uint64_t zeros = _mm512_testn_epi8_mask(bytes, bytes);
    if (zeros == 0) return false;
    const __m512i before = _mm512_maskz_loadu_epi8(~std::uint64_t{1}, source - 1);
    const Decoded block = decode(decoder_of(map, leads), bytes, before, (zeros ^ (zeros - 1)) >> 1, false);
    if (block.has_asked) return false;
    // What stands behind the characters is 0.
    const std::size_t characters = lesser(count_of(block.ends), limit);
    store_units(destination, characters + 1, block.low, block.high);
    destination[characters] = 0;
    return true;
}

} // namespace kxstr::simd::avx512
