#include "options.h"

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <cstring>
#include <getopt.h>
#include <vector>

#include "command.h"
#include "files.h"
#include "help.h"
#include "version.h"

namespace kx {
namespace {

constexpr int kFirstLongOnly = 256;
constexpr int kVersionId = 'V' + kFirstLongOnly * 256; // no command's own
constexpr int kHelpId = 'h';                           // of its letter
constexpr Option kHelpOption{kHelpId, "help", "[FORMAT]", nullptr};
constexpr Option kVersionOption{kVersionId, "version", nullptr, nullptr};

// As getopt_long counts arguments.
int arguments_of(const Option &option) {
    if (option.argument == nullptr) return no_argument;
    return option.argument[0] == '[' ? optional_argument : required_argument;
}

bool has_word(const char *words, const std::string &word) {
    for (const char *at = words; at != nullptr && *at != 0;) {
        const std::size_t length = std::strcspn(at, " ");
        if (word == std::string(at, length)) return true;
        at += length + std::strspn(at + length, " ");
    }
    return false;
}

// "keep, lf and crlf"
std::string in_words(const char *words) {
    std::string text = words;
    for (std::size_t at = 0; (at = text.find(' ', at)) != text.npos; at += 2)
        text.replace(at, 1, ", ");
    if (const std::size_t last = text.rfind(", "); last != text.npos) text.replace(last, 2, " and ");
    return text;
}

// As people know it: the long name, or the letter.
std::string name_of(const Option &option) {
    return option.name != nullptr ? std::string("--") + option.name : std::string{'-', static_cast<char>(option.id)};
}

// What is wrong with the argument, or an empty string.
std::string read(const Option &option, Argument &argument) {
    const std::string &text = argument.text;
    if (option.kind == Kind::foreign)
        return (option.id < kFirstLongOnly ? std::string{'-', static_cast<char>(option.id)} + ", " : "") +
               name_of(option);
    if (option.argument == nullptr || has_word(option.words, text)) return "";
    if (text.empty() && arguments_of(option) == optional_argument) return "";
    switch (option.kind) {
    case Kind::form: {
        std::optional<Encoding> form;
        std::string fault = take_encoding(form, text);
        if (form) argument.form = *form;
        return fault;
    }
    case Kind::page: {
        std::optional<CodePage> page;
        std::string fault = take_page(page, text);
        if (page) argument.page = *page;
        return fault;
    }
    case Kind::number: {
        const char *const end = text.data() + text.size();
        const auto [stop, error] = std::from_chars(text.data(), end, argument.number);
        if (error == std::errc{} && stop == end && argument.number >= option.least) return "";
        return name_of(option) + ": '" + text + "' is no number from " + std::to_string(option.least) + " up";
    }
    case Kind::word: return name_of(option) + ": no '" + text + "'; there are " + in_words(option.words);
    case Kind::file:
    case Kind::folder:
    case Kind::foreign:
    case Kind::text: break;
    }
    return "";
}

// What getopt_long has met that it does not know: what to say about it.
std::string fault_of(std::span<const Option> options, const char *word, bool lacks_argument) {
    // Of an option that it knows getopt_long tells the id, and of a letter that it does not know the letter.
    const auto known = std::ranges::find(options, optopt, &Option::id);
    if (lacks_argument && known != options.end() && known->argument != nullptr)
        return name_of(*known) + " needs " + known->argument;
    if (known != options.end()) return name_of(*known) + " takes no argument";
    if (optopt != 0) return std::string("no option '-") + static_cast<char>(optopt) + "'";
    const std::string name(word, std::strcspn(word, "="));
    std::string meant;
    for (const Option &option : options) {
        if (option.name != nullptr && std::string(option.name).starts_with(name.substr(2)))
            meant += (meant.empty() ? "" : " or --") + std::string(option.name);
    }
    return meant.empty() ? "no option '" + name + "'" : "'" + name + "' may be --" + meant;
}

} // namespace

Parsed parse_options(int argc, char **argv, const Usage &usage,
                     const std::function<std::string(int id, const Argument &argument)> &take) {
    std::vector<Option> options(usage.options.begin(), usage.options.end());
    options.insert(options.end(), {kHelpOption, kVersionOption});
    std::string letters = ":"; // faults are told here
    std::vector<option> names;
    for (const Option &option : options) {
        const int arguments = arguments_of(option);
        if (option.id < kFirstLongOnly && option.id != kHelpId) {
            letters += static_cast<char>(option.id);
            letters += arguments == no_argument ? "" : arguments == required_argument ? ":" : "::";
        }
        if (option.name != nullptr) names.push_back({option.name, arguments, nullptr, option.id});
    }
    letters += 'h';
    names.push_back({});

    optind = 0; // from the start, also for the second command of a process
    for (;;) {
        optopt = 0;
        // NOLINTNEXTLINE(concurrency-mt-unsafe): no other thread has begun yet
        const int id = getopt_long(argc, argv, letters.c_str(), names.data(), nullptr);
        if (id == -1) return {false, kSuccess, optind};
        Argument argument;
        if (optarg != nullptr) argument.text = optarg;
        if (id == '?' || id == ':')
            return {true, usage_error(usage, fault_of(options, argv[optind - 1], id == ':')), argc};
        if (id == kHelpId) {
            if (print_help(usage, argument)) return {true, kSuccess, argc};
            return {true, usage_error(usage, "--help: no '" + argument.text + "'; there are text, man, bash and zsh"),
                    argc};
        }
        if (id == kVersionId) {
            print_version();
            return {true, kSuccess, argc};
        }
        const Option &option = *std::ranges::find(options, id, &Option::id);
        std::string fault = read(option, argument);
        if (!fault.empty() && option.hint != nullptr) fault += option.hint;
        if (fault.empty()) fault = take(option.means != 0 ? option.means : id, argument);
        if (!fault.empty()) return {true, usage_error(usage, fault), argc};
    }
}

int usage_error(const Usage &usage, const std::string &what) {
    report(usage.command, what);
    std::fprintf(stderr, "`%s --help` tells how to use it\n", usage.command);
    return kUsage;
}

} // namespace kx
