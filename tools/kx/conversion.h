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
#include "option_list.h"

namespace kx {

// Of all commands that convert text.
inline constexpr std::array kTextOptions{
    option::kTo,   option::kOutput, option::kInPlace, option::kOutputDir, option::kRecursive, option::kFilesFrom,
    option::kNull, option::kJobs,   option::kDrop,    option::kSubst,     option::kStrict,    option::kAnsi,
    option::kEol,  option::kEof,    option::kBom,     option::kVerbose,   option::kQuiet,
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
std::string take_text_option(TextRequest &request, int id, const Argument &argument);

// By the forms, else by --ansi, else `otherwise`.
TextPages pages_of(const TextRequest &request, const CodePage &otherwise);

// A command that reads its input in its own way makes the decoders for it.
using MakeDecoder = std::function<std::unique_ptr<Decoder>()>;

// Converts the inputs. Returns the exit status; what went wrong has been told.
int run_text(const Usage &usage, const TextRequest &request, const TextPages &pages,
             const Transform *transform = nullptr, const MakeDecoder &make_decoder = {});

} // namespace kx
