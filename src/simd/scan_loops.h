// The loops of the scans, the same for every family that has vectors. A file avx*_scan.cpp includes this alone, and
// gives for bytes and for 16-bit units the operations `Lanes`:
//
//   Unit, Vector
//   kBits                    bits that a lane has in a mask
//   all(unit)                a vector of the same unit in all lanes
//   least(a, b)              the lesser of each two lanes, unsigned
//   inside(v, low, span)     0 for the lanes that are less than `low` or greater than low + span
//   zeros(v)                 the mask of the lanes that are 0
//   ends(d, v)               the mask of the lanes in which `d` is not 0 or `v` is
//   any_end(d, v)            whether there is one
//   apart(a, b)              0 in the lanes that are equal but for the case of a to z
//   load, load_anywhere      from an aligned address, and from any
//   store_anywhere           to any
//
// What a scan looks for it makes a lane of 0: so blocks are joined by least(), and four of them take one test.
#pragma once

#include "simd/families.h"

namespace kxstr::simd {
namespace { // NOLINT(cert-dcl59-cpp): each family's file has these compiled for it

inline constexpr std::size_t kPage = 4096; // the smallest there is: where a page ends, one of these ends

inline std::uintptr_t address(const void *place) noexcept {
    return reinterpret_cast<std::uintptr_t>(place);
}

// Bytes from a place to the end of its page.
inline std::size_t left_in_page(const void *place) noexcept {
    return kPage - address(place) % kPage;
}

// Whether so many bytes can be read at once from a place on.
template <std::size_t size> bool fits_in_page(const void *place) noexcept {
    return address(place) % kPage <= kPage - size;
}

// 16-bit units at odd addresses straddle the blocks. Nobody should have them; the plain walks take them.
inline bool is_odd(const std::uint16_t *units) noexcept {
    return address(units) % sizeof *units != 0;
}

template <class Unit> const Unit *block_before(const Unit *place, std::size_t size) noexcept {
    return reinterpret_cast<const Unit *>(reinterpret_cast<const char *>(place) - address(place) % size);
}

template <class Lanes> std::size_t first_of(std::uint64_t mask) noexcept {
    return static_cast<std::size_t>(__builtin_ctzll(mask)) / Lanes::kBits;
}

// What has been read stays in a register: compilers would read it anew for every use.
template <class Vector> Vector held(Vector units) noexcept {
    asm("" : "+v"(units));
    return units;
}

template <class Lanes> constexpr std::size_t kUnits = sizeof(typename Lanes::Vector) / sizeof(typename Lanes::Unit);

// The first lane in four vectors, of which one has one, by the mask of each.
template <class Lanes>
std::size_t first_of_four(std::uint64_t a, std::uint64_t b, std::uint64_t c, std::uint64_t d) noexcept {
    constexpr std::size_t kOne = kUnits<Lanes>;
    if constexpr (kOne * Lanes::kBits == 32) { // two masks in one
        const std::uint64_t hits = a | b << 32;
        return hits != 0 ? first_of<Lanes>(hits) : 2 * kOne + first_of<Lanes>(c | d << 32);
    } else {
        if (a != 0) return first_of<Lanes>(a);
        if (b != 0) return kOne + first_of<Lanes>(b);
        return c != 0 ? 2 * kOne + first_of<Lanes>(c) : 3 * kOne + first_of<Lanes>(d);
    }
}

inline constexpr std::uintptr_t kNoEnd = UINTPTR_MAX;
inline constexpr std::size_t kNoLimit = SIZE_MAX;

// The first unit from `start` on for which at(block) has a lane of 0, block by aligned block. When there is none before
// `end`, some place from `end` on. At least the block of `start` is read. may_be(block) may have more such lanes and
// cost less.
template <class Lanes, class MayBe, class At>
const typename Lanes::Unit *scan(const typename Lanes::Unit *start, std::uintptr_t end, MayBe may_be, At at) noexcept {
    constexpr std::size_t kOne = kUnits<Lanes>, kBlock = sizeof(typename Lanes::Vector);
    const auto *block = block_before(start, kBlock);
    const auto before = static_cast<std::size_t>(start - block) * Lanes::kBits;
    if (const std::uint64_t hits = Lanes::zeros(at(block)) >> before; hits != 0) return start + first_of<Lanes>(hits);
    for (block += kOne; address(block) % (4 * kBlock) != 0; block += kOne) {
        if (address(block) >= end) return block;
        if (const std::uint64_t hits = Lanes::zeros(at(block)); hits != 0) return block + first_of<Lanes>(hits);
    }
    for (; address(block) < end; block += 4 * kOne) {
        const auto a = may_be(block), b = may_be(block + kOne);
        const auto c = may_be(block + 2 * kOne), d = may_be(block + 3 * kOne);
        if (Lanes::zeros(Lanes::least(Lanes::least(a, b), Lanes::least(c, d))) == 0) continue;
        if constexpr (__is_same(MayBe, At))
            return block + first_of_four<Lanes>(Lanes::zeros(a), Lanes::zeros(b), Lanes::zeros(c), Lanes::zeros(d));
        for (std::size_t i = 0; i < 4 * kOne; i += kOne) {
            if (const std::uint64_t hits = Lanes::zeros(at(block + i)); hits != 0)
                return block + i + first_of<Lanes>(hits);
        }
    }
    return block;
}

template <class Lanes, class At>
const typename Lanes::Unit *scan(const typename Lanes::Unit *start, std::uintptr_t end, At at) noexcept {
    return scan<Lanes>(start, end, at, at);
}

// The same over `count` units: how many lie before the hit.
template <class Lanes, class At>
std::size_t scan_within(const typename Lanes::Unit *start, std::size_t count, At at) noexcept {
    if (count == 0) return 0;
    constexpr std::size_t kSize = sizeof(typename Lanes::Unit);
    const bool has_end = count <= (kNoEnd - address(start)) / kSize;
    const std::uintptr_t end = has_end ? address(start) + count * kSize : kNoEnd;
    const auto before = static_cast<std::size_t>(scan<Lanes>(start, end, at) - start);
    return before < count ? before : count;
}

inline constexpr std::size_t kNear = 64; // bytes at the start of a string within which most strings end

// The same for the nearest blocks, from any address, and kNoLimit when the hit is not in them or they cannot be read.
template <class Lanes, class At> std::size_t near_hit(const typename Lanes::Unit *start, At at) noexcept {
    if (!fits_in_page<kNear>(start)) return kNoLimit;
    for (std::size_t i = 0; i < kNear / sizeof *start; i += kUnits<Lanes>) {
        if (const std::uint64_t hits = Lanes::zeros(at(start + i)); hits != 0) return i + first_of<Lanes>(hits);
    }
    return kNoLimit;
}

// The same for what follows these, up to four blocks from the start. In functions apart: it would be in the way of
// short strings.
template <class Lanes> inline constexpr std::size_t kNextNear = 4 * sizeof(typename Lanes::Vector);
template <class Lanes, class At> std::size_t next_near_hit(const typename Lanes::Unit *start, At at) noexcept {
    if (!fits_in_page<kNextNear<Lanes>>(start)) return kNoLimit;
#pragma GCC unroll 4
    for (std::size_t i = kNear / sizeof *start; i < kNextNear<Lanes> / sizeof *start; i += kUnits<Lanes>) {
        if (const std::uint64_t hits = Lanes::zeros(at(start + i)); hits != 0) return i + first_of<Lanes>(hits);
    }
    return kNoLimit;
}
// Where to go on when it was not found.
template <class Lanes> const typename Lanes::Unit *behind_near(const typename Lanes::Unit *start) noexcept {
    if (fits_in_page<kNextNear<Lanes>>(start)) return start + kNextNear<Lanes> / sizeof *start;
    return fits_in_page<kNear>(start) ? start + kNear / sizeof *start : start;
}

template <class Lanes>
[[gnu::noinline]] const typename Lanes::Unit *find_zero_far(const typename Lanes::Unit *string) noexcept {
    const std::size_t near = next_near_hit<Lanes>(string, Lanes::load_anywhere);
    return near != kNoLimit ? string + near : scan<Lanes>(behind_near<Lanes>(string), kNoEnd, Lanes::load);
}

template <class Lanes> const typename Lanes::Unit *find_zero(const typename Lanes::Unit *string) noexcept {
    const std::size_t near = near_hit<Lanes>(string, Lanes::load_anywhere);
    return near != kNoLimit ? string + near : find_zero_far<Lanes>(string);
}

template <class Lanes> [[gnu::noinline]] std::uint32_t size_far(const typename Lanes::Unit *string) noexcept {
    const std::size_t near = next_near_hit<Lanes>(string, Lanes::load_anywhere);
    if (near != kNoLimit) return static_cast<std::uint32_t>(near * sizeof *string);
    return static_cast<std::uint32_t>(address(scan<Lanes>(behind_near<Lanes>(string), kNoEnd, Lanes::load)) -
                                      address(string));
}

template <class Lanes> std::uint32_t size(const typename Lanes::Unit *string) noexcept {
    const std::size_t near = near_hit<Lanes>(string, Lanes::load_anywhere);
    return near != kNoLimit ? static_cast<std::uint32_t>(near * sizeof *string) : size_far<Lanes>(string);
}

template <class Unit> const Unit *unless_end(const Unit *found) noexcept {
    return *found != 0 ? found : nullptr;
}

template <class Lanes>
[[gnu::noinline]] const typename Lanes::Unit *find_far(const typename Lanes::Unit *string,
                                                       typename Lanes::Unit wanted) noexcept {
    const auto sought = Lanes::all(wanted);
    const auto at = [sought](const void *block) {
        const auto units = held(Lanes::load_anywhere(block));
        return Lanes::least(units, units ^ sought);
    };
    const std::size_t near = next_near_hit<Lanes>(string, at);
    return unless_end(near != kNoLimit ? string + near : scan<Lanes>(behind_near<Lanes>(string), kNoEnd, at));
}

template <class Lanes>
const typename Lanes::Unit *find(const typename Lanes::Unit *string, typename Lanes::Unit wanted) noexcept {
    const auto sought = Lanes::all(wanted);
    const std::size_t near = near_hit<Lanes>(string, [sought](const void *block) {
        const auto units = held(Lanes::load_anywhere(block));
        return Lanes::least(units, units ^ sought);
    });
    return near != kNoLimit ? unless_end(string + near) : find_far<Lanes>(string, wanted);
}

template <class Lanes>
const typename Lanes::Unit *find_last(const typename Lanes::Unit *string, typename Lanes::Unit wanted) noexcept {
    const auto sought = Lanes::all(wanted);
    const auto *block = block_before(string, sizeof sought);
    std::uint64_t of_string = ~std::uint64_t{0} << static_cast<std::size_t>(string - block) * Lanes::kBits;
    const typename Lanes::Unit *found_block = nullptr;
    std::uint64_t found = 0;
    for (;; block += kUnits<Lanes>, of_string = ~std::uint64_t{0}) {
        const auto units = Lanes::load(block);
        const std::uint64_t end = Lanes::zeros(units) & of_string;
        const std::uint64_t before_end = end != 0 ? (end & (0 - end)) - 1 : ~std::uint64_t{0};
        if (const std::uint64_t hits = Lanes::zeros(units ^ sought) & of_string & before_end; hits != 0) {
            found = hits;
            found_block = block;
        }
        if (end != 0) break;
    }
    if (found == 0) return nullptr;
    return found_block + (63 - static_cast<std::size_t>(__builtin_clzll(found))) / Lanes::kBits;
}

template <class Lanes>
std::size_t find_within(const typename Lanes::Unit *units, std::size_t count, typename Lanes::Unit wanted) noexcept {
    const auto sought = Lanes::all(wanted);
    return scan_within<Lanes>(units, count, [sought](const void *block) { return Lanes::load(block) ^ sought; });
}

template <class Lanes>
std::size_t outside(const typename Lanes::Unit *units, std::size_t count, typename Lanes::Unit low,
                    typename Lanes::Unit high) noexcept {
    const auto lowest = Lanes::all(low), span = Lanes::all(static_cast<typename Lanes::Unit>(high - low));
    return scan_within<Lanes>(
        units, count, [lowest, span](const void *block) { return Lanes::inside(Lanes::load(block), lowest, span); });
}

// The third sign is looked for by aligned blocks, and the terminator with it; the others lie in front of it, where
// everything has been read.
template <class Lanes>
const typename Lanes::Unit *find_signs(const typename Lanes::Unit *string, const Signs16 &signs) noexcept {
    const auto &[at, units] = signs;
    const auto first = Lanes::all(units[0]), second = Lanes::all(units[1]), third = Lanes::all(units[2]);
    if (find_within<Lanes>(string, at[2], 0) < at[2]) return nullptr;
    const std::size_t to_second = at[2] - at[1], to_first = at[2] - at[0];
    const auto two_at = [&](const typename Lanes::Unit *place) {
        const auto text = held(Lanes::load_anywhere(place));
        return Lanes::least(text, (text ^ third) | (Lanes::load_anywhere(place - to_second) ^ second));
    };
    const auto all_at = [&](const typename Lanes::Unit *place) {
        const auto text = held(Lanes::load_anywhere(place));
        const auto before =
            (Lanes::load_anywhere(place - to_second) ^ second) | (Lanes::load_anywhere(place - to_first) ^ first);
        return Lanes::least(text, (text ^ third) | before);
    };
    const auto *place = string + at[2];
    const auto *const next = block_before(place, sizeof first) + kUnits<Lanes>;
    if (left_in_page(place) >= sizeof first) {
        const std::uint64_t hits = Lanes::zeros(all_at(place));
        place = hits != 0 ? place + first_of<Lanes>(hits) : scan<Lanes>(next, kNoEnd, two_at, all_at);
    } else {
        while (place != next && *place != 0 &&
               (*place != units[2] || *(place - to_second) != units[1] || *(place - to_first) != units[0]))
            ++place;
        if (place == next) place = scan<Lanes>(next, kNoEnd, two_at, all_at);
    }
    return *place != 0 ? place - at[2] : nullptr;
}

// The masks of the nearest blocks in one.
template <class Lanes, class At> std::uint64_t near_zeros(const typename Lanes::Unit *start, At at) noexcept {
    constexpr std::size_t kOne = kUnits<Lanes>;
    std::uint64_t hits = Lanes::zeros(at(start));
    if constexpr (kNear / sizeof *start == 2 * kOne) hits |= Lanes::zeros(at(start + kOne)) << kOne * Lanes::kBits;
    return hits;
}

// Known when the string ends in the nearest blocks, and these fit twice into what is left of its page.
template <class Lanes>
Found16 find_short(const typename Lanes::Unit *string, const typename Lanes::Unit *wanted) noexcept {
    if (left_in_page(string) < 2 * kNear || left_in_page(wanted) < kNear) return {false, nullptr};
    const auto zeros = [](const auto *place, auto sought) {
        return near_zeros<Lanes>(place, [sought](const void *block) { return Lanes::load_anywhere(block) ^ sought; });
    };
    const std::uint64_t end = zeros(string, Lanes::all(0)), sought_end = zeros(wanted, Lanes::all(0));
    if (end == 0) return {false, nullptr};
    if (sought_end == 0) return {true, nullptr}; // longer than the string
    const std::uint64_t of_sought = (sought_end & (0 - sought_end)) - 1;
    const std::size_t last = first_of<Lanes>(sought_end) - 1;
    // Behind the terminator may lie anything; what is sought has none in it.
    std::uint64_t places = zeros(string, Lanes::all(wanted[0])) & ((end & (0 - end)) - 1);
    places &= zeros(string, Lanes::all(wanted[last])) >> last * Lanes::kBits;
    for (; places != 0; places &= places - 1) {
        const auto *const place = string + first_of<Lanes>(places);
        const std::uint64_t same = near_zeros<Lanes>(place, [&](const typename Lanes::Unit *block) {
            return Lanes::load_anywhere(block) ^ Lanes::load_anywhere(wanted + (block - place));
        });
        if ((~same & of_sought) == 0) return {true, place};
    }
    return {true, nullptr};
}

// How units differ: 0 in the lanes that are alike, and the difference of two.
struct AsTheyAre {
    template <class Vector> Vector operator()(Vector a, Vector b) const noexcept { return a ^ b; }
    static int difference(int a, int b) noexcept { return a - b; }
};
template <class Lanes> struct ButForCase {
    typename Lanes::Vector operator()(typename Lanes::Vector a, typename Lanes::Vector b) const noexcept {
        return Lanes::apart(a, b);
    }
    static int capital(int byte) noexcept { return byte >= 'a' && byte <= 'z' ? byte - 'a' + 'A' : byte; }
    static int difference(int a, int b) noexcept { return capital(a) - capital(b); }
};

// Where two strings differ, from place `i` on, up to which they are equal. They can lie differently in their blocks, so
// they are read from any address, up to the end of the page that ends first. What is left of a page after its last
// whole block is read together with units known already.
template <class Lanes, class Apart>
std::size_t mismatch_from(std::size_t i, const typename Lanes::Unit *a, const typename Lanes::Unit *b,
                          std::size_t limit, Apart apart) noexcept {
    constexpr std::size_t kOne = kUnits<Lanes>, kSize = sizeof(typename Lanes::Unit);
    const auto ends_at = [=](std::size_t place) {
        const auto units = Lanes::load_anywhere(a + place);
        return Lanes::ends(apart(units, Lanes::load_anywhere(b + place)), units);
    };
    while (i < limit) {
        const std::size_t left_a = left_in_page(a + i) / kSize, left_b = left_in_page(b + i) / kSize;
        std::size_t left = left_a < left_b ? left_a : left_b;
        if (left > limit - i) left = limit - i;
        for (; left >= 4 * kOne; left -= 4 * kOne, i += 4 * kOne) {
            const auto a0 = Lanes::load_anywhere(a + i), a1 = Lanes::load_anywhere(a + i + kOne);
            const auto a2 = Lanes::load_anywhere(a + i + 2 * kOne), a3 = Lanes::load_anywhere(a + i + 3 * kOne);
            const auto apart01 = apart(a0, Lanes::load_anywhere(b + i)) | apart(a1, Lanes::load_anywhere(b + i + kOne));
            const auto apart23 =
                apart(a2, Lanes::load_anywhere(b + i + 2 * kOne)) | apart(a3, Lanes::load_anywhere(b + i + 3 * kOne));
            const auto least = Lanes::least(Lanes::least(a0, a1), Lanes::least(a2, a3));
            if (Lanes::ends(apart01 | apart23, least) == 0) continue;
            for (;; i += kOne) {
                if (const std::uint64_t hits = ends_at(i); hits != 0) return i + first_of<Lanes>(hits);
            }
        }
        for (; left >= kOne; left -= kOne, i += kOne) {
            if (const std::uint64_t hits = ends_at(i); hits != 0) return i + first_of<Lanes>(hits);
        }
        if (left != 0 && i + left >= kOne) {
            const std::size_t from = i + left - kOne;
            if (const std::uint64_t hits = ends_at(from); hits != 0) return from + first_of<Lanes>(hits);
            i += left;
            continue;
        }
        if (i == limit) break; // in a page that goes on
        // Near the beginning; or in the middle of a unit that lies across the end of its page.
        for (const std::size_t end = i + (left != 0 ? left : 1); i < end; ++i) {
            const auto unit = Lanes::all(a[i]);
            if (Lanes::ends(apart(unit, Lanes::all(b[i])), unit) != 0) return i;
        }
    }
    return limit;
}

// The same from the start on. Most strings are short, so the nearest blocks have a form of their own, which calls
// nothing: whether the place is found in them.
template <class Lanes, class Apart = AsTheyAre>
bool mismatch_near(const typename Lanes::Unit *a, const typename Lanes::Unit *b, std::size_t limit, std::size_t &place,
                   Apart apart = {}) noexcept {
    constexpr std::size_t kOne = kUnits<Lanes>, kSize = sizeof(typename Lanes::Unit);
    place = limit;
    if (limit == 0) return true;
    if (!fits_in_page<kNear>(a) || !fits_in_page<kNear>(b)) return false;
    for (std::size_t i = 0; i < kNear / kSize; i += kOne) {
        const auto units = held(Lanes::load_anywhere(a + i));
        const std::uint64_t hits = Lanes::ends(apart(units, Lanes::load_anywhere(b + i)), units);
        if (hits == 0) continue;
        const std::size_t first = i + first_of<Lanes>(hits);
        if (first < limit) place = first;
        return true;
    }
    return limit <= kNear / kSize;
}

// Where it was not. By groups of four blocks that begin with those of `a`, so only the pages of `b` end within them:
// what comes before the end of one is looked at first, and the group as a whole when the strings go on there.
template <class Lanes, class Apart = AsTheyAre>
std::size_t mismatch_far(const typename Lanes::Unit *a, const typename Lanes::Unit *b, std::size_t limit,
                         Apart apart = {}) noexcept {
    constexpr std::size_t kOne = kUnits<Lanes>, kSize = sizeof(typename Lanes::Unit), kGroup = 4 * kOne;
    const auto at = [=](const typename Lanes::Unit *text, std::size_t place) {
        return held(Lanes::load_anywhere(text + place));
    };
    const auto is_in_group = [=](std::size_t i) {
        const auto a0 = at(a, i), a1 = at(a, i + kOne), a2 = at(a, i + 2 * kOne), a3 = at(a, i + 3 * kOne);
        const auto apart01 = apart(a0, at(b, i)) | apart(a1, at(b, i + kOne));
        const auto apart23 = apart(a2, at(b, i + 2 * kOne)) | apart(a3, at(b, i + 3 * kOne));
        return Lanes::ends(apart01 | apart23, Lanes::least(Lanes::least(a0, a1), Lanes::least(a2, a3))) != 0;
    };
    // From a place to an end some blocks behind it.
    const auto in_blocks = [=](std::size_t place, std::size_t end) {
        for (; place < end; place += kOne) {
            const auto units = at(a, place);
            const std::uint64_t hits = Lanes::ends(apart(units, at(b, place)), units);
            if (hits != 0) return place + first_of<Lanes>(hits);
        }
        return end;
    };
    const bool is_begun = fits_in_page<kNear>(a) && fits_in_page<kNear>(b) && address(a) % kSize == 0;
    if (!is_begun || limit < 2 * kGroup) return mismatch_from<Lanes>(is_begun ? kNear / kSize : 0, a, b, limit, apart);
    const std::size_t first = kGroup - address(a) / kSize % kGroup;
    std::size_t i = (kNear - address(a) % (kOne * kSize)) / kSize;
    if (i < first) {
        i = left_in_page(b + i) / kSize >= first - i ? in_blocks(i, first)
                                                     : mismatch_from<Lanes>(i, a, b, first, apart);
        if (i != first) return i;
    }
    for (i = first;;) {
        const std::size_t left = left_in_page(b + i) / kSize, end = i + left / kGroup * kGroup;
        if (limit - i < left + kGroup) return mismatch_from<Lanes>(i, a, b, limit, apart);
        for (; i != end; i += kGroup) {
            if (is_in_group(i)) return in_blocks(i, i + kGroup);
        }
        const std::size_t next = i + kGroup;
        if (i < kGroup || is_in_group(i - kGroup + left % kGroup)) {
            i = mismatch_from<Lanes>(i, a, b, next, apart);
        } else if (is_in_group(i)) {
            i = in_blocks(i, next);
        } else {
            i = next;
        }
        if (i != next) return i;
    }
}

template <class Lanes, class Apart = AsTheyAre>
std::size_t mismatch(const typename Lanes::Unit *a, const typename Lanes::Unit *b, std::size_t limit,
                     Apart apart = {}) noexcept {
    std::size_t place;
    return mismatch_near<Lanes>(a, b, limit, place, apart) ? place : mismatch_far<Lanes>(a, b, limit, apart);
}

// The same without a limit, of strings that are equal and go on up to `known`, which is 0 or behind the nearest blocks.
// By groups of four blocks up to the end of a page, and what is left there by single ones, the last of them together
// with units known already. The blocks are those of `a`; the step back to the first one on a new page may begin on the
// page before, as both pages have units of the string.
template <class Lanes, class Apart>
[[gnu::always_inline]] inline std::size_t mismatch_on(std::size_t known, const typename Lanes::Unit *a,
                                                      const typename Lanes::Unit *b, Apart apart) noexcept {
    constexpr std::size_t kOne = kUnits<Lanes>, kSize = sizeof(typename Lanes::Unit), kFew = 2 * kPage / kSize;
    if (address(a) % kSize != 0 || address(b) % kSize != 0) return mismatch_from<Lanes>(known, a, b, kNoLimit, apart);
    if (known == 0) {
        known = mismatch_from<Lanes>(0, a, b, kNear / kSize, apart);
        if (known < kNear / kSize) return known;
    }
    const auto ends_at = [=](std::size_t place) {
        const auto units = held(Lanes::load_anywhere(a + place));
        return Lanes::ends(apart(units, Lanes::load_anywhere(b + place)), units);
    };
    while (known < kFew) {
        const std::size_t step_back = address(a + known) % (kOne * kSize) / kSize;
        const std::size_t left_a = left_in_page(a + known) / kSize, left_b = left_in_page(b + known) / kSize;
        std::size_t i = known - step_back;
        known += left_a < left_b ? left_a : left_b;
        for (const std::size_t end = i + (known - i) / (4 * kOne) * (4 * kOne); i != end; i += 4 * kOne) {
            const auto a0 = held(Lanes::load_anywhere(a + i)), a1 = held(Lanes::load_anywhere(a + i + kOne));
            const auto a2 = held(Lanes::load_anywhere(a + i + 2 * kOne)),
                       a3 = held(Lanes::load_anywhere(a + i + 3 * kOne));
            const auto d0 = apart(a0, Lanes::load_anywhere(b + i)), d1 = apart(a1, Lanes::load_anywhere(b + i + kOne));
            const auto d2 = apart(a2, Lanes::load_anywhere(b + i + 2 * kOne)),
                       d3 = apart(a3, Lanes::load_anywhere(b + i + 3 * kOne));
            if (!Lanes::any_end((d0 | d1) | (d2 | d3), Lanes::least(Lanes::least(a0, a1), Lanes::least(a2, a3))))
                continue;
            return i + first_of_four<Lanes>(Lanes::ends(d0, a0), Lanes::ends(d1, a1), Lanes::ends(d2, a2),
                                            Lanes::ends(d3, a3));
        }
        for (; known - i >= kOne; i += kOne) {
            if (const std::uint64_t hits = ends_at(i); hits != 0) return i + first_of<Lanes>(hits);
        }
        if (i == known) continue;
        if (const std::uint64_t hits = ends_at(known - kOne); hits != 0) return known - kOne + first_of<Lanes>(hits);
    }
    const std::size_t begun = known - kNear / kSize;
    return begun + mismatch_far<Lanes>(a + begun, b + begun, kNoLimit, apart);
}

// The difference at that place. A function apart, so that the one for short strings needs no room on the stack.
template <class Lanes, class Apart>
[[gnu::noinline]] int compare_far(const typename Lanes::Unit *a, const typename Lanes::Unit *b,
                                  std::size_t known) noexcept {
    const std::size_t place = mismatch_on<Lanes>(known, a, b, Apart{});
    return Apart::difference(a[place], b[place]);
}

template <class Lanes, class Apart = AsTheyAre>
int compare(const typename Lanes::Unit *a, const typename Lanes::Unit *b) noexcept {
    constexpr std::size_t kOne = kUnits<Lanes>, kBlock = sizeof(typename Lanes::Vector);
    std::size_t place;
    if (mismatch_near<Lanes>(a, b, kNoLimit, place, Apart{})) return Apart::difference(a[place], b[place]);
    if (!fits_in_page<4 * kBlock>(a) || !fits_in_page<4 * kBlock>(b)) return compare_far<Lanes, Apart>(a, b, 0);
#pragma GCC unroll 4
    for (std::size_t i = kNear / sizeof *a; i < 4 * kOne; i += kOne) {
        const auto units = held(Lanes::load_anywhere(a + i));
        if (const std::uint64_t hits = Lanes::ends(Apart{}(units, Lanes::load_anywhere(b + i)), units); hits != 0) {
            place = i + first_of<Lanes>(hits);
            return Apart::difference(a[place], b[place]);
        }
    }
    return compare_far<Lanes, Apart>(a, b, 4 * kOne);
}

// Whether it is plain to see that a string comes to its end before a place behind it: by a 0 right in front of the
// place, such as an allocator keeps there. The block of the place must be there to be read.
template <class Lanes>
bool ends_before(const typename Lanes::Unit *string, const typename Lanes::Unit *place) noexcept {
    const auto *const block = block_before(place, sizeof(typename Lanes::Vector));
    if (address(block) < address(string)) return false;
    const std::size_t units = address(place) % sizeof(typename Lanes::Vector) / sizeof *block;
    const std::uint64_t before = (std::uint64_t{1} << units * Lanes::kBits) - 1;
    return (Lanes::zeros(Lanes::load(block)) & before) != 0;
}

// A string of which the first block has no terminator and can be read. In one pass where nothing is written over before
// it is read: the string might reach into a destination behind it. A function apart, like compare_far().
template <class Lanes>
[[gnu::noinline]] typename Lanes::Unit *copy_long(typename Lanes::Unit *destination,
                                                  const typename Lanes::Unit *source) noexcept {
    constexpr std::size_t kOne = kUnits<Lanes>, kBlock = sizeof(typename Lanes::Vector);
    const auto *place = source;
    if (ends_before<Lanes>(source, destination) ||
        (address(destination) < address(source) && address(source) - address(destination) >= 4 * kBlock)) {
        Lanes::store_anywhere(destination, Lanes::load_anywhere(source));
        place = block_before(source, kBlock) + kOne;
        for (; address(place) % (4 * kBlock) != 0; place += kOne) {
            const auto units = Lanes::load(place);
            if (Lanes::zeros(units) != 0) break;
            Lanes::store_anywhere(destination + (place - source), units);
        }
        for (; address(place) % (4 * kBlock) == 0; place += 4 * kOne) {
            const auto a = Lanes::load(place), b = Lanes::load(place + kOne);
            const auto c = Lanes::load(place + 2 * kOne), d = Lanes::load(place + 3 * kOne);
            if (Lanes::zeros(Lanes::least(Lanes::least(a, b), Lanes::least(c, d))) != 0) break;
            auto *const to = destination + (place - source);
            Lanes::store_anywhere(to, a);
            Lanes::store_anywhere(to + kOne, b);
            Lanes::store_anywhere(to + 2 * kOne, c);
            Lanes::store_anywhere(to + 3 * kOne, d);
        }
    }
    const auto *const end = scan<Lanes>(place, kNoEnd, Lanes::load);
    __builtin_memmove(destination + (place - source), place, static_cast<std::size_t>(end + 1 - place) * sizeof *place);
    return destination;
}

} // namespace
} // namespace kxstr::simd
