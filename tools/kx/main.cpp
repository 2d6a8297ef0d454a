// kx: the library on the command line.
#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <exception>
#include <iterator>
#include <string>

#include "chart.h"
#include "command.h"
#include "convert.h"
#include "detect.h"
#include "dump.h"
#include "east_asian.h"
#include "files.h"
#include "help.h"
#include "near.h"
#include "os.h"
#include "registry.h"
#include "sort.h"
#include "strip.h"
#include "version.h"

namespace {

// One line a command.
constexpr kx::Command kCommands[] = {
    {"convert", "convert text between code pages, KX text and Unicode", kx::run_convert},
    {"detect", "tell in which code page and language a text is", kx::run_detect},
    {"case", "make letters capital or small", kx::run_case},
    {"width", "change the width of characters, or their kana", kx::run_width},
    {"han", "change Traditional Chinese into Simplified, and back", kx::run_han},
    {"sort", "sort lines in the order of a language", kx::run_sort},
    {"dump", "list a document stream code by code", kx::run_dump},
    {"strip", "strip a document stream to its text", kx::run_strip},
    {"codepages", "list the code pages, and those in force", kx::run_codepages},
    {"chart", "write the character set as code charts for a browser", kx::run_chart},
    {"registry", "show and change the settings of the library", kx::run_registry},
    {"help", "show this text, or that of a command", nullptr},
};

constexpr kx::Example kExamples[] = {
    {"kx convert -f 852 -t utf-8 old.txt -o new.txt", "a text in code page 852 becomes UTF-8"},
    {"kx detect old.txt", "tells what old.txt is in"},
};

constexpr kx::Usage kUsageText{
    "kx",
    "COMMAND [OPTION]... [FILE]...",
    "Converts, compares and sorts text in old code pages and in KX text.",
    {},
    "`kx COMMAND --help` tells about one command. --help=man writes its manual page; `kx --help=bash`\n"
    "and `kx --help=zsh` write the completion for a shell.",
    kExamples,
    "done",
    "something could not be done, read or written",
};

int run_command(char *name, int argc, char **argv) {
    const auto *const command = std::ranges::find_if(
        kCommands, [&](const kx::Command &one) { return one.run != nullptr && std::strcmp(name, one.name) == 0; });
    if (command != std::end(kCommands)) return command->run(argc, argv);
    std::string fault = std::string("no command '") + name + "'; `kx --help` lists them";
    for (const kx::Command &one : kCommands)
        if (kx::edit_distance(one.name, name) <= std::strlen(one.name) / 3)
            fault.append("; nearest: ").append(one.name);
    kx::report("kx", fault);
    return kx::kUsage;
}

int run(int argc, char **argv) {
    if (argc < 2) {
        std::fputs("usage: kx COMMAND [OPTION]... [FILE]...\n\n", stderr);
        for (const kx::Command &command : kCommands)
            std::fprintf(stderr, "  %-10s %s\n", command.name, command.summary);
        std::fputs("\n`kx --help` tells more\n", stderr);
        return kx::kUsage;
    }
    char *const name = argv[1];
    const std::string word = name;
    if (word == "help" && argc > 2 && argv[2][0] != '-') {
        char option[] = "--help";
        char *arguments[] = {argv[2], option, nullptr};
        return run_command(argv[2], 2, arguments);
    }
    if (word == "--version") {
        kx::print_version();
        return kx::kSuccess;
    }
    const bool has_format = word.starts_with("--help=");
    if (word == "help" || word == "--help" || word == "-h" || has_format) {
        const std::string format = has_format ? word.substr(std::strlen("--help=")) : "";
        if (kx::print_help_of_all(kUsageText, kCommands, format)) return kx::kSuccess;
        return kx::usage_error(kUsageText, "--help: no '" + format + "'; there are text, man, bash and zsh");
    }
    return run_command(name, argc - 1, argv + 1);
}

} // namespace

int main(int argc, char **argv) {
    kx::os::prepare(argc, argv);
    int status = kx::kFailure;
    try {
        status = run(argc, argv);
    } catch (const std::exception &fault) { // no memory; on Windows a name that is no Unicode
        kx::report("kx", fault.what());
    }
    // What was printed may still meet a full disk, or a pipe that nobody reads.
    const bool flushed = std::fflush(stdout) == 0;
    if (flushed && std::ferror(stdout) == 0) return status;
    if (!flushed && errno == EPIPE) return kx::kFailure; // who reads it has seen enough
    kx::report("kx", "cannot write to (standard output)", flushed ? 0 : errno);
    return status == kx::kSuccess ? kx::kFailure : status;
}
