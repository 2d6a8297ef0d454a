// The two Unicode tables of the KX character set. They are separate data, not inverses of each other.
#pragma once

#include <array>
#include <cstddef>
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

// Unicode values by set and index, one set behind the other.
extern const std::array<std::uint16_t, 2370> kUnicodeOfKx;

// Sets 0 and 12 are empty: they convert by rule. Places and no addresses, which would have to be relocated at load.
struct KxToUnicode {
    std::array<std::uint16_t, 16> starts; // of each set in kUnicodeOfKx, and one past the last

    constexpr std::size_t size() const noexcept { return starts.size() - 1; }
    std::span<const std::uint16_t> operator[](std::size_t set) const noexcept {
        return std::span(kUnicodeOfKx).subspan(starts[set], starts[set + 1] - starts[set]);
    }
};
extern const KxToUnicode kKxToUnicode;

} // namespace kxstr::tables
