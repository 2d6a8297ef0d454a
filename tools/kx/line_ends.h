// Line ends of text in any form that has lines: where they are, and others in their place.
#pragma once

#include <array>
#include <optional>

#include "encodings.h"
#include "through_unicode.h"

namespace kx {

enum class LineEnds { keep, lf, crlf };
std::optional<LineEnds> find_line_ends(const std::string &name);

// A control character in a form; empty where it is more than one unit, or not to be told without decoding. The document
// streams and sio have theirs among other codes.
ByteBuffer unit_of_control(std::uint8_t control, const Encoding &form);
// Whether a text in this form is lines, which end with such a unit.
bool has_lines(const Encoding &form);

// U+FEFF as it begins a file of this form; empty where no file begins with one.
ByteBuffer byte_order_mark(const Encoding &form);

// Makes the line ends of a text all alike while it passes, in pieces of whole characters. A carriage return alone is
// none and stays.
class LineEndFilter {
  public:
    LineEndFilter(LineEnds wanted, const Encoding &form);

    void pass(ByteBuffer &bytes, bool last);

  private:
    LineEnds wanted_;
    ByteBuffer carriage_return_;
    ByteBuffer line_feed_;
    bool after_return_ = false; // the unit before was one; for `lf` it still waits to be written
    ByteBuffer passed_;
};

// The characters in whole ones of a form that has lines and does not go through Unicode.
std::size_t count_characters(const Encoding &form, std::span<const std::uint8_t> bytes);

// Counts where in a text a byte is, as an editor does: lines and characters from 1.
class TextPlace {
  public:
    explicit TextPlace(const Encoding &form);

    // More of the text. Units of UTF-16 and KX text come whole.
    void pass(std::span<const std::uint8_t> bytes);

    std::uint64_t line() const noexcept { return line_; }
    std::uint64_t column() const noexcept { return column_; }

  private:
    void pass_units(std::span<const std::uint8_t> bytes);
    std::size_t characters_in(std::span<const std::uint8_t> bytes);

    Encoding form_;
    std::unique_ptr<UnicodeText> unicode_; // of a form that goes through Unicode; else null
    ByteBuffer waiting_;                   // for the rest of a character of it
    std::uint64_t offset_ = 0;             // of these in the file
    ByteBuffer line_feed_;
    ByteBuffer mark_;
    bool is_double_byte_;
    std::array<bool, 256> is_lead_{}; // of two bytes
    bool begins_ = true;
    bool after_lead_ = false; // the second of two bytes comes next
    std::uint64_t line_ = 1;
    std::uint64_t column_ = 1;
};

} // namespace kx
