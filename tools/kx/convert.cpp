#include "convert.h"

#include "command.h"
#include "conversion.h"
#include "detect.h"
#include "files.h"

namespace kx {
namespace {

constexpr auto kOptions = with_text_options({
    with_words(option::kFrom, "auto", "the form of the input; auto: what `kx detect` tells"), option::kYes,
    option::kList, hidden('l', nullptr, option::kList), // as in iconv(1)
});

constexpr Example kExamples[] = {
    {"kx convert -f 852 -t utf-8 old.txt -o new.txt", "one file"},
    {"kx convert -f auto -t utf-8 --eol=lf -r old -O new", "a folder, each file by what its bytes tell"},
};

constexpr Usage kUsageText{
    "kx convert",
    "-f FROM -t TO [-o OUT | -i | -O DIR] [OPTION]... [FILE...]",
    "Converts text from one form to another. Reads standard input when no FILE is given, or when\n"
    "FILE is -.",
    kOptions,
    "A character that does not convert ends the work on its file: its line and column, and its place\n"
    "in bytes from 0, are told. What came before it is written to standard output; a file stays what\n"
    "it was. The other files are done, and the exit status is 1.\n"
    "What the library has no table for the system may have: koi8-r, iso-8859-15, euc-jp ... (see -l).\n"
    "-f auto takes the form that `kx detect` tells for each FILE, and fails when two answers are close.\n"
    "Tab, line feed, form feed and carriage return are the same in all forms. The other control\n"
    "characters are kept, too; in KX text those of a DOS code page are glyphs.\n"
    "A byte order mark at the start of a file is skipped; none is written without --bom.\n"
    "KX text does not say which code page its East Asian characters and the bytes without a KX\n"
    "character belong to. It is PAGE; else the code page on the other side; else the ANSI code\n"
    "page of the locale.\n"
    "In a document stream the line ends, spaces, hyphens and characters are text. Attributes go to\n"
    "the KX forms only; the other codes are left out. A code that lies about its size does not\n"
    "convert; `kx dump` tells more. Streams are written without a terminator; one at the end of the\n"
    "input is skipped.",
    kExamples,
    "all was converted",
    "something was not, or could not be read or written",
};

} // namespace

int run_convert(int argc, char **argv) {
    TextRequest request;
    bool yes = false;
    bool list = false;
    const Parsed parsed = parse_options(argc, argv, kUsageText, [&](int id, const Argument &argument) {
        list = list || id == kListId;
        yes = yes || id == kYesId;
        if (id == 'f' && argument.text == "auto") {
            request.from.reset();
            request.automatic = AutoOptions{};
            return std::string();
        }
        if (id == 'f') request.automatic.reset();
        return take_text_option(request, id, argument);
    });
    if (parsed.stop) return parsed.status;
    if (list) return write_text(kUsageText.command, request.files.output, list_of_encodings()) ? kSuccess : kFailure;
    if (request.automatic) request.automatic->yes = yes;
    if ((!request.from && !request.automatic) || !request.to)
        return usage_error(kUsageText, "-f FROM and -t TO are both needed");
    request.files.operands = {argv + parsed.first_operand, argv + argc};
    return run_text(kUsageText, request, pages_of(request, system_page()));
}

} // namespace kx
