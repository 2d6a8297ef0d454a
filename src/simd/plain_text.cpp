#include "simd/families.h"

namespace kxstr::simd::plain {
namespace {

constexpr bool is_surrogate(std::uint16_t unit) noexcept {
    return (unit & 0xF800) == 0xD800;
}

constexpr std::uint8_t byte(unsigned value) noexcept {
    return static_cast<std::uint8_t>(value);
}

constexpr bool continues(std::uint8_t value) noexcept {
    return (value & 0xC0) == 0x80;
}

} // namespace

std::size_t translate8(const std::uint8_t *bytes, std::size_t count, std::uint16_t *units,
                       const MapPage &table) noexcept {
    std::size_t done = 0;
    for (; done < count && table[bytes[done]] != 0xFFFF; ++done)
        units[done] = table[bytes[done]];
    return done;
}

std::size_t translate16(const std::uint16_t *from, std::size_t count, std::uint16_t *to,
                        const MapPage *const *pages) noexcept {
    std::size_t done = 0;
    for (; done < count; ++done) {
        const MapPage *const page = pages[from[done] >> 8];
        if (page == nullptr) break;
        const std::uint16_t value = (*page)[from[done] & 0xFF];
        if (value == 0xFFFF) break;
        to[done] = value;
    }
    return done;
}

Progress utf8_of_units(const std::uint16_t *units, std::size_t count, std::uint8_t *bytes) noexcept {
    Progress done{0, 0};
    for (; done.read < count; ++done.read) {
        const std::uint16_t unit = units[done.read];
        std::uint8_t *const to = bytes + done.written;
        if (unit < 0x80) {
            to[0] = byte(unit);
            done.written += 1;
        } else if (unit < 0x800) {
            to[0] = byte(0xC0u | (unit >> 6));
            to[1] = byte(0x80u | (unit & 0x3Fu));
            done.written += 2;
        } else if (!is_surrogate(unit) && unit != 0xFFFF) {
            to[0] = byte(0xE0u | (unit >> 12));
            to[1] = byte(0x80u | ((unit >> 6) & 0x3Fu));
            to[2] = byte(0x80u | (unit & 0x3Fu));
            done.written += 3;
        } else {
            break;
        }
    }
    return done;
}

Progress units_of_utf8(const std::uint8_t *bytes, std::size_t count, std::uint16_t *units) noexcept {
    Progress done{0, 0};
    while (done.read < count) {
        const std::uint8_t *const at = bytes + done.read;
        const std::size_t left = count - done.read;
        std::size_t size = 1;
        unsigned unit = at[0];
        if (at[0] >= 0xC2 && at[0] <= 0xDF && left >= 2 && continues(at[1])) {
            size = 2;
            unit = ((at[0] & 0x1Fu) << 6) | (at[1] & 0x3Fu);
        } else if ((at[0] & 0xF0) == 0xE0 && left >= 3 && continues(at[1]) && continues(at[2])) {
            size = 3;
            unit = ((at[0] & 0x0Fu) << 12) | ((at[1] & 0x3Fu) << 6) | (at[2] & 0x3Fu);
            if (unit < 0x800 || is_surrogate(static_cast<std::uint16_t>(unit))) break;
        } else if (at[0] >= 0x80) {
            break;
        }
        units[done.written++] = static_cast<std::uint16_t>(unit);
        done.read += size;
    }
    return done;
}

Progress bytes_of_codes(const std::uint16_t *codes, std::size_t count, std::uint8_t *bytes) noexcept {
    Progress done{0, 0};
    for (; done.read < count && codes[done.read] != 0xFFFF; ++done.read) {
        if (codes[done.read] > 0xFF) bytes[done.written++] = byte(codes[done.read] >> 8);
        bytes[done.written++] = byte(codes[done.read]);
    }
    return done;
}

} // namespace kxstr::simd::plain
