// Little-endian 16-bit loads and stores: tables, streams and settings hold them at any address, on any host.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace kxstr {

constexpr std::uint16_t load_u16le(const std::uint8_t *bytes) noexcept {
    return static_cast<std::uint16_t>(bytes[0] | (bytes[1] << 8));
}

constexpr void store_u16le(std::uint8_t *bytes, std::uint16_t value) noexcept {
    bytes[0] = static_cast<std::uint8_t>(value);
    bytes[1] = static_cast<std::uint8_t>(value >> 8);
}

// Whole texts of 16-bit units; a last odd byte is left out.
inline std::u16string units_of(std::span<const std::uint8_t> bytes) {
    std::u16string units(bytes.size() / 2, u'\0');
    for (std::size_t i = 0; i < units.size(); ++i)
        units[i] = load_u16le(bytes.data() + 2 * i);
    return units;
}

inline void append_u16le(std::vector<std::uint8_t> &bytes, std::u16string_view units) {
    const std::size_t start = bytes.size();
    bytes.resize(start + 2 * units.size());
    for (std::size_t i = 0; i < units.size(); ++i)
        store_u16le(bytes.data() + start + 2 * i, units[i]);
}

} // namespace kxstr
