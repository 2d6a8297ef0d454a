#include <immintrin.h>

#include "simd/families.h"

// Each form makes its bytes or units in lanes of the largest size, and packs them by compressing: no branch depends on
// where the characters lie.
namespace kxstr::simd::avx512 {
namespace {

constexpr std::size_t lesser(std::size_t a, std::size_t b) noexcept {
    return a < b ? a : b;
}

std::uint64_t low_bits(std::size_t count) noexcept {
    return _bzhi_u64(~std::uint64_t{0}, static_cast<unsigned>(count));
}

// Stores the bytes of `block` that are kept, and returns their number.
std::size_t store_kept(std::uint8_t *bytes, __m512i block, std::uint64_t keep) noexcept {
    const auto size = static_cast<std::size_t>(_mm_popcnt_u64(keep));
    _mm512_mask_storeu_epi8(bytes, low_bits(size), _mm512_maskz_compress_epi8(keep, block));
    return size;
}

__m512i field(__m512i value, unsigned shift, int mask) noexcept {
    return _mm512_and_si512(_mm512_srli_epi32(value, shift), _mm512_set1_epi32(mask));
}

// Up to 16 units, each in a lane of four bytes; lanes beyond `valid` are left out.
std::size_t store_utf8_of_16(std::uint8_t *bytes, __m256i units, unsigned valid) noexcept {
    const __m512i unit = _mm512_cvtepu16_epi32(units);
    const __m512i last = _mm512_or_si512(field(unit, 0, 0x3F), _mm512_set1_epi32(0x80));
    const __m512i two =
        _mm512_or_si512(_mm512_or_si512(field(unit, 6, 0x1F), _mm512_set1_epi32(0xC0)), _mm512_slli_epi32(last, 8));
    const __m512i three =
        _mm512_or_si512(_mm512_or_si512(field(unit, 12, 0x0F), _mm512_slli_epi32(field(unit, 6, 0x3F), 8)),
                        _mm512_or_si512(_mm512_slli_epi32(last, 16), _mm512_set1_epi32(0x80E0)));
    const __mmask16 from_two = _mm512_cmpge_epu32_mask(unit, _mm512_set1_epi32(0x80));
    const __mmask16 from_three = _mm512_cmpge_epu32_mask(unit, _mm512_set1_epi32(0x800));
    const __m512i block = _mm512_mask_blend_epi32(from_three, _mm512_mask_blend_epi32(from_two, unit, two), three);
    const std::uint64_t keep = _pdep_u64(valid, 0x1111111111111111) | _pdep_u64(valid & from_two, 0x2222222222222222) |
                               _pdep_u64(valid & from_three, 0x4444444444444444);
    return store_kept(bytes, block, keep);
}

__m512i look_up(const std::uint8_t *table, __m512i index, __mmask64 upper) noexcept {
    const auto half = [&](int at) {
        return _mm512_permutex2var_epi8(_mm512_loadu_si512(table + at), index, _mm512_loadu_si512(table + at + 64));
    };
    return _mm512_mask_blend_epi8(upper, half(0), half(128));
}

// 64 units as two blocks of their bytes.
struct Split {
    __m512i low;
    __m512i high;
};

void store_units(std::uint16_t *units, Split split, std::size_t count) noexcept {
    const __m512i a = _mm512_unpacklo_epi8(split.low, split.high);
    const __m512i b = _mm512_unpackhi_epi8(split.low, split.high);
    const __m512i first = _mm512_permutex2var_epi64(a, _mm512_setr_epi64(0, 1, 8, 9, 2, 3, 10, 11), b);
    const __m512i second = _mm512_permutex2var_epi64(a, _mm512_setr_epi64(4, 5, 12, 13, 6, 7, 14, 15), b);
    if (count == 64) {
        _mm512_storeu_si512(units, first);
        _mm512_storeu_si512(units + 32, second);
        return;
    }
    const std::uint64_t mask = low_bits(count);
    _mm512_mask_storeu_epi16(units, static_cast<__mmask32>(mask), first);
    if (count > 32) _mm512_mask_storeu_epi16(units + 32, static_cast<__mmask32>(mask >> 32), second);
}

Split load_units(const std::uint16_t *units, std::size_t count) noexcept {
    const std::uint64_t mask = low_bits(count);
    const __m512i a = _mm512_maskz_loadu_epi16(static_cast<__mmask32>(mask), units);
    const __m512i b =
        count > 32 ? _mm512_maskz_loadu_epi16(static_cast<__mmask32>(mask >> 32), units + 32) : _mm512_setzero_si512();
    const __m512i low_byte = _mm512_set1_epi16(0xFF);
    const __m512i low = _mm512_packus_epi16(_mm512_and_si512(a, low_byte), _mm512_and_si512(b, low_byte));
    const __m512i high = _mm512_packus_epi16(_mm512_srli_epi16(a, 8), _mm512_srli_epi16(b, 8));
    // Packing goes by 128-bit lanes of both: their quarters alternate.
    const __m512i order = _mm512_setr_epi64(0, 2, 4, 6, 1, 3, 5, 7);
    return {_mm512_permutexvar_epi64(order, low), _mm512_permutexvar_epi64(order, high)};
}

std::uint64_t is_none(Split split) noexcept {
    return _mm512_cmpeq_epi8_mask(_mm512_and_si512(split.low, split.high), _mm512_set1_epi8(-1));
}

// Pages of a block that are looked up as wholes; what is left goes unit by unit.
constexpr int kPagesOfBlock = 4;

// Blocks of 64 by `translate(at, size, mask)`, whose lanes under the mask are stored up to the first 0xFFFF. How far a
// block comes is asked only where something stops it: the next one does not wait for its look-ups.
template <class Translate>
std::size_t translate_blocks(std::size_t count, std::uint16_t *to, Translate translate) noexcept {
    std::size_t done = 0;
    for (; count - done >= 64; done += 64) {
        const Split found = translate(done, 64, ~std::uint64_t{0});
        const std::uint64_t stops = is_none(found);
        if (stops != 0) {
            const auto good = static_cast<std::size_t>(_tzcnt_u64(stops));
            store_units(to + done, found, good);
            return done + good;
        }
        store_units(to + done, found, 64);
    }
    if (done == count) return count;
    const std::size_t size = count - done;
    const Split found = translate(done, size, low_bits(size));
    const std::size_t good = lesser(size, _tzcnt_u64(is_none(found)));
    store_units(to + done, found, good);
    return done + good;
}

} // namespace

std::size_t translate8(const std::uint8_t *bytes, std::size_t count, std::uint16_t *units,
                       const MapPage &table) noexcept {
    return translate_blocks(count, units, [&](std::size_t at, std::size_t, std::uint64_t mask) noexcept -> Split {
        const __m512i index = _mm512_maskz_loadu_epi8(mask, bytes + at);
        const __mmask64 upper = _mm512_movepi8_mask(index);
        return {look_up(table.low, index, upper), look_up(table.high, index, upper)};
    });
}

std::size_t translate16(const std::uint16_t *from, std::size_t count, std::uint16_t *to,
                        const MapPage *const *pages) noexcept {
    return translate_blocks(count, to, [&](std::size_t at, std::size_t size, std::uint64_t mask) noexcept {
        const Split block = load_units(from + at, size);
        const __mmask64 upper = _mm512_movepi8_mask(block.low);
        // Lanes without a page stay as they are, which is a stop.
        Split found{_mm512_set1_epi8(-1), _mm512_set1_epi8(-1)};
        std::uint64_t left = mask;
        for (int turn = 0; left != 0 && turn < kPagesOfBlock; ++turn) {
            const unsigned number = from[at + _tzcnt_u64(left)] >> 8;
            const __mmask64 of_page =
                _mm512_mask_cmpeq_epi8_mask(left, block.high, _mm512_set1_epi8(static_cast<char>(number)));
            left &= ~of_page;
            const MapPage *const page = pages[number];
            if (page == nullptr) continue;
            found.low = _mm512_mask_mov_epi8(found.low, of_page, look_up(page->low, block.low, upper));
            found.high = _mm512_mask_mov_epi8(found.high, of_page, look_up(page->high, block.low, upper));
        }
        if (left != 0) {
            alignas(64) std::uint8_t low[64];
            alignas(64) std::uint8_t high[64];
            _mm512_store_si512(low, found.low);
            _mm512_store_si512(high, found.high);
            for (; left != 0; left = _blsr_u64(left)) {
                const auto lane = static_cast<std::size_t>(_tzcnt_u64(left));
                const std::uint16_t unit = from[at + lane];
                const MapPage *const page = pages[unit >> 8];
                if (page == nullptr) continue;
                low[lane] = page->low[unit & 0xFF];
                high[lane] = page->high[unit & 0xFF];
            }
            found = {_mm512_load_si512(low), _mm512_load_si512(high)};
        }
        return found;
    });
}

Progress utf8_of_units(const std::uint16_t *units, std::size_t count, std::uint8_t *bytes) noexcept {
    Progress done{0, 0};
    while (done.read < count) {
        const std::size_t size = lesser(32, count - done.read);
        const auto mask = static_cast<__mmask32>(low_bits(size));
        const __m512i block = _mm512_maskz_loadu_epi16(mask, units + done.read);
        const __mmask32 wide = _mm512_cmpge_epu16_mask(block, _mm512_set1_epi16(0x80));
        if (wide == 0) {
            _mm256_mask_storeu_epi8(bytes + done.written, mask, _mm512_cvtepi16_epi8(block));
            done.read += size;
            done.written += size;
            continue;
        }
        if (_mm512_cmpge_epu16_mask(block, _mm512_set1_epi16(0x800)) == 0) {
            const __m512i lead = _mm512_or_si512(_mm512_srli_epi16(block, 6), _mm512_set1_epi16(0xC0));
            const __m512i last = _mm512_slli_epi16(
                _mm512_or_si512(_mm512_and_si512(block, _mm512_set1_epi16(0x3F)), _mm512_set1_epi16(0x80)), 8);
            const __m512i two = _mm512_mask_mov_epi16(block, wide, _mm512_or_si512(lead, last));
            const std::uint64_t keep = _pdep_u64(mask, 0x5555555555555555) | _pdep_u64(wide, 0xAAAAAAAAAAAAAAAA);
            done.written += store_kept(bytes + done.written, two, keep);
            done.read += size;
            continue;
        }
        const __mmask32 surrogates =
            _mm512_cmpeq_epi16_mask(_mm512_and_si512(block, _mm512_set1_epi16(static_cast<short>(0xF800))),
                                    _mm512_set1_epi16(static_cast<short>(0xD800)));
        const std::uint32_t stops = surrogates | _mm512_cmpeq_epi16_mask(block, _mm512_set1_epi16(-1));
        const std::size_t good = stops == 0 ? size : lesser(size, _tzcnt_u32(stops));
        const auto valid = static_cast<std::uint32_t>(low_bits(good));
        done.written += store_utf8_of_16(bytes + done.written, _mm512_castsi512_si256(block), valid & 0xFFFF);
        if (good > 16) {
            done.written += store_utf8_of_16(bytes + done.written, _mm512_extracti64x4_epi64(block, 1), valid >> 16);
        }
        done.read += good;
        if (stops != 0) break;
    }
    return done;
}

Progress units_of_utf8(const std::uint8_t *bytes, std::size_t count, std::uint16_t *units) noexcept {
    const auto set = [](int value) { return _mm512_set1_epi8(static_cast<char>(value)); };
    Progress done{0, 0};
    while (done.read < count) {
        const std::uint8_t *const from = bytes + done.read;
        const std::size_t left = count - done.read;
        const std::size_t size = lesser(64, left);
        const __m512i b0 = _mm512_maskz_loadu_epi8(low_bits(size), from);
        if (_mm512_movepi8_mask(b0) == 0) {
            const auto low = static_cast<__mmask32>(low_bits(lesser(size, 32)));
            _mm512_mask_storeu_epi16(units + done.written, low, _mm512_cvtepu8_epi16(_mm512_castsi512_si256(b0)));
            if (size > 32) {
                _mm512_mask_storeu_epi16(units + done.written + 32, static_cast<__mmask32>(low_bits(size - 32)),
                                         _mm512_cvtepu8_epi16(_mm512_extracti64x4_epi64(b0, 1)));
            }
            done.read += size;
            done.written += size;
            continue;
        }
        // The bytes behind each byte; those behind the end are 0, which continues nothing.
        const __m512i b1 = _mm512_maskz_loadu_epi8(low_bits(lesser(64, left - 1)), from + 1);
        const __m512i b2 = _mm512_maskz_loadu_epi8(left > 2 ? low_bits(lesser(64, left - 2)) : 0, from + 2);
        const std::uint64_t continuation = _mm512_cmplt_epi8_mask(b0, set(0xC0));
        const std::uint64_t two = _mm512_cmpeq_epi8_mask(_mm512_and_si512(b0, set(0xE0)), set(0xC0));
        const std::uint64_t three = _mm512_cmpeq_epi8_mask(_mm512_and_si512(b0, set(0xF0)), set(0xE0));
        const std::uint64_t starts = ~continuation & low_bits(size);
        const std::uint64_t next_continues = _mm512_cmplt_epi8_mask(b1, set(0xC0));
        const std::uint64_t third_continues = _mm512_cmplt_epi8_mask(b2, set(0xC0));
        // Bytes that no character has, shorter forms and half surrogates, and characters without their continuation.
        std::uint64_t faults = _mm512_cmpge_epu8_mask(b0, set(0xF0));
        faults |= two & (_mm512_cmplt_epu8_mask(b0, set(0xC2)) | ~next_continues);
        faults |= three & ~(next_continues & third_continues);
        faults |= _mm512_cmpeq_epi8_mask(b0, set(0xE0)) & _mm512_cmplt_epu8_mask(b1, set(0xA0));
        faults |= _mm512_cmpeq_epi8_mask(b0, set(0xED)) & _mm512_cmpge_epu8_mask(b1, set(0xA0));
        // A block begins with a character, so every continuation belongs to a character of this block.
        faults |= continuation & ~((two << 1) | (three << 1) | (three << 2));
        const std::size_t good = lesser(size, _tzcnt_u64(faults));

        const __mmask64 long_forms = two | three;
        const __m512i before_last = _mm512_mask_blend_epi8(three, b0, b1);
        const __m512i last = _mm512_mask_blend_epi8(three, b1, b2);
        // aaaaabbb bbcccccc: the low byte takes two bits of the byte before the last.
        const __m512i two_bits = _mm512_and_si512(_mm512_slli_epi16(before_last, 6), set(0xC0));
        const __m512i low =
            _mm512_mask_mov_epi8(b0, long_forms, _mm512_or_si512(two_bits, _mm512_and_si512(last, set(0x3F))));
        const __m512i middle = _mm512_and_si512(_mm512_srli_epi16(before_last, 2), set(0x0F));
        const __m512i high_of_two = _mm512_maskz_mov_epi8(long_forms, _mm512_and_si512(middle, set(0x07)));
        const __m512i top = _mm512_and_si512(_mm512_slli_epi16(b0, 4), set(0xF0));
        const __m512i high = _mm512_mask_blend_epi8(three, high_of_two, _mm512_or_si512(top, middle));

        const std::uint64_t keep = starts & low_bits(good);
        const auto written = static_cast<std::size_t>(_mm_popcnt_u64(keep));
        const __m512i packed_low = _mm512_maskz_compress_epi8(keep, low);
        const __m512i packed_high = _mm512_maskz_compress_epi8(keep, high);
        const auto store = [&](std::size_t at, __m256i l, __m256i h) {
            const __m512i wide =
                _mm512_or_si512(_mm512_cvtepu8_epi16(l), _mm512_slli_epi16(_mm512_cvtepu8_epi16(h), 8));
            _mm512_mask_storeu_epi16(units + done.written + at,
                                     static_cast<__mmask32>(low_bits(lesser(32, written - at))), wide);
        };
        store(0, _mm512_castsi512_si256(packed_low), _mm512_castsi512_si256(packed_high));
        if (written > 32)
            store(32, _mm512_extracti64x4_epi64(packed_low, 1), _mm512_extracti64x4_epi64(packed_high, 1));
        done.written += written;
        if (faults != 0) {
            done.read += good;
            break;
        }
        // The last character may reach into the next block.
        done.read += size + static_cast<std::size_t>(((two | three) >> 63) + (three >> 63) + ((three >> 62) & 1));
    }
    return done;
}

Progress bytes_of_codes(const std::uint16_t *codes, std::size_t count, std::uint8_t *bytes) noexcept {
    Progress done{0, 0};
    while (done.read < count) {
        const std::size_t size = lesser(32, count - done.read);
        const auto mask = static_cast<__mmask32>(low_bits(size));
        const __m512i block = _mm512_maskz_loadu_epi16(mask, codes + done.read);
        const std::uint32_t wide = _mm512_cmpgt_epu16_mask(block, _mm512_set1_epi16(0xFF));
        if (wide == 0) {
            _mm256_mask_storeu_epi8(bytes + done.written, mask, _mm512_cvtepi16_epi8(block));
            done.read += size;
            done.written += size;
            continue;
        }
        const std::uint32_t stops = _mm512_cmpeq_epi16_mask(block, _mm512_set1_epi16(-1));
        const std::size_t good = lesser(size, _tzcnt_u32(stops));
        const auto valid = static_cast<std::uint32_t>(low_bits(good));
        const __m512i swapped = _mm512_or_si512(_mm512_slli_epi16(block, 8), _mm512_srli_epi16(block, 8));
        const std::uint64_t keep = _pdep_u64(valid & wide, 0x5555555555555555) | _pdep_u64(valid, 0xAAAAAAAAAAAAAAAA);
        done.written += store_kept(bytes + done.written, swapped, keep);
        done.read += good;
        if (stops != 0) break;
    }
    return done;
}

} // namespace kxstr::simd::avx512
