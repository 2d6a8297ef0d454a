// `kx detect`: the code page and the language of files.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "encodings.h"

namespace kx {

struct Guess {
    std::string page;              // as find_encoding() takes it, "ascii", or "binary" for what is no text
    std::string language;          // "cs"; empty where nothing tells
    double share;                  // of all guesses, 0 to 1
    std::uint32_t broken;          // bytes that are not UTF-8, where the page is utf-8
    std::vector<std::string> same; // the other pages that decode the bytes to the same text
};

// Bytes that a guess is made by, from the start of a file.
extern const std::size_t kBytesToGuessBy;

// The best guess first, and no more than this many of them.
std::vector<Guess> guess(std::span<const std::uint8_t> bytes, std::size_t most = 3);

// The form of a file for `-f auto`. Nothing when it is none that can be read, or when two answers are close and the
// user has not said --yes; what the answers are has been told then.
struct AutoOptions {
    bool yes = false;
};
std::optional<Encoding> detect_encoding(Input &input, const AutoOptions &options, const Tell &tell);

int run_detect(int argc, char **argv);

} // namespace kx
