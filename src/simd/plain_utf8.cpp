#include "simd/families.h"

namespace kxstr::simd::plain {

Progress utf8_of_bytes(const Utf8Page &page, const std::uint8_t *from, std::size_t count, std::uint8_t *to) noexcept {
    Progress done{0, 0};
    for (; done.read < count; ++done.read) {
        const std::uint8_t byte = from[done.read];
        std::uint8_t *const at = to + done.written;
        if (byte < 0x80) {
            *at = page.low[byte];
            ++done.written;
            continue;
        }
        // Three bytes whatever there are: there is room for so many, and no branch to be taken wrongly.
        const std::uint8_t *const entry = page.entries[byte - 0x80];
        if (entry[3] == 0) break;
        at[0] = entry[0];
        at[1] = entry[1];
        at[2] = entry[2];
        done.written += entry[3];
    }
    return done;
}

Progress bytes_of_utf8(const ByteOfUnits &page, const std::uint8_t *from, std::size_t count,
                       std::uint8_t *to) noexcept {
    constexpr std::size_t kStretch = 128;
    std::uint16_t units[kStretch];
    Progress done{0, 0};
    while (done.read < count) {
        const std::size_t stretch = count - done.read < kStretch ? count - done.read : kStretch;
        const Progress more = units_of_utf8(from + done.read, stretch, units);
        for (std::size_t i = 0; i < more.written; ++i) {
            const std::uint16_t unit = units[i];
            const std::uint8_t byte = unit < 0x80 ? static_cast<std::uint8_t>(unit) : page[unit];
            if (byte == 0 && unit != 0) return done;
            to[done.written++] = byte;
            done.read += unit < 0x80 ? 1u : unit < 0x800 ? 2u : 3u;
        }
        // At most two bytes of a character are left at the end of a stretch.
        if (more.read + 2 < stretch || more.read == 0) break;
    }
    return done;
}

Progress bytes_of_mapped(const std::uint16_t *map, const std::uint16_t *units, std::size_t count,
                         std::uint8_t *bytes) noexcept {
    Progress done{0, 0};
    for (; done.read < count; ++done.read) {
        const unsigned code = map[units[done.read]];
        if (code == 0xFFFF) break;
        if (code > 0xFF) bytes[done.written++] = static_cast<std::uint8_t>(code >> 8);
        bytes[done.written++] = static_cast<std::uint8_t>(code);
    }
    return done;
}

} // namespace kxstr::simd::plain
