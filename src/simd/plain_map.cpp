#include "simd/families.h"

namespace kxstr::simd::plain {

std::size_t map_bytes(const std::uint16_t *map, const std::uint8_t *source, std::size_t limit,
                      std::uint16_t *destination) noexcept {
    std::size_t length = 0;
    while (length < limit && source[length] != 0)
        ++length;
    destination[length] = 0;
    for (std::size_t left = length; left-- > 0;)
        destination[left] = map[source[left]];
    return length;
}

std::size_t map_units(const std::uint16_t *map, const std::uint16_t *source, std::size_t limit,
                      std::uint16_t *destination) noexcept {
    std::size_t done = 0;
    while (done < limit && (destination[done] = map[source[done]]) != 0)
        ++done;
    return done;
}

Progress encode_units(const std::uint16_t *map, const std::uint16_t *source, std::size_t limit,
                      std::uint8_t *destination, NoCode no_code) noexcept {
    Progress done{};
    for (; done.read < limit && source[done.read] != 0; ++done.read) {
        unsigned code = map[source[done.read]];
        if (code == 0xFFFF) {
            if (no_code == NoCode::drop) continue;
            code = 0x80;
        }
        if (code > 0xFF) destination[done.written++] = static_cast<std::uint8_t>(code >> 8);
        destination[done.written++] = static_cast<std::uint8_t>(code);
    }
    return done;
}

Progress decode_pairs(const std::uint16_t *map, const std::uint8_t *leads, const std::uint8_t *source,
                      std::size_t count, std::uint16_t *destination) noexcept {
    Progress done{};
    while (done.read < count) {
        unsigned code = source[done.read];
        if (leads[code] != 0) {
            if (done.read + 1 == count) break;
            code = code << 8 | source[++done.read];
        }
        ++done.read;
        destination[done.written++] = map != nullptr ? map[code] : static_cast<std::uint16_t>(code);
    }
    return done;
}

Progress decode_page(const std::uint16_t *map, const std::uint8_t *leads, const std::uint8_t *source, std::size_t count,
                     std::uint16_t *destination) noexcept {
    return decode_pairs(map, leads, source, count, destination);
}

bool decode_short(const std::uint16_t * /*map*/, const std::uint8_t * /*leads*/, const std::uint8_t * /*source*/,
                  std::size_t /*limit*/, std::uint16_t * /*destination*/) noexcept {
    return false;
}

std::size_t stream_of_short(const std::uint16_t * /*map*/, const std::uint8_t * /*leads*/,
                            const std::uint8_t * /*source*/, std::uint8_t * /*stream*/, std::size_t /*room*/) noexcept {
    return 0;
}

} // namespace kxstr::simd::plain
