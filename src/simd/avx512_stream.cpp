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

// The native codes of up to 16 characters, if they are of one alphabet or two, which lie together: two rows of 64 of
// them are looked up at once.
[[gnu::always_inline]] inline bool look_up_alphabets(const std::uint16_t *codes, __m256i characters, __mmask16 left,
                                                     __m256i &values) noexcept {
    constexpr std::size_t kRows = 128, kLanes = 32;
    const __m256i numbers = _mm256_srli_epi16(characters, 7);
    const __mmask16 upper = _mm256_test_epi16_mask(characters, _mm256_set1_epi16(kRows / 2));
    __m512i found = _mm512_castsi256_si512(characters);
    __m256i next = characters;
    for (int turn = 0; turn < 2; ++turn, next = _mm256_maskz_compress_epi16(left, characters)) {
        const std::size_t first = static_cast<std::uint16_t>(_mm256_cvtsi256_si32(next));
        if (first >> 8 >= kPastAlphabets) return false;
        const std::uint16_t *const rows = codes + first / kRows * kRows;
        const auto look_up = [&](__mmask16 which, const std::uint16_t *row) {
            found = _mm512_mask2_permutex2var_epi16(_mm512_loadu_si512(row), found, which,
                                                    _mm512_loadu_si512(row + kLanes));
        };
        const __mmask16 here =
            _mm256_mask_cmpeq_epi16_mask(left, numbers, _mm256_set1_epi16(static_cast<short>(first / kRows)));
        look_up(here & static_cast<__mmask16>(~upper), rows);
        look_up(here & upper, rows + kRows / 2);
        left &= static_cast<__mmask16>(~here);
        if (left == 0) {
            values = _mm512_castsi512_si256(found);
            return true;
        }
    }
    return false;
}
// Of any characters.
[[gnu::noinline]] __m256i look_up_each(const std::uint16_t *codes, __m256i characters, std::size_t count) noexcept {
    alignas(32) std::uint16_t units[kUnits];
    _mm256_store_si256(reinterpret_cast<__m256i *>(units), characters);
    const __m256i values = _mm256_castsi128_si256(look_up8(codes, units));
    return count <= kUnits / 2 ? values : _mm256_inserti128_si256(values, look_up8(codes, units + kUnits / 2), 1);
}

// What the bytes of a block give way to.
[[gnu::always_inline]] inline __m512i kept_of(const std::uint8_t *kept, __m512i bytes) noexcept {
    const auto row = [kept](std::size_t number) { return _mm512_loadu_si512(kept + kBlock * number); };
    return _mm512_mask_blend_epi8(_mm512_movepi8_mask(bytes), _mm512_permutex2var_epi8(row(0), bytes, row(1)),
                                  _mm512_permutex2var_epi8(row(2), bytes, row(3)));
}

__m256i characters_of(__m512i bytes, std::uint64_t openers) noexcept {
    return _mm512_castsi512_si256(_mm512_maskz_compress_epi8(openers << 1 | openers << 2, bytes));
}

// Puts codes in place of extended characters into the bytes of a block and into the bits of those that stay. Gives the
// characters dropped.
[[gnu::always_inline]] inline std::size_t put_codes(__m512i &bytes, std::uint64_t &stay, std::uint64_t openers,
                                                    __m256i values) noexcept {
    const std::size_t count = count_of(openers);
    const auto some = static_cast<__mmask16>(first_bits(count));
    const __mmask16 has_code = _mm256_mask_cmpneq_epi16_mask(some, values, _mm256_set1_epi16(-1));
    const __mmask16 is_pair = _mm256_mask_cmpgt_epu16_mask(has_code, values, _mm256_set1_epi16(0xFF));
    // Lead byte in place of the opener, trail or only byte behind it.
    const __m256i swapped = _mm256_or_si256(_mm256_slli_epi16(values, 8), _mm256_srli_epi16(values, 8));
    bytes = _mm512_mask_expand_epi8(bytes, openers | openers << 1, _mm512_castsi256_si512(swapped));
    stay = (stay & ~(openers | openers << 1 | openers << 2 | openers << 3)) | _pdep_u64(is_pair, openers) |
           _pdep_u64(has_code, openers) << 1;
    return count - count_of(has_code);
}

// Puts codes by a map's pairs in place of a block's extended characters: the high byte in place of the index, the low
// one in place of the set. False when the map must be asked for one.
[[gnu::always_inline]] inline bool put_pairs(__m512i &bytes, std::uint64_t &stay, std::uint64_t openers, __m512i source,
                                             const std::uint16_t *codes) noexcept {
    static_assert(PairValues::kAskHigh == 0 && PairValues::kAskLow == 0xFF);
    const PairValues &pairs = reinterpret_cast<const PairMap *>(codes)->pairs;
    const __m512i places = load(&kPlaces);
    const __m512i sets = _mm512_permutexvar_epi8(_mm512_add_epi8(places, all(1)), source);
    const __m512i indexes = _mm512_permutexvar_epi8(_mm512_sub_epi8(places, all(1)), source);
    const __m512i high = _mm512_permutex2var_epi8(load(pairs.high), sets, load(pairs.high + 0x40));
    const __m512i low = _mm512_mask_blend_epi8(
        _mm512_movepi8_mask(indexes), _mm512_permutex2var_epi8(load(pairs.low), indexes, load(pairs.low + 0x40)),
        _mm512_permutex2var_epi8(load(pairs.low + 0x80), indexes, load(pairs.low + 0xC0)));
    const __mmask64 asked = ((_mm512_testn_epi8_mask(high, high) | _mm512_movepi8_mask(sets)) & openers << 1) |
                            (_mm512_cmpeq_epi8_mask(low, all(PairValues::kAskLow)) & openers << 2);
    if (asked != 0) return false;
    bytes = _mm512_mask_mov_epi8(_mm512_mask_mov_epi8(bytes, openers << 1, high), openers << 2, low);
    stay = (stay & ~(openers | openers << 3)) | openers << 1 | openers << 2;
    return true;
}

// Whether the first extended character of a block is one that East Asia writes.
bool is_past_alphabets(const std::uint8_t *at, std::uint64_t openers) noexcept {
    return at[__builtin_ctzll(openers) + 2] >= kPastAlphabets;
}

// The codes of 128 characters of a set, if each of them is one byte, or none at all: that is 0 here.
struct Row {
    __m512i low, high;
    unsigned number;
    bool is_single;
};
Row row_of(const std::uint16_t *codes, unsigned number) noexcept {
    constexpr std::size_t kLanes = 32;
    const std::size_t first = std::size_t{number} * 2 * kBlock;
    __mmask32 others = 0;
    const auto narrow = [&](std::size_t part) {
        const __m512i values = load(codes + first + part * kLanes);
        const __mmask32 some = _mm512_cmpneq_epi16_mask(values, _mm512_set1_epi16(-1));
        const __m512i less = _mm512_sub_epi16(values, _mm512_set1_epi16(1));
        others |= _mm512_mask_cmpge_epu16_mask(some, less, _mm512_set1_epi16(0xFF));
        return _mm512_maskz_cvtepi16_epi8(some, values);
    };
    const auto join = [&](std::size_t part) {
        return _mm512_inserti64x4(_mm512_castsi256_si512(narrow(part)), narrow(part + 1), 1);
    };
    const __m512i low = join(0), high = join(2);
    return {low, high, number, others == 0};
}
// The row of the character that ends in front of a place.
unsigned row_before(const std::uint8_t *closer) noexcept {
    return closer[-1] * 2u + closer[-2] / 128u;
}

// From an extended character's block on, by aligned blocks: each character goes with the block that it ends in, so that
// no block waits for where the one before ended. Ends with a code, in front of all that is not told by parity, with
// room left, and where the characters of a block are of three rows or more. `are_single`: whether the rows were.
[[gnu::noinline]] Narrowed narrow_by_rows(std::uint8_t *destination, const std::uint8_t *source, std::size_t room,
                                          const std::uint8_t *kept, const std::uint16_t *codes, unsigned first_row,
                                          bool &are_single) noexcept {
    constexpr std::uint64_t kAll = ~std::uint64_t{0};
    Row row = row_of(codes, first_row), other_row = row;
    are_single = row.is_single;
    if (!are_single) return {};
    Narrowed done{};
    const std::size_t skipped = reinterpret_cast<std::uintptr_t>(source) % kBlock;
    const std::uint8_t *block = source - skipped;
    const __m512i one_back = _mm512_add_epi8(load(&kPlaces), all(kBlock - 1));
    const __m512i two_back = _mm512_add_epi8(load(&kPlaces), all(kBlock - 2));
    __m512i previous = _mm512_setzero_si512();
    std::uint64_t before = 0;
    for (std::uint64_t live = kAll << skipped; room - done.filtered >= 2 * kBlock; block += kBlock, live = kAll) {
        const __m512i bytes = load(block);
        const std::uint64_t extended = _mm512_cmpeq_epi8_mask(bytes, all(0xF0)) & live;
        const std::uint64_t stops = _mm512_cmpge_epu8_mask(_mm512_sub_epi8(bytes, all(1)), all(0xCF)) & live;
        const StreamCodes found =
            (extended | before >> 61) != 0 ? find_codes({stops, extended}, before) : StreamCodes{0, 0, stops, 0};
        if ((found.stops | found.odd) != 0) break;
        const std::uint64_t closers = found.openers << 3 | before >> 61;
        // Two tables of 128 bytes: of what stays where it is, and of the characters.
        __m512i changed = kept_of(kept, bytes);
        if (closers != 0) {
            const __m512i indexes = _mm512_permutex2var_epi8(previous, two_back, bytes);
            const __m512i sets = _mm512_permutex2var_epi8(previous, one_back, bytes);
            const std::uint64_t upper = _mm512_movepi8_mask(indexes);
            const auto are_of = [&](const Row &which) {
                return closers & (which.number % 2 != 0 ? upper : ~upper) &
                       _mm512_cmpeq_epi8_mask(sets, all(which.number / 2));
            };
            const auto put = [&](const Row &which, std::uint64_t here) {
                changed = _mm512_mask_mov_epi8(changed, here, _mm512_permutex2var_epi8(which.low, indexes, which.high));
            };
            const std::uint64_t here = are_of(row);
            put(row, here);
            if (here != closers) {
                std::uint64_t rest = closers & ~here;
                if ((rest & ~are_of(other_row)) != 0) {
                    other_row = row_of(codes, row_before(block + __builtin_ctzll(rest)));
                    are_single = other_row.is_single;
                    if (!are_single || (rest & ~are_of(other_row)) != 0) break;
                }
                put(other_row, rest);
                if (here == 0) {
                    const Row last = row;
                    row = other_row;
                    other_row = last;
                }
            }
        }
        const std::uint64_t some = _mm512_test_epi8_mask(changed, changed) & live;
        const std::uint64_t singles = some & ~(found.openers | found.inside), coded = some & closers;
        done.filtered += count_of(singles) + kExtendedSize * count_of(closers);
        done.dropped += count_of(closers) - count_of(coded);
        done.written += store_some(destination + done.written, changed, singles | coded);
        previous = bytes;
        before = found.openers;
    }
    if (block <= source) return {};
    done.read = static_cast<std::size_t>(block - source);
    if (before >> 61 != 0) done.read -= 1 + static_cast<std::size_t>(__builtin_clzll(before)); // it has not ended
    return done;
}

// Blocks begin with a code and end with one, or with their page. What cannot be told by parity goes plainly.
[[gnu::noinline]] Narrowed narrow_long_stream(std::uint8_t *destination, const std::uint8_t *source, std::size_t room,
                                              const std::uint8_t *kept, const std::uint16_t *codes) noexcept {
    Narrowed done{};
    const auto add = [&](const Narrowed &more) {
        done = {done.read + more.read, done.filtered + more.filtered, done.written + more.written,
                done.dropped + more.dropped};
        return more.read != 0;
    };
    const auto go_on_plainly = [&](std::size_t most) {
        return add(plain::narrow_stream(destination + done.written, source + done.read, most, kept, codes));
    };
    bool are_single = true;
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
        if (openers != 0 && are_single && room - done.filtered >= 2 * kBlock && !is_past_alphabets(at, openers) &&
            add(narrow_by_rows(destination + done.written, at, room - done.filtered, kept, codes,
                               row_before(at + __builtin_ctzll(openers) + 3), are_single)))
            continue;
        if (end == 0) {
            if ((found.stops & 1) != 0) return done;
            if (!go_on_plainly(room - done.filtered < kExtendedSize ? 0 : kExtendedSize)) return done;
            continue;
        }
        const std::uint64_t inside = openers << 1 | openers << 2 | openers << 3;
        __m512i changed = kept_of(kept, bytes);
        std::uint64_t stay = first_bits(end) & (inside | _mm512_test_epi8_mask(changed, changed));
        if (count_of(stay) > room - done.filtered) {
            go_on_plainly(room - done.filtered);
            return done;
        }
        done.filtered += count_of(stay);
        if (openers != 0 && !(is_past_alphabets(at, openers) && put_pairs(changed, stay, openers, bytes, codes))) {
            const __m256i characters = characters_of(bytes, openers);
            const std::size_t count = count_of(openers);
            __m256i values;
            if (!look_up_alphabets(codes, characters, static_cast<__mmask16>(first_bits(count)), values))
                values = look_up_each(codes, characters, count);
            done.dropped += put_codes(changed, stay, openers, values);
        }
        done.read += end;
        done.written += store_some(destination + done.written, changed, stay);
        if (end < size && (found.stops >> end & 1) != 0) return done;
    }
    return done;
}

} // namespace

// Most streams are short, and end in their first block.
Narrowed narrow_stream(std::uint8_t *destination, const std::uint8_t *source, std::size_t room,
                       const std::uint8_t *kept, const std::uint16_t *codes) noexcept {
    if (left_in_page(source) < kBlock || room == 0) return narrow_long_stream(destination, source, room, kept, codes);
    const __m512i bytes = _mm512_loadu_si512(source);
    const std::uint64_t extended = _mm512_cmpeq_epi8_mask(bytes, all(0xF0));
    const std::uint64_t stops = _mm512_cmpge_epu8_mask(_mm512_sub_epi8(bytes, all(1)), all(0xCF));
    const StreamCodes found = extended != 0 ? find_codes({stops, extended}, 0) : StreamCodes{0, 0, stops, 0};
    const std::uint64_t marks = found.stops | found.odd, end = marks & (0 - marks), used = end - 1;
    if ((found.stops & ~found.odd & end) == 0) return narrow_long_stream(destination, source, room, kept, codes);
    __m512i changed = kept_of(kept, bytes);
    std::uint64_t stay = used & (found.inside | _mm512_test_epi8_mask(changed, changed));
    const std::size_t filtered = count_of(stay);
    if (filtered > room) return narrow_long_stream(destination, source, room, kept, codes);
    std::size_t dropped = 0;
    const std::uint64_t openers = found.openers & used;
    if (openers != 0 && !(is_past_alphabets(source, openers) && put_pairs(changed, stay, openers, bytes, codes))) {
        __m256i values;
        if (!look_up_alphabets(codes, characters_of(bytes, openers),
                               static_cast<__mmask16>(first_bits(count_of(openers))), values))
            return narrow_long_stream(destination, source, room, kept, codes);
        dropped = put_codes(changed, stay, openers, values);
    }
    return {count_of(used), filtered, store_some(destination, changed, stay), dropped};
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
