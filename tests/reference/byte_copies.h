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

inline bool is_whole(const std::string &character, std::uint32_t code_page) {
    return character.size() == 2 || !leads(character[0], code_page);
}

// The whole characters that fit in `limit` bytes.
inline std::string cut_to(const std::string &text, std::int32_t limit, std::uint32_t code_page) {
    std::string cut;
    for (const std::string &character : characters_of(text, code_page)) {
        if (!is_whole(character, code_page)) break;
        if (static_cast<std::int32_t>(cut.size() + character.size()) > limit) break;
        cut += character;
    }
    return cut;
}

// What wstrncpy leaves in `size` bytes that held `fill` before.
inline std::string bounded_copy(const std::string &text, std::size_t size, std::uint32_t code_page, char fill) {
    std::string out;
    for (std::string character : characters_of(text + '\0', code_page)) {
        if (out.size() + character.size() > size) return out + std::string(size - out.size(), fill);
        out += character;
        if (character.back() == 0) break;
    }
    return out + std::string(size - out.size(), out.empty() || out.back() != 0 ? fill : '\0');
}

// The same for CopyUpToAndNullTerminate; `text` is read with its terminator.
inline std::string terminated_copy(const std::string &text, std::int32_t size, std::uint32_t code_page, char fill) {
    std::string out(size > 0 ? static_cast<std::size_t>(size) : 0, fill);
    if (size <= 1) return std::string(out.size(), '\0');
    const char *source = text.c_str();
    std::size_t at = 0;
    for (std::int32_t left = size;;) {
        const char byte = *source++;
        out[at++] = byte;
        --left;
        if (leads(byte, code_page)) {
            const char trail = *source++;
            out[at++] = trail;
            --left;
            if (trail == 0 || left == 0) {
                out[at - 2] = 0;
                return out;
            }
        } else if (byte == 0) {
            out[at] = 0;
            return out;
        }
        if (left <= 1) {
            out[at] = 0;
            return out;
        }
    }
}

} // namespace kxstr::reference
