// What the processor can do beyond what every one of its kind can.
#pragma once

#include <cstdint>

namespace kxstr::platform {

// Each with all that come before it.
enum class VectorUnit : std::uint8_t {
    kNone,
    kAvx2,   // and BMI, BMI2, POPCNT
    kAvx512, // F, BW, VL, DQ, VBMI, VBMI2
};

// Answers before any initialiser has run. Only what the operating system saves the registers of.
VectorUnit vector_unit() noexcept;

} // namespace kxstr::platform
