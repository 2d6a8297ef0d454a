// Lengths of zero-terminated strings of any unit, in units.
#pragma once

#include <cstddef>

namespace kxstr {

template <class Unit> constexpr std::size_t length_of(const Unit *text) noexcept {
    std::size_t length = 0;
    while (text[length] != 0)
        ++length;
    return length;
}

} // namespace kxstr
