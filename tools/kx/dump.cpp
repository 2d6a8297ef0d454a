#include "dump.h"

#include <cinttypes>
#include <cstdio>

#include "command.h"
#include "conversion.h"
#include "forms/code_size.h"
#include "forms/strip.h"
#include "names.h"
#include "os.h"
#include "stream_codes.h"

namespace kx {
namespace {

namespace forms = kxstr::forms;

constexpr Option kOptions[] = {option::kAnsi, option::kOutput};

constexpr Example kExamples[] = {{"kx dump document.kx | less", "what is in a document stream"}};

constexpr Usage kUsageText{
    "kx dump",
    "[--ansi=PAGE] [-o OUT] [FILE...]",
    "Lists document streams code by code: offset, size, bytes, kind, and for a character its KX\n"
    "code, its Unicode value, itself and its name. Reads standard input when no FILE is given, or\n"
    "when FILE is -.",
    kOptions,
    "Offsets and bytes are hexadecimal, sizes decimal. A code that lies about its size is marked and\n"
    "counts as one byte. The list goes on behind an end of the stream.\n"
    "On a terminal what lies is red, and places and bytes are dim.",
    kExamples,
    "every code is sound",
    "some lie, or a file could not be read or written",
};

constexpr std::size_t kBytesInRow = 8;

std::string kind_of(std::span<const std::uint8_t> code) {
    const std::uint8_t first = code[0];
    switch (first) {
    case 0: return "end of stream";
    case forms::kSpaceCode: return "space";
    case forms::kFirstHyphenCode:
    case forms::kSecondHyphenCode: return "hyphen";
    case forms::kHardLineEnd: return "hard line end";
    case forms::kSoftLineEnd: return "soft line end";
    case forms::kExtended: return "extended";
    case forms::kAttributeOn: return "attribute " + std::to_string(code[1]) + " on";
    case forms::kAttributeOff: return "attribute " + std::to_string(code[1]) + " off";
    default: break;
    }
    if (first < forms::kFirstFunctionCode) return "character";
    return forms::is_group(first) ? "group" : forms::is_fixed(first) ? "fixed-length code" : "function code";
}

constexpr bool is_character(std::uint8_t first) {
    return first == forms::kExtended || (0 < first && first < forms::kFirstFunctionCode);
}

class Listing {
  public:
    Listing(const CodePage &page, bool coloured)
        : page_(page), coloured_(coloured), utf8_(make_encoder({EncodingKind::utf8, {}}, page, page)) {}

    void add(std::uint64_t offset, std::span<const std::uint8_t> code, const char *fault) {
        for (std::size_t row = 0; row < code.size(); row += kBytesInRow) {
            const std::string bytes = hex(code.subspan(row, std::min(kBytesInRow, code.size() - row)));
            char columns[64];
            if (row == 0) {
                std::snprintf(columns, sizeof columns, "%08" PRIX64 " %5zu  %-*s", offset, code.size(), kBytesWidth,
                              bytes.c_str());
                add(columns, kDim);
                text_ += "  ";
                add(fault != nullptr ? lie_of(code[0], fault) : meaning_of(code), fault != nullptr ? kRed : "");
            } else {
                std::snprintf(columns, sizeof columns, "%*s  %s", kSizeEnd, "", bytes.c_str());
                add(columns, kDim);
            }
            text_ += '\n';
        }
    }

    const std::string &text() const { return text_; }
    void clear() { text_.clear(); }

  private:
    static constexpr int kSizeEnd = 8 + 1 + 5;
    static constexpr int kBytesWidth = 3 * kBytesInRow - 1;

    void add(const std::string &part, const char *colour) {
        text_ += coloured_ && *colour != 0 ? colour + part + kPlain : part;
    }

    static std::string lie_of(std::uint8_t first, const char *fault) {
        return std::string("LIES: ") + (forms::is_group(first) ? "group " : "fixed-length code ") + fault;
    }

    std::string meaning_of(std::span<const std::uint8_t> code) {
        std::string meaning = kind_of(code);
        if (!is_character(code[0])) return meaning;
        const KxChar ch = *unit_of_stream_code(code, true);
        const std::uint16_t unicode = unicode_of_kx(page_, ch);
        char columns[64];
        std::snprintf(columns, sizeof columns, "%-9s  %04X", meaning.c_str(), ch);
        meaning = columns;
        if (unicode == KX_NONE) return meaning + "  no Unicode value";
        std::snprintf(columns, sizeof columns, "  U+%04X", unicode);
        meaning += columns;
        const bool control = unicode < 0x20 || (0x7F <= unicode && unicode < 0xA0);
        if (control) return meaning;
        ByteBuffer bytes;
        utf8_->encode({&ch, 1}, bytes);
        const std::string name = name_of_character(ch, unicode);
        return meaning + "  " + std::string(bytes.begin(), bytes.end()) + (name.empty() ? "" : "  " + name);
    }

    CodePage page_;
    bool coloured_;
    std::unique_ptr<Encoder> utf8_;
    std::string text_;
};

// False when the input could not be read or the list not be written.
bool list(Input &input, Listing &listing, Output &output, bool &lies) {
    std::uint64_t count = 0, first = 0;
    for (;;) {
        const Chunk chunk = input.next();
        if (!input.good()) return false;
        std::size_t at = 0;
        while (at < chunk.bytes.size()) {
            const auto code = stream_code(chunk, at);
            if (!code) break;
            const std::uint64_t offset = chunk.offset + at;
            if (code->fault != nullptr && count++ == 0) first = offset;
            listing.add(offset, chunk.bytes.subspan(at, code->size), code->fault);
            at += code->size;
        }
        input.consume(at);
        if (!output.write(listing.text())) return false;
        listing.clear();
        if (chunk.last) break;
    }
    if (count == 0) return true;
    lies = true;
    report(kUsageText.command, input.name() + ": " + std::to_string(count) +
                                   (count == 1 ? " code lies, at byte " : " codes lie, the first at byte ") +
                                   std::to_string(first));
    return true;
}

} // namespace

int run_dump(int argc, char **argv) {
    std::optional<CodePage> ansi;
    std::string path_written;
    const Parsed parsed = parse_options(argc, argv, kUsageText, [&](int id, const Argument &argument) {
        if (id == 'o') {
            path_written = argument;
        } else {
            ansi = argument.page;
        }
        return std::string();
    });
    if (parsed.stop) return parsed.status;
    Output output(kUsageText.command, path_written);
    if (!output.good()) return kFailure;
    Listing listing(ansi.value_or(system_page()), is_standard(path_written) && has_colours(os::kStandardOutput));
    bool lies = false;
    for (const std::string &path : operands_or_standard_input(argc, argv, parsed.first_operand)) {
        Input input(kUsageText.command, path);
        if (!input.good() || !list(input, listing, output, lies)) return kFailure;
    }
    return output.close() && !lies ? kSuccess : kFailure;
}

} // namespace kx
