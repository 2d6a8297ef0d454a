// What OrderValues tell of a place in two strings. As with scan_loops.h, each family's file has it compiled for itself.
#pragma once

#include "simd/kernels.h"

namespace kxstr::simd {
namespace { // NOLINT(cert-dcl59-cpp): as in scan_loops.h

enum Order { kLess = -1, kSame, kGreater, kOpen };

// Of strings whose first units differ most comparisons are decided here.
[[gnu::always_inline]] inline Order order_of_first(const OrderValues &values, const std::uint16_t *a,
                                                   const std::uint16_t *b) noexcept {
    const unsigned first_a = *a, first_b = *b;
    if ((first_a | first_b) >= OrderValues::kEndLatin) [[unlikely]]
        return kOpen;
    const unsigned value_a = values.first[first_a], value_b = values.first[first_b];
    if (value_a == value_b) return kSame;
    const unsigned greater = value_a < value_b ? value_b : value_a;
    if (greater == OrderValues::kNotTold) [[unlikely]]
        return kSame;
    return value_a < value_b ? kLess : kGreater;
}

inline unsigned value_of(const OrderValues &values, std::uint16_t unit) noexcept {
    if (unit < 0x80) return values.ascii[unit];
    return unit >= OrderValues::kFirstLatin && unit < OrderValues::kEndLatin ? values.latin[(unit - 0x100) / 2]
                                                                             : OrderValues::kNotTold;
}

// Whether a pair may have its say where strings differ, at a place that has values.
[[gnu::always_inline]] inline bool may_be_paired(const OrderValues &values, const std::uint16_t *a,
                                                 const std::uint16_t *b, std::size_t i) noexcept {
    if (i == 0) [[unlikely]]
        return true;
    return (values.begins[a[i - 1]] & (values.follows[a[i]] | values.follows[b[i]])) != 0;
}

inline unsigned step_at(const OrderValues &values, const std::uint16_t *place) noexcept {
    for (std::size_t i = 0; i < values.pair_count; ++i) {
        const OrderValues::Pair &pair = values.pairs[i];
        if ((place[0] | OrderValues::kCaseBit) == pair.first && (place[1] | OrderValues::kCaseBit) == pair.second)
            return pair.step;
    }
    return 0;
}

// What stands before a pair may have drawn its first letter in.
inline bool is_open(const OrderValues &values, const std::uint16_t *text, std::size_t i) noexcept {
    return i != 0 && step_at(values, text + i) != 0 &&
           (value_of(values, text[i - 1]) == OrderValues::kNotTold || step_at(values, text + i - 1) != 0);
}

// Of strings that have the same values before a place.
[[gnu::noinline]] inline Order order_with_pairs(const OrderValues &values, const std::uint16_t *a,
                                                const std::uint16_t *b, std::size_t i) noexcept {
    // Nearly always one of them has a pair that reaches over the place from before, and comes later for it.
    const auto follows = [&](std::uint16_t first, std::uint16_t second) {
        return (values.begins[first] & values.follows[second] & (OrderValues::kMoves - 1)) != 0;
    };
    if (i != 0 && follows(a[i - 1], a[i]) != follows(a[i - 1], b[i]) &&
        (i == 1 || (value_of(values, a[i - 2]) != OrderValues::kNotTold && !follows(a[i - 2], a[i - 1]))))
        return follows(a[i - 1], a[i]) ? kGreater : kLess;
    for (std::size_t place = i != 0 ? i - 1 : 0; place <= i; ++place) {
        if (is_open(values, a, place) || is_open(values, b, place)) return kOpen;
        const unsigned value_a = value_of(values, a[place]) + step_at(values, a + place);
        const unsigned value_b = value_of(values, b[place]) + step_at(values, b + place);
        if (value_a != value_b) return value_a < value_b ? kLess : kGreater;
    }
    return kOpen;
}

// Where a unit differs, or both strings end.
inline Order order_at(const OrderValues &values, const std::uint16_t *a, const std::uint16_t *b,
                      std::size_t i) noexcept {
    const unsigned value_a = value_of(values, a[i]), value_b = value_of(values, b[i]);
    if (value_a == OrderValues::kNotTold || value_b == OrderValues::kNotTold || (value_a | value_b) == 0) return kOpen;
    if (value_a == value_b) return kSame;
    if (values.pair_count != 0) {
        if (i != 0 && value_of(values, a[i - 1]) == OrderValues::kNotTold) return kOpen;
        if (may_be_paired(values, a, b, i)) return order_with_pairs(values, a, b, i);
    }
    return value_a < value_b ? kLess : kGreater;
}

} // namespace
} // namespace kxstr::simd
