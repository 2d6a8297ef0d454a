// The corpus in the forms that the jobs take. bench/corpus.py makes the files.
#pragma once

#include <cstddef>
#include <cstdint>
#include <kxstr/types.h>
#include <string>
#include <vector>

namespace kxbench {

void use_corpus(const std::string &folder);

// The same characters in each form, every one with a 0 behind it that the sizes do not count; and room for results. A
// character stands in it only when ours, the C library's and ICU's converters agree about it.
struct Text {
    std::vector<std::uint16_t> utf16;
    std::string native;             // in the system's code page
    std::vector<KxChar> kx;         // of the native text: line ends are codes
    std::vector<KxChar> unicode_kx; // of the UTF-16 text: line ends are 0x000A

    std::vector<std::uint16_t> units_out; // twice the text's room, so that nothing fails for want of it
    std::string bytes_out;

    [[nodiscard]] std::size_t size() const { return utf16.size() - 1; } // characters
    void clear_output();
};

// So many characters of a language's text, repeated where it is shorter. Up to a few thousand they are a piece that has
// as many letters beyond ASCII as the language has on average; a few are a piece of one line.
Text text_of(const std::string &language, std::size_t size);

// A document stream and the text that it holds. Line ends are the code 0xCC.
struct Stream {
    std::vector<std::uint8_t> bytes; // with its terminator
    Text text;
    std::string utf8;
    std::vector<std::uint8_t> out;

    [[nodiscard]] std::size_t size() const { return bytes.size() - 1; }
};

Stream stream_of_characters(const std::string &language, std::size_t characters);
// The largest that has at most so many bytes.
Stream stream_of_bytes(const std::string &language, std::size_t bytes);

// A word list of the corpus, as UTF-16.
std::vector<std::u16string> words_of(const std::string &language);

} // namespace kxbench
