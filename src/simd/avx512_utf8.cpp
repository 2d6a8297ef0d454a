#include <immintrin.h>

#include "simd/families.h"

// Pages and UTF-8 without a step between: tables in registers, and characters of different lengths packed by
// compressing, so that no branch depends on where they lie.
namespace kxstr::simd::avx512 {
namespace {

constexpr std::size_t kBlock = 64;

std::uint64_t low_bits(std::size_t count) noexcept {
    return _bzhi_u64(~std::uint64_t{0}, static_cast<unsigned>(count));
}

std::size_t lesser(std::size_t a, std::size_t b) noexcept {
    return a < b ? a : b;
}

__m512i load(const void *place) noexcept {
    return _mm512_loadu_si512(place);
}

// Packs the bytes that are kept. `whole`: there is room for all 64.
std::uint8_t *store_kept(std::uint8_t *to, __m512i block, std::uint64_t keep, bool whole) noexcept {
    const auto size = static_cast<std::size_t>(_mm_popcnt_u64(keep));
    const __m512i packed = _mm512_maskz_compress_epi8(keep, block);
    if (whole) {
        _mm512_storeu_si512(to, packed);
    } else {
        _mm512_mask_storeu_epi8(to, low_bits(size), packed);
    }
    return to + size;
}

// A table of 128 bytes in two registers.
struct Table {
    __m512i low, high;

    explicit Table(const std::uint8_t *bytes) noexcept : low(load(bytes)), high(load(bytes + kBlock)) {}
    __m512i operator[](__m512i index) const noexcept { return _mm512_permutex2var_epi8(low, index, high); }
};

// The bytes of two blocks in turn.
struct Pairs {
    __m512i first, second;
};
Pairs in_turn(__m512i a, __m512i b) noexcept {
    const __m512i low = _mm512_unpacklo_epi8(a, b);
    const __m512i high = _mm512_unpackhi_epi8(a, b);
    return {_mm512_permutex2var_epi64(low, _mm512_setr_epi64(0, 1, 8, 9, 2, 3, 10, 11), high),
            _mm512_permutex2var_epi64(low, _mm512_setr_epi64(4, 5, 12, 13, 6, 7, 14, 15), high)};
}

std::uint32_t half(std::uint64_t mask, int upper) noexcept {
    return static_cast<std::uint32_t>(upper != 0 ? mask >> 32 : mask);
}

template <int Quarter> __m512i wide(__m512i bytes) noexcept {
    return _mm512_cvtepu8_epi32(_mm512_extracti32x4_epi32(bytes, Quarter));
}

template <int Quarter>
std::uint8_t *store_quarter(std::uint8_t *to, const __m512i (&bytes)[3], const std::uint64_t (&there)[3],
                            bool whole) noexcept {
    const __m512i block =
        _mm512_or_si512(wide<Quarter>(bytes[0]), _mm512_or_si512(_mm512_slli_epi32(wide<Quarter>(bytes[1]), 8),
                                                                 _mm512_slli_epi32(wide<Quarter>(bytes[2]), 16)));
    const auto part = [&](int i) noexcept { return there[i] >> (16 * Quarter) & 0xFFFF; };
    const std::uint64_t keep = _pdep_u64(part(0), 0x1111111111111111) | _pdep_u64(part(1), 0x2222222222222222) |
                               _pdep_u64(part(2), 0x4444444444444444);
    return store_kept(to, block, keep, whole);
}

} // namespace

Progress utf8_of_bytes(const Utf8Page &page, const std::uint8_t *from, std::size_t count, std::uint8_t *to) noexcept {
    const Table firsts(page.apart[0]), seconds(page.apart[1]), thirds(page.apart[2]), lows(page.low);
    const bool changes_low = page.changes_low;
    std::uint8_t *out = to;
    std::size_t read = 0;
    while (read < count) {
        const std::size_t left = count - read;
        const bool whole = left >= kBlock;
        std::size_t size = whole ? kBlock : left;
        std::uint64_t here = low_bits(size);
        const __m512i block = whole ? load(from + read) : _mm512_maskz_loadu_epi8(here, from + read);
        const __m512i lower = changes_low ? lows[block] : block; // of its bytes below 0x80
        const __mmask64 upper = _mm512_movepi8_mask(block);
        if (upper == 0) {
            if (whole) {
                _mm512_storeu_si512(out, lower);
            } else {
                _mm512_mask_storeu_epi8(out, here, lower);
            }
            read += size;
            out += size;
            continue;
        }
        const __m512i bytes[3] = {_mm512_mask_mov_epi8(lower, upper, firsts[block]),
                                  _mm512_maskz_mov_epi8(upper, seconds[block]),
                                  _mm512_maskz_mov_epi8(upper, thirds[block])};
        const std::uint64_t stops = _mm512_mask_testn_epi8_mask(upper, bytes[0], bytes[0]);
        if (stops != 0) {
            size = static_cast<std::size_t>(_tzcnt_u64(stops));
            here = low_bits(size);
        }
        const std::uint64_t there[3] = {here, here & _mm512_test_epi8_mask(bytes[1], bytes[1]),
                                        here & _mm512_test_epi8_mask(bytes[2], bytes[2])};
        if (there[2] == 0) {
            const Pairs pairs = in_turn(bytes[0], bytes[1]);
            const auto keep = [&](int upper_half) noexcept {
                return _pdep_u64(half(there[0], upper_half), 0x5555555555555555) |
                       _pdep_u64(half(there[1], upper_half), 0xAAAAAAAAAAAAAAAA);
            };
            out = store_kept(out, pairs.first, keep(0), whole);
            out = store_kept(out, pairs.second, keep(1), whole);
        } else {
            out = store_quarter<0>(out, bytes, there, whole);
            out = store_quarter<1>(out, bytes, there, whole);
            out = store_quarter<2>(out, bytes, there, whole);
            out = store_quarter<3>(out, bytes, there, false); // a whole one might reach behind the room
        }
        read += size;
        if (stops != 0) break;
    }
    return {read, static_cast<std::size_t>(out - to)};
}

namespace {

__m512i set(int value) noexcept {
    return _mm512_set1_epi8(static_cast<char>(value));
}

// The characters of a block of UTF-8 that begins with one: where they start, the bytes of their units in those places,
// and where something stands that is no character up to U+FFFF or that is not all here.
struct Decoded8 {
    __m512i low, high;
    std::uint64_t starts, faults;
    std::size_t beyond; // bytes of the last character that lie behind the block
};

[[gnu::always_inline]] inline Decoded8 decode_block(const std::uint8_t *from, std::size_t left, __m512i b0) noexcept {
    const std::size_t size = lesser(kBlock, left);
    // The bytes behind each byte; those behind the end are 0, which continues nothing.
    const __m512i b1 = left > kBlock ? load(from + 1) : _mm512_maskz_loadu_epi8(low_bits(left - 1), from + 1);
    const std::uint64_t continuation = _mm512_cmplt_epi8_mask(b0, set(0xC0));
    const std::uint64_t long_forms = _mm512_cmpge_epu8_mask(b0, set(0xC0));
    const std::uint64_t from_three = _mm512_cmpge_epu8_mask(b0, set(0xE0));
    const std::uint64_t next_continues = _mm512_cmplt_epi8_mask(b1, set(0xC0));
    const std::uint64_t here = low_bits(size);
    std::uint64_t faults = _mm512_mask_cmplt_epu8_mask(long_forms, b0, set(0xC2)) | (long_forms & ~next_continues);
    // aaaaabbb bbcccccc: the low byte takes two bits of the byte before the last.
    if (from_three == 0) {
        faults |= continuation & ~(long_forms << 1);
        const __m512i two_bits = _mm512_and_si512(_mm512_slli_epi16(b0, 6), set(0xC0));
        const __m512i low =
            _mm512_mask_mov_epi8(b0, long_forms, _mm512_or_si512(two_bits, _mm512_and_si512(b1, set(0x3F))));
        const __m512i high = _mm512_maskz_mov_epi8(long_forms, _mm512_and_si512(_mm512_srli_epi16(b0, 2), set(0x07)));
        return {low, high, ~continuation & here, faults & here, static_cast<std::size_t>(long_forms >> 63)};
    }
    const __m512i b2 =
        left > kBlock + 1 ? load(from + 2) : _mm512_maskz_loadu_epi8(left > 2 ? low_bits(left - 2) : 0, from + 2);
    const std::uint64_t third_continues = _mm512_cmplt_epi8_mask(b2, set(0xC0));
    // Bytes that no character has, shorter forms and half surrogates.
    faults |= _mm512_cmpge_epu8_mask(b0, set(0xF0)) | (from_three & ~third_continues);
    faults |= _mm512_cmpeq_epi8_mask(b0, set(0xE0)) & _mm512_cmplt_epu8_mask(b1, set(0xA0));
    faults |= _mm512_cmpeq_epi8_mask(b0, set(0xED)) & _mm512_cmpge_epu8_mask(b1, set(0xA0));
    // A block begins with a character, so every continuation belongs to a character of this block.
    faults |= continuation & ~((long_forms << 1) | (from_three << 2));
    const __m512i before_last = _mm512_mask_blend_epi8(from_three, b0, b1);
    const __m512i last = _mm512_mask_blend_epi8(from_three, b1, b2);
    const __m512i two_bits = _mm512_and_si512(_mm512_slli_epi16(before_last, 6), set(0xC0));
    const __m512i low =
        _mm512_mask_mov_epi8(b0, long_forms, _mm512_or_si512(two_bits, _mm512_and_si512(last, set(0x3F))));
    const __m512i middle = _mm512_and_si512(_mm512_srli_epi16(before_last, 2), set(0x0F));
    const __m512i high_of_two = _mm512_maskz_mov_epi8(long_forms, _mm512_and_si512(middle, set(0x07)));
    const __m512i top = _mm512_and_si512(_mm512_slli_epi16(b0, 4), set(0xF0));
    const __m512i high = _mm512_mask_blend_epi8(from_three, high_of_two, _mm512_or_si512(top, middle));
    return {low, high, ~continuation & here, faults & here,
            static_cast<std::size_t>((long_forms >> 63) + (from_three >> 63) + ((from_three >> 62) & 1))};
}

} // namespace

Progress bytes_of_utf8(const ByteOfUnits &page, const std::uint8_t *from, std::size_t count,
                       std::uint8_t *to) noexcept {
    Progress done{0, 0};
    unsigned current = 0; // the high byte that the block before needed
    while (done.read < count) {
        const std::size_t left = count - done.read;
        const std::size_t size = lesser(kBlock, left);
        const bool whole = left >= kBlock;
        const std::uint64_t here = low_bits(size);
        const __m512i b0 = whole ? load(from + done.read) : _mm512_maskz_loadu_epi8(here, from + done.read);
        if (_mm512_movepi8_mask(b0) == 0) {
            if (whole) {
                _mm512_storeu_si512(to + done.written, b0);
            } else {
                _mm512_mask_storeu_epi8(to + done.written, here, b0);
            }
            done.read += size;
            done.written += size;
            continue;
        }
        const Decoded8 block = decode_block(from + done.read, left, b0);
        // The bytes of the page, each where its character starts. ASCII is itself; of the others one table after the
        // other finds its own.
        const std::uint64_t starts = block.starts & (block.faults ^ (block.faults - 1)) & ~block.faults;
        const __mmask64 ascii = starts & ~_mm512_movepi8_mask(b0);
        __m512i bytes = _mm512_maskz_mov_epi8(ascii, b0);
        std::uint64_t others = starts & ~ascii;
        const __mmask64 upper = _mm512_movepi8_mask(block.low);
        const auto look_up = [&](unsigned number) noexcept {
            const std::uint64_t among =
                _mm512_mask_cmpeq_epi8_mask(others, block.high, _mm512_set1_epi8(static_cast<char>(number)));
            others &= ~among;
            const unsigned table = page.table_of[number];
            if (table == 0 && number != 0) return;
            const std::uint8_t *const values = page.bytes[table];
            if ((among & ~upper) != 0) bytes = _mm512_mask_mov_epi8(bytes, among & ~upper, Table(values)[block.low]);
            if ((among & upper) != 0)
                bytes = _mm512_mask_mov_epi8(bytes, among & upper, Table(values + 0x80)[block.low]);
        };
        look_up(current);
        if (others != 0) {
            alignas(kBlock) std::uint8_t highs[kBlock];
            _mm512_store_si512(highs, block.high);
            current = highs[_tzcnt_u64(others)];
            do
                look_up(highs[_tzcnt_u64(others)]);
            while (others != 0);
        }
        const std::uint64_t stops = block.faults | (starts & ~ascii & _mm512_testn_epi8_mask(bytes, bytes));
        const std::size_t good = stops == 0 ? size : lesser(size, _tzcnt_u64(stops));
        const std::uint64_t keep = starts & low_bits(good);
        done.written +=
            static_cast<std::size_t>(store_kept(to + done.written, bytes, keep, whole) - (to + done.written));
        done.read += good;
        if (stops != 0) break;
        done.read += block.beyond;
    }
    return done;
}

Progress bytes_of_mapped(const std::uint16_t *map, const std::uint16_t *units, std::size_t count,
                         std::uint8_t *bytes) noexcept {
    Progress done{0, 0};
    const auto fetch = [&](__m256i part) noexcept {
        return _mm512_cvtepi32_epi16(_mm512_i32gather_epi32(_mm512_cvtepu16_epi32(part), map, 2));
    };
    while (done.read < count) {
        const std::size_t size = lesser(32, count - done.read);
        const auto mask = static_cast<__mmask32>(low_bits(size));
        const __m512i block = _mm512_maskz_loadu_epi16(mask, units + done.read);
        if (_mm512_cmpge_epu16_mask(block, _mm512_set1_epi16(0x80)) == 0) {
            _mm256_mask_storeu_epi8(bytes + done.written, mask, _mm512_cvtepi16_epi8(block));
            done.read += size;
            done.written += size;
            continue;
        }
        const __m512i codes = _mm512_inserti64x4(_mm512_castsi256_si512(fetch(_mm512_castsi512_si256(block))),
                                                 fetch(_mm512_extracti64x4_epi64(block, 1)), 1);
        const std::uint32_t stops = _mm512_mask_cmpeq_epi16_mask(mask, codes, _mm512_set1_epi16(-1));
        const std::size_t good = stops == 0 ? size : lesser(size, _tzcnt_u32(stops));
        const auto valid = static_cast<std::uint32_t>(low_bits(good));
        const std::uint32_t pairs = _mm512_cmpgt_epu16_mask(codes, _mm512_set1_epi16(0xFF));
        const __m512i swapped = _mm512_or_si512(_mm512_slli_epi16(codes, 8), _mm512_srli_epi16(codes, 8));
        const std::uint64_t keep = _pdep_u64(valid & pairs, 0x5555555555555555) | _pdep_u64(valid, 0xAAAAAAAAAAAAAAAA);
        done.written += static_cast<std::size_t>(
            store_kept(bytes + done.written, swapped, keep, count - done.read >= 32) - (bytes + done.written));
        done.read += good;
        if (stops != 0) break;
    }
    return done;
}

} // namespace kxstr::simd::avx512
