// The one place where text becomes text of another form: a chunk at a time, and without a word to anybody.
#pragma once

#include <array>
#include <functional>
#include <optional>

#include "character_map.h"
#include "encodings.h"

namespace kx {

// The page of the KX text between the forms, and of the KX text to be written.
struct TextPages {
    CodePage text;
    CodePage written;
};

// What a command does to the KX text on its way.
struct Transform {
    // Replaces the units of a part of the text. Where the units have places a new one has that of the first one that it
    // was made from.
    std::function<void(DecodedText &units)> apply;
    // Whether the unit may be one character together with the next; they are then handed out in one part.
    std::function<bool(KxChar ch)> joins_next;
};

// A character that does not come out as what it is.
struct Change {
    enum Kind { lost, united } kind; // no equivalent, or no character at all; another character's equivalent
    std::size_t place;               // of its first byte in the chunk
    std::size_t length;              // bytes
};

class ChunkConverter {
  public:
    // A command may read its input in its own way, by a decoder that takes the place of that of the form.
    ChunkConverter(const Encoding &from, const Encoding &to, const TextPages &pages, const Transform *transform,
                   std::unique_ptr<Decoder> decoder = nullptr);

    // Lets `convert` count what it converts, which takes time.
    void count_characters() { counts_ = true; }

    void begin(); // another file

    struct Result {
        std::size_t consumed;     // bytes of whole characters
        std::uint64_t characters; // that these are, if they are counted
        bool stopped;             // by `on_change`
    };
    // Appends what the characters of the chunk become. One that is cut off by its end is left, or lost when nothing
    // follows. Each change goes to `on_change`, in the order of the text; it may append what is written for a lost
    // character, and with false the work stops before this one.
    using OnChange = std::function<bool(const Change &change)>;
    Result convert(const Chunk &chunk, ByteBuffer &bytes, const OnChange &on_change);

    // The Unicode value of the character of the chunk that is changed, if it is one. For `on_change`.
    std::optional<char32_t> code_point(const Chunk &chunk, const Change &change);
    // Writes a character in the place of one, where its bytes depend on those before; else false. For `on_change`.
    bool append(char32_t character, ByteBuffer &bytes);

  private:
    Result convert_directly(const Chunk &chunk, ByteBuffer &bytes, const OnChange &on_change);
    Result convert_by_map(const Chunk &chunk, ByteBuffer &bytes, const OnChange &on_change);
    Result convert_by_kx_text(const Chunk &chunk, std::size_t first, ByteBuffer &bytes, const OnChange &on_change);
    bool convert_alone(std::span<const std::uint8_t> character, ByteBuffer &bytes);
    struct Piece {
        Decoder::Result decoded;
        std::uint64_t characters;
        bool united; // some of them, by KX text
    };
    Piece decode(const Chunk &chunk, bool placed);
    std::size_t end_of(std::size_t unit, std::size_t consumed) const;
    void find_united_bytes();
    bool comes_back(std::span<const std::uint8_t> bytes);
    bool comes_back(const Chunk &chunk, std::size_t place, std::size_t end, KxChar ch);
    void list_united(const Chunk &chunk, std::size_t consumed);
    bool pass(const Chunk &chunk, const Change &change, ByteBuffer &bytes);
    bool encode(const Chunk &chunk, std::size_t consumed, std::size_t offset, ByteBuffer &bytes,
                const OnChange &on_change, std::size_t &stopped_at);

    Encoding from_, to_;
    CodePage text_page_;
    std::optional<Transform> transform_;                // a copy, with tables of its own
    std::unique_ptr<Converter> direct_;                 // without KX text between; null: by the next two
    std::optional<std::array<bool, 256>> united_bytes_; // of such a page, if it has any
    std::unique_ptr<Converter> naming_;                 // to UTF-8, where the input is a code page's
    std::unique_ptr<Decoder> decoder_;
    std::unique_ptr<Encoder> encoder_;
    std::unique_ptr<Encoder> back_; // to the form of the input, where characters may be united; else null
    bool counts_ = false;
    DecodedText units_;
    std::vector<std::uint32_t> united_; // the places of those that are
    std::unique_ptr<Converter>
        around_; // for what a transform does not know, from one form without KX to another; or null
    std::unique_ptr<CharacterMap> map_; // of what the transform makes of characters, in such a case; or null
    ByteBuffer came_back_;
    DecodedText one_;
};

} // namespace kx
