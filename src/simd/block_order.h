// What a block of a collation sequence tells of two units. Like order_values.h, compiled by each file for itself.
#pragma once

#include "simd/kernels.h"

namespace kxstr::simd {

// The block of ASCII: its first index and how many it has, then the values.
inline constexpr std::uint8_t kFirstInBlock = ' ', kCountInBlock = 0x5F;

// Where the value of a unit below 0x100 stands among these, a capital's where its letter's does. kNone: nowhere.
struct BlockPlaces {
    static constexpr std::uint8_t kNone = 0x80;
    std::uint8_t of[0x100];
};
inline constexpr BlockPlaces kBlockPlaces = [] {
    BlockPlaces places{};
    for (unsigned unit = 1; unit != 0x100; ++unit) { // the terminator has any place that can be read
        const unsigned lower = unit >= 'A' && unit <= 'Z' ? unit | 0x20 : unit, place = lower - kFirstInBlock;
        places.of[unit] = static_cast<std::uint8_t>(place < kCountInBlock ? place : BlockPlaces::kNone);
    }
    return places;
}();

namespace { // NOLINT(cert-dcl59-cpp): as in scan_loops.h

// The order of two units by the values of such a block: 0 where that is not told, as of units that have no value, or
// one value. A text's terminator comes before all. Where case counts, the small letter comes before its capital. No
// jump hangs on what the values are: most comparisons end here, and what they find nobody can predict.
template <bool case_counts>
[[gnu::always_inline]] inline int order_in_block(const std::uint8_t *block, std::size_t a, std::size_t b) noexcept {
    if ((a | b) > 0xFF) [[unlikely]]
        return 0;
    const std::uint32_t place_a = kBlockPlaces.of[a], place_b = kBlockPlaces.of[b];
    if ((place_a | place_b) >= BlockPlaces::kNone) [[unlikely]]
        return 0;
    const int difference = static_cast<int>(a) - static_cast<int>(b);
    if (a == 0 || b == 0) return difference;
    // A capital's code is the lower one. A mask, since compilers make jumps of conditions.
    const std::uint32_t if_alike = 0 - (((place_a ^ place_b) - 1) >> 31);
    const int by_case = case_counts ? difference & static_cast<int>(if_alike) : 0;
    return block[2 + place_a] - block[2 + place_b] - by_case;
}

// At a place in two strings: -1 or 1, or what go_on says.
template <bool case_counts>
[[gnu::always_inline]] inline int order_at_place(const std::uint8_t *block, const std::uint16_t *a,
                                                 const std::uint16_t *b, std::size_t place, Compare16 *go_on) noexcept {
    const int order = order_in_block<case_counts>(block, a[place], b[place]);
    if (order == 0) [[unlikely]]
        return go_on(a, b);
    return order < 0 ? -1 : 1;
}

} // namespace
} // namespace kxstr::simd
