#include <immintrin.h>

#include "simd/families.h"

// Blocks of ASCII go over whole; from the first other character on the plain forms take a stretch.
namespace kxstr::simd::avx2 {
namespace {

constexpr std::size_t kStretch = 64;

// Bytes of ASCII at the start, 32 at a time, copied.
std::size_t copy_ascii(const std::uint8_t *from, std::size_t count, std::uint8_t *to) noexcept {
    std::size_t at = 0;
    for (; count - at >= 32; at += 32) {
        const __m256i block = _mm256_loadu_si256(reinterpret_cast<const __m256i *>(from + at));
        if (_mm256_movemask_epi8(block) != 0) break;
        _mm256_storeu_si256(reinterpret_cast<__m256i *>(to + at), block);
    }
    return at;
}

// Units below 0x80, 16 at a time, narrowed.
std::size_t copy_ascii(const std::uint16_t *from, std::size_t count, std::uint8_t *to) noexcept {
    const __m256i high = _mm256_set1_epi16(-0x80);
    std::size_t at = 0;
    for (; count - at >= 16; at += 16) {
        const __m256i block = _mm256_loadu_si256(reinterpret_cast<const __m256i *>(from + at));
        if (!_mm256_testz_si256(block, high)) break;
        const __m128i packed = _mm_packus_epi16(_mm256_castsi256_si128(block), _mm256_extracti128_si256(block, 1));
        _mm_storeu_si128(reinterpret_cast<__m128i *>(to + at), packed);
    }
    return at;
}

// `spare`: what a stretch may leave of a character that goes on behind it.
template <class Table, class From>
Progress by_turns(const Table &table, const From *from, std::size_t count, std::uint8_t *to, std::size_t spare,
                  Progress (*plain)(const Table &, const From *, std::size_t, std::uint8_t *) noexcept) noexcept {
    Progress done{0, 0};
    while (done.read < count) {
        const std::size_t taken = copy_ascii(from + done.read, count - done.read, to + done.written);
        done.read += taken;
        done.written += taken;
        const std::size_t left = count - done.read;
        const std::size_t stretch = left < kStretch ? left : kStretch;
        const Progress more = plain(table, from + done.read, stretch, to + done.written);
        done.read += more.read;
        done.written += more.written;
        if (more.read == 0 || more.read + spare < stretch) break;
    }
    return done;
}

Progress mapped(const std::uint16_t *const &map, const std::uint16_t *units, std::size_t count,
                std::uint8_t *bytes) noexcept {
    return plain::bytes_of_mapped(map, units, count, bytes);
}

} // namespace

Progress utf8_of_bytes(const Utf8Page &page, const std::uint8_t *from, std::size_t count, std::uint8_t *to) noexcept {
    if (page.changes_low) return plain::utf8_of_bytes(page, from, count, to);
    return by_turns(page, from, count, to, 0, plain::utf8_of_bytes);
}

Progress bytes_of_utf8(const ByteOfUnits &page, const std::uint8_t *from, std::size_t count,
                       std::uint8_t *to) noexcept {
    return by_turns(page, from, count, to, 2, plain::bytes_of_utf8);
}

Progress bytes_of_mapped(const std::uint16_t *map, const std::uint16_t *units, std::size_t count,
                         std::uint8_t *bytes) noexcept {
    return by_turns(map, units, count, bytes, 0, mapped);
}

} // namespace kxstr::simd::avx2
