#include "sort.h"

#include <algorithm>
#include <clocale>
#include <new>
#include <stdexcept>
#include <thread>

#include "command.h"
#include "languages.h"
#include "option_list.h"
#include "sort_memory.h"
#include "sort_stream.h"

namespace kx {
namespace {

// Told to those who know it from there.
constexpr Option foreign(int id, const char *name, const char *argument = nullptr) {
    return {
        id, name, argument, nullptr, Kind::foreign, 0, nullptr, " is an option of sort(1) that kx sort does not have"};
}

constexpr Option form() {
    Option option = said(option::kFrom, "the form of the input and the output; utf-8 when not given");
    option.hint = " (-f is the form: what it is to sort(1) is --ignore-case)";
    return option;
}

constexpr Option kOptions[] = {
    said(option::kLanguage, "the language: cs, cs_CZ.UTF-8, czech or CZ; else that of the locale"),
    said(option::kList, "list the languages, with their names and rules"),
    form(),
    option::kIgnoreCase,
    option::kKana,
    option::kKey,
    option::kFieldSeparator,
    option::kBlanks,
    option::kNumeric,
    option::kReverse,
    option::kStable,
    option::kUnique,
    option::kCheckFirst,
    option::kCheckQuietly,
    option::kCheck,
    option::kMerge,
    option::kZeroEnds,
    option::kOutput,
    option::kJobs,
    option::kStrict,
    option::kKeys,
    hidden(kParallelId, "parallel", option::kJobs),
    foreign('d', "dictionary-order"),
    foreign('g', "general-numeric-sort"),
    foreign(kForeignId, "human-numeric-sort"),
    foreign('i', "ignore-nonprinting"),
    foreign('M', "month-sort"),
    foreign('R', "random-sort"),
    foreign('V', "version-sort"),
    foreign('S', "buffer-size", "SIZE"),
    foreign('T', "temporary-directory", "FOLDER"),
    foreign(kForeignId + 2, "batch-size", "N"),
    foreign(kForeignId + 3, "compress-program", "PROGRAM"),
    foreign(kForeignId + 4, "debug"),
    foreign(kForeignId + 5, "files0-from", "FILE"),
    foreign(kForeignId + 6, "random-source", "FILE"),
    foreign(kForeignId + 7, "sort", "WORD"),
};

constexpr Example kExamples[] = {
    {"kx sort -l czech -f 852 names.txt -o sorted.txt", "lines in code page 852, in Czech order"},
    {"kx sort -l de -t , -k 2,2 -u table.csv", "by the second field, each only once"},
};

constexpr Usage kUsageText{
    kSortCommand,
    "[-l NAME] [OPTION]... [FILE...]",
    "Sorts lines in the order of a language: by letters, then diacritics, then case. Reads\n"
    "standard input when no FILE is given, or when FILE is -.",
    kOptions,
    "Keys, fields and flags are those of sort(1); f in a key ignores case. A key without flags takes\n"
    "those of the options. Equal lines keep their order, with -r, too. Lines are written as they were\n"
    "read; a last line without a line end gets one. A carriage return before the line end does not\n"
    "count, nor does what follows a zero character. A character that KX lacks sorts behind all others,\n"
    "by its code point.\n"
    "The letters of sort(1) mean the same here as there; -f, -l, -o and -j are those of the other commands.\n"
    "The input is held in memory. What does not fit can be sorted by its keys, which compare as\n"
    "bytes: kx sort -l NAME --keys FILE | LC_ALL=C sort -s -t TAB -k 1,1 | cut -f 2-\n"
    "docs/sorting.md tells where that order differs.",
    kExamples,
    "all was sorted, or is in order",
    "it is not, or something does not fit or could not be read or written",
};

struct Key {
    SortPart part;
    bool has_flags;
};

// The command line as it stands.
struct Arguments {
    const Language *language = nullptr;
    Encoding form{EncodingKind::utf8, {}};
    bool ignore_case = false;
    bool kana_counts = false;
    bool skip_blanks = false;
    bool numeric = false;
    bool reverse = false;
    bool stable = false;
    bool zero_ends = false;
    std::vector<Key> keys;
    std::optional<std::string> separator;
    enum class Work { sort, check, check_quietly, merge, keys, list } work = Work::sort;
    SortRequest request;
};

using Work = Arguments::Work;

std::string take_work(Arguments &arguments, Work work) {
    const auto is_check = [](Work one) { return one == Work::check || one == Work::check_quietly; };
    const bool first = arguments.work == Work::sort || arguments.work == work;
    if (!first && !(is_check(arguments.work) && is_check(work)))
        return "only one of --keys, --list, -c and -m makes sense";
    arguments.work = work;
    return "";
}

std::string take_form(Arguments &arguments, const Argument &name) {
    // A line end of the streams may also stand inside their other codes.
    if (is_kx_encoding(name.form) && name.form.kind != EncodingKind::kx)
        return "'" + name.text + "' has no lines; convert it first";
    if (name.form.kind == EncodingKind::utf16) return "utf-16le or utf-16be?";
    if (goes_through_unicode(name.form)) return "'" + name.text + "' is not sorted; convert it to UTF-8 first";
    arguments.form = name.form;
    return "";
}

unsigned threads(unsigned wanted) {
    constexpr unsigned most = 64; // more have nothing to do
    return std::min(wanted != 0 ? wanted : std::max(std::thread::hardware_concurrency(), 1U), most);
}

std::string take_option(Arguments &arguments, int id, const Argument &argument) {
    const std::string &text = argument.text;
    switch (id) {
    case 'l': return take_language(arguments.language, text);
    case 'f': return take_form(arguments, argument);
    case 'k': {
        Key &key = arguments.keys.emplace_back();
        return read_key(text, key.part, key.has_flags);
    }
    case 't': arguments.separator = text; return "";
    case 'b': arguments.skip_blanks = true; return "";
    case 'n': arguments.numeric = true; return "";
    case 'r': arguments.reverse = true; return "";
    case 's': arguments.stable = true; return "";
    case 'u': arguments.request.unique = true; return "";
    case 'z': arguments.zero_ends = true; return "";
    case 'o': arguments.request.output = text; return "";
    case 'j': arguments.request.jobs = threads(argument.number); return "";
    case 'c':
    case kCheckId:
        return take_work(arguments, text.empty() || text == "diagnose-first" ? Work::check : Work::check_quietly);
    case 'C': return take_work(arguments, Work::check_quietly);
    case 'm': return take_work(arguments, Work::merge);
    case kKeysId: return take_work(arguments, Work::keys);
    case kListId: return take_work(arguments, Work::list);
    case kIgnoreCaseId: arguments.ignore_case = true; return "";
    case kKanaId: arguments.kana_counts = true; return "";
    case kStrictId: arguments.request.strict = true; return "";
    default: return "";
    }
}

// What is wrong with the options taken together.
std::string fault_of(const Arguments &arguments) {
    if (arguments.work == Work::check || arguments.work == Work::check_quietly) {
        if (arguments.request.inputs.size() > 1)
            return "-c checks one file, not '" + arguments.request.inputs[1] + "', too";
        return arguments.request.output.empty() ? "" : "-c writes nothing; leave -o out";
    }
    if (arguments.work != Work::keys) return "";
    if (arguments.reverse || arguments.request.unique) return "--keys does not sort; give -r and -u to the sorter";
    if (!arguments.keys.empty() || arguments.numeric || arguments.skip_blanks || arguments.separator)
        return "--keys makes keys of whole lines, without -k, -t, -b and -n";
    if (arguments.form.kind != EncodingKind::code_page && arguments.form.kind != EncodingKind::utf8)
        return "--keys writes bytes, not " + name_of(arguments.form) + "; convert the input first";
    return "";
}

// The one character that an argument in UTF-8 is; nothing for more or for none.
std::optional<KxChar> character_of(const LineForm &form, const std::string &argument) {
    LineForm of_arguments = form;
    of_arguments.form = {EncodingKind::utf8, {}};
    of_arguments.zero_ends = false;
    LineReader reader(of_arguments);
    const LineText text = reader.read_one({reinterpret_cast<const std::uint8_t *>(argument.data()), argument.size()});
    if (text.chars.size() != 1 || text.chars[0] == kLacking) return std::nullopt;
    return text.chars[0];
}

// As sort(1) reads numbers: by the locale. No other thread has begun yet.
// NOLINTBEGIN(concurrency-mt-unsafe)
NumberMarks number_marks(const LineForm &form) {
    NumberMarks marks;
    if (std::setlocale(LC_NUMERIC, "") == nullptr) return marks;
    const std::lconv *numbers = std::localeconv();
    marks.point = character_of(form, numbers->decimal_point).value_or(marks.point);
    marks.thousands = character_of(form, numbers->thousands_sep).value_or(marks.thousands);
    std::setlocale(LC_NUMERIC, "C");
    return marks;
}
// NOLINTEND(concurrency-mt-unsafe)

std::vector<SortPart> parts_of(const Arguments &arguments, const Collation &collation) {
    std::vector<SortPart> parts;
    const auto add = [&](SortPart part, bool case_counts) {
        part.collation = collation;
        part.collation.case_counts = case_counts;
        part.collation.kana_counts = arguments.kana_counts;
        parts.push_back(std::move(part));
    };
    const auto with_options = [&](SortPart part) {
        part.field.skip_blanks = part.field.skip_blanks_to_end = arguments.skip_blanks;
        part.numeric = arguments.numeric;
        part.reverse = arguments.reverse;
        return part;
    };
    for (const Key &key : arguments.keys) {
        if (key.has_flags) {
            add(key.part, key.part.collation.case_counts);
        } else {
            add(with_options(key.part), !arguments.ignore_case);
        }
    }
    SortPart line;
    line.whole = true;
    line.reverse = arguments.reverse;
    if (parts.empty() && !arguments.numeric && !arguments.skip_blanks) {
        add(line, !arguments.ignore_case);
        return parts;
    }
    if (parts.empty()) add(with_options({}), !arguments.ignore_case);
    // Where the keys leave lines equal.
    if (!arguments.stable && !arguments.request.unique) add(line, true);
    return parts;
}

// Turns the arguments into the request. What is wrong with them, or an empty string.
std::string prepare(Arguments &arguments) {
    if (arguments.language == nullptr) {
        const FoundLanguage found = language_of_locale();
        if (found.language == nullptr) return "no language: " + found.fault + "; give one with -l (`kx sort --list`)";
        arguments.language = found.language;
    }
    Collation collation;
    collation.begin(arguments.language->code);
    LineForm &form = arguments.request.form;
    form.form = arguments.form;
    form.text_page =
        arguments.form.kind == EncodingKind::code_page ? arguments.form.page : collation.page().value_or(system_page());
    form.zero_ends = arguments.zero_ends;
    form.turkish = collation.is_turkish();
    SortOrder &order = arguments.request.order;
    if (arguments.separator) {
        order.separator = character_of(form, *arguments.separator == "\\t" ? "\t" : *arguments.separator);
        if (!order.separator) return "-t takes one character, not '" + *arguments.separator + "'";
    }
    order.parts = parts_of(arguments, collation);
    if (std::ranges::any_of(order.parts, &SortPart::numeric)) order.number_marks = number_marks(form);
    return "";
}

int work(const Arguments &arguments) {
    const SortRequest &request = arguments.request;
    switch (arguments.work) {
    case Work::check: return check_order(request, false);
    case Work::check_quietly: return check_order(request, true);
    case Work::merge: return merge_inputs(request);
    case Work::keys: return write_keys(request, request.order.parts.front().collation);
    default: return sort_in_memory(request) ? kSuccess : kFailure;
    }
}

} // namespace

int run_sort(int argc, char **argv) {
    Arguments arguments;
    const Parsed parsed = parse_options(
        argc, argv, kUsageText, [&](int id, const Argument &argument) { return take_option(arguments, id, argument); });
    if (parsed.stop) return parsed.status;
    if (arguments.work == Work::list)
        return write_text(kSortCommand, arguments.request.output, list_of_languages()) ? kSuccess : kFailure;
    arguments.request.inputs = operands_or_standard_input(argc, argv, parsed.first_operand);
    std::string fault = fault_of(arguments);
    if (fault.empty()) fault = prepare(arguments);
    if (!fault.empty()) return usage_error(kUsageText, fault);
    const char *too_large = arguments.work == Work::sort
                                ? "not enough memory: the input is sorted as a whole; see --keys"
                                : "not enough memory for the longest line";
    try {
        return work(arguments);
    } catch (const std::bad_alloc &) {
        report(kSortCommand, too_large);
    } catch (const std::length_error &) {
        report(kSortCommand, too_large);
    }
    return kFailure;
}

} // namespace kx
