// Names of files in UTF-8, as the commands have them, and as std::filesystem takes them.
#pragma once

#include <filesystem>
#include <string>

namespace kx {

// On POSIX names are bytes, and stay what they are whether they are UTF-8 or not.
inline std::filesystem::path path_of(const std::string &text) {
    return {std::u8string(text.begin(), text.end())};
}

inline std::string text_of(const std::filesystem::path &path) {
    const std::u8string text = path.generic_u8string();
    return {text.begin(), text.end()};
}

} // namespace kx
