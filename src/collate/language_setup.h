// Setting coltbl up for a language.
#pragma once

#include <array>
#include <atomic>
#include <bit>
#include <cstdint>
#include <cstring>

#include "core/language.h"

namespace kxstr::collate {

using LanguageStart = std::array<std::uint8_t, 4>;

// As one number, so that it changes at once.
inline constinit std::atomic<std::uint32_t> last_language{std::bit_cast<std::uint32_t>(LanguageStart{'E', 'N'})};

// The first two bytes of the language that coltbl was last set up for; always zero-terminated.
inline LanguageStart language_set_up() noexcept {
    return std::bit_cast<LanguageStart>(last_language.load(std::memory_order_acquire));
}
// Tells that coltbl has the values of a language: before this, the values are all in place.
inline void keep_language_set_up(LanguageStart start) noexcept {
    last_language.store(std::bit_cast<std::uint32_t>(start), std::memory_order_release);
}

// Gives coltbl the values of a language (zero-terminated), unless it was the last one set up. Threads may do so at once
// for one language: values that are right are not written.
void set_up_language(const char *language) noexcept;

// False, too, for a language that is set up every time.
inline bool is_current_language_set_up() noexcept {
    LanguageStart start{};
    std::memcpy(start.data(), core::language(), start.size());
    // With the first bytes the same, the terminators are, too.
    return start == language_set_up();
}

// The same for the current language; what every comparison by coltbl begins with.
inline void set_up_current_language() noexcept {
    if (!is_current_language_set_up()) set_up_language(core::language());
}

} // namespace kxstr::collate
