// Zero-terminated strings of any unsigned unit: what the byte strings and the KX strings have in common.
#pragma once

#include <algorithm>
#include <cstdint>
#include <functional>
#include <limits>

#include "frame/text.h"

namespace kxstr::prim {

inline constexpr std::size_t kUnlimited = std::numeric_limits<std::size_t>::max();

// Units before the terminator, but at most `limit`; nothing behind the limit is read.
template <class Unit> constexpr std::size_t length_within(const Unit *string, std::size_t limit) noexcept {
    std::size_t length = 0;
    while (length < limit && string[length] != 0)
        ++length;
    return length;
}

template <class Unit> constexpr void append(Unit *destination, const Unit *source, std::size_t limit) noexcept {
    Unit *end = std::copy_n(source, length_within(source, limit), destination + length_of(destination));
    *end = 0;
}

// A bound in bytes as a limit in KX characters. Comparisons count it down by 2 and end at 0: an odd one never gets
// there.
constexpr std::size_t limit_by_bytes(std::int32_t size) noexcept {
    if (size <= 0) return 0;
    return size % 2 == 0 ? static_cast<std::size_t>(size) / 2 : kUnlimited;
}

// Difference of the first differing units after `fold`, or 0 when the terminators or `limit` units are reached.
template <class Unit, class Fold = std::identity>
constexpr int compare(const Unit *a, const Unit *b, std::size_t limit = kUnlimited, Fold fold = {}) noexcept {
    for (std::size_t i = 0; i < limit; ++i) {
        const int difference = int{fold(a[i])} - int{fold(b[i])};
        if (difference != 0 || a[i] == 0) return difference;
    }
    return 0;
}

// The terminator is never found, not even when it is asked for.
template <class Unit> constexpr const Unit *find(const Unit *string, Unit wanted) noexcept {
    for (; *string != 0; ++string) {
        if (*string == wanted) return string;
    }
    return nullptr;
}

template <class Unit> constexpr const Unit *find_last(const Unit *string, Unit wanted) noexcept {
    const Unit *found = nullptr;
    for (; *string != 0; ++string) {
        if (*string == wanted) found = string;
    }
    return found;
}

} // namespace kxstr::prim
