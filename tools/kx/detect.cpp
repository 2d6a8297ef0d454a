#include "detect.h"

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <kxdetect/detect.h>
#include <new>

#include "command.h"
#include "files.h"
#include "options.h"

namespace kx {

const std::size_t kBytesToGuessBy = KXDETECT_LARGEST;

namespace {

constexpr std::size_t kMostAnswers = 100; // more than there are pages
constexpr double kSure = 0.75;            // the share from which on an answer stands alone
constexpr int kJsonId = 256;

constexpr Option kOptions[] = {
    {'n', "top", "N", "tell the N best answers for each file, not only the best"},
    {kJsonId, "json", nullptr, "write an object of JSON for each file, with the pages that decode it alike"},
};

constexpr Usage kUsageText{
    "kx detect", "[--top=N] [--json] [FILE...]",
    "Tells in which code page a text is, and in which language. Reads standard input when no FILE is\n"
    "given, or when FILE is -.",
    kOptions,
    "One line an answer, the best first: FILE: PAGE LANGUAGE SHARE. The page is named as `kx convert\n"
    "-l` has it; `ascii` is a text without bytes from 80 up, and `binary` what is no text. The share is\n"
    "how likely this answer is among all. Of the pages that decode the file to the same text the most\n"
    "usual one is told. No more than the first MiB of a file is looked at.\n"
    "Exit status: 0 all files were read, 1 something could not be read or written, 2 the command line\n"
    "is wrong."};

struct Request {
    std::size_t top = 1;
    bool json = false;
};

std::string take_number(std::size_t &number, const std::string &text) {
    const char *const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number);
    return error != std::errc{} || stop != end || number == 0 ? "not a number from 1 up: '" + text + "'" : "";
}

std::string quoted(const std::string &text) {
    std::string result = "\"";
    for (const char letter : text) {
        char escape[8];
        if (letter == '"' || letter == '\\') {
            result += '\\';
        } else if (static_cast<unsigned char>(letter) < 0x20) {
            std::snprintf(escape, sizeof escape, "\\u%04x", static_cast<unsigned>(letter));
            result += escape;
            continue;
        }
        result += letter;
    }
    return result + '"';
}

void print_json(const std::string &file, const std::vector<Guess> &guesses) {
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
    std::printf("%s]}\n", line.c_str());
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

void print_lines(const std::string &file, const std::vector<Guess> &guesses) {
    for (const Guess &one : guesses)
        std::printf("%s: %s\n", file.c_str(), told(one).c_str());
}

bool detect(const std::string &path, const Request &request) {
    Input input(tell_as(kUsageText.command), path);
    if (!input.good()) return false;
    const auto start = read_start(input, kBytesToGuessBy);
    if (!input.good()) return false;
    const std::vector<Guess> guesses = guess(start, request.top);
    if (request.json)
        print_json(input.name(), guesses);
    else
        print_lines(input.name(), guesses);
    return true;
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
    const auto form = find_encoding(guesses[0].page == "ascii" ? "utf-8" : guesses[0].page);
    if (!form) tell(path + ": does not convert from " + guesses[0].page, 0);
    return form;
}

int run_detect(int argc, char **argv) {
    Request request;
    const Parsed parsed = parse_options(argc, argv, kUsageText, [&](int id, const std::string &argument) {
        if (id == 'n') return take_number(request.top, argument);
        request.json = true;
        return std::string();
    });
    if (parsed.stop) return parsed.status;
    int status = kSuccess;
    for (const std::string &path : operands_or_standard_input(argc, argv, parsed.first_operand)) {
        if (!detect(path, request)) status = kFailure;
    }
    return status;
}

} // namespace kx
