#include "text.h"

#include "peers.h"
#include "system.h"
#include <algorithm>
#include <fstream>
#include <kxstr/codepage.h>
#include <kxstr/unicode.h>
#include <optional>
#include <sstream>
#include <stdexcept>
#include <unordered_map>
#include <utility>

namespace kxbench {
namespace {

std::string corpus_folder;

std::u16string read_utf8(const std::string &name) {
    std::ifstream file(corpus_folder + "/" + name, std::ios::binary);
    std::ostringstream bytes;
    bytes << file.rdbuf();
    const std::string utf8 = bytes.str();
    std::u16string units(utf8.size(), u'\0');
    units.resize(Iconv(kUtf16, "UTF-8").convert(utf8.data(), utf8.size(), units.data(), units.size() * 2) / 2);
    if (units.empty()) throw std::runtime_error("no " + name + " in the corpus: run bench/corpus.py");
    return units;
}

struct Character {
    std::string native;
    KxChar kx = 0;
    KxChar unicode_kx = 0;
};

// What everybody makes of a character in the system's code page, and nothing where they disagree.
class Alphabet {
  public:
    Alphabet() { WcvtSetCodepage(current().code_page, KX_BOTH_DIRECTIONS, &page_); }

    const std::optional<Character> &find(char16_t unit) {
        Entry &entry = entries_[unit];
        if (!entry.is_known) entry = {true, agreed(unit)};
        return entry.character;
    }

  private:
    struct Entry {
        bool is_known = false;
        std::optional<Character> character;
    };

    [[nodiscard]] std::optional<Character> agreed(std::uint16_t unit) const {
        Character result;
        char native[4];
        result.native.assign(native, to_native_.convert(&unit, 2, native, sizeof native));
        const std::string &code = result.native;
        if (code.empty() || code.size() > 2) return {};
        std::uint16_t back = 0;
        if (to_unicode_.convert(code.data(), code.size(), &back, 2) != 2 || back != unit) return {};
        if (icu_.from_unicode(&unit, 1, native, sizeof native) != code.size() ||
            code.compare(0, 2, native, code.size()))
            return {};
        std::uint16_t units[2];
        if (icu_.to_unicode(code.data(), code.size(), units, 2) != 1 || units[0] != unit) return {};

        std::uint32_t number = 0;
        for (const char byte : code)
            number = number << 8 | static_cast<unsigned char>(byte);
        result.kx = WcvtNtvToKx(&page_, number);
        result.unicode_kx = YWcharUnicodeToKX6x(unit);
        if (result.kx == KX_NONE || WcvtKxToNtv(&page_, result.kx) != number) return {};
        if (YWcharKX6xToUnicode(result.unicode_kx) != unit) return {};
        const bool is_line_end = unit == u'\n';
        if (!is_line_end && YWcharKX6xToUnicode(result.kx) != unit) return {};
        return result;
    }

    KxCodePage page_{};
    Iconv to_native_{current().iconv_name, kUtf16};
    Iconv to_unicode_{kUtf16, current().iconv_name};
    IcuConverter icu_{current().icu_name};
    std::vector<Entry> entries_ = std::vector<Entry>(0x10000);
};

Alphabet &alphabet() {
    static Alphabet the_alphabet;
    return the_alphabet;
}

const std::u16string &usable_text(const std::string &language) {
    static std::unordered_map<std::string, std::u16string> texts;
    const auto [place, is_new] = texts.try_emplace(language);
    if (is_new) {
        place->second = read_utf8("text-" + language + ".txt");
        std::erase_if(place->second, [](char16_t unit) { return !alphabet().find(unit); });
    }
    return place->second;
}

bool is_foreign(char16_t unit) {
    return unit > 0x7E;
}

constexpr std::size_t kLine = 64;       // characters; a piece of so many and fewer has no line end
constexpr std::size_t kPiece = 1 << 12; // a longer one is the text from its beginning

// As the corpus begins a page with names and options, most beginnings are less foreign than the text.
std::u16string_view typical_piece(const std::u16string &text, std::size_t size) {
    const auto foreign = static_cast<std::size_t>(std::ranges::count_if(text, is_foreign));
    const std::size_t wanted = (foreign * size + text.size() - 1) / text.size();
    for (std::size_t start = kPiece; start + size <= text.size(); ++start) {
        const std::u16string_view piece(text.data() + start, size);
        if (size <= kLine && piece.find(u'\n') != piece.npos) continue;
        if (static_cast<std::size_t>(std::ranges::count_if(piece, is_foreign)) == wanted) return piece;
    }
    throw std::runtime_error("no typical piece of text");
}

std::u16string piece_of(const std::string &language, std::size_t size) {
    const std::u16string &text = usable_text(language);
    if (size <= kPiece) return std::u16string(typical_piece(text, size));
    std::u16string piece;
    piece.reserve(size);
    while (piece.size() < size)
        piece.append(text, 0, size - piece.size());
    return piece;
}

// Bytes or units left free behind a text, so that no output lies in the block of memory in which it ends. A call that
// reads the whole block would wait there for what the call before has just written, which it would not do with other
// work in between.
constexpr std::size_t kApart = 64;

Text all_forms(const std::u16string &characters) {
    Text text;
    text.utf16.reserve(characters.size() + 1 + kApart);
    text.utf16.assign(characters.begin(), characters.end());
    text.native.reserve(characters.size() * (current().double_byte ? 2 : 1) + kApart);
    text.kx.reserve(characters.size() + 1 + kApart);
    text.unicode_kx.reserve(characters.size() + 1 + kApart);
    for (const char16_t unit : characters) {
        const Character &character = *alphabet().find(unit);
        text.native += character.native;
        text.kx.push_back(character.kx);
        text.unicode_kx.push_back(character.unicode_kx);
    }
    text.utf16.push_back(0);
    text.kx.push_back(0);
    text.unicode_kx.push_back(0);
    text.units_out.resize(characters.size() * 2 + 64);
    text.bytes_out.resize(characters.size() * 2 + 64);
    return text;
}

void append_to_stream(std::vector<std::uint8_t> &bytes, char16_t unit) {
    const KxChar kx = alphabet().find(unit)->kx;
    if (kx == KX_LINE_FEED)
        bytes.push_back(0xCC);
    else if (kx < 0x80)
        bytes.push_back(static_cast<std::uint8_t>(kx));
    else
        bytes.insert(bytes.end(), {0xF0, static_cast<std::uint8_t>(kx), static_cast<std::uint8_t>(kx >> 8), 0xF0});
}

Stream stream_of(const std::u16string &characters, std::size_t limit) {
    Stream stream;
    stream.bytes.reserve(std::min(limit, characters.size() * 4) + 1 + kApart);
    std::size_t count = 0;
    for (; count < characters.size(); ++count) {
        const std::size_t before = stream.bytes.size();
        append_to_stream(stream.bytes, characters[count]);
        if (stream.bytes.size() > limit) {
            stream.bytes.resize(before);
            break;
        }
    }
    stream.bytes.push_back(0);
    stream.out.resize(stream.bytes.size() + 64);
    stream.text = all_forms(characters.substr(0, count));
    stream.utf8.resize(count * 3 + 1);
    stream.utf8.resize(
        Iconv("UTF-8", kUtf16).convert(stream.text.utf16.data(), count * 2, stream.utf8.data(), stream.utf8.size()));
    return stream;
}

} // namespace

void Text::clear_output() {
    std::ranges::fill(units_out, KxChar{0xEEEE});
    std::ranges::fill(bytes_out, '\xEE');
}

void use_corpus(const std::string &folder) {
    corpus_folder = folder;
}

Text text_of(const std::string &language, std::size_t size) {
    return all_forms(piece_of(language, size));
}

Stream stream_of_characters(const std::string &language, std::size_t characters) {
    return stream_of(piece_of(language, characters), characters * 4);
}

Stream stream_of_bytes(const std::string &language, std::size_t bytes) {
    return stream_of(piece_of(language, bytes), bytes);
}

std::vector<std::u16string> words_of(const std::string &language) {
    std::vector<std::u16string> words;
    std::u16string word;
    for (const char16_t unit : read_utf8("words-" + language + ".txt")) {
        if (unit == u'\n')
            words.push_back(std::exchange(word, {}));
        else
            word += unit;
    }
    return words;
}

} // namespace kxbench
