// Setting coltbl up for a language.
#pragma once

#include <array>
#include <cstdint>

namespace kxstr::strops {

// The first two bytes of the language that coltbl was last set up for; always zero-terminated.
std::array<std::uint8_t, 4> &language_set_up() noexcept;

// Gives coltbl the values of a language (zero-terminated), unless it was the last one set up.
void set_up_language(const char *language) noexcept;

// The same for the current language; what every comparison by coltbl begins with.
void set_up_current_language() noexcept;

} // namespace kxstr::strops
