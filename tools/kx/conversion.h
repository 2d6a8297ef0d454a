// What the commands that convert text have in common: their options, and the way from an input to the output by way of
// KX text.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "encodings.h"
#include "options.h"

namespace kx {

inline constexpr int kSubstId = 256;
inline constexpr int kAnsiId = 257;
inline constexpr int kFirstOwnId = 300; // of a command's own long options

inline constexpr Option kFromOption{'f', "from", "FORM", "the form of the input"};
inline constexpr Option kToOption{'t', "to", "FORM", "the form of the output"};
inline constexpr Option kOutputOption{'o', "output", "FILE", "write to FILE, not to standard output"};
inline constexpr Option kDropOption{'c', nullptr, nullptr, "leave out characters that do not convert"};
inline constexpr Option kSubstOption{kSubstId, "subst", "CHAR",
                                     "write CHAR (in UTF-8) for characters that do not convert"};
inline constexpr Option kAnsiOption{kAnsiId, "ansi", "PAGE",
                                    "the code page that KX text was, or is to be, written with"};

struct TextRequest {
    std::optional<Encoding> from;
    std::optional<Encoding> to;
    std::optional<CodePage> ansi;
    std::optional<std::string> substitute;
    bool drop = false;
    std::string output;
    std::vector<std::string> inputs;
};

// Takes one of the options above; any other is not its own and changes nothing. Returns what is wrong with the
// argument, or an empty string.
std::string take_text_option(TextRequest &request, int id, const std::string &argument);

// The page of the KX text between the forms, and of the KX text to be written.
struct TextPages {
    CodePage text;
    CodePage written;
};
// By the forms, else by --ansi, else `otherwise`.
TextPages pages_of(const TextRequest &request, const CodePage &otherwise);

// What a command does to the KX text on its way.
struct Transform {
    // Replaces the units of a part of the text. A new unit has the place of the first one that it was made from.
    std::function<void(DecodedText &units)> apply;
    // Whether the unit may be one character together with the next; they are then handed out in one part.
    std::function<bool(KxChar ch)> joins_next;
};

// Converts the inputs. Returns the exit status; what went wrong has been told. A command may read its input in its own
// way, by a decoder that takes the place of that of the form.
int run_text(const Usage &usage, const TextRequest &request, const TextPages &pages,
             const Transform *transform = nullptr, std::unique_ptr<Decoder> decoder = nullptr);

} // namespace kx
