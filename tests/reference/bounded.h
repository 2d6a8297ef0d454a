// Text as a list of whole codes, and what is left of it in a destination of so many bytes. The tests build their texts
// from codes, so nothing here has to find where a code begins.
#pragma once

#include <cstdint>
#include <vector>

namespace kxstr::reference {

using Code = std::vector<std::uint8_t>;
using Codes = std::vector<Code>;

inline Code joined(const Codes &codes) {
    Code all;
    for (const Code &code : codes)
        all.insert(all.end(), code.begin(), code.end());
    return all;
}

// The codes that fit into `room` bytes, up to the first that does not.
inline Codes cut(const Codes &codes, std::size_t room) {
    Codes kept;
    for (const Code &code : codes) {
        if (code.size() > room) break;
        room -= code.size();
        kept.push_back(code);
    }
    return kept;
}

// A code of a document stream after stripping; empty when it is dropped.
inline Code stripped(const Code &code, unsigned flags) {
    const int first = code[0];
    if (code.size() == 1) {
        if ((first >= 0x20 && first <= 0x7E) || first == 0x80) return code;
        if (first == 0x84 || first == 0x85) return flags & 0x10 ? Code{0x2D} : Code{};
        if (first == 0xCC && flags & 2) return code;
        if (first == 0xCF && flags & 4) return code;
        if (first == 0xCF && flags & 8) return {0x80};
        return {};
    }
    if (first == 0xF0 && code.size() == 4) return code;
    return (first == 0xF2 || first == 0xF3) && flags & 1 ? code : Code{};
}

inline Codes stripped(const Codes &codes, unsigned flags) {
    Codes kept;
    for (const Code &code : codes)
        if (const Code left = stripped(code, flags); !left.empty()) kept.push_back(left);
    return kept;
}

// The same for one unit of a KX string; 0 when it is dropped.
inline unsigned stripped(unsigned unit, unsigned flags, bool valid) {
    if (valid) return unit;
    if (unit >= 0xFE00 && unit <= 0xFE1F) return flags & 1 ? unit : 0;
    if (unit == 0x84 || unit == 0x85 || unit == 0xFB05) return flags & 0x10 ? 0x2D : 0;
    if (unit == 0xF909) return flags & 0x20 ? unit : 0;
    if (unit == 0xF90A || unit == 0xF90C) return flags & 2 ? unit : 0;
    if (unit == 0xF90D && flags & 4) return unit;
    return unit == 0xF90D && flags & 8 ? 0x20 : 0;
}

// A code in sio form with what it counts.
struct Sio {
    Code bytes;
    std::size_t count;
};

inline Sio sio_attribute(int attribute, bool on) {
    if (attribute == 0x0C) return {{static_cast<std::uint8_t>(on ? 0x1D : 0x1C)}, 1};
    if (attribute == 0x0E) return {{static_cast<std::uint8_t>(on ? 0x14 : 0x15)}, 1};
    return {{static_cast<std::uint8_t>(on ? 0x0E : 0x0F), static_cast<std::uint8_t>(attribute + 1)}, 3};
}

// Of a code that stripping can leave.
inline Sio sio(const Code &code) {
    switch (code[0]) {
    case 0x80: return {{0x20}, 1};
    case 0xCC:
    case 0xCF: return {{0x0D}, 1};
    case 0xF0: return {{0xFD, code[1], code[2]}, 3};
    case 0xF2: return sio_attribute(code[1], true);
    case 0xF3: return sio_attribute(code[1], false);
    default: return {code, 1};
    }
}

// Of a unit that stripping can leave.
inline Sio sio(unsigned unit, unsigned flags) {
    const auto set = static_cast<std::uint8_t>(unit >> 8);
    const auto index = static_cast<std::uint8_t>(unit);
    if (set == 0xFE) return sio_attribute(index / 2, index % 2 == 0);
    if (unit == 0xF909) return {{static_cast<std::uint8_t>(flags & 0x40 ? 0xFE : 0x09)}, 1};
    if (unit == 0xF90A || unit == 0xF90D) return {{0x0D}, 1};
    if (set == 0) return {{index}, 1};
    return set <= 223 ? Sio{{0xFD, index, set}, 3} : Sio{{}, 0};
}

// The text and the count of codes in sio form, up to the first whose bytes do not fit into what the count leaves.
inline Sio sio_text(const std::vector<Sio> &codes, std::size_t room) {
    Sio all{{}, 0};
    for (const Sio &code : codes) {
        if (all.count >= room || code.bytes.size() > room - all.count) break;
        all.bytes.insert(all.bytes.end(), code.bytes.begin(), code.bytes.end());
        all.count += code.count;
    }
    return all;
}

} // namespace kxstr::reference
