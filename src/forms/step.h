// Walking texts character by character, over the codes between the characters, in KX strings and in document streams
// alike. A position is at text when it holds a character or the terminator. Sizes are trusted, and every step moves on.
#pragma once

#include "core/kx_char.h"
#include "forms/code_size.h"

namespace kxstr::forms {

constexpr bool is_at_text(const KxChar *position) noexcept {
    return !is_code(*position);
}
constexpr bool is_at_text(const std::uint8_t *position) noexcept {
    return *position < kFirstFunctionCode || *position == kExtended;
}

// Units that the character or code at `position` takes.
constexpr std::size_t size_at(const KxChar *) noexcept {
    return 1;
}
constexpr std::size_t size_at(const std::uint8_t *position) noexcept {
    return step(position);
}

// The first position at text from `position` on. Unit is KxChar or std::uint8_t, const or not.
template <class Unit> constexpr Unit *skip_codes(Unit *position) noexcept {
    while (!is_at_text(position))
        position += size_at(position);
    return position;
}

// The next position at text behind what stands at `position`, which is not a terminator.
template <class Unit> constexpr Unit *next_char(Unit *position) noexcept {
    return skip_codes(position + size_at(position));
}

// The character at a position at text of a document stream: an extended character's value, or the byte itself.
constexpr KxChar stream_char(const std::uint8_t *position) noexcept {
    return *position == kExtended ? load_u16le(position + 1) : KxChar{*position};
}

} // namespace kxstr::forms
