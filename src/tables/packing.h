// Lays out range and reverse tables by bytes (see KxCodePage) from entries that can be read.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <kxstr/types.h>

namespace kxstr::tables {

template <std::size_t N>
consteval std::array<std::uint8_t, 2 + 2 * N> range_table(std::uint8_t first, const KxChar (&entries)[N]) {
    std::array<std::uint8_t, 2 + 2 * N> bytes{first, static_cast<std::uint8_t>(first + N - 1)};
    for (std::size_t i = 0; i < N; ++i) {
        bytes[2 + 2 * i] = static_cast<std::uint8_t>(entries[i]);
        bytes[3 + 2 * i] = static_cast<std::uint8_t>(entries[i] >> 8);
    }
    return bytes;
}

// An entry holds its KX character in bits 23..8 and its native byte in bits 7..0.
template <std::size_t N>
consteval std::array<std::uint8_t, 2 + 3 * N> reverse_table(const std::uint32_t (&entries)[N]) {
    std::array<std::uint8_t, 2 + 3 * N> bytes{static_cast<std::uint8_t>(N), static_cast<std::uint8_t>(N >> 8)};
    for (std::size_t i = 0; i < N; ++i) {
        bytes[2 + 3 * i] = static_cast<std::uint8_t>(entries[i] >> 8);
        bytes[3 + 3 * i] = static_cast<std::uint8_t>(entries[i] >> 16);
        bytes[4 + 3 * i] = static_cast<std::uint8_t>(entries[i]);
    }
    return bytes;
}

template <std::size_t... N>
consteval std::array<std::uint8_t, (N + ...)> joined(const std::array<std::uint8_t, N> &...tables) {
    std::array<std::uint8_t, (N + ...)> bytes{};
    auto *end = bytes.begin();
    ((end = std::copy(tables.begin(), tables.end(), end)), ...);
    return bytes;
}

} // namespace kxstr::tables
