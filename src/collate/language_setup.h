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

// The same for the current language; what every comparison by coltbl begins with.
inline void set_up_current_language() noexcept {
    // With the first bytes the same, the terminators are, too.
    if (std::memcmp(core::language(), last_language.data(), last_language.size()) != 0)
        set_up_language(core::language());
}

} // namespace kxstr::collate
