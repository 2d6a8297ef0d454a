// The command line of one command: getopt_long(3) over a table that also prints the help.
#pragma once

#include <functional>
#include <span>
#include <string>

namespace kx {

struct Option {
    int id;               // the short option's letter, or a number from 256 up for an option that has none
    const char *name;     // the long name without its dashes, or null
    const char *argument; // what the help calls the argument, in brackets when it may be missing; null for none
    const char *help;     // null: not in the help
};

struct Usage {
    const char *command;  // "kx convert"
    const char *synopsis; // what follows the command's name
    const char *about;    // one line or several
    std::span<const Option> options;
    const char *notes; // printed after the options; may be empty
};

// Reads the options and calls `take` with the id and the argument (empty where there is none) of each; `take` returns
// what is wrong with it, or an empty string. Afterwards argv[first_operand...] are the operands. `--help` and `-h` are
// known everywhere.
struct Parsed {
    bool stop;  // the command has nothing left to do: help was printed, or a fault was reported
    int status; // the exit status in that case
    int first_operand;
};
Parsed parse_options(int argc, char **argv, const Usage &usage,
                     const std::function<std::string(int id, const std::string &argument)> &take);

// Says what is wrong with the command line and where help is. Returns kUsage.
int usage_error(const Usage &usage, const std::string &what);

} // namespace kx
