#include "forms/kx5_stream.h"

#include <kxstr/forms.h>

#include "core/kx_char.h"
#include "forms/bounded_writer.h"
#include "platform/bytes.h"
#include "platform/system.h"

namespace kxstr::forms {
namespace {

// A code of the stream: how long it is, and the KX character it stands for, if any.
struct Kx5Code {
    std::size_t size;
    KxChar ch = 0;
    bool is_character = false;
};

constexpr Kx5Code character(std::size_t size, unsigned set, unsigned index) noexcept {
    return {size, make_char(set, index), true};
}

// A code that is no text: control and function codes. Fixed-length codes without a KX meaning have lengths that nobody
// tells; their first byte is stepped over, and the walk goes on with whatever follows.
constexpr Kx5Code function_code(const std::uint8_t *at) noexcept {
    switch (*at) {
    case 0x0A:
    case 0x0C:
    case 0x0D: return character(1, 0xF9, *at);
    case kExtended5: return character(kExtendedSize5, at[2], at[1]);
    case kAttributeOn5: return character(kAttributeSize5, 0xFE, 2u * at[1]);
    case kAttributeOff5: return character(kAttributeSize5, 0xFE, 2u * at[1] + 1);
    default: break;
    }
    return {*at < kFirstGroup5 ? 1 : kGroupHeaderSize5 + load_u16le(at + 2)};
}

// ---- Pairs: double-byte text, two bytes of 0x21..0x7F each ----

// Rows of 94 characters, two to a KX set; the first rows hold ASCII and the half-width katakana. 0x7F stands for no
// row.
constexpr Kx5Code row_pair(std::uint8_t row, std::uint8_t cell) noexcept {
    switch (row) {
    case kFirstRow5: return character(kPairSize5, kAsciiSet, cell);
    case 0x22: return character(kPairSize5, kKatakanaSet, cell - 0x21u);
    case kLastRow5: return {kPairSize5};
    default: return character(kPairSize5, (row + 1u) / 2 + 0x12, row % 2 != 0 ? cell - 0x21u : cell + 0x3Du);
    }
}

// Chinese: the characters of all rows are numbered through, and laid about kPerChineseSet to a KX set from `first_set`
// on. Where a set is full, the first character of the next takes index 0xFF of it, unlike in the double-byte code
// pages.
constexpr Kx5Code chinese_pair(std::uint8_t row, std::uint8_t cell, unsigned first_set) noexcept {
    if (row == kFirstRow5) return character(kPairSize5, kAsciiSet, cell);
    const unsigned n = (row - 0x22u) * 94 + static_cast<std::uint8_t>(cell - 0x21);
    const unsigned ch = (first_set << 8) + n + (n + n / 256) / 256;
    return character(kPairSize5, (ch >> 8) & 0xFF, ch);
}

// `read_text(at)` reads the code at a byte of 0x20..0x7F.
template <class ReadText>
KxChar *read_stream(const std::uint8_t *source, KxChar *destination, std::uint16_t bytes, ReadText read_text) noexcept {
    if (bytes < sizeof(KxChar)) return destination;
    KxWriter out(destination, bytes / sizeof(KxChar) - 1);
    while (out.has_room() && *source != 0) {
        const bool text = *source >= 0x20 && *source <= 0x7F;
        const Kx5Code code = text ? read_text(source) : function_code(source);
        if (code.size == 0) break;
        if (code.is_character) {
            out.put(code.ch);
        } else if (text) {
            out.charge(1); // a pair takes its room even when it stands for nothing
        }
        source += code.size;
    }
    out.finish();
    return destination;
}

// Text in pairs; a space stands by itself. The first byte of a pair at the end of the stream ends it.
template <class ReadPair> auto in_pairs(ReadPair read_pair) noexcept {
    return [read_pair](const std::uint8_t *at) {
        if (*at == ' ') return character(1, kAsciiSet, ' ');
        return at[1] != 0 ? read_pair(at[0], at[1]) : Kx5Code{0};
    };
}

auto in_chinese_pairs(unsigned first_set) noexcept {
    return in_pairs([first_set](std::uint8_t row, std::uint8_t cell) { return chinese_pair(row, cell, first_set); });
}

} // namespace

KxChar *read_stream5(const std::uint8_t *source, KxChar *destination, std::uint16_t bytes, Kx5Text text) noexcept {
    switch (text) {
    case Kx5Text::bytes: break;
    case Kx5Text::pairs: return read_stream(source, destination, bytes, in_pairs(row_pair));
    case Kx5Text::simplified_pairs:
        return read_stream(source, destination, bytes, in_chinese_pairs(kFirstSimplifiedSet));
    case Kx5Text::traditional_pairs:
        return read_stream(source, destination, bytes, in_chinese_pairs(kFirstTraditionalSet));
    }
    return read_stream(source, destination, bytes, [](const std::uint8_t *at) { return character(1, kAsciiSet, *at); });
}

} // namespace kxstr::forms

using namespace kxstr;

extern "C" {

KxChar *W5dzTowz(const uint8_t *source, KxChar *destination, uint32_t bytes) {
    const auto text = platform::is_double_byte_system() ? forms::Kx5Text::pairs : forms::Kx5Text::bytes;
    return forms::read_stream5(source, destination, low16(bytes), text);
}

KxChar *lW5CdzTowz(const uint8_t *source, KxChar *destination, uint32_t bytes, uint32_t selector) {
    const bool traditional = static_cast<std::uint8_t>(selector) == 0x83;
    const auto text = traditional ? forms::Kx5Text::traditional_pairs : forms::Kx5Text::simplified_pairs;
    return forms::read_stream5(source, destination, low16(bytes), text);
}

uint8_t *WwzTo5dz(const KxChar *source, uint8_t *destination, uint32_t bytes) {
    const std::uint16_t size = low16(bytes);
    if (size == 0) return destination;
    forms::ByteWriter out(destination, size - 1u);
    for (; *source != 0 && out.has_room(); ++source) {
        const std::uint8_t set = set_of(*source);
        const std::uint8_t index = index_of(*source);
        if (set == kAsciiSet) {
            out.put(index);
        } else if (!is_code(*source) && out.fits(forms::kExtendedSize5 + 1)) {
            // Only with a byte to spare; text behind a character that is left out can still follow.
            out.put({forms::kExtended5, index, set, forms::kExtended5});
        }
    }
    out.finish();
    return destination;
}
}
