// Lines of text files in any form: where they end, and their KX text.
#pragma once

#include <optional>

#include "encodings.h"

namespace kx {

class LineReader {
  public:
    LineReader(const Encoding &form, const CodePage &text_page);

    // What ends a line in this form.
    std::span<const std::uint8_t> line_end() const noexcept { return line_end_; }

    // The size of the first line with its line end; nothing when no line ends in these bytes.
    std::optional<std::size_t> first_line(std::span<const std::uint8_t> bytes) const noexcept;

    // The size of the byte order mark at the start of a file whose first line this is; mostly 0.
    std::size_t mark_size(std::span<const std::uint8_t> line);

    // Makes the KX text of a line, without its line end (carriage return and line feed) and zero-terminated. The place
    // of a character that does not convert, when there is one; the text is then what comes before it.
    std::optional<std::size_t> decode(std::span<const std::uint8_t> line, std::vector<KxChar> &text);

  private:
    std::unique_ptr<Decoder> decoder_;
    std::vector<std::uint8_t> line_end_;
    DecodedText units_;
};

} // namespace kx
