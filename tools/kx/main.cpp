// kx: the library on the command line.
#include <cstdio>
#include <cstring>
#include <span>

#include "command.h"
#include "convert.h"
#include "dump.h"
#include "east_asian.h"
#include "host.h"
#include "registry.h"
#include "sort.h"
#include "strip.h"

namespace {

// One line a command; each lives in a file of its own.
constexpr kx::Command kCommands[] = {
    {"convert", "convert text between code pages, KX text and Unicode", kx::run_convert},
    {"case", "make letters capital or small", kx::run_case},
    {"width", "change the width of characters, or their kana", kx::run_width},
    {"han", "change Traditional Chinese into Simplified, and back", kx::run_han},
    {"sort", "sort lines in the order of a language", kx::run_sort},
    {"dump", "list a document stream code by code", kx::run_dump},
    {"strip", "strip a document stream to its text", kx::run_strip},
    {"codepages", "list the code pages, and those in force", kx::run_codepages},
    {"registry", "show and change the settings of the library", kx::run_registry},
    {"help", "show this text", nullptr},
};

void print_help(std::FILE *out) {
    std::fputs("usage: kx COMMAND [OPTION]... [FILE]...\n\n", out);
    for (const kx::Command &command : kCommands)
        std::fprintf(out, "  %-10s %s\n", command.name, command.summary);
    std::fputs("\n`kx COMMAND --help` tells about one command.\n", out);
}

} // namespace

int main(int argc, char **argv) {
    kx::host::prepare();
    if (argc < 2) {
        print_help(stderr);
        return kx::kUsage;
    }
    const char *name = argv[1];
    if (std::strcmp(name, "help") == 0 || std::strcmp(name, "--help") == 0 || std::strcmp(name, "-h") == 0) {
        print_help(stdout);
        return kx::kSuccess;
    }
    for (const kx::Command &command : kCommands) {
        if (command.run != nullptr && std::strcmp(name, command.name) == 0) return command.run(argc - 1, argv + 1);
    }
    std::fprintf(stderr, "kx: no command '%s'; `kx --help` lists them\n", name);
    return kx::kUsage;
}
