#include <array>
#include <kxstr/strops.h>

#include "core/dbcs_copy.h"
#include "core/kx_char.h"
#include "core/text.h"

using namespace kxstr;

namespace {

// Stands for a 0 byte while a KX string travels as a byte string.
constexpr std::uint8_t kZeroEscape = 0xFF;

// The same code in the two numberings.
struct Renumbering {
    KxChar other;
    KxChar ours;
};

constexpr unsigned kAttributes = 16;

constexpr auto kRenumberings = [] {
    std::array<Renumbering, 4 + 2 * kAttributes> pairs{{
        {0xFB13, KX_CARRIAGE_RETURN},
        {0xFB16, KX_LINE_FEED},
        {0xFB1B, KX_FORM_FEED},
        {0xFC45, KX_TAB},
    }};
    for (unsigned attribute = 0; attribute < kAttributes; ++attribute) {
        Renumbering *on = &pairs[4 + attribute];
        on[0] = {make_char(0xFC, 0x66 + attribute), make_char(0xFE, 2 * attribute)};
        on[kAttributes] = {make_char(0xFC, 0x76 + attribute), make_char(0xFE, 2 * attribute + 1)};
    }
    return pairs;
}();

KxChar renumber(KxChar unit, KxChar Renumbering::*from, KxChar Renumbering::*to) noexcept {
    if (!is_code(unit)) return unit;
    for (const Renumbering &pair : kRenumberings) {
        if (pair.*from == unit) return pair.*to;
    }
    return unit;
}

// A text byte as the host's char, which is signed where these keys were first made.
constexpr int sign_extend(char byte) noexcept {
    return static_cast<std::int8_t>(byte);
}

} // namespace

extern "C" {

KxChar *W6wstrFixExtChars(KxChar *string) {
    KxChar *unit = string;
    for (; *unit != 0; ++unit) {
        const unsigned index = index_of(*unit) == 0 ? kZeroEscape : index_of(*unit);
        const unsigned set = set_of(*unit) == 0 ? kZeroEscape : set_of(*unit);
        *unit = make_char(set, index);
    }
    // By bytes, so that the 0 comes last on hosts of either byte order.
    *reinterpret_cast<std::uint8_t *>(unit) = kZeroEscape;
    return string;
}

uint8_t *W6wstrUnFixExtChars(uint8_t *bytes) {
    for (std::uint8_t *byte = bytes; *byte != 0; ++byte) {
        if (*byte == kZeroEscape) *byte = 0;
    }
    return bytes;
}

KxChar *W6wzFix(KxChar *string, uint16_t mode) {
    if (mode != 1 && mode != 2) return string;
    const auto from = mode == 1 ? &Renumbering::ours : &Renumbering::other;
    const auto to = mode == 1 ? &Renumbering::other : &Renumbering::ours;
    for (KxChar *unit = string; *unit != 0; ++unit)
        *unit = renumber(*unit, from, to);
    return string;
}

int16_t VaskStripAmpersand(char *destination, const char *source) {
    constexpr int kGroupKey = '(' << 8;
    int key = 0;
    while (*source != 0) {
        if (source[0] == '&' && source[1] == '&') {
            *destination++ = *source++;
            *destination++ = *source++;
        } else if (*source == '&') {
            key = sign_extend(*++source);
        } else if (*source == '(' && platform::is_double_byte_system()) {
            key = kGroupKey | (source[1] != 0 ? sign_extend(source[2]) : 0);
            do {
                ++source;
            } while (*source != 0 && *source != ')');
            if (*source == ')') ++source;
        } else {
            *destination++ = *source++;
        }
    }
    *destination = 0;
    return static_cast<std::int16_t>(key);
}

int32_t WMBStrTrunc(char *string, int32_t limit) {
    std::size_t length = limit > 0 ? static_cast<std::size_t>(limit) : 0;
    if (platform::is_double_byte_system()) length = whole_characters(bytes_of(string), length);
    string[length] = 0;
    return static_cast<std::int32_t>(length);
}

} // extern "C"
