// A command of the kx tool.
#pragma once

namespace kx {

// Exit statuses of every command, as iconv(1) and sort(1) use them.
inline constexpr int kSuccess = 0;
inline constexpr int kFailure = 1; // the input or the system said no
inline constexpr int kUsage = 2;   // the command line said something that the command does not know

struct Command {
    const char *name;
    const char *summary; // one line for `kx --help`
    // As main(): argv[0] is the command's name. Returns an exit status.
    int (*run)(int argc, char **argv);
};

} // namespace kx
