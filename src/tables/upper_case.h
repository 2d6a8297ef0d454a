// Upper case of the letters of the basic plane, for names that are compared without regard to case.
#pragma once

#include <cstdint>
#include <span>

namespace kxstr::tables {

struct CaseRun {
    std::uint16_t first;
    std::uint16_t last;
    std::uint16_t step; // between letters: 1, or 2 where upper and lower case alternate
    std::uint16_t add;  // to a letter, modulo 2^16
};

extern const std::span<const CaseRun> kUpperCaseRuns; // ascending

} // namespace kxstr::tables
