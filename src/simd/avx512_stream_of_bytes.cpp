// Strings of bytes as document streams.
#include <immintrin.h>

#include "simd/scan_loops.h"

namespace kxstr::simd::avx512 {
namespace {

constexpr std::size_t kBlock = 64;
constexpr std::size_t kGroup = 16; // characters whose codes, of four bytes each, fill a register
constexpr __mmask64 kWhole = ~__mmask64{0};
constexpr std::size_t kShort = 2 * kGroup;

__m512i load(const void *place) noexcept {
    return _mm512_loadu_si512(place);
}
__m512i all(unsigned byte) noexcept {
    return _mm512_set1_epi8(static_cast<char>(byte));
}
std::uint64_t first_bits(std::size_t count) noexcept {
    return _bzhi_u64(~std::uint64_t{0}, static_cast<unsigned>(count));
}
std::size_t count_of(std::uint64_t bits) noexcept {
    return static_cast<std::size_t>(__builtin_popcountll(bits));
}

// Writes what is live of a group; false when it does not fit.
bool write_group(__m512i characters, __mmask16 live, std::uint8_t *stream, std::size_t room,
                 std::size_t &written) noexcept {
    // 0xF0, index, set, 0xF0; a byte alone stands at the place of the index.
    const __m512i codes =
        _mm512_or_si512(_mm512_slli_epi32(characters, 8), _mm512_set1_epi32(static_cast<int>(0xF00000F0)));
    const __mmask16 some = _mm512_mask_cmpneq_epi32_mask(live, characters, _mm512_set1_epi32(0xFFFF));
    const __mmask16 wide = _mm512_mask_cmpgt_epu32_mask(some, characters, _mm512_set1_epi32(0xFF));
    const std::uint64_t starts = _pdep_u64(wide, 0x1111111111111111);
    const std::uint64_t stay = starts * 15 | _pdep_u64(some, 0x2222222222222222);
    const std::size_t size = count_of(stay);
    if (size > room - written) return false;
    _mm512_mask_storeu_epi8(stream + written, first_bits(size), _mm512_maskz_compress_epi8(stay, codes));
    written += size;
    return true;
}

// What the terminator and the bytes without a character have for a set. A map may have characters of it.
constexpr std::uint8_t kNoSet = 0xFF;

// A map of bytes, low and high bytes of its values apart: of the upper half; and of the other bytes that are no text,
// by their lowest 6 bits. 0x7F is the only one of these that has the bits of '?'.
struct Table {
    __m512i low, low_2, high, high_2, other_low, other_high;
};
Table split(const std::uint16_t *map) noexcept {
    const auto low_of = [&](std::size_t from) {
        return _mm512_inserti64x4(_mm512_castsi256_si512(_mm512_cvtepi16_epi8(load(map + from))),
                                  _mm512_cvtepi16_epi8(load(map + from + kBlock / 2)), 1);
    };
    const auto high_of = [&](std::size_t from) {
        return _mm512_inserti64x4(_mm512_castsi256_si512(_mm512_cvtepi16_epi8(_mm512_srli_epi16(load(map + from), 8))),
                                  _mm512_cvtepi16_epi8(_mm512_srli_epi16(load(map + from + kBlock / 2), 8)), 1);
    };
    const __mmask64 last = __mmask64{1} << 63;
    return {low_of(0x80),
            low_of(0xC0),
            high_of(0x80),
            high_of(0xC0),
            _mm512_mask_mov_epi8(low_of(0), last, all(map[0x7F])),
            _mm512_mask_mov_epi8(_mm512_mask_mov_epi8(high_of(0), last, all(map[0x7F] >> 8)), 1, all(kNoSet))};
}

// The characters of a block.
struct Characters {
    __m512i low, high; // bytes
    __mmask64 wide;
    __mmask64 none; // all of kNoSet, the terminator too
};
[[gnu::always_inline]] inline Characters look_up(const Table &table, __m512i bytes) noexcept {
    const __mmask64 upper = _mm512_movepi8_mask(bytes);
    const __mmask64 no_text = _mm512_cmpgt_epu8_mask(_mm512_sub_epi8(bytes, all(0x20)), all(0x7E - 0x20));
    const __m512i low = _mm512_mask_permutexvar_epi8(
        _mm512_mask2_permutex2var_epi8(table.low, bytes, upper, table.low_2), no_text & ~upper, bytes, table.other_low);
    const __m512i high =
        _mm512_mask_permutexvar_epi8(_mm512_maskz_permutex2var_epi8(upper, table.high, bytes, table.high_2),
                                     no_text & ~upper, bytes, table.other_high);
    return {low, high, _mm512_test_epi8_mask(high, high), _mm512_cmpeq_epi8_mask(high, all(kNoSet))};
}

// By which bytes are taken from those of a block's characters, low ones and then high ones. 0xF0 stays.
struct Order {
    std::uint8_t codes[kBlock / kGroup][kBlock]; // of groups: 0xF0, index, set, 0xF0
    std::uint8_t pairs[kBlock / kShort][kBlock]; // of halves: index, set

    constexpr Order() noexcept : codes(), pairs() {
        for (unsigned i = 0; i < kBlock; ++i) {
            const unsigned of_code = i % 4, of_pair = i % 2;
            for (unsigned group = 0; group < kBlock / kGroup; ++group)
                codes[group][i] = static_cast<std::uint8_t>(
                    of_code == 1 || of_code == 2 ? kGroup * group + i / 4 + (of_code - 1) * kBlock : 0xF0);
            for (unsigned half = 0; half < kBlock / kShort; ++half)
                pairs[half][i] = static_cast<std::uint8_t>(kShort * half + i / 2 + of_pair * kBlock);
        }
    }
};
alignas(64) constexpr Order kOrder;

// The bytes of a group's codes that stay, and those of them that are not 0xF0.
std::uint64_t stay_of(std::uint64_t wide) noexcept {
    return _pdep_u64(wide, 0x1111111111111111) * 15 | 0x2222222222222222;
}
std::uint64_t told_of(std::uint64_t stay) noexcept {
    return _pext_u64(0x6666666666666666, stay);
}

// A half of a block, all of it characters; 64 bytes are stored at a time. Gives the place behind the codes.
template <unsigned half>
[[gnu::always_inline]] inline std::uint8_t *write_half(std::uint8_t *stream, const Characters &block) noexcept {
    constexpr std::size_t kFew = (kBlock - kShort) / 3; // so many extended ones fit with the others
    const std::uint64_t wide = static_cast<std::uint32_t>(block.wide >> (kShort * half));
    const std::uint64_t first = stay_of(wide & 0xFFFF), second = stay_of(wide >> kGroup);
    const std::size_t first_size = count_of(first), size = first_size + count_of(second);
    if (size <= kShort + 3 * kFew) {
        const std::uint64_t told = told_of(first) | told_of(second) << first_size;
        const __m512i pairs = _mm512_permutex2var_epi8(block.low, load(kOrder.pairs[half]), block.high);
        const __m512i bytes =
            _mm512_maskz_compress_epi8(_pdep_u64(wide, 0xAAAAAAAAAAAAAAAA) | 0x5555555555555555, pairs);
        _mm512_storeu_si512(stream, _mm512_mask_expand_epi8(all(0xF0), told, bytes));
        return stream + size;
    }
    const auto codes_of = [&](unsigned group) {
        return _mm512_mask2_permutex2var_epi8(block.low, load(kOrder.codes[group]), 0x6666666666666666, block.high);
    };
    _mm512_storeu_si512(stream, _mm512_maskz_compress_epi8(first, codes_of(2 * half)));
    _mm512_storeu_si512(stream + first_size, _mm512_maskz_compress_epi8(second, codes_of(2 * half + 1)));
    return stream + size;
}

// All are characters. What is stored reaches less than a block behind the codes.
[[gnu::always_inline]] inline std::uint8_t *write_whole(std::uint8_t *stream, const Characters &block) noexcept {
    return write_half<1>(write_half<0>(stream, block), block);
}

bool write_live(const Characters &block, __mmask64 live, std::uint8_t *stream, std::size_t room,
                std::size_t &written) noexcept {
    alignas(64) std::uint8_t low[kBlock], high[kBlock];
    _mm512_store_si512(low, block.low);
    _mm512_store_si512(high, block.high);
    const auto widen = [](const std::uint8_t *bytes) {
        return _mm512_cvtepu8_epi32(_mm_load_si128(reinterpret_cast<const __m128i *>(bytes)));
    };
    for (std::size_t at = 0; at < kBlock && live >> at != 0; at += kGroup) {
        const __m512i characters = _mm512_or_si512(widen(low + at), _mm512_slli_epi32(widen(high + at), 8));
        if (!write_group(characters, static_cast<__mmask16>(live >> at), stream, room, written)) return false;
    }
    return true;
}

// Whether a walk that comes to a place comes to the last byte of its page, if there is less than a block to that.
bool can_be_read(const std::uint8_t *at) noexcept {
    const std::size_t in_page = left_in_page(at);
    if (in_page >= kBlock) [[likely]]
        return true;
    const __mmask64 here = first_bits(in_page);
    const __m512i bytes = _mm512_maskz_loadu_epi8(here, at);
    return _mm512_mask_testn_epi8_mask(here, bytes, bytes) == 0;
}

[[gnu::noinline]] std::size_t long_stream(const std::uint16_t *map, const std::uint8_t *source, std::uint8_t *stream,
                                          std::size_t room) noexcept {
    constexpr std::size_t kMost = 4 * kBlock; // bytes of a block's codes
    const Table table = split(map);
    std::size_t written = 0;
    while (written < room) {
        const std::size_t in_page = left_in_page(source);
        const __mmask64 here = in_page < kBlock ? first_bits(in_page) : kWhole;
        const __m512i bytes = _mm512_maskz_loadu_epi8(here, source);
        const __mmask64 zeros = _mm512_mask_testn_epi8_mask(here, bytes, bytes);
        const __mmask64 live = zeros != 0 ? (zeros & (0 - zeros)) - 1 : here;
        Characters block = look_up(table, bytes);
        // As long as the next block is sure to be written over what is stored behind the codes.
        if (live == kWhole && block.none == 0) {
            for (; room - written >= 2 * kMost && can_be_read(source + kBlock); source += kBlock) {
                const __m512i next_bytes = load(source + kBlock);
                const Characters next = look_up(table, next_bytes);
                if (next.none != 0) break;
                written = static_cast<std::size_t>(write_whole(stream + written, block) - stream);
                block = next;
            }
        }
        const std::size_t before = written;
        if (!write_live(block, live, stream, room, written))
            return before + plain::stream_of_bytes(map, source, stream + before, room - before);
        source += count_of(live);
        if (zeros != 0) break;
    }
    return written;
}

} // namespace

std::size_t stream_of_bytes(const std::uint16_t *map, const std::uint8_t *source, std::uint8_t *stream,
                            std::size_t room) noexcept {
    if (room == 0 || left_in_page(source) < kShort) return long_stream(map, source, stream, room);
    const __m256i bytes = _mm256_loadu_si256(reinterpret_cast<const __m256i *>(source));
    const __mmask32 zeros = _mm256_testn_epi8_mask(bytes, bytes);
    if (zeros == 0) return long_stream(map, source, stream, room);
    const __mmask32 live = (zeros & (0 - zeros)) - 1;
    const std::size_t length = count_of(live);
    const __mmask32 foreign = _mm256_mask_cmpgt_epu8_mask(live, _mm256_sub_epi8(bytes, _mm256_set1_epi8(0x20)),
                                                          _mm256_set1_epi8(0x7E - 0x20));
    if (foreign == 0 && length <= room) {
        _mm256_mask_storeu_epi8(stream, live, bytes);
        return length;
    }
    const __m512i units = _mm512_cvtepu8_epi16(bytes);
    __m512i characters = units;
    const auto look_up_row = [&](unsigned row) {
        constexpr std::size_t kRow = 64;
        const __mmask32 here =
            _mm512_cmpeq_epi16_mask(_mm512_srli_epi16(units, 6), _mm512_set1_epi16(static_cast<short>(row)));
        characters = _mm512_mask2_permutex2var_epi16(load(map + kRow * row), characters, here,
                                                     load(map + kRow * row + kRow / 2));
    };
    // The lower rows first: what comes from them is looked for by the bytes, not by what they have become.
    if ((foreign & ~_mm256_movepi8_mask(bytes)) != 0) {
        look_up_row(0);
        look_up_row(1);
    }
    look_up_row(2);
    look_up_row(3);
    std::size_t written = 0;
    const __m512i first = _mm512_cvtepu16_epi32(_mm512_castsi512_si256(characters));
    if (write_group(first, static_cast<__mmask16>(live), stream, room, written)) {
        if (length <= kGroup) return written;
        const __m512i second = _mm512_cvtepu16_epi32(_mm512_extracti64x4_epi64(characters, 1));
        if (write_group(second, static_cast<__mmask16>(live >> kGroup), stream, room, written)) return written;
    }
    return plain::stream_of_bytes(map, source, stream, room);
}

} // namespace kxstr::simd::avx512
