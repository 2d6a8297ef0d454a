// Document streams whose codes are known before they are put together, so that no size has to be read back from them.
#pragma once

#include <cstdint>
#include <vector>

namespace kxstr::reference {

struct StreamCode {
    std::vector<std::uint8_t> bytes;
    bool is_text; // a character, extended or not
};

inline const std::vector<StreamCode> kStreamAlphabet{
    {{0x41}, true},
    {{0x80}, false},
    {{0xFF}, false},
    {{0xF0, 0x00, 0x01, 0xF0}, true}, // an index of 0 ends nothing
    {{0xF2, 0x05, 0xF2}, false},
    {{0xF9, 0x00, 0xD4, 0x41, 0xFA}, false}, // opened and closed by different bytes of one size
    {{0xFD, 0, 0, 0, 0, 0, 0, 0xFE}, false},
    {{0xD4, 0x01, 0x07, 0x00, 0x07, 0x00, 0xEF}, false},
};

inline std::vector<std::uint8_t> joined(const std::vector<StreamCode> &codes) {
    std::vector<std::uint8_t> bytes;
    for (const StreamCode &code : codes)
        bytes.insert(bytes.end(), code.bytes.begin(), code.bytes.end());
    bytes.push_back(0);
    return bytes;
}

// Calls `visit` with every sequence of up to `limit` elements of `alphabet`, the empty one included.
template <class Element, class Visit>
void for_every_sequence(const std::vector<Element> &alphabet, std::size_t limit, const Visit &visit) {
    std::vector<Element> sequence;
    const auto extend = [&](const auto &self) -> void {
        visit(sequence);
        if (sequence.size() == limit) return;
        for (const Element &element : alphabet) {
            sequence.push_back(element);
            self(self);
            sequence.pop_back();
        }
    };
    extend(extend);
}

} // namespace kxstr::reference
