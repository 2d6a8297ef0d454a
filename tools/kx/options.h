// The command line of one command: a table of typed options, by which it is read, and of which the help, the manual
// page and the completion are written (help.h).
#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <string>

#include "encodings.h"

namespace kx {

// What an option's argument is. By this it is read and completed.
enum class Kind {
    text,   // anything; a command that wants more looks itself
    file,   // a path, `-` for a standard stream
    folder, // a path
    form,   // what `kx convert --list` lists
    page,   // a code page of that list
    number, // decimal, from `least` up
    word,   // one of `words`
    foreign // none: an option of another tool, and the hint says so
};

// NOLINTNEXTLINE(clang-analyzer-optin.performance.Padding): in the order in which tables of options are read
struct Option {
    int id;               // the short option's letter, or a number from 256 up for an option that has none
    const char *name;     // the long name without its dashes, or null
    const char *argument; // what the help calls the argument, in brackets when it may be missing; null for none
    const char *help;     // null: not in the help
    Kind kind = Kind::text;
    unsigned least = 0;          // of a number
    const char *words = nullptr; // with blanks between; for other kinds than `word` what is taken beside the kind
    const char *hint = nullptr;  // follows the message about a wrong argument
    int means = 0;               // not 0: another spelling of the option with this id
};

// The argument of an option, read as its kind says.
struct Argument {
    std::string text{}; // as it was given; empty where there is none
    Encoding form{};
    CodePage page{};
    unsigned number = 0;

    operator const std::string &() const { return text; } // NOLINT(google-explicit-constructor): mostly it is just that
};

// A first operand that says what to do.
struct Action {
    const char *name;
    const char *operands; // what follows it; may be empty
    const char *help;
};

struct Example {
    const char *line;
    const char *help;
};

struct Usage {
    const char *command;  // "kx convert"
    const char *synopsis; // what follows the command's name
    const char *about;    // one line or several
    std::span<const Option> options;
    const char *notes; // after the options; may be empty
    std::span<const Example> examples;
    const char *done;   // what exit status 0 means
    const char *failed; // and 1; 2 is a wrong command line everywhere
    std::span<const Action> actions{};
};

// Reads the options and calls `take` with the id and the argument of each; `take` returns what is wrong with it, or an
// empty string. Afterwards argv[first_operand...] are the operands. `--help`, `-h` and `--version` are known
// everywhere.
struct Parsed {
    bool stop;  // the command has nothing left to do: help was printed, or a fault was reported
    int status; // the exit status in that case
    int first_operand;
};
Parsed parse_options(int argc, char **argv, const Usage &usage,
                     const std::function<std::string(int id, const Argument &argument)> &take);

// Says what is wrong with the command line and where help is. Returns kUsage.
int usage_error(const Usage &usage, const std::string &what);

} // namespace kx
