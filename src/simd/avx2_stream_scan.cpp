// The stream kernel that looks for the terminator itself.
#include <immintrin.h>

#include "simd/families.h"
#include "simd/stream_blocks.h"

namespace kxstr::simd::avx2 {
namespace {

constexpr std::size_t kBlock = 2 * sizeof(__m256i);
constexpr std::uint64_t kAll = ~std::uint64_t{0};

__m256i all(unsigned byte) noexcept {
    return _mm256_set1_epi8(static_cast<char>(byte));
}
std::uint64_t bits(__m256i marks) noexcept {
    return static_cast<std::uint32_t>(_mm256_movemask_epi8(marks));
}
// 0 and the bytes from 0xD0 up.
std::uint64_t stops(__m256i bytes) noexcept {
    const __m256i less = _mm256_sub_epi8(bytes, all(1));
    return bits(_mm256_cmpeq_epi8(_mm256_max_epu8(less, all(0xCF)), less));
}
std::uint64_t extended(__m256i bytes) noexcept {
    return bits(_mm256_cmpeq_epi8(bytes, all(0xF0)));
}

} // namespace

const std::uint8_t *skip_characters(const std::uint8_t *code) noexcept {
    for (;;) {
        const std::uint8_t *block = code - reinterpret_cast<std::uintptr_t>(code) % kBlock;
        std::uint64_t live = kAll << (code - block);
        for (std::uint64_t before = 0;; block += kBlock, live = kAll) {
            const auto *halves = reinterpret_cast<const __m256i *>(block);
            const __m256i low = _mm256_load_si256(halves), high = _mm256_load_si256(halves + 1);
            const std::uint64_t seen = (stops(low) | stops(high) << 32) & live;
            if (seen == 0 && before >> 61 == 0) continue;
            const StreamCodes codes = find_codes({seen, (extended(low) | extended(high) << 32) & live}, before);
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

} // namespace kxstr::simd::avx2
