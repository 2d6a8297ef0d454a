// The bounded copies of double-byte text, step by step.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace kxstr::reference {

// 0x81 leads in all four double-byte code pages, 0xB0 in all but 932, 0x40 in none.
inline const std::vector<char> kDoubleByteAlphabet{'\x81', '\xB0', '\x40'};

inline bool leads(char byte, std::uint32_t code_page) {
    const auto value = static_cast<std::uint8_t>(byte);
    if (code_page == 932) return (0x81 <= value && value <= 0x9F) || (0xE0 <= value && value <= 0xFC);
    return code_page != 1252 && 0x81 <= value && value <= 0xFE;
}

// A text as its characters; a lead byte with nothing behind it stands alone.
inline std::vector<std::string> characters_of(const std::string &text, std::uint32_t code_page) {
    std::vector<std::string> characters;
    for (std::size_t i = 0; i < text.size(); i += characters.back().size())
        characters.push_back(text.substr(i, leads(text[i], code_page) ? 2 : 1));
    return characters;
}

// The whole characters that fit in `limit` bytes.
inline std::string cut_to(const std::string &text, std::int32_t limit, std::uint32_t code_page) {
    std::string cut;
    for (const std::string &character : characters_of(text, code_page)) {
        const bool whole = character.size() == 2 || !leads(character[0], code_page);
        if (!whole || static_cast<std::int32_t>(cut.size() + character.size()) > limit) break;
        cut += character;
    }
    return cut;
}

// What wstrncpy leaves in `size` bytes that held `fill` before.
inline std::string bounded_copy(const std::string &text, std::size_t size, std::uint32_t code_page, char fill) {
    std::string out;
    for (const std::string &character : characters_of(text + '\0', code_page)) {
        if (out.size() + character.size() > size) break;
        out += character;
        if (character.back() == 0) fill = 0;
    }
    return out + std::string(size - out.size(), fill);
}

// The same for CopyUpToAndNullTerminate: behind the terminator follows the trail byte of a character left out, or a 0.
inline std::string terminated_copy(const std::string &text, std::size_t size, std::uint32_t code_page, char fill) {
    if (size == 0) return {};
    std::string out = cut_to(text, static_cast<std::int32_t>(size) - 1, code_page);
    const std::string left = text.substr(out.size()) + std::string(2, '\0');
    out += '\0';
    if (out.size() < size) out += left[0] != 0 ? left[1] : '\0';
    return out + std::string(size - out.size(), fill);
}

} // namespace kxstr::reference
