// Setting coltbl up for a language.
#pragma once

#include <array>
#include <cstdint>
#include <cstring>

#include "core/language.h"

namespace kxstr::collate {

inline constinit std::array<std::uint8_t, 4> last_language{'E', 'N'};

// The first two bytes of the language that coltbl was last set up for; always zero-terminated.
inline std::array<std::uint8_t, 4> &language_set_up() noexcept {
    return last_language;
}

// Gives coltbl the values of a language (zero-terminated), unless it was the last one set up.
void set_up_language(const char *language) noexcept;

// False, too, for a language that is set up every time.
inline bool is_current_language_set_up() noexcept {
    // With the first bytes the same, the terminators are, too.
    return std::memcmp(core::language(), last_language.data(), last_language.size()) == 0;
}

// The same for the current language; what every comparison by coltbl begins with.
inline void set_up_current_language() noexcept {
    if (!is_current_language_set_up()) set_up_language(core::language());
}

} // namespace kxstr::collate
