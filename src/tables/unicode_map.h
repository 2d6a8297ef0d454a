// The two Unicode tables of the KX character set. They are separate data, not inverses of each other.
#pragma once

#include <array>
#include <cstdint>
#include <kxstr/types.h>
#include <span>

namespace kxstr::tables {

struct UnicodePair {
    std::uint16_t unicode;
    KxChar kx;
};

// Strictly ascending by Unicode value.
extern const std::array<UnicodePair, 2245> kUnicodeToKx;

// Unicode value by set and index. Sets 0 and 12 are empty: they convert by rule.
extern const std::array<std::span<const std::uint16_t>, 15> kKxToUnicode;

} // namespace kxstr::tables
