#include "codepage/double_byte.h"

namespace kxstr::codepage {
namespace {

// The extension area: the indices 0xBC..0xFB of sets 0x2B..0x79, which the main areas leave free, 64 characters to a
// set. The user-defined rows of 932 and the rows below lead byte 0xA1 of 936 and 950 are packed there.
constexpr unsigned kExtensionSet = 0x2B;
constexpr unsigned kExtensionIndex = 0xBC;
constexpr unsigned kExtensionPerSet = 64;
// Going back, indices up to 0xFE are taken as well, although 0xFC..0xFE are never produced.
constexpr unsigned kExtensionLastIndex = 0xFE;

// The characters of 936 and 950 lie 255 to a set: index 0xFF stays free.
constexpr unsigned kPerFullSet = 255;

constexpr KxChar pack_extension(unsigned n) noexcept {
    return make_char(kExtensionSet + n / kExtensionPerSet, kExtensionIndex + n % kExtensionPerSet);
}

constexpr unsigned unpack_extension(KxChar ch) noexcept {
    return (set_of(ch) - kExtensionSet) * kExtensionPerSet + (index_of(ch) - kExtensionIndex);
}

constexpr bool is_extension(KxChar ch, unsigned last_set) noexcept {
    return kExtensionSet <= set_of(ch) && set_of(ch) <= last_set && kExtensionIndex <= index_of(ch) &&
           index_of(ch) <= kExtensionLastIndex;
}

constexpr KxChar pack_full(unsigned first_set, unsigned n) noexcept {
    return make_char(first_set + n / kPerFullSet, n % kPerFullSet);
}

constexpr unsigned unpack_full(unsigned first_set, KxChar ch) noexcept {
    return (set_of(ch) - first_set) * kPerFullSet + index_of(ch);
}

constexpr std::uint16_t make_code(unsigned lead, unsigned trail) noexcept {
    return static_cast<std::uint16_t>((lead << 8) | trail);
}

// ---- 932: trail bytes 0x40..0x7E and 0x80..0xFC, 188 to a lead byte ----

constexpr unsigned kTrails932 = 188;

constexpr unsigned trail_932(unsigned position) noexcept {
    return position + (position < 0x3F ? 0x40 : 0x41);
}

constexpr KxChar to_kx_932(std::uint16_t code) noexcept {
    const unsigned lead = code >> 8;
    const unsigned trail = code & 0xFF;
    if (code < 0x8140 || code > 0xFCFC || (code >= 0x9FFD && code <= 0xE03F)) return kNone;
    if (trail < 0x40 || trail > 0xFC || trail == 0x7F) return kNone;
    const unsigned position = trail - (trail < 0x80 ? 0x40 : 0x41);
    if (lead >= 0xF0) return pack_extension((lead - 0xF0) * kTrails932 + position);
    return make_char(lead - (lead <= 0x9F ? 0x5D : 0x9D), position);
}

constexpr std::uint16_t from_kx_932(KxChar ch) noexcept {
    const unsigned set = set_of(ch);
    const unsigned index = index_of(ch);
    if (set >= 0x24 && set <= 0x52 && index < kTrails932) {
        return make_code(set + (set <= 0x42 ? 0x5D : 0x9D), trail_932(index));
    }
    if (is_extension(ch, 0x52)) {
        const unsigned n = unpack_extension(ch);
        return make_code(0xF0 + n / kTrails932, trail_932(n % kTrails932));
    }
    return kNone;
}

// ---- 934 and 949: rows of 94 from 0xA1A1, two rows to a set ----

constexpr unsigned kRow = 94;

constexpr KxChar to_kx_949(std::uint16_t code) noexcept {
    const unsigned trail = code & 0xFF;
    if (code < 0xA1A1 || code > 0xFEFE || trail < 0xA1 || trail > 0xFE) return kNone;
    const unsigned row = (code >> 8) - 0xA1;
    return make_char(0x53 + row / 2, trail - 0xA1 + (row % 2) * kRow);
}

constexpr std::uint16_t from_kx_949(KxChar ch) noexcept {
    const unsigned set = set_of(ch);
    const unsigned index = index_of(ch);
    if (set < 0x53 || set > 0x81 || index >= 2 * kRow) return kNone;
    return make_code(0xA1 + 2 * (set - 0x53) + index / kRow, 0xA1 + index % kRow);
}

// ---- 936: rows of 94 from 0xA1A1; the rows from 0x81A1 in the extension area ----

constexpr KxChar to_kx_936(std::uint16_t code) noexcept {
    const unsigned lead = code >> 8;
    const unsigned trail = code & 0xFF;
    if (code < 0x81A1 || code > 0xFEFE || trail < 0xA1 || trail > 0xFE) return kNone;
    const unsigned position = trail - 0xA1;
    if (lead >= 0xA1) return pack_full(0x82, (lead - 0xA1) * kRow + position);
    return pack_extension((lead - 0x81) * kRow + position);
}

constexpr std::uint16_t from_kx_936(KxChar ch) noexcept {
    if (set_of(ch) >= 0x82 && set_of(ch) <= 0xA4 && index_of(ch) <= 0xFE) {
        const unsigned n = unpack_full(0x82, ch);
        return make_code(0xA1 + n / kRow, 0xA1 + n % kRow);
    }
    if (ch <= 0x81FB && is_extension(ch, 0x81)) {
        const unsigned n = unpack_extension(ch);
        return make_code(0x81 + n / kRow, 0xA1 + n % kRow);
    }
    return kNone;
}

// ---- 938 and 950: trail bytes 0x40..0x7E and 0xA1..0xFE, 157 to a lead byte ----

constexpr unsigned kTrails950 = 157;

constexpr unsigned trail_950(unsigned position) noexcept {
    return position + (position <= 0x3E ? 0x40 : 0x62);
}

constexpr KxChar to_kx_950(std::uint16_t code) noexcept {
    const unsigned lead = code >> 8;
    const unsigned trail = code & 0xFF;
    const bool low_trail = trail >= 0x40 && trail <= 0x7E;
    const bool high_trail = trail >= 0xA1 && trail <= 0xFE;
    if (code < 0x8140 || code > 0xFEFE || !(low_trail || high_trail)) return kNone;
    const unsigned position = trail - (low_trail ? 0x40 : 0x62);
    if (lead >= 0xA1) return pack_full(0xA5, (lead - 0xA1) * kTrails950 + position);
    return pack_extension((lead - 0x81) * kTrails950 + position);
}

constexpr std::uint16_t from_kx_950(KxChar ch) noexcept {
    if (ch >= 0xA500 && ch <= 0xDEDE && index_of(ch) <= 0xFE) {
        const unsigned n = unpack_full(0xA5, ch);
        return make_code(0xA1 + n / kTrails950, trail_950(n % kTrails950));
    }
    if (ch <= 0x81FB && is_extension(ch, 0x81)) {
        const unsigned n = unpack_extension(ch);
        return make_code(0x81 + n / kTrails950, trail_950(n % kTrails950));
    }
    return kNone;
}

} // namespace

bool has_double_byte_rule(std::uint32_t code_page) noexcept {
    switch (code_page) {
    case 932:
    case 934:
    case 936:
    case 938:
    case 949:
    case 950: return true;
    default: return false;
    }
}

KxChar double_byte_to_kx(std::uint32_t code_page, std::uint16_t code) noexcept {
    switch (code_page) {
    case 932: return to_kx_932(code);
    case 934:
    case 949: return to_kx_949(code);
    case 936: return to_kx_936(code);
    case 938:
    case 950: return to_kx_950(code);
    default: return kNone;
    }
}

std::uint16_t kx_to_double_byte(std::uint32_t code_page, KxChar ch) noexcept {
    switch (code_page) {
    case 932: return from_kx_932(ch);
    case 934:
    case 949: return from_kx_949(ch);
    case 936: return from_kx_936(ch);
    case 938:
    case 950: return from_kx_950(ch);
    default: return kNone;
    }
}

} // namespace kxstr::codepage
