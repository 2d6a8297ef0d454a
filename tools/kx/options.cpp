#include "options.h"

#include <algorithm>
#include <cstdio>
#include <getopt.h>
#include <vector>

#include "command.h"

namespace kx {
namespace {

constexpr int kFirstLongOnly = 256;

// As getopt_long counts arguments.
int arguments_of(const Option &option) {
    if (option.argument == nullptr) return no_argument;
    return option.argument[0] == '[' ? optional_argument : required_argument;
}

// "-o, --output=FILE", the left column of the help.
std::string spelling(const Option &option) {
    std::string text = option.id < kFirstLongOnly ? std::string("-") + static_cast<char>(option.id) : "   ";
    if (option.name != nullptr) {
        text += option.id < kFirstLongOnly ? ", --" : " --";
        text += option.name;
    }
    if (option.argument == nullptr) return text;
    const bool optional = arguments_of(option) == optional_argument;
    text += optional ? "[=" : option.name != nullptr ? "=" : " ";
    text += option.argument + (optional ? 1 : 0);
    return text;
}

void print_help(const Usage &usage) {
    std::printf("usage: %s %s\n%s\n\n", usage.command, usage.synopsis, usage.about);
    std::size_t width = 0;
    for (const Option &option : usage.options)
        width = std::max(width, option.help != nullptr ? spelling(option).size() : 0);
    for (const Option &option : usage.options) {
        if (option.help == nullptr) continue;
        std::printf("  %-*s  %s\n", static_cast<int>(width), spelling(option).c_str(), option.help);
    }
    std::printf("  %-*s  %s\n", static_cast<int>(width), "-h, --help", "show this text");
    if (*usage.notes != 0) std::printf("\n%s\n", usage.notes);
}

} // namespace

Parsed parse_options(int argc, char **argv, const Usage &usage,
                     const std::function<std::string(int id, const std::string &argument)> &take) {
    std::string letters;
    std::vector<option> names;
    for (const Option &option : usage.options) {
        const int arguments = arguments_of(option);
        if (option.id < kFirstLongOnly) {
            letters += static_cast<char>(option.id);
            letters += arguments == no_argument ? "" : arguments == required_argument ? ":" : "::";
        }
        if (option.name != nullptr) names.push_back({option.name, arguments, nullptr, option.id});
    }
    letters += 'h';
    names.push_back({"help", no_argument, nullptr, 'h'});
    names.push_back({});

    // getopt_long begins its messages with argv[0].
    std::string command = usage.command;
    argv[0] = command.data();
    for (;;) {
        // NOLINTNEXTLINE(concurrency-mt-unsafe): no other thread has begun yet
        const int id = getopt_long(argc, argv, letters.c_str(), names.data(), nullptr);
        if (id == -1) return {false, kSuccess, optind};
        if (id == 'h') {
            print_help(usage);
            return {true, kSuccess, argc};
        }
        if (id == '?') {
            std::fprintf(stderr, "`%s --help` tells how to use it\n", usage.command);
            return {true, kUsage, argc};
        }
        const std::string fault = take(id, optarg != nullptr ? optarg : "");
        if (!fault.empty()) return {true, usage_error(usage, fault), argc};
    }
}

int usage_error(const Usage &usage, const std::string &what) {
    std::fprintf(stderr, "%s: %s\n`%s --help` tells how to use it\n", usage.command, what.c_str(), usage.command);
    return kUsage;
}

} // namespace kx
