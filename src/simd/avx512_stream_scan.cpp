// The stream kernels that look for the terminator themselves.
#include <immintrin.h>

#include "simd/families.h"
#include "simd/stream_blocks.h"

namespace kxstr::simd::avx512 {
namespace {

constexpr std::size_t kBlock = sizeof(__m512i);
constexpr std::size_t kPage = 4096; // the smallest there is
constexpr std::uint64_t kAll = ~std::uint64_t{0};

__m512i load(const void *block) noexcept {
    return _mm512_load_si512(block);
}
const std::uint8_t *block_of(const std::uint8_t *place, std::size_t size = kBlock) noexcept {
    return place - reinterpret_cast<std::uintptr_t>(place) % size;
}
__m512i all(unsigned byte) noexcept {
    return _mm512_set1_epi8(static_cast<char>(byte));
}

// 0 and the bytes from 0xD0 up become 0xCF and more.
__m512i one_less(__m512i bytes) noexcept {
    return _mm512_sub_epi8(bytes, all(1));
}
std::uint64_t at_least(__m512i bytes, unsigned least) noexcept {
    return _mm512_cmpge_epu8_mask(bytes, all(least));
}
StreamBytes stream_bytes(__m512i bytes, std::uint64_t live) noexcept {
    return {at_least(one_less(bytes), 0xCF) & live, _mm512_cmpeq_epi8_mask(bytes, all(0xF0)) & live};
}
bool are_single(const std::uint8_t *four_blocks) noexcept {
    const __m512i a = one_less(load(four_blocks)), b = one_less(load(four_blocks + kBlock));
    const __m512i c = one_less(load(four_blocks + 2 * kBlock)), d = one_less(load(four_blocks + 3 * kBlock));
    return at_least(_mm512_max_epu8(_mm512_max_epu8(a, b), _mm512_max_epu8(c, d)), 0xCF) == 0;
}

// Whether an extended character holds no further 0xF0 and is closed by one, as those behind it are told by.
bool is_even(const std::uint8_t *code) noexcept {
    return code[1] != 0xF0 && code[2] != 0xF0 && code[3] == 0xF0;
}

unsigned count(std::uint64_t bits) noexcept {
    return static_cast<unsigned>(_mm_popcnt_u64(bits));
}

} // namespace

const std::uint8_t *skip_characters(const std::uint8_t *code) noexcept {
    // Most streams are short, and end in the first block from wherever they begin.
    if (reinterpret_cast<std::uintptr_t>(code) % kPage <= kPage - kBlock) {
        const StreamBytes seen = stream_bytes(_mm512_loadu_si512(code), kAll);
        const std::uint64_t stop = seen.stops & -seen.stops;
        if (stop != 0 && (stop & seen.extended) == 0) return code + __builtin_ctzll(stop);
        if ((seen.stops & ~seen.extended) != 0) {
            const StreamCodes codes = find_codes(seen, 0);
            const std::uint64_t marks = codes.stops | codes.odd, mark = marks & -marks;
            if ((codes.stops & ~codes.odd & mark) != 0) return code + __builtin_ctzll(mark);
        }
    }
    for (;;) {
        const std::uint8_t *block = block_of(code);
        std::uint64_t live = kAll << (code - block);
        for (std::uint64_t before = 0;; block += kBlock, live = kAll) {
            if (before >> 61 == 0 && live == kAll && block_of(block, 4 * kBlock) == block) {
                while (are_single(block))
                    block += 4 * kBlock;
            }
            const StreamBytes seen = stream_bytes(load(block), live);
            if (const std::uint64_t stop = seen.stops & -seen.stops;
                before >> 61 == 0 && stop != 0 && (stop & seen.extended) == 0)
                return block + __builtin_ctzll(stop); // the way of short texts
            const StreamCodes codes = find_codes(seen, before);
            const std::uint64_t marks = codes.stops | codes.odd;
            if (marks == 0) {
                before = codes.openers;
                continue;
            }
            const std::uint64_t mark = marks & -marks;
            if ((codes.odd & mark) == 0) return block + __builtin_ctzll(mark);
            // The code that the mark lies in goes by its size alone.
            const std::uint64_t openers = codes.openers & (mark - 1);
            code = openers != 0 ? block + (63 - __builtin_clzll(openers)) + 4 : block + bytes_over(before);
            break;
        }
    }
}

Progress filter_stream(std::uint8_t *destination, const std::uint8_t *source, std::size_t room,
                       const std::uint8_t *kept) noexcept {
    if (room == 0) return {0, 0};
    const __m512i low = _mm512_loadu_si512(kept), low_2 = _mm512_loadu_si512(kept + 64);
    const __m512i high = _mm512_loadu_si512(kept + 128), high_2 = _mm512_loadu_si512(kept + 192);
    const std::uint8_t *block = block_of(source);
    std::uint64_t live = kAll << (source - block);
    std::size_t written = 0;
    for (std::uint64_t before = 0;; block += kBlock, live = kAll) {
        const __m512i bytes = load(block);
        const StreamBytes seen = stream_bytes(bytes, live);
        const StreamCodes codes =
            seen.extended == 0 && before >> 61 == 0 ? StreamCodes{0, 0, seen.stops, 0} : find_codes(seen, before);
        const std::uint64_t marks = codes.stops | codes.odd;
        // What is done by this step: `end` bits of the block, `over` bytes of the next one being promised.
        unsigned end = marks != 0 ? static_cast<unsigned>(__builtin_ctzll(marks)) : kBlock;
        std::uint64_t openers = codes.openers & _bzhi_u64(kAll, end);
        unsigned over = marks != 0 ? 0 : bytes_over(openers);
        if ((codes.odd & marks & -marks) != 0 || (over != 0 && !is_even(block + kBlock + over - 4))) {
            end = 63 - static_cast<unsigned>(__builtin_clzll(openers)); // back to the code that the mark lies in
            over = 0;
        }
        const __m512i changed =
            _mm512_mask_blend_epi8(_mm512_movepi8_mask(bytes), _mm512_permutex2var_epi8(low, bytes, low_2),
                                   _mm512_permutex2var_epi8(high, bytes, high_2));
        const __m512i result = _mm512_mask_blend_epi8(codes.inside, changed, bytes);
        const std::uint64_t stay =
            live & _bzhi_u64(kAll, end) & (codes.inside | _mm512_test_epi8_mask(changed, changed));
        const unsigned size = count(stay);
        if (size + over > room - written) {
            // The last codes that fit. What the block in front promised fits.
            std::size_t read = block < source ? 0 : static_cast<std::size_t>(block - source);
            for (unsigned rest = bytes_over(before); rest != 0; --rest)
                destination[written++] = source[read++];
            const Progress last = plain::filter_stream(destination + written, source + read, room - written, kept);
            return {read + last.read, written + last.written};
        }
        if (stay == kAll)
            _mm512_storeu_si512(destination + written, result);
        else
            _mm512_mask_storeu_epi8(destination + written, _bzhi_u64(kAll, size),
                                    _mm512_maskz_compress_epi8(stay, result));
        written += size;
        // The plain walk looks at the next code only with room left.
        if (end < kBlock || written == room) return {static_cast<std::size_t>(block - source) + end, written};
        before = openers;
    }
}

} // namespace kxstr::simd::avx512
