#include <immintrin.h>

#include "simd/scan_loops.h"
#include "simd/stream_blocks.h"

namespace kxstr::simd::avx2 {
namespace {

constexpr std::size_t kUnits = 16;
constexpr std::size_t kGroup = 4; // characters whose codes fill 16 bytes

// Where the bytes of four codes of four bytes go, by the bits of those that are extended characters. Of the others the
// second byte alone stays.
struct Packing {
    alignas(16) std::uint8_t places[16][16];
    std::uint8_t sizes[16];
};
constexpr Packing kPackings = [] {
    Packing result{};
    for (unsigned wide = 0; wide < 16; ++wide)
        for (unsigned byte = 0; byte < 16; ++byte)
            if (byte % 4 == 1 || (wide >> byte / 4 & 1) != 0)
                result.places[wide][result.sizes[wide]++] = static_cast<std::uint8_t>(byte);
    return result;
}();

__m128i load(const void *place) noexcept {
    return _mm_loadu_si128(static_cast<const __m128i *>(place));
}
void store(void *place, __m128i value) noexcept {
    _mm_storeu_si128(static_cast<__m128i *>(place), value);
}

__m256i load32(const void *place) noexcept {
    return _mm256_loadu_si256(static_cast<const __m256i *>(place));
}
bool has_none(__m256i units) noexcept {
    return _mm256_movemask_epi8(_mm256_cmpeq_epi16(units, _mm256_set1_epi16(-1))) != 0;
}

// Four characters, all of which have a code; gives the bytes that are written of the 16 that are stored.
std::size_t write_group(std::uint8_t *stream, const std::uint16_t *characters) noexcept {
    const __m128i units = _mm_cvtepu16_epi32(_mm_loadl_epi64(reinterpret_cast<const __m128i *>(characters)));
    const __m128i codes = _mm_or_si128(_mm_slli_epi32(units, 8), _mm_set1_epi32(static_cast<int>(0xF00000F0)));
    const __m128i wide = _mm_cmpgt_epi32(units, _mm_set1_epi32(0xFF));
    const auto mask = static_cast<unsigned>(_mm_movemask_ps(_mm_castsi128_ps(wide)));
    store(stream, _mm_shuffle_epi8(codes, load(kPackings.places[mask])));
    return kPackings.sizes[mask];
}

// Text bytes that a stream begins with, in whole blocks, at most `room` of them.
std::size_t copy_text(std::uint8_t *destination, const std::uint8_t *source, std::size_t room) noexcept {
    std::size_t done = 0;
    while (room - done >= sizeof(__m256i) && left_in_page(source + done) >= sizeof(__m256i)) {
        const __m256i bytes = load32(source + done);
        const __m256i inside = _mm256_cmpgt_epi8(bytes, _mm256_set1_epi8(0x1F)); // those above 0x7F are negative
        const __m256i last = _mm256_cmpeq_epi8(bytes, _mm256_set1_epi8(0x7F));
        if (_mm256_movemask_epi8(_mm256_andnot_si256(last, inside)) != -1) break;
        _mm256_storeu_si256(reinterpret_cast<__m256i *>(destination + done), bytes);
        done += sizeof(__m256i);
    }
    return done;
}

constexpr std::size_t kBlock = 2 * sizeof(__m256i);

// The whole codes of a block that can be read, and that there is room for: up to one that is neither a byte nor an
// extended character, or is not told by parity. Where codes begin is known before they are read, so none waits for the
// one before.
Narrowed narrow_block(std::uint8_t *destination, const std::uint8_t *source, const std::uint8_t *kept,
                      const std::uint16_t *codes) noexcept {
    const __m256i low = load32(source), high = load32(source + sizeof low);
    const auto both = [&](auto marks) {
        const auto bits = [&](__m256i bytes) { return static_cast<std::uint32_t>(_mm256_movemask_epi8(marks(bytes))); };
        return bits(low) | std::uint64_t{bits(high)} << 32;
    };
    const __m256i mark = _mm256_set1_epi8(static_cast<char>(0xF0));
    const __m256i least = _mm256_set1_epi8(static_cast<char>(0xCF)), one = _mm256_set1_epi8(1);
    const std::uint64_t extended = both([&](__m256i bytes) { return _mm256_cmpeq_epi8(bytes, mark); });
    const std::uint64_t stops = both([&](__m256i bytes) { // 0 and the bytes from 0xD0 up
        const __m256i less = _mm256_sub_epi8(bytes, one);
        return _mm256_cmpeq_epi8(_mm256_max_epu8(less, least), less);
    });
    constexpr int kFew = 16; // bytes of extended characters, each two; where they are few, guessing right is faster
    if (_mm_popcnt_u64(extended) < kFew) return {};
    const StreamCodes found = find_codes({stops, extended}, 0);
    const std::uint64_t marks = found.stops | found.odd;
    std::uint64_t end = marks & (0 - marks); // 0: that of the block
    if (const std::uint64_t openers = found.openers & (end - 1); openers != 0) {
        const std::uint64_t last = std::uint64_t{1} << (63 - __builtin_clzll(openers));
        if (end != 0 ? last >= end >> 3 : last >> 61 != 0) end = last;
    }
    Narrowed done{end != 0 ? static_cast<std::size_t>(__builtin_ctzll(end)) : kBlock, 0, 0, 0};
    for (std::uint64_t begins = (end - 1) & ~found.inside; begins != 0; begins &= begins - 1) {
        const std::uint8_t *const code = source + __builtin_ctzll(begins);
        const bool is_extended = *code == 0xF0;
        const unsigned character = is_extended ? static_cast<unsigned>(code[1] | code[2] << 8) : 0;
        const unsigned value = is_extended ? codes[character] : kept[*code];
        if (!is_extended && value == 0) continue;
        done.filtered += is_extended ? 4 : 1;
        if (value == 0xFFFF) {
            ++done.dropped;
            continue;
        }
        if (value > 0xFF) destination[done.written++] = static_cast<std::uint8_t>(value >> 8);
        destination[done.written++] = static_cast<std::uint8_t>(value);
    }
    return done;
}

// How much of a stream goes plainly before text is tried again; an extended character fits.
constexpr std::size_t kStretch = 64;

std::size_t stretch_of(std::size_t room) noexcept {
    return room < kStretch ? room : kStretch;
}

} // namespace

Progress filter_stream(std::uint8_t *destination, const std::uint8_t *source, std::size_t room,
                       const std::uint8_t *kept) noexcept {
    Progress done{};
    for (;;) {
        const std::size_t text = copy_text(destination + done.written, source + done.read, room - done.written);
        done = {done.read + text, done.written + text};
        const Progress more =
            plain::filter_stream(destination + done.written, source + done.read, stretch_of(room - done.written), kept);
        if (more.read == 0) return done;
        done = {done.read + more.read, done.written + more.written};
    }
}

Narrowed narrow_stream(std::uint8_t *destination, const std::uint8_t *source, std::size_t room,
                       const std::uint8_t *kept, const std::uint16_t *codes) noexcept {
    Narrowed done{};
    for (;;) {
        const std::size_t text = copy_text(destination + done.written, source + done.read, room - done.filtered);
        done = {done.read + text, done.filtered + text, done.written + text, done.dropped};
        const std::uint8_t *const at = source + done.read;
        Narrowed more{};
        if (room - done.filtered > kBlock && left_in_page(at) >= kBlock + 2)
            more = narrow_block(destination + done.written, at, kept, codes);
        if (more.read == 0)
            more = plain::narrow_stream(destination + done.written, at, stretch_of(room - done.filtered), kept, codes);
        if (more.read == 0) return done;
        done = {done.read + more.read, done.filtered + more.filtered, done.written + more.written,
                done.dropped + more.dropped};
    }
}

Progress write_stream(std::uint8_t *stream, const std::uint16_t *characters, std::size_t count,
                      std::size_t room) noexcept {
    Progress done{};
    // As long as what is stored behind the codes is sure to be overwritten: by characters that have one and fit.
    constexpr std::size_t kAhead = 2 * kUnits;
    while (count - done.read >= kAhead && room - done.written >= 4 * kAhead) {
        const std::uint16_t *const from = characters + done.read;
        const __m256i units = load32(from);
        if (_mm256_testz_si256(units, _mm256_set1_epi16(static_cast<short>(0xFF00))) != 0) {
            store(stream + done.written,
                  _mm_packus_epi16(_mm256_castsi256_si128(units), _mm256_extracti128_si256(units, 1)));
            done.written += kUnits;
        } else if (has_none(units) || has_none(load32(from + kUnits))) {
            done.written += plain::write_stream(stream + done.written, from, kUnits, room - done.written).written;
        } else {
            for (std::size_t at = 0; at < kUnits; at += kGroup)
                done.written += write_group(stream + done.written, from + at);
        }
        done.read += kUnits;
    }
    const Progress rest =
        plain::write_stream(stream + done.written, characters + done.read, count - done.read, room - done.written);
    return {done.read + rest.read, done.written + rest.written};
}

} // namespace kxstr::simd::avx2
