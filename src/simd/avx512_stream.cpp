#include "simd/look_up.h"
#include "simd/scan_loops.h"
#include "simd/stream_blocks.h"

namespace kxstr::simd::avx512 {
namespace {

constexpr std::size_t kBlock = 64;
constexpr std::size_t kUnits = 16;
constexpr std::size_t kExtendedSize = 4;

constexpr std::uint8_t kPastAlphabets = 0x20; // sets from here on are what East Asia writes

__m512i load(const void *place) noexcept {
    return _mm512_loadu_si512(place);
}
struct Places {
    std::uint8_t numbers[kBlock];

    constexpr Places() noexcept : numbers() {
        for (unsigned i = 0; i < kBlock; ++i)
            numbers[i] = static_cast<std::uint8_t>(i);
    }
};
alignas(64) constexpr Places kPlaces;

std::uint64_t first_bits(std::size_t count) noexcept {
    return _bzhi_u64(~std::uint64_t{0}, static_cast<unsigned>(count));
}
std::size_t count_of(std::uint64_t bits) noexcept {
    return static_cast<std::size_t>(__builtin_popcountll(bits));
}
__m512i all(unsigned byte) noexcept {
    return _mm512_set1_epi8(static_cast<char>(byte));
}

// Stores the bytes of a block that stay, and gives their number.
std::size_t store_some(std::uint8_t *place, __m512i bytes, std::uint64_t stay) noexcept {
    const std::size_t size = count_of(stay);
    _mm512_mask_storeu_epi8(place, first_bits(size), _mm512_maskz_compress_epi8(stay, bytes));
    return size;
}

// Four bits in place of each of 16.
std::uint64_t bits_of_four(__mmask16 bits) noexcept {
    return _pdep_u64(bits, 0x1111111111111111) * 15;
}

// Whether 0xFFFF is among at least 32 units.
bool has_none(const std::uint16_t *units, std::size_t count) noexcept {
    constexpr std::size_t kLanes = sizeof(__m512i) / sizeof *units;
    __m512i most = _mm512_loadu_si512(units + count - kLanes);
    for (std::size_t at = 0; at < count - kLanes; at += kLanes)
        most = _mm512_max_epu16(most, _mm512_loadu_si512(units + at));
    return _mm512_cmpeq_epi16_mask(most, _mm512_set1_epi16(-1)) != 0;
}

// The native codes of up to 16 characters.
__m256i codes_of(const std::uint16_t *codes, __m256i characters, std::size_t count) noexcept {
    alignas(32) std::uint16_t units[kUnits];
    _mm256_store_si256(reinterpret_cast<__m256i *>(units), characters);
    const __m256i values = _mm256_castsi128_si256(look_up8(codes, units));
    return count <= kUnits / 2 ? values : _mm256_inserti128_si256(values, look_up8(codes, units + kUnits / 2), 1);
}

// The native codes of a block's extended characters by a map's pairs: the high byte in place of the index, the low one
// in place of the set.
struct Pairs {
    __m512i high, low;
    bool asks; // the map must be asked for one
};
[[gnu::always_inline]] inline Pairs pairs_of(const std::uint16_t *codes, __m512i bytes,
                                             std::uint64_t openers) noexcept {
    static_assert(PairValues::kAskHigh == 0 && PairValues::kAskLow == 0xFF);
    const PairValues &pairs = reinterpret_cast<const PairMap *>(codes)->pairs;
    const __m512i places = load(&kPlaces);
    const __m512i sets = _mm512_permutexvar_epi8(_mm512_add_epi8(places, all(1)), bytes);
    const __m512i indexes = _mm512_permutexvar_epi8(_mm512_sub_epi8(places, all(1)), bytes);
    const __m512i high = _mm512_permutex2var_epi8(load(pairs.high), sets, load(pairs.high + 0x40));
    const __m512i low = _mm512_mask_blend_epi8(
        _mm512_movepi8_mask(indexes), _mm512_permutex2var_epi8(load(pairs.low), indexes, load(pairs.low + 0x40)),
        _mm512_permutex2var_epi8(load(pairs.low + 0x80), indexes, load(pairs.low + 0xC0)));
    const __mmask64 asked = ((_mm512_testn_epi8_mask(high, high) | _mm512_movepi8_mask(sets)) & openers << 1) |
                            (_mm512_cmpeq_epi8_mask(low, all(PairValues::kAskLow)) & openers << 2);
    return {high, low, asked != 0};
}

} // namespace

// Blocks begin with a code and end with one, or with their page. What cannot be told by parity goes plainly.
Narrowed narrow_stream(std::uint8_t *destination, const std::uint8_t *source, std::size_t room,
                       const std::uint8_t *kept, const std::uint16_t *codes) noexcept {
    const __m512i low = _mm512_loadu_si512(kept), low_2 = _mm512_loadu_si512(kept + 64);
    const __m512i high = _mm512_loadu_si512(kept + 128), high_2 = _mm512_loadu_si512(kept + 192);
    Narrowed done{};
    const auto go_on_plainly = [&](std::size_t most) {
        const Narrowed more = plain::narrow_stream(destination + done.written, source + done.read, most, kept, codes);
        done = {done.read + more.read, done.filtered + more.filtered, done.written + more.written,
                done.dropped + more.dropped};
        return more.read != 0;
    };
    while (done.filtered < room) {
        const std::uint8_t *const at = source + done.read;
        const std::size_t in_page = left_in_page(at), size = in_page < kBlock ? in_page : kBlock;
        const __m512i bytes = _mm512_maskz_loadu_epi8(first_bits(size), at);
        const std::uint64_t extended = _mm512_cmpeq_epi8_mask(bytes, all(0xF0));
        const std::uint64_t stops =
            _mm512_cmpge_epu8_mask(_mm512_sub_epi8(bytes, all(1)), all(0xCF)) & first_bits(size);
        const StreamCodes found = extended != 0 ? find_codes({stops, extended}, 0) : StreamCodes{0, 0, stops, 0};
        const std::uint64_t marks = found.stops | found.odd;
        std::size_t end = marks != 0 ? static_cast<std::size_t>(__builtin_ctzll(marks)) : size;
        std::uint64_t openers = found.openers & first_bits(end);
        if (openers != 0) {
            const auto last = static_cast<std::size_t>(63 - __builtin_clzll(openers));
            if (last + kExtendedSize > end) {
                end = last;
                openers &= first_bits(end);
            }
        }
        if (end == 0) {
            if ((found.stops & 1) != 0) return done;
            if (!go_on_plainly(room - done.filtered < kExtendedSize ? 0 : kExtendedSize)) return done;
            continue;
        }
        const std::uint64_t used = first_bits(end), inside = openers << 1 | openers << 2 | openers << 3;
        const __m512i changed =
            _mm512_mask_blend_epi8(_mm512_movepi8_mask(bytes), _mm512_permutex2var_epi8(low, bytes, low_2),
                                   _mm512_permutex2var_epi8(high, bytes, high_2));
        std::uint64_t stay = used & (inside | _mm512_test_epi8_mask(changed, changed));
        if (count_of(stay) > room - done.filtered) {
            go_on_plainly(room - done.filtered);
            return done;
        }
        done.filtered += count_of(stay);
        __m512i result = changed;
        if (openers != 0) {
            const auto first = static_cast<std::size_t>(__builtin_ctzll(openers));
            if (at[first + 2] >= kPastAlphabets) {
                const Pairs pairs = pairs_of(codes, bytes, openers);
                if (!pairs.asks) {
                    stay = (stay & ~openers & ~inside) | openers << 1 | openers << 2;
                    done.read += end;
                    done.written +=
                        store_some(destination + done.written,
                                   _mm512_mask_mov_epi8(_mm512_mask_mov_epi8(changed, openers << 1, pairs.high),
                                                        openers << 2, pairs.low),
                                   stay);
                    if (end < size && (found.stops >> end & 1) != 0) return done;
                    continue;
                }
            }
            const std::size_t count = count_of(openers);
            const __m256i values = codes_of(
                codes, _mm512_castsi512_si256(_mm512_maskz_compress_epi8(openers << 1 | openers << 2, bytes)), count);
            const auto some = static_cast<__mmask16>(first_bits(count));
            const __mmask16 has_code = _mm256_mask_cmpneq_epi16_mask(some, values, _mm256_set1_epi16(-1));
            const __mmask16 is_pair = _mm256_mask_cmpgt_epu16_mask(has_code, values, _mm256_set1_epi16(0xFF));
            // Lead byte in place of the opener, trail or only byte behind it.
            const __m256i swapped = _mm256_or_si256(_mm256_slli_epi16(values, 8), _mm256_srli_epi16(values, 8));
            result = _mm512_mask_expand_epi8(changed, openers | openers << 1, _mm512_castsi256_si512(swapped));
            stay = (stay & ~openers & ~inside) | _pdep_u64(is_pair, openers) | _pdep_u64(has_code, openers) << 1;
            done.dropped += count - count_of(has_code);
        }
        done.read += end;
        done.written += store_some(destination + done.written, result, stay);
        if (end < size && (found.stops >> end & 1) != 0) return done;
    }
    return done;
}

Progress write_stream(std::uint8_t *stream, const std::uint16_t *characters, std::size_t count,
                      std::size_t room) noexcept {
    Progress done{};
    // 0xF0, index, set, 0xF0; a byte alone stands at the place of the index.
    const auto stream_codes = [](__m256i units) {
        return _mm512_or_si512(_mm512_slli_epi32(_mm512_cvtepu16_epi32(units), 8),
                               _mm512_set1_epi32(static_cast<int>(0xF00000F0)));
    };
    const __m256i last_single = _mm256_set1_epi16(0xFF), none = _mm256_set1_epi16(-1);
    constexpr std::uint64_t kSingles = 0x2222222222222222;
    // As long as what is stored behind the codes is sure to be overwritten, whole blocks are.
    if (count >= kUnits + kBlock && !has_none(characters, count)) {
        for (; count - done.read >= kUnits + kBlock && room - done.written >= kExtendedSize * (kUnits + kBlock);
             done.read += kUnits) {
            const __m256i units = _mm256_loadu_si256(reinterpret_cast<const __m256i *>(characters + done.read));
            const std::uint64_t stay = bits_of_four(_mm256_cmpgt_epu16_mask(units, last_single)) | kSingles;
            _mm512_storeu_si512(stream + done.written, _mm512_maskz_compress_epi8(stay, stream_codes(units)));
            done.written += count_of(stay);
        }
    }
    while (done.read < count) {
        const std::size_t left = count - done.read, size = left < kUnits ? left : kUnits;
        const auto here = static_cast<__mmask16>(first_bits(size));
        const __m256i units = _mm256_maskz_loadu_epi16(here, characters + done.read);
        const __mmask16 some = _mm256_mask_cmpneq_epi16_mask(here, units, none);
        const __mmask16 wide = _mm256_mask_cmpgt_epu16_mask(some, units, last_single);
        const std::uint64_t stay = bits_of_four(wide) | (bits_of_four(some) & kSingles);
        if (count_of(stay) > room - done.written) {
            const Progress rest =
                plain::write_stream(stream + done.written, characters + done.read, left, room - done.written);
            return {done.read + rest.read, done.written + rest.written};
        }
        done.read += size;
        done.written += store_some(stream + done.written, stream_codes(units), stay);
    }
    return done;
}

} // namespace kxstr::simd::avx512
