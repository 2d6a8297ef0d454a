// Little-endian 16-bit loads and stores: tables, streams and settings hold them at any address, on any host.
#pragma once

#include <cstdint>

namespace kxstr {

constexpr std::uint16_t load_u16le(const std::uint8_t *bytes) noexcept {
    return static_cast<std::uint16_t>(bytes[0] | (bytes[1] << 8));
}

constexpr void store_u16le(std::uint8_t *bytes, std::uint16_t value) noexcept {
    bytes[0] = static_cast<std::uint8_t>(value);
    bytes[1] = static_cast<std::uint8_t>(value >> 8);
}

} // namespace kxstr
