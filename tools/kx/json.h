// Text as JSON has it.
#pragma once

#include <string>
#include <string_view>

namespace kx {

inline std::string quoted(std::string_view text) {
    constexpr const char *digits = "0123456789abcdef";
    std::string result = "\"";
    for (const char letter : text) {
        const auto byte = static_cast<unsigned char>(letter);
        if (letter == '"' || letter == '\\') {
            result += '\\';
        } else if (byte < 0x20) {
            ((result += "\\u00") += digits[byte >> 4]) += digits[byte & 15];
            continue;
        }
        result += letter;
    }
    return result + '"';
}

} // namespace kx
