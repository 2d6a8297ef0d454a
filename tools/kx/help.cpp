#include "help.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

#include "version.h"

namespace kx {
namespace {

constexpr int kFirstLongOnly = 256;
// What every command has. Neither has an argument that people need to know of here.
constexpr Option kEverywhere[] = {
    {'h', "help", nullptr, "show this text"},
    {kFirstLongOnly, "version", nullptr, "show version, compiler, kernels and the settings in force"},
};

bool has_letter(const Option &option) {
    return option.id < kFirstLongOnly;
}

bool is_optional(const Option &option) {
    return option.argument != nullptr && option.argument[0] == '[';
}

// "FILE", without the brackets of an argument that may be missing.
std::string argument_of(const Option &option) {
    std::string text = option.argument;
    if (is_optional(option)) text = text.substr(1, text.size() - 2);
    return text;
}

// "-f" and "--from"; empty where it has none.
std::string letter_of(const Option &option) {
    return has_letter(option) ? std::string{'-', static_cast<char>(option.id)} : "";
}
std::string name_of(const Option &option) {
    return option.name != nullptr ? std::string("--") + option.name : "";
}

// The options in the help, those of every command last.
std::vector<Option> shown(const Usage &usage) {
    std::vector<Option> options;
    std::ranges::copy_if(usage.options, std::back_inserter(options),
                         [](const Option &one) { return one.help != nullptr; });
    options.insert(options.end(), std::begin(kEverywhere), std::end(kEverywhere));
    return options;
}

std::string spelling(const Action &action) {
    return std::string(action.name) + (*action.operands != 0 ? " " : "") + action.operands;
}

void append(std::string &text, std::initializer_list<std::string_view> parts) {
    for (const std::string_view part : parts)
        text += part;
}

std::string joined(std::initializer_list<std::string_view> parts) {
    std::string text;
    append(text, parts);
    return text;
}

std::string replaced(std::string text, const std::string &what, const std::string &by) {
    for (std::size_t at = 0; (at = text.find(what, at)) != text.npos; at += by.size())
        text.replace(at, what.size(), by);
    return text;
}

// ---- Help ----

template <class Row> std::string table(const std::vector<Row> &rows) {
    std::size_t width = 0;
    for (const Row &row : rows)
        width = std::max(width, spelling(row).size());
    std::string text;
    for (const Row &row : rows) {
        const std::string left = spelling(row);
        append(text, {"  ", left, std::string(width - left.size() + 2, ' '),
                      replaced(row.help, "\n", joined({"\n", std::string(width + 4, ' ')})), "\n"});
    }
    return text;
}

std::string statuses(const Usage &usage) {
    return std::string("Exit status: 0 ") + usage.done + "; 1 " + usage.failed + "; 2 the command line is wrong.";
}

// Lines of at most 100 columns.
std::string wrapped(const std::string &text) {
    std::string result;
    std::size_t column = 0;
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t end = std::min(text.find(' ', at), text.size());
        if (column != 0 && column + 1 + end - at > 100) column = 0;
        result += at == 0 ? "" : column == 0 ? "\n" : " ";
        result += text.substr(at, end - at);
        column += end - at + 1;
        at = end + 1;
    }
    return result;
}

std::string help_text(const Usage &usage) {
    std::string text = joined({"usage: ", usage.command, " ", usage.synopsis, "\n", usage.about, "\n\n"});
    if (!usage.actions.empty()) text += table(std::vector(usage.actions.begin(), usage.actions.end())) + "\n";
    text += table(shown(usage));
    if (*usage.notes != 0) append(text, {"\n", usage.notes, "\n"});
    text += usage.examples.size() == 1 ? "\nExample:\n" : "\nExamples:\n";
    for (const Example &example : usage.examples)
        append(text, {"  ", example.line, "\n      ", example.help, "\n"});
    return text + "\n" + wrapped(statuses(usage)) + "\n";
}

// ---- Manual page ----

// A dash is one that can be typed; a line that starts with a dot or a quote is no request.
std::string roff(const std::string &text) {
    std::string result;
    for (const char letter : text) {
        const bool starts = result.empty() || result.back() == '\n';
        if (letter == '\\') {
            result += "\\e";
        } else if (letter == '-') {
            result += "\\-";
        } else if (letter == '`' || letter == '\'' || letter == '^' || letter == '~') {
            result += letter == '`' ? "\\(ga" : letter == '\'' ? "\\(aq" : letter == '^' ? "\\(ha" : "\\(ti";
        } else {
            if (starts && letter == '.') result += "\\&";
            result += letter;
        }
    }
    return result;
}

// Without the blanks at the start of lines, which end a paragraph there.
std::string roff_lines(std::string text) {
    while (text.find("\n ") != text.npos)
        text = replaced(text, "\n ", "\n");
    return roff(replaced(text, "\n\n", "\n"));
}

// "converts text from one form to another"
std::string summary_of(const Usage &usage) {
    std::string text = usage.about;
    text.erase(std::min({text.find(". "), text.find(".\n"), text.find(':'), text.size()}));
    if (text.ends_with('.')) text.pop_back();
    text[0] = static_cast<char>(text[0] | 0x20);
    return replaced(text, "\n", " ");
}

std::string page_name(const Usage &usage) {
    return replaced(usage.command, " ", "-");
}

std::string manual(const Usage &usage, const std::string &see_also) {
    const std::string name = page_name(usage);
    std::string title = name;
    std::ranges::transform(title, title.begin(), [](char letter) {
        return 'a' <= letter && letter <= 'z' ? static_cast<char>(letter & ~0x20) : letter;
    });
    std::string text = ".TH \"" + title + "\" 1 \"\" \"kxstr " + kVersion + "\" \"kxstr\"\n.nh\n.ad l\n";
    append(text, {".SH NAME\n", roff(name), " \\- ", roff(summary_of(usage)), "\n"});
    append(text, {".SH SYNOPSIS\n.B ", usage.command, "\n", roff(usage.synopsis), "\n"});
    append(text, {".SH DESCRIPTION\n", roff_lines(usage.about), "\n"});
    for (const Action &action : usage.actions) {
        append(text, {".TP\n.B ", roff(action.name), "\n"});
        if (*action.operands != 0) text.insert(text.size() - 1, "\\fR " + roff(action.operands));
        append(text, {roff_lines(action.help), "\n"});
    }
    text += ".SH OPTIONS\n";
    for (const Option &option : shown(usage)) {
        std::string head = has_letter(option) ? std::string("\\fB\\-") + static_cast<char>(option.id) : "\\fB";
        if (option.name != nullptr) append(head, {has_letter(option) ? "\\fR, \\fB" : "", "\\-\\-", roff(option.name)});
        if (option.argument != nullptr) {
            const char *const joint = option.name != nullptr ? "=" : " ";
            append(head, {"\\fR", is_optional(option) ? "[" : "", joint, "\\fI", roff(argument_of(option)), "\\fR",
                          is_optional(option) ? "]" : ""});
        } else {
            head += "\\fR";
        }
        append(text, {".TP\n", head, "\n", roff_lines(option.help), "\n"});
    }
    if (*usage.notes != 0) append(text, {".SH NOTES\n", roff_lines(usage.notes), "\n"});
    text += ".SH EXAMPLES\n";
    for (const Example &example : usage.examples)
        append(text, {".TP\n.B ", roff(example.line), "\n", roff_lines(example.help), "\n"});
    append(text, {".SH EXIT STATUS\n.TP\n.B 0\n", roff(usage.done), "\n.TP\n.B 1\n", roff(usage.failed),
                  "\n.TP\n.B 2\nthe command line is wrong\n"});
    text += ".SH ENVIRONMENT\n.TP\n.B NO_COLOR\nwhen it is set and not empty, nothing is coloured on a terminal\n"
            ".TP\n.BR LC_ALL \", \" LC_CTYPE \", \" LANG\nthe system whose code pages and country are taken\n"
            ".TP\n.BR KX_ANSI_CODEPAGE \", \" KX_OEM_CODEPAGE \", \" KX_DBCS \", \" KX_SYSTEM_LANGID \", \" "
            "KX_KEYBOARD_LANGID \", \" KX_REGISTRY \", \" KXSTR_KERNELS\n"
            "each instead of what the locale or the processor says; \n"
            ".B kx \\-\\-version\ntells which are in force\n";
    return replaced(text, "says; \n", "says;\n") + ".SH SEE ALSO\n" + see_also;
}

// ---- Completion ----

// In single quotes of a shell.
std::string quoted(const std::string &text) {
    return joined({"'", replaced(text, "'", "'\\''"), "'"});
}

std::string action_names(const Usage &usage) {
    std::string names;
    for (const Action &action : usage.actions)
        append(names, {names.empty() ? "" : " ", action.name});
    return names;
}

std::string bash_part(const Usage &usage) {
    std::string options, cases;
    for (const Option &option : shown(usage)) {
        const std::string letter = letter_of(option), name = name_of(option);
        const std::string both = joined({letter, letter.empty() || name.empty() ? "" : " ", name});
        append(options, {options.empty() ? "" : " ", both});
        if (option.argument == nullptr) continue;
        // One that may be missing is never a word of its own.
        append(cases, {"        ", is_optional(option) ? joined({name, "="}) : replaced(both, " ", " | "), ") "});
        switch (option.kind) {
        case Kind::form:
        case Kind::page:
            append(cases, {"kind=forms words=", quoted(option.words != nullptr ? option.words : "")});
            break;
        case Kind::folder: cases += "kind=folders"; break;
        case Kind::file: cases += "kind=files"; break;
        default:
            if (option.words != nullptr)
                append(cases, {"kind=words words=", quoted(option.words)});
            else
                cases += "kind=none";
        }
        cases += " ;;\n";
    }
    const std::string command = std::strchr(usage.command, ' ') + 1;
    return joined({"    ", command, ")\n        options='", options, "'\n        actions='", action_names(usage),
                   "'\n        case $before in\n", cases, "        esac\n        ;;\n"});
}

std::string zsh_part(const Usage &usage) {
    const std::string command = std::strchr(usage.command, ' ') + 1;
    std::string text = "  " + command + ")\n    _arguments -s -S";
    for (const Option &option : shown(usage)) {
        std::string values;
        if (option.argument != nullptr) {
            values = (is_optional(option) ? "::" : ":") + argument_of(option) + ":";
            switch (option.kind) {
            case Kind::form:
            case Kind::page: append(values, {"{_kx_forms ", option.words != nullptr ? option.words : "", "}"}); break;
            case Kind::folder: values += "_files -/"; break;
            case Kind::file: values += "_files"; break;
            default:
                if (option.words != nullptr) append(values, {"(", option.words, ")"});
            }
        }
        const std::string help =
            joined({"[", replaced(replaced(replaced(option.help, "\n", " "), "[", "\\["), "]", "\\]"), "]", values});
        // What follows the name directly, or as the next word.
        const char *const letter_joint = option.argument == nullptr ? "" : is_optional(option) ? "-" : "+";
        const char *const name_joint = option.argument == nullptr ? "" : is_optional(option) ? "=-" : "=";
        const std::string letter = letter_of(option), name = name_of(option);
        if (letter.empty() || name.empty()) {
            append(text,
                   {" \\\n      ", quoted(joined({letter, name, name.empty() ? letter_joint : name_joint, help}))});
        } else {
            append(text, {" \\\n      '(", letter, " ", name, ")'{", letter, letter_joint, ",", name, name_joint, "}",
                          quoted(help)});
        }
    }
    if (!usage.actions.empty()) append(text, {" \\\n      '1:action:(", action_names(usage), ")'"});
    return text + " \\\n      '*:file:_files'\n    ;;\n";
}

constexpr const char *kBashStart = R"sh(# bash completion of kx, written by `kx --help=bash`.

_kx() {
    local cur=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]}
    local kind=operand words='' options='' actions=''
    # Readline takes --eol=lf for three words.
    if [[ $cur == = ]]; then
        [[ $before == --in-place || $before == --check ]] && before+='='
        cur=''
    elif [[ $before == = ]]; then
        before=${COMP_WORDS[COMP_CWORD - 2]}
        [[ $before == --in-place || $before == --check ]] && before+='='
    fi
    case ${COMP_WORDS[1]} in
)sh";

constexpr const char *kBashEnd = R"sh(    if ((COMP_CWORD == 1)); then
        kind=words words=$commands
    elif [[ $kind == operand && $cur == -* ]]; then
        kind=words words=$options
    elif [[ $kind == operand && -n $actions ]] && ((COMP_CWORD == 2)); then
        kind=words words=$actions
    elif [[ $kind == forms ]]; then
        words+=" $("${COMP_WORDS[0]}" convert --list 2>/dev/null |
            awk '/^These/ { all = 1 } /^  / { print all ? $0 : $1 }')"
        kind=words
    fi
    COMPREPLY=()
    case $kind in
    none) ;;
    words) mapfile -t COMPREPLY < <(compgen -W "$words" -- "$cur") ;;
    folders) mapfile -t COMPREPLY < <(compgen -d -- "$cur") ;;
    *) mapfile -t COMPREPLY < <(compgen -f -- "$cur") ;;
    esac
    [[ $kind == words ]] || compopt -o filenames 2>/dev/null
    return 0
}
complete -F _kx kx
)sh";

constexpr const char *kZshStart = R"sh(#compdef kx
# zsh completion of kx, written by `kx --help=zsh`.

_kx_forms() {
  local -a forms=($@ ${(f)"$(kx convert --list 2>/dev/null |
    awk '/^These/ { all = 1 } /^  / { print all ? $0 : $1 }' | tr ' ' '\n')"})
  compadd -a forms
}

_kx() {
  local -a commands
)sh";

constexpr const char *kZshCommands = R"sh(
  )
  if (( CURRENT == 2 )); then
    _describe command commands
    _arguments '--help[show the commands]' '--version[show version, compiler, kernels and the settings in force]'
    return
  fi
  shift words
  (( CURRENT-- ))
  case $words[1] in
  help) _describe command commands ;;
)sh";

constexpr const char *kZshEnd = R"sh(  esac
}

_kx "$@"
)sh";

} // namespace

std::string spelling(const Option &option) {
    std::string text = has_letter(option) ? std::string("-") + static_cast<char>(option.id) : "   ";
    if (option.name != nullptr) append(text, {has_letter(option) ? ", --" : " --", option.name});
    if (option.argument == nullptr) return text;
    append(text, {is_optional(option)      ? "[="
                  : option.name != nullptr ? "="
                                           : " ",
                  argument_of(option), is_optional(option) ? "]" : ""});
    return text;
}

bool print_help(const Usage &usage, const std::string &format) {
    std::string text;
    if (format.empty() || format == "text") text = help_text(usage);
    if (format == "man") text = manual(usage, ".BR kx (1)\n");
    if (format == "bash") text = bash_part(usage);
    if (format == "zsh") text = zsh_part(usage);
    std::fputs(text.c_str(), stdout);
    return !text.empty();
}

bool print_help_of_all(const Usage &usage, std::span<const Command> commands, const std::string &format) {
    Usage all = usage;
    std::vector<Action> actions;
    std::string names, see_also;
    for (const Command &command : commands) {
        actions.push_back({command.name, "", command.summary});
        append(names, {names.empty() ? "" : " ", command.name});
        if (command.run != nullptr)
            append(see_also, {see_also.empty() ? "" : ",\n", ".BR kx\\-", command.name, " (1)"});
    }
    all.actions = actions;
    if (format == "man") {
        std::fputs(manual(all, see_also + "\n").c_str(), stdout);
        return true;
    }
    if (format != "bash" && format != "zsh") {
        if (!format.empty() && format != "text") return false;
        std::fputs(help_text(all).c_str(), stdout);
        return true;
    }
    const bool is_bash = format == "bash";
    std::fputs(is_bash ? kBashStart : kZshStart, stdout);
    if (is_bash) {
        std::printf("    help)\n        actions='%s'\n        ;;\n", names.c_str());
    } else {
        std::fputs("  commands=(", stdout);
        for (const Command &command : commands)
            std::printf("\n    %s", quoted(std::string(command.name) + ":" + command.summary).c_str());
        std::fputs(kZshCommands, stdout);
    }
    std::string option = "--help=" + format;
    for (const Command &command : commands) {
        std::string name = command.name;
        char *arguments[] = {name.data(), option.data(), nullptr};
        if (command.run != nullptr) command.run(2, arguments);
    }
    if (is_bash) std::printf("    esac\n    local commands='%s --help --version'\n", names.c_str());
    std::fputs(is_bash ? kBashEnd : kZshEnd, stdout);
    return true;
}

} // namespace kx
