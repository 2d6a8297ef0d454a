#include "simd/families.h"

namespace kxstr::simd::plain {

void map_bytes(const std::uint16_t *map, const std::uint8_t *source, std::size_t count,
               std::uint16_t *destination) noexcept {
    while (count-- > 0)
        destination[count] = map[source[count]];
}

std::size_t map_units(const std::uint16_t *map, const std::uint16_t *source, std::size_t count,
                      std::uint16_t *destination) noexcept {
    for (std::size_t done = 0; done < count; ++done)
        if ((destination[done] = map[source[done]]) == 0) return done + 1;
    return count;
}

std::size_t encode_units(const std::uint16_t *map, const std::uint16_t *source, std::size_t count,
                         std::uint8_t *destination, NoCode no_code) noexcept {
    std::uint8_t *out = destination;
    for (const std::uint16_t *const end = source + count; source != end; ++source) {
        unsigned code = map[*source];
        if (code == 0xFFFF) {
            if (no_code == NoCode::drop) continue;
            code = 0x80;
        }
        if (code > 0xFF) *out++ = static_cast<std::uint8_t>(code >> 8);
        *out++ = static_cast<std::uint8_t>(code);
    }
    return static_cast<std::size_t>(out - destination);
}

Decoded decode_pairs(const std::uint16_t *map, const std::uint8_t *leads, const std::uint8_t *source, std::size_t count,
                     std::uint16_t *destination) noexcept {
    Decoded done{};
    while (done.read < count) {
        unsigned code = source[done.read];
        if (leads[code] != 0) {
            if (done.read + 1 == count) break;
            code = code << 8 | source[++done.read];
        }
        ++done.read;
        destination[done.written++] = map[code];
    }
    return done;
}

} // namespace kxstr::simd::plain
