#include <immintrin.h>

#include "simd/families.h"

// Blocks of ASCII go over whole; from the first other character on the plain forms take a stretch, so that a text
// which is not ASCII does not pay for looking.
namespace kxstr::simd::avx2 {
namespace {

constexpr std::size_t kStretch = 64;

constexpr std::size_t lesser(std::size_t a, std::size_t b) noexcept {
    return a < b ? a : b;
}

// Units below `limit` at the start, 16 at a time, narrowed.
template <short Limit> std::size_t narrow(const std::uint16_t *units, std::size_t count, std::uint8_t *bytes) noexcept {
    const __m256i high = _mm256_set1_epi16(static_cast<short>(-Limit));
    std::size_t at = 0;
    for (; count - at >= 16; at += 16) {
        const __m256i block = _mm256_loadu_si256(reinterpret_cast<const __m256i *>(units + at));
        if (!_mm256_testz_si256(block, high)) break;
        const __m128i packed = _mm_packus_epi16(_mm256_castsi256_si128(block), _mm256_extracti128_si256(block, 1));
        _mm_storeu_si128(reinterpret_cast<__m128i *>(bytes + at), packed);
    }
    return at;
}

// The kernel for texts of which `fast` takes the start: by turns, until one of them comes no further.
template <class From, class To, class Fast, class Plain>
Progress by_turns(const From *from, std::size_t count, To *to, Fast fast, Plain plain) noexcept {
    Progress done{0, 0};
    while (done.read < count) {
        const std::size_t taken = fast(from + done.read, count - done.read, to + done.written);
        done.read += taken;
        done.written += taken;
        const std::size_t stretch = lesser(kStretch, count - done.read);
        const Progress more = plain(from + done.read, stretch, to + done.written);
        done.read += more.read;
        done.written += more.written;
        // A stretch may end inside a character: at most 2 bytes are left of it then, or it is the end.
        if (more.read == 0 || (more.read + 2 < stretch)) break;
    }
    return done;
}

std::size_t widen(const std::uint8_t *bytes, std::size_t count, std::uint16_t *units) noexcept {
    std::size_t at = 0;
    for (; count - at >= 16; at += 16) {
        const __m128i block = _mm_loadu_si128(reinterpret_cast<const __m128i *>(bytes + at));
        if (_mm_movemask_epi8(block) != 0) break;
        _mm256_storeu_si256(reinterpret_cast<__m256i *>(units + at), _mm256_cvtepu8_epi16(block));
    }
    return at;
}

} // namespace

Progress utf8_of_units(const std::uint16_t *units, std::size_t count, std::uint8_t *bytes) noexcept {
    return by_turns(units, count, bytes, narrow<0x80>, plain::utf8_of_units);
}

Progress units_of_utf8(const std::uint8_t *bytes, std::size_t count, std::uint16_t *units) noexcept {
    return by_turns(bytes, count, units, widen, plain::units_of_utf8);
}

Progress bytes_of_codes(const std::uint16_t *codes, std::size_t count, std::uint8_t *bytes) noexcept {
    return by_turns(codes, count, bytes, narrow<0x100>, plain::bytes_of_codes);
}

} // namespace kxstr::simd::avx2
