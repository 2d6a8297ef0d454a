// Maps with pairs, for the kernels that take them.
#pragma once

#include <random>

#include "simd/kernels.h"

namespace kxstr::test {

// Gives most high bytes and most low bytes of a map's units values of their own.
inline void add_pairs(simd::PairMap &map, std::mt19937 &random) {
    auto &[high, low, single_high, single_low] = map.pairs;
    for (unsigned byte = 0; byte <= 0xFF; ++byte) {
        high[byte] = static_cast<std::uint8_t>(byte > 0x0F && random() % 32 != 0 ? random() % 0xFE + 1 : 0);
        low[byte] = static_cast<std::uint8_t>(random() % 32 != 0 ? random() : 0xFF);
        single_high[byte] = static_cast<std::uint8_t>(map.values[byte] >> 8);
        single_low[byte] = static_cast<std::uint8_t>(map.values[byte]);
    }
    for (std::size_t unit = 0; unit != map.values.size(); ++unit)
        if (high[unit >> 8] != simd::PairValues::kAskHigh && low[unit & 0xFF] != simd::PairValues::kAskLow)
            map.values[unit] = static_cast<std::uint16_t>(high[unit >> 8] << 8 | low[unit & 0xFF]);
}

} // namespace kxstr::test
