// Lines of text files in any form: where they end, and their KX text.
#pragma once

#include <optional>

#include "encodings.h"

namespace kx {

// Stands in the text of a line for a character that KX lacks. No KX character is like it.
inline constexpr KxChar kLacking = KX_NONE;

// The KX text of a line, without its line end (carriage return and line feed) and what follows a zero in it.
struct LineText {
    std::span<KxChar> chars; // there is a zero behind them, and there may be one in their place while others read
    const std::uint32_t *lacking = nullptr; // for each kLacking its value, see LackingCharacter
};

struct LackingCharacter {
    std::uint32_t value = 0; // the code point, or kNoCodePoint and more for bytes that are no text of the form
    std::size_t place = 0;   // in the bytes that were read
    std::size_t length = 0;  // bytes
};
inline constexpr std::uint32_t kNoCodePoint = 0x110000;

struct LineForm {
    Encoding form;
    CodePage text_page;
    bool zero_ends = false; // lines end in a zero, not in a line feed
    bool turkish = false;   // I is the capital of dotless i, and that with a dot the one of i
};

class LineReader {
  public:
    explicit LineReader(const LineForm &form);

    // What ends a line in this form.
    std::span<const std::uint8_t> line_end() const noexcept { return line_end_; }

    // The size of the first line with its line end; nothing when no line ends in these bytes.
    std::optional<std::size_t> first_line(std::span<const std::uint8_t> bytes) const noexcept;
    // The size of the first lines that are at least that long together; all of the bytes when no line ends behind.
    std::size_t lines_of(std::span<const std::uint8_t> bytes, std::size_t size) const noexcept;

    // The size of the byte order mark at the start of a file whose first bytes these are; mostly 0.
    std::size_t mark_size(std::span<const std::uint8_t> bytes);

    // Makes the KX text of some whole lines, the last of which may lack its end. next() gives it line by line; the text
    // is there until the next read().
    void read(std::span<const std::uint8_t> lines);
    LineText next();
    LineText read_one(std::span<const std::uint8_t> line) {
        read(line);
        return next();
    }

    // What of the lines KX lacks.
    std::size_t lacking_count() const noexcept { return values_.size(); }
    const LackingCharacter &first_lacking() const noexcept { return first_lacking_; }

    // Characters of the bytes, for telling a column.
    std::size_t count_characters(std::span<const std::uint8_t> bytes);

  private:
    std::uint32_t value_of(std::span<const std::uint8_t> bytes) const;

    LineForm form_;
    std::unique_ptr<Decoder> decoder_;
    ByteBuffer line_end_;
    KxChar end_unit_;
    DecodedText units_;
    bool has_zeros_ = false;
    std::vector<std::uint32_t> values_; // of the characters that KX lacks
    LackingCharacter first_lacking_;
    std::size_t next_unit_ = 0;
    std::size_t next_value_ = 0;
};

} // namespace kx
