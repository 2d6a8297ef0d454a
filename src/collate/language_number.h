// Two-letter language codes and their numbers.
#pragma once

#include <cstddef>
#include <cstdint>

namespace kxstr::collate {

// By the two letters of a code, both from 0x40 to 0x5F; 0, where no code is, for what cannot be one. Reads nothing
// behind a terminator.
inline constexpr std::size_t kCodePlaces = 0x400; // 32 times 32
constexpr std::size_t place_of_code(const char *code) noexcept {
    const unsigned first = static_cast<unsigned char>(code[0]);
    if (first == 0) [[unlikely]]
        return 0;
    const unsigned second = static_cast<unsigned char>(code[1]);
    const unsigned letters = (first | second << 8) ^ 0x4040;
    if ((letters & 0xE0E0) != 0) [[unlikely]]
        return 0;
    return letters >> 8 << 5 | (letters & 0xFF); // neither is above 0x1F
}

// 0 for a code that is not known.
std::uint16_t language_number(const char *code) noexcept;

} // namespace kxstr::collate
