#include "text/scalars.h"

namespace kxstr::text {

// Not written shorter, not a surrogate, not above U+10FFFF: the range of the second byte sees to that.
Scalar read_utf8(std::span<const std::uint8_t> bytes) noexcept {
    const std::uint8_t first = bytes[0];
    if (first < 0x80) return {Scalar::character, 1, first};
    if (first < 0xC2 || first > 0xF4) return {Scalar::malformed, 1, 0};
    const std::size_t length = first < 0xE0 ? 2 : first < 0xF0 ? 3 : 4;
    std::uint8_t low = first == 0xE0 ? 0xA0 : first == 0xF0 ? 0x90 : 0x80;
    std::uint8_t high = first == 0xED ? 0x9F : first == 0xF4 ? 0x8F : 0xBF;
    std::uint32_t value = first & (0x7Fu >> length);
    for (std::size_t at = 1; at < length; ++at) {
        if (at == bytes.size()) return {Scalar::incomplete, at, 0};
        if (bytes[at] < low || bytes[at] > high) return {Scalar::malformed, at, 0};
        value = (value << 6) | (bytes[at] & 0x3Fu);
        low = 0x80;
        high = 0xBF;
    }
    return {Scalar::character, length, value};
}

Scalar read_utf16(std::span<const std::uint8_t> bytes, ByteOrder order) noexcept {
    if (bytes.size() < 2) return {Scalar::incomplete, bytes.size(), 0};
    const std::uint16_t unit = load_unit(bytes.data(), order);
    if (!is_surrogate(unit)) return {Scalar::character, 2, unit};
    if (unit >= 0xDC00) return {Scalar::malformed, 2, 0};
    if (bytes.size() < 4) return {Scalar::incomplete, bytes.size(), 0};
    const std::uint16_t next = load_unit(bytes.data() + 2, order);
    if (next < 0xDC00 || next > 0xDFFF) return {Scalar::malformed, 2, 0};
    return {Scalar::character, 4, 0x10000u + ((unit & 0x3FFu) << 10) + (next & 0x3FFu)};
}

std::size_t write_utf8(std::uint32_t character, std::uint8_t *bytes) noexcept {
    const auto byte = [](std::uint32_t value) { return static_cast<std::uint8_t>(value); };
    if (character < 0x80) {
        bytes[0] = byte(character);
        return 1;
    }
    const std::size_t length = character < 0x800 ? 2 : character < 0x10000 ? 3 : 4;
    for (std::size_t at = length; --at > 0; character >>= 6)
        bytes[at] = byte(0x80u | (character & 0x3Fu));
    bytes[0] = byte((0xF00u >> length) | character);
    return length;
}

std::size_t write_utf16(std::uint32_t character, std::uint8_t *bytes, ByteOrder order) noexcept {
    if (character < 0x10000) {
        store_unit(static_cast<std::uint16_t>(character), bytes, order);
        return 2;
    }
    store_unit(static_cast<std::uint16_t>(0xD800u + ((character - 0x10000u) >> 10)), bytes, order);
    store_unit(static_cast<std::uint16_t>(0xDC00u + (character & 0x3FFu)), bytes + 2, order);
    return 4;
}

} // namespace kxstr::text
