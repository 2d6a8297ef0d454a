// Characters of the KX set that Unicode also writes as a letter and a combining mark.
#pragma once

#include <array>
#include <cstdint>

namespace kxstr::tables {

struct Composition {
    std::uint16_t letter, mark, character; // in Unicode

    constexpr std::uint32_t key() const noexcept { return std::uint32_t{letter} << 16 | mark; }
};

// Ascending by letter and mark.
extern const std::array<Composition, 315> kCompositions;

} // namespace kxstr::tables
