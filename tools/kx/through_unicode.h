// The forms that the library has no conversion for: ASCII, UTF-32 and all encodings of the system. They are read as
// UTF-16 and written from it, and are what the library makes of UTF-16.
#pragma once

#include "encodings.h"
#include "os.h"

namespace kx {

using os::Transcoder;

// Whether the system, or a table here, has an encoding of this name.
bool system_has(const std::string &name);

// From any form that is not KX text to UTF-16, low byte first, and back. Marks are characters to them.
std::unique_ptr<Transcoder> make_reader(const Encoding &form);
std::unique_ptr<Transcoder> make_writer(const Encoding &form);
// The bytes of a character in a form that goes through Unicode; empty where it has none.
ByteBuffer bytes_of_character(char32_t character, const Encoding &form);

std::unique_ptr<Decoder> make_decoder_through_unicode(const Encoding &form, const CodePage &text_page, bool composes);
std::unique_ptr<Encoder> make_encoder_through_unicode(const CodePage &text_page, const Encoding &form);
std::unique_ptr<Converter> make_converter_through_unicode(const Encoding &from, const Encoding &to,
                                                          const CodePage &text_page, const CodePage &written_page);

// The text of a part of a file as UTF-16, low byte first, with the places of its characters.
class UnicodeText {
  public:
    explicit UnicodeText(const Encoding &form);

    void begin(); // another file
    // Afterwards it is the text of this chunk, up to the first piece that is no character. What it has of it already is
    // not read again: the chunk begins at a place that was told before, or behind all.
    void load(const Chunk &chunk);

    std::span<const std::uint8_t> units() const noexcept { return std::span(units_).subspan(2 * first_); }
    // Where in the chunk the character lies that begins at this byte of the units.
    std::size_t place(std::size_t at);
    std::size_t end_of(std::size_t at);                          // and where it ends
    std::size_t size() const noexcept { return size_ - start_; } // bytes of the chunk that the units are of
    std::size_t bad() const noexcept { return bad_; }            // not 0: so many bytes behind them are no character
    // The character that began at this place of the file, as long as it is here.
    std::optional<char32_t> character_at(std::uint64_t offset);

  private:
    void begin_at(std::uint64_t offset);
    void forget_start();
    void read(std::span<const std::uint8_t> chunk, bool last);
    bool step(Transcoder &reader, std::span<const std::uint8_t> source, std::size_t &at, ByteBuffer &units);
    void list_places();

    Encoding form_;
    std::unique_ptr<Transcoder> reader_;
    std::unique_ptr<Transcoder> again_; // for the places
    bool shifts_;                       // what bytes mean depends on those before: they are read one by one

    // What was read. All places and sizes are in bytes of the source.
    std::uint64_t base_ = 0; // its place in the file
    ByteBuffer source_;
    ByteBuffer units_;
    std::vector<std::uint32_t> places_; // of each unit, when they are wanted or the form shifts
    bool placed_ = false;
    std::size_t size_ = 0;
    std::size_t mark_ = 0; // that it begins with
    std::size_t bad_ = 0;
    std::uint64_t looked_at_ =
        0;                  // where in the file that ends which these were read from, perhaps with half a character
    bool was_last_ = false; // nothing follows there
    // Where the chunk begins in it.
    std::size_t start_ = 0;
    std::size_t first_ = 0; // unit
};

} // namespace kx
