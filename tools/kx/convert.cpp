#include "convert.h"

#include <cstdio>

#include "command.h"
#include "conversion.h"
#include "detect.h"
#include "files.h"

namespace kx {
namespace {

constexpr int kYesId = kFirstOwnId;

constexpr Option kOptions[] = {
    kFromOption,
    kToOption,
    kOutputOption,
    kDropOption,
    kSubstOption,
    kAnsiOption,
    {'l', "list", nullptr, "list the forms and the code pages"},
    {kYesId, "yes", nullptr, "with -f auto: take the best answer, though others are close"},
    {'v', "verbose", nullptr, "with -f auto: tell the form of each FILE"},
};

constexpr Usage kUsageText{
    "kx convert", "-f FROM -t TO [-c | --subst=CHAR] [-o OUT] [FILE...]",
    "Converts text from one form to another, by way of KX text. Reads standard input when no\n"
    "FILE is given, or when FILE is -.",
    kOptions,
    "A character that does not convert ends the work: its place in the input, in bytes from 0, is\n"
    "told, what came before it is written, and the exit status is 1.\n"
    "-f auto takes the form that `kx detect` tells for each FILE, and fails when two answers are close.\n"
    "Tab, line feed, form feed and carriage return are the same in all forms. The other control\n"
    "characters are kept, too, but in a DOS code page their bytes stand for glyphs.\n"
    "A byte order mark at the start of a file is skipped; none is written.\n"
    "KX text does not say which code page its East Asian characters and the bytes without a KX\n"
    "character belong to. It is PAGE; else the code page on the other side; else the ANSI code\n"
    "page of the locale.\n"
    "In a document stream the line ends, spaces, hyphens and characters are text. Attributes go to\n"
    "the KX forms only; the other codes are left out. A code that lies about its size does not\n"
    "convert; `kx dump` tells more. Streams are written without a terminator; one at the end of the\n"
    "input is skipped.\n"
    "Exit status: 0 all was converted, 1 something was not or could not be read or written, 2 the\n"
    "command line is wrong."};

// The form of all inputs; nothing when they have none, or not the same, and that has been told.
std::optional<Encoding> detect_encodings(const std::vector<std::string> &paths, const AutoOptions &options) {
    std::optional<Encoding> form;
    for (const std::string &path : paths) {
        const std::optional<Encoding> own = detect_encoding(kUsageText.command, path, options);
        if (!own) return std::nullopt;
        if (form && *form != *own) {
            report(kUsageText.command,
                   path + ": is not in " + name_of(*form) + " as what is before it; convert it apart");
            return std::nullopt;
        }
        form = own;
    }
    return form;
}

} // namespace

int run_convert(int argc, char **argv) {
    TextRequest request;
    AutoOptions automatic;
    bool is_automatic = false;
    bool list = false;
    const Parsed parsed = parse_options(argc, argv, kUsageText, [&](int id, const std::string &argument) {
        list = list || id == 'l';
        automatic.yes = automatic.yes || id == kYesId;
        automatic.verbose = automatic.verbose || id == 'v';
        if (id == 'f') is_automatic = argument == "auto";
        if (id == 'f' && is_automatic) return std::string();
        return take_text_option(request, id, argument);
    });
    if (parsed.stop) return parsed.status;
    if (list) {
        std::fputs(list_of_encodings().c_str(), stdout);
        return kSuccess;
    }
    if ((!request.from && !is_automatic) || !request.to)
        return usage_error(kUsageText, "-f FROM and -t TO are both needed");
    request.inputs = operands_or_standard_input(argc, argv, parsed.first_operand);
    if (is_automatic) {
        request.from = detect_encodings(request.inputs, automatic);
        if (!request.from) return kFailure;
    }
    return run_text(kUsageText, request, pages_of(request, system_page()));
}

} // namespace kx
