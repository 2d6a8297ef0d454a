// What is written from the table of a command's options: its help, its manual page, its part of the completion.
#pragma once

#include <span>
#include <string>

#include "command.h"
#include "options.h"

namespace kx {

// "-o, --output=FILE", the left column of the help.
std::string spelling(const Option &option);

// `--help` has an argument that people seldom need: text when it is missing, man, bash or zsh. False for another one.
bool print_help(const Usage &usage, const std::string &format);

// The same of the whole tool, with its commands. Completion is that of all commands.
bool print_help_of_all(const Usage &usage, std::span<const Command> commands, const std::string &format);

} // namespace kx
