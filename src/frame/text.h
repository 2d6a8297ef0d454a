// Zero-terminated strings.
#pragma once

#include <cstddef>
#include <cstdint>

namespace kxstr {

// In units, of any size.
template <class Unit> constexpr std::size_t length_of(const Unit *text) noexcept {
    std::size_t length = 0;
    while (text[length] != 0)
        ++length;
    return length;
}

// The exported functions take byte strings as `char`, everything inside reads them as unsigned bytes.
inline const std::uint8_t *bytes_of(const char *text) noexcept {
    return reinterpret_cast<const std::uint8_t *>(text);
}
inline std::uint8_t *bytes_of(char *text) noexcept {
    return reinterpret_cast<std::uint8_t *>(text);
}

} // namespace kxstr
