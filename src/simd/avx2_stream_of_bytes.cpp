// Strings of bytes as document streams. Plain text goes over as it is; other values are loaded one by one.
#include "simd/look_up.h"
#include "simd/scan_loops.h"
#include "simd/stream_places.h"

namespace kxstr::simd {

constinit const StreamPlaces kStreamPlaces = []() noexcept {
    constexpr unsigned kCharacters = 8, kSize = 4; // 0xF0, index, set, 0xF0: of each
    StreamPlaces result{};
    for (unsigned wide = 0; wide < 0x100; ++wide) {
        for (unsigned byte = 0; byte < kCharacters * kSize; ++byte) {
            const unsigned character = byte / kSize, of_code = byte % kSize;
            if (of_code != 1 && (wide >> character & 1) == 0) continue;
            const unsigned from = of_code == 1 || of_code == 2 ? 2 * character + of_code - 1 : 0x80;
            result.from[wide][result.sizes[wide]++] = static_cast<std::uint8_t>(from);
        }
    }
    return result;
}();

namespace avx2 {
namespace {

constexpr std::size_t kBlock = 32;
constexpr std::size_t kMost = 4 * kBlock; // bytes of a block's codes

__m256i load(const std::uint8_t *bytes) noexcept {
    return _mm256_loadu_si256(reinterpret_cast<const __m256i *>(bytes));
}
std::uint32_t bits(__m256i marks) noexcept {
    return static_cast<std::uint32_t>(_mm256_movemask_epi8(marks));
}
std::uint32_t zeros(__m256i bytes) noexcept {
    return bits(_mm256_cmpeq_epi8(bytes, _mm256_setzero_si256()));
}
// The bytes in 0x20..0x7E. As signed numbers those above are negative.
std::uint32_t text(__m256i bytes) noexcept {
    const __m256i inside = _mm256_cmpgt_epi8(bytes, _mm256_set1_epi8(0x1F));
    return bits(_mm256_andnot_si256(_mm256_cmpeq_epi8(bytes, _mm256_set1_epi8(0x7F)), inside));
}

// The characters of a block.
struct Characters {
    __m256i first, second;
    std::uint32_t wide, none;
};
std::uint32_t bits_of_units(__m256i first, __m256i second) noexcept {
    constexpr int kInOrder = 0xD8;
    return bits(_mm256_permute4x64_epi64(_mm256_packs_epi16(first, second), kInOrder));
}
__m256i look_up16(const std::uint16_t *map, const std::uint8_t *bytes) noexcept {
    const __m256i units = _mm256_cvtepu8_epi16(_mm_loadu_si128(reinterpret_cast<const __m128i *>(bytes)));
    const __m256i place = _mm256_sub_epi16(units, _mm256_set1_epi16(0x20)), last = _mm256_set1_epi16(0x7E - 0x20);
    if (bits(_mm256_cmpeq_epi16(_mm256_min_epu16(place, last), place)) == ~std::uint32_t{0}) return units;
    return _mm256_inserti128_si256(_mm256_castsi128_si256(look_up8(map, bytes)), look_up8(map, bytes + 8), 1);
}
Characters look_up(const std::uint16_t *map, const std::uint8_t *bytes) noexcept {
    const __m256i first = look_up16(map, bytes), second = look_up16(map, bytes + kBlock / 2);
    const __m256i last = _mm256_set1_epi16(0xFF), none = _mm256_set1_epi16(-1);
    const auto is_single = [&](__m256i units) { return _mm256_cmpeq_epi16(_mm256_min_epu16(units, last), units); };
    return {first, second, ~bits_of_units(is_single(first), is_single(second)),
            bits_of_units(_mm256_cmpeq_epi16(first, none), _mm256_cmpeq_epi16(second, none))};
}
std::uint8_t *write_whole(std::uint8_t *stream, const Characters &block) noexcept {
    return write_octets(write_octets(stream, block.first, block.wide), block.second, block.wide >> 16);
}

// A block by each of its values, up to the terminator or to the end of a page.
Progress write_plainly(const std::uint16_t *map, const std::uint8_t *source, std::uint8_t *stream,
                       std::size_t room) noexcept {
    std::uint16_t characters[kBlock];
    std::size_t count = 0;
    for (const std::size_t in_page = left_in_page(source); count < kBlock && count < in_page && source[count] != 0;
         ++count)
        characters[count] = map[source[count]];
    return plain::write_stream(stream, characters, count, room);
}

} // namespace

std::size_t stream_of_bytes(const std::uint16_t *map, const std::uint8_t *source, std::uint8_t *stream,
                            std::size_t room) noexcept {
    std::size_t written = 0;
    while (written < room) {
        Progress step{};
        if (left_in_page(source) >= kBlock) {
            const __m256i bytes = load(source);
            const std::uint32_t ends = zeros(bytes), live = ends != 0 ? (ends & (0 - ends)) - 1 : ~std::uint32_t{0};
            const auto length = static_cast<std::size_t>(__builtin_popcount(live));
            if ((live & ~text(bytes)) == 0 && length <= room - written) {
                if (ends == 0)
                    _mm256_storeu_si256(reinterpret_cast<__m256i *>(stream + written), bytes);
                else
                    __builtin_memcpy(stream + written, source, length);
                step = {length, length};
            } else {
                Characters block = look_up(map, source);
                // As long as the next block is sure to be written over what is stored behind the codes.
                for (; ends == 0 && block.none == 0 && room - written >= 2 * kMost &&
                       left_in_page(source + kBlock) >= kBlock && zeros(load(source + kBlock)) == 0;
                     source += kBlock) {
                    const Characters next = look_up(map, source + kBlock);
                    if (next.none != 0) break;
                    written = static_cast<std::size_t>(write_whole(stream + written, block) - stream);
                    block = next;
                }
                const std::size_t size = length + 3 * static_cast<std::size_t>(__builtin_popcount(block.wide & live));
                if ((block.none & live) == 0 && size <= room - written) {
                    std::uint8_t codes[kMost + kBlock];
                    write_whole(codes, block);
                    __builtin_memcpy(stream + written, codes, size);
                    step = {length, size};
                }
            }
        }
        if (step.read == 0) step = write_plainly(map, source, stream + written, room - written);
        if (step.read == 0) break; // the end, or no room
        source += step.read;
        written += step.written;
    }
    return written;
}

} // namespace avx2
} // namespace kxstr::simd
