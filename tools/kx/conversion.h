// What the commands that convert text have in common: their options, and the way from their inputs to their outputs.
#pragma once

#include <array>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "archive.h"
#include "chunk_converter.h"
#include "detect.h"
#include "encodings.h"
#include "options.h"

namespace kx {

inline constexpr int kSubstId = 256;
inline constexpr int kAnsiId = 257;
inline constexpr int kStrictId = 258;
inline constexpr int kFilesFromId = 259;
inline constexpr int kEolId = 260;
inline constexpr int kEofId = 261;
inline constexpr int kBomId = 262;
inline constexpr int kFirstOwnId = 300; // of a command's own long options

inline constexpr Option kFromOption{'f', "from", "FORM", "the form of the input"};
inline constexpr Option kAnsiOption{kAnsiId, "ansi", "PAGE",
                                    "the code page that KX text was, or is to be, written with"};
// Of all commands that convert text.
inline constexpr std::array kTextOptions{
    Option{'t', "to", "FORM", "the form of the output"},
    Option{'o', "output", "FILE", "write to FILE, which may be an input, not to standard output"},
    Option{'i', "in-place", "[SUFFIX]",
           "write to each input itself; with SUFFIX the old file is kept under NAMESUFFIX"},
    Option{'O', "output-dir", "DIR", "write to files of the same names in DIR"},
    Option{'r', "recursive", nullptr, "take the files in folders; their subfolders are kept in DIR"},
    Option{kFilesFromId, "files-from", "FILE", "take the names in FILE, too, one a line; - is standard input"},
    Option{'0', "null", nullptr, "the names in FILE are separated by zero bytes"},
    Option{'j', "jobs", "N", "convert N files at once; 0: as many as there are processors"},
    Option{'c', nullptr, nullptr, "leave out characters that do not convert"},
    Option{kSubstId, "subst", "CHAR", "write CHAR (in UTF-8) for characters that do not convert"},
    Option{kStrictId, "strict", nullptr, "a character that KX text unites with another ends the work, too"},
    kAnsiOption,
    Option{kEolId, "eol", "ENDS", "line ends: keep, lf or crlf"},
    Option{kEofId, "eof", nullptr, "a text ends at its first Ctrl-Z, as in DOS"},
    Option{kBomId, "bom", nullptr, "begin what is written with a byte order mark"},
    Option{'v', "verbose", nullptr, "tell about each file"},
    Option{'q', "quiet", nullptr, "do not tell which characters were left out or came out as others"},
};

// A command's own options and those of all, in the order of its help.
template <std::size_t Own> constexpr auto with_text_options(const Option (&own)[Own]) {
    std::array<Option, Own + kTextOptions.size()> all{};
    std::ranges::copy(own, all.begin());
    std::ranges::copy(kTextOptions, all.begin() + Own);
    return all;
}

struct TextRequest {
    std::optional<Encoding> from;
    std::optional<AutoOptions> automatic; // the form of each input is what its bytes tell; `from` is unset then
    std::optional<Encoding> to;
    std::optional<CodePage> ansi;
    std::optional<std::string> substitute;
    bool drop = false;
    bool strict = false;
    LineEnds line_ends = LineEnds::keep;
    bool control_z_ends = false;
    bool writes_mark = false;
    bool verbose = false;
    bool quiet = false;
    unsigned threads = 1;
    FileChoices files;
};

// Takes one of the options above; any other is not its own and changes nothing. Returns what is wrong with the
// argument, or an empty string.
std::string take_text_option(TextRequest &request, int id, const std::string &argument);

// By the forms, else by --ansi, else `otherwise`.
TextPages pages_of(const TextRequest &request, const CodePage &otherwise);

// A command that reads its input in its own way makes the decoders for it.
using MakeDecoder = std::function<std::unique_ptr<Decoder>()>;

// Converts the inputs. Returns the exit status; what went wrong has been told.
int run_text(const Usage &usage, const TextRequest &request, const TextPages &pages,
             const Transform *transform = nullptr, const MakeDecoder &make_decoder = {});

} // namespace kx
