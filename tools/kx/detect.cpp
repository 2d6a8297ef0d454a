#include "detect.h"

#include <algorithm>
#include <cstdio>
#include <kxdetect/detect.h>
#include <new>

#include "command.h"
#include "files.h"
#include "json.h"
#include "option_list.h"

namespace kx {

const std::size_t kBytesToGuessBy = KXDETECT_LARGEST;

namespace {

constexpr std::size_t kMostAnswers = 100; // more than there are pages
constexpr double kSure = 0.75;            // the share from which on an answer stands alone

constexpr Option kOptions[] = {option::kTop, option::kJson, option::kOutput, hidden('n', nullptr, option::kTop)};

constexpr Example kExamples[] = {
    {"kx detect --top=3 old.txt", "the three likeliest pages, with how likely each is"},
    {"kx convert -f auto -t utf-8 old.txt", "converts by the answer"},
};

constexpr Usage kUsageText{
    "kx detect",
    "[--top=N] [--json] [-o OUT] [FILE...]",
    "Tells in which code page a text is, and in which language. Reads standard input when no FILE is\n"
    "given, or when FILE is -.",
    kOptions,
    "One line an answer, the best first: FILE: PAGE LANGUAGE SHARE. The page is named as `kx convert\n"
    "--list` has it; `ascii` is a text without bytes from 80 up, and `binary` what is no text. The share is\n"
    "how likely this answer is among all, and beside a page that is not known: where none fits, all are low.\n"
    "Of the pages that decode the file to the same text the most usual one is told. No more than the first\n"
    "MiB of a file is looked at.",
    kExamples,
    "all files were read",
    "something could not be read or written",
};

struct Request {
    std::size_t top = 1;
    bool json = false;
    std::string output;
};

std::string json_of(const std::string &file, const std::vector<Guess> &guesses) {
    std::string line = "{\"file\": " + quoted(file) + ", \"answers\": [";
    const char *between = "";
    for (const Guess &one : guesses) {
        char share[16];
        std::snprintf(share, sizeof share, "%.3f", one.share);
        line += std::string(between) + "{\"page\": " + quoted(one.page) + ", \"language\": ";
        line += one.language.empty() ? "null" : quoted(one.language);
        line += std::string(", \"share\": ") + share;
        if (one.broken != 0) line += ", \"broken\": " + std::to_string(one.broken);
        line += ", \"same\": [";
        const char *comma = "";
        for (const std::string &page : one.same) {
            line += comma + quoted(page);
            comma = ", ";
        }
        line += "]}";
        between = ", ";
    }
    return line + "]}\n";
}

// "852 cs 97.3%"
std::string told(const Guess &one) {
    if (one.page == "binary") return one.page;
    char share[16];
    std::snprintf(share, sizeof share, "%.1f%%", 100 * one.share);
    std::string text = one.page + ' ' + (one.language.empty() ? "-" : one.language) + ' ' + share;
    if (one.broken != 0)
        text += " (" + std::to_string(one.broken) + (one.broken == 1 ? " byte is" : " bytes are") + " not UTF-8)";
    return text;
}

std::string lines_of(const std::string &file, const std::vector<Guess> &guesses) {
    std::string lines;
    for (const Guess &one : guesses)
        lines += file + ": " + told(one) + "\n";
    return lines;
}

enum class Done : std::uint8_t { yes, unread, unwritten };

Done detect(const std::string &path, const Request &request, Output &output) {
    Input input(tell_as(kUsageText.command), path);
    if (!input.good()) return Done::unread;
    const auto start = read_start(input, kBytesToGuessBy);
    if (!input.good()) return Done::unread;
    const std::vector<Guess> guesses = guess(start, request.top);
    const std::string text = request.json ? json_of(input.name(), guesses) : lines_of(input.name(), guesses);
    return output.write(text) ? Done::yes : Done::unwritten;
}

} // namespace

std::vector<Guess> guess(std::span<const std::uint8_t> bytes, std::size_t most) {
    std::vector<KxDetectGuess> answers(std::min(most, kMostAnswers));
    answers.resize(KxDetect(bytes.data(), bytes.size(), answers.data(), answers.size()));
    if (answers.empty()) throw std::bad_alloc();
    std::vector<Guess> guesses;
    for (const KxDetectGuess &answer : answers) {
        Guess one{answer.page, answer.language, answer.share / 1000.0, answer.broken, {}};
        for (unsigned number = 0; const char *name = KxDetectPageName(number); ++number) {
            if ((answer.same >> number & 1U) != 0 && one.page != name) one.same.emplace_back(name);
        }
        guesses.push_back(std::move(one));
    }
    return guesses;
}

std::optional<Encoding> detect_encoding(Input &input, const AutoOptions &options, const Tell &tell) {
    const auto start = read_start(input, kBytesToGuessBy);
    if (!input.good()) return std::nullopt;
    const std::string &path = input.name();
    const std::vector<Guess> guesses = guess(start);
    if (!options.yes && guesses[0].share < kSure) {
        for (const Guess &one : guesses)
            tell(path + ": " + told(one), 0);
        tell(path + ": no answer stands alone; name the form, or take the first one by --yes", 0);
        return std::nullopt;
    }
    // What is in ASCII reads the same in UTF-8.
    auto form = find_encoding(guesses[0].page == "ascii" ? "utf-8" : guesses[0].page);
    if (!form) tell(path + ": does not convert from " + guesses[0].page, 0);
    return form;
}

int run_detect(int argc, char **argv) {
    Request request;
    const Parsed parsed = parse_options(argc, argv, kUsageText, [&](int id, const Argument &argument) {
        switch (id) {
        case kTopId: request.top = argument.number; break;
        case 'o': request.output = argument; break;
        default: request.json = true;
        }
        return std::string();
    });
    if (parsed.stop) return parsed.status;
    Output output(kUsageText.command, request.output);
    if (!output.good()) return kFailure;
    int status = kSuccess;
    for (const std::string &path : operands_or_standard_input(argc, argv, parsed.first_operand)) {
        const Done done = detect(path, request, output);
        if (done == Done::unwritten) return kFailure;
        if (done == Done::unread) status = kFailure;
    }
    return output.close() ? status : kFailure;
}

} // namespace kx
