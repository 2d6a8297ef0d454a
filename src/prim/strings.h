// Zero-terminated strings of bytes and of KX characters: what the exported functions of both have in common. Bytes go
// to the C library where it has the function.
#pragma once

#include <algorithm>
#include <cstdint>
#include <limits>

#include "core/text.h"

namespace kxstr::prim {

inline constexpr std::size_t kUnlimited = std::numeric_limits<std::size_t>::max();

// Units before the terminator, but at most `limit`; nothing behind the limit is read.
inline std::size_t length_within(const KxChar *string, std::size_t limit) noexcept {
    return simd::kernels().find_within16(string, limit, 0);
}
inline std::size_t length_within(const std::uint8_t *string, std::size_t limit) noexcept {
    if (limit == kUnlimited) return length_of(string);
    const void *const end = std::memchr(string, 0, limit);
    return end != nullptr ? static_cast<std::size_t>(static_cast<const std::uint8_t *>(end) - string) : limit;
}

template <class Unit> void append(Unit *destination, const Unit *source, std::size_t limit) noexcept {
    Unit *end = std::copy_n(source, length_within(source, limit), destination + length_of(destination));
    *end = 0;
}

// A bound in bytes as a limit in KX characters. Comparisons count it down by 2 and end at 0: an odd one never gets
// there.
constexpr std::size_t limit_by_bytes(std::int32_t size) noexcept {
    if (size <= 0) return 0;
    return size % 2 == 0 ? static_cast<std::size_t>(size) / 2 : kUnlimited;
}

// Difference of the first differing units, or 0 when the terminators or `limit` units are reached.
inline int compare(const std::uint8_t *a, const std::uint8_t *b, std::size_t limit) noexcept {
    const std::size_t place = simd::kernels().mismatch8(a, b, limit);
    return place < limit ? a[place] - b[place] : 0;
}
inline int compare(const KxChar *a, const KxChar *b, std::size_t limit) noexcept {
    const std::size_t place = simd::kernels().mismatch16(a, b, limit);
    return place < limit ? a[place] - b[place] : 0;
}

} // namespace kxstr::prim
