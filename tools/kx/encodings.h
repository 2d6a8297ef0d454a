// The forms of text that `kx convert` reads and writes, by name. Every form converts to KX text and from it.
#pragma once

#include <cstdint>
#include <kxstr/text.h>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "files.h"
#include "text.h"

namespace kx {

// utf16 and utf32 are read only: the mark at the start of a file tells which of the two orders it is. ascii, utf32le,
// utf32be and system go through Unicode: the library has no conversion for them (through_unicode.h).
enum class EncodingKind {
    code_page,
    utf8,
    utf16,
    utf16le,
    utf16be,
    utf32,
    utf32le,
    utf32be,
    ascii,
    kx,
    stream,
    stream5,
    sio,
    system
};

struct Encoding {
    EncodingKind kind;
    CodePage page;      // of a code page; else unset
    std::string name{}; // of one of the system's: as it was given; else empty

    bool operator==(const Encoding &) const = default;
};

// By any of its names, in any case, with or without dashes; what the library does not have the system may have. Nothing
// for a name that neither knows.
std::optional<Encoding> find_encoding(std::string_view name);
std::string name_of(const Encoding &form);
// The arguments of options that take a form or a code page; what is wrong with them, or nothing.
std::string take_encoding(std::optional<Encoding> &form, const std::string &name);
std::string take_page(std::optional<CodePage> &page, const std::string &name);
// Whether the form is one of the library's own: it names no code page, and holds attributes and other codes that are no
// characters.
bool is_kx_encoding(const Encoding &form);
bool is_unicode(const Encoding &form);
// Every code page, under the name that find_encoding() and people know it by.
struct KnownPage {
    CodePage page;
    std::string name;
    const char *description;
};
std::vector<KnownPage> known_pages();
// Whether it takes Unicode and another converter than the library's to read and to write it.
bool goes_through_unicode(const Encoding &form);
// Bytes of a unit, and whether the high one of several comes first.
std::size_t unit_size(const Encoding &form);
bool is_high_first(const Encoding &form);
// What the bytes at the start of a file make of utf16 and utf32; any other form stays as it is.
inline constexpr std::size_t kMostOfMark = 4; // bytes
Encoding by_mark(const Encoding &form, std::span<const std::uint8_t> start);
// For a form to be written: utf16 and utf32 are written with the low byte first.
Encoding to_write(const Encoding &form);
// How the library's conversion of texts calls the form, with the page of KX text; nothing for one that it does not
// have.
std::optional<KxTextForm> text_form(const Encoding &form, const CodePage &page);
// All forms with their names, for people.
std::string list_of_encodings();

// KX units, and for each, when they are wanted, the place of its first byte in the chunk that it came from.
struct DecodedText {
    std::vector<KxChar, Uncleared<KxChar>> chars;
    std::vector<std::uint32_t> places;
    bool placed = true;

    void add(KxChar ch, std::size_t place) {
        chars.push_back(ch);
        if (placed) places.push_back(static_cast<std::uint32_t>(place));
    }
    void clear() {
        chars.clear();
        places.clear();
    }
    // Where `count` more units without places can be written. What stays unwritten of them is cut off afterwards.
    KxChar *grow(std::size_t count) {
        chars.resize(chars.size() + count);
        return chars.data() + chars.size() - count;
    }
};

// Bytes to KX units. The state between two chunks is only what the chunk says, so any place between two characters is a
// good one to go on from.
class Decoder {
  public:
    struct Result {
        std::size_t consumed;   // bytes that gave units
        std::size_t bad_length; // not 0: this many bytes after them are one character that does not convert
    };

    Decoder() = default;
    virtual ~Decoder() = default;
    Decoder(const Decoder &) = delete;
    Decoder &operator=(const Decoder &) = delete;

    // Appends the units of the chunk's characters, up to the first one that does not convert. A character that is not
    // complete at the end of the chunk is left, or bad when the chunk is the last.
    virtual Result decode(const Chunk &chunk, DecodedText &units) = 0;

    // Another file follows.
    virtual void begin() {}
    // The text of the last chunk in UTF-16, low byte first, where the form goes through it.
    virtual std::span<const std::uint8_t> unicode() const { return {}; }
    // The character that began at this place of the file, where the decoder knows it and the bytes alone do not tell.
    virtual std::optional<char32_t> character_at(std::uint64_t) { return std::nullopt; }

    // Bytes of the character at `place`, where the next unit came from `end`.
    virtual std::size_t length(const Chunk &, std::size_t place, std::size_t end) const { return end - place; }
};

// KX units to bytes.
class Encoder {
  public:
    Encoder() = default;
    virtual ~Encoder() = default;
    Encoder(const Encoder &) = delete;
    Encoder &operator=(const Encoder &) = delete;

    // Appends the bytes of the units, up to the first one that does not convert. Returns the number of units done.
    virtual std::size_t encode(std::span<const KxChar> units, ByteBuffer &bytes) = 0;

    // Another file follows, and this one is complete.
    virtual void begin() {}
    virtual void end(ByteBuffer &) {}
    // Writes a character apart from the text, where its bytes depend on what was written before; else false.
    virtual bool append(char32_t, ByteBuffer &) { return false; }
};

// Both take the page of the KX text between them (see text.h). A decoder of streams gives codes that are no characters
// only `with_codes`; letters and marks from Unicode are one character where `composes`. An encoder for a KX form writes
// it as a text of `written_page`. Sio text is only written.
std::unique_ptr<Decoder> make_decoder(const Encoding &form, const CodePage &text_page, bool with_codes = false,
                                      bool composes = true);
std::unique_ptr<Encoder> make_encoder(const Encoding &form, const CodePage &text_page, const CodePage &written_page);

// Bytes from one form to another, without KX text between: by the library's own conversion of texts (kxstr/text.h),
// which keeps to the published mappings, and by way of UTF-16 where it lacks one of the forms. There are no streams and
// no sio text.
class Converter {
  public:
    // The pages as of make_decoder and make_encoder.
    static std::unique_ptr<Converter> make(const Encoding &from, const Encoding &to, const CodePage &text_page,
                                           const CodePage &written_page);

    Converter() = default;
    virtual ~Converter() = default;
    Converter(const Converter &) = delete;
    Converter &operator=(const Converter &) = delete;

    // Appends the bytes of the chunk's characters, up to the first one that does not convert, and adds their number
    // where it is wanted. A byte order mark that begins the file is skipped. A character that is not complete at the
    // end of the chunk is left, or bad when the chunk is the last.
    virtual Decoder::Result convert(const Chunk &chunk, ByteBuffer &bytes, std::uint64_t *characters = nullptr) = 0;

    // As of decoders and encoders.
    virtual void begin() {}
    virtual void end(ByteBuffer &) {}
    virtual std::optional<char32_t> character_at(std::uint64_t) { return std::nullopt; }
    virtual bool append(char32_t, ByteBuffer &) { return false; }
};

} // namespace kx
