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
#include "os.h"
#include "registry.h"
#include "sort.h"
#include "strip.h"

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

void print_help(std::FILE *out) {
    std::fputs("usage: kx COMMAND [OPTION]... [FILE]...\n\n", out);
    for (const kx::Command &command : kCommands)
        std::fprintf(out, "  %-10s %s\n", command.name, command.summary);
    std::fputs("\n`kx COMMAND --help` tells about one command.\n", out);
}

int run_command(char *name, int argc, char **argv) {
    const auto *const command = std::ranges::find_if(
        kCommands, [&](const kx::Command &one) { return one.run != nullptr && std::strcmp(name, one.name) == 0; });
    if (command != std::end(kCommands)) return command->run(argc, argv);
    std::fprintf(stderr, "kx: no command '%s'; `kx --help` lists them\n", name);
    return kx::kUsage;
}

int run(int argc, char **argv) {
    if (argc < 2) {
        print_help(stderr);
        return kx::kUsage;
    }
    char *const name = argv[1];
    const bool help = std::strcmp(name, "help") == 0;
    if (help && argc > 2) {
        char option[] = "--help";
        char *arguments[] = {argv[2], option, nullptr};
        return run_command(argv[2], 2, arguments);
    }
    if (help || std::strcmp(name, "--help") == 0 || std::strcmp(name, "-h") == 0) {
        print_help(stdout);
        return kx::kSuccess;
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
