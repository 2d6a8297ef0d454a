// The options of all commands, each described once. A letter means the same in every command; the letters of sort(1)
// are the exception, and only `kx sort` has them. An option that is shared takes another text where a command uses it
// for other things (`said`). What is hidden is an old spelling, or one that another tool has taught people.
#pragma once

#include "options.h"

namespace kx {

enum LongOption : int {
    kAnsiId = 256,
    kBomId,
    kCheckId,
    kCountryId,
    kDosId,
    kEofId,
    kEolId,
    kFileId,
    kFilesFromId,
    kHyphensId,
    kIgnoreCaseId,
    kJsonId,
    kKanaId,
    kKeepId,
    kKeysId,
    kListId,
    kPageId,
    kSetId,
    kSoftAsSpaceId,
    kStrictId,
    kSubstId,
    kTopId,
    kTypeId,
    kWindowsId,
    kYesId,
    kParallelId,
    kForeignId, // and up: of another tool
};

constexpr Option said(Option option, const char *help) {
    option.help = help;
    return option;
}
constexpr Option hidden(int id, const char *name, const Option &meant) {
    Option option = meant;
    option.means = meant.id;
    option.id = id;
    option.name = name;
    option.help = nullptr;
    return option;
}
constexpr Option with_words(Option option, const char *words, const char *help) {
    option.words = words;
    option.help = help;
    return option;
}

namespace option {

// Texts and files.
inline constexpr Option kFrom{'f', "from", "FORM", "the form of the input", Kind::form};
inline constexpr Option kTo{'t', "to", "FORM", "the form of the output", Kind::form};
inline constexpr Option kAnsi{kAnsiId, "ansi", "PAGE", "the code page that KX text was, or is to be, written with",
                              Kind::page};
inline constexpr Option kOutput{'o', "output", "FILE", "write to FILE, which may be an input, not to standard output",
                                Kind::file};
inline constexpr Option kInPlace{'i', "in-place", "[SUFFIX]",
                                 "write to each input itself; with SUFFIX the old file is kept under NAMESUFFIX"};
inline constexpr Option kOutputDir{'O', "output-dir", "DIR", "write to files of the same names in DIR", Kind::folder};
inline constexpr Option kRecursive{'r', "recursive", nullptr,
                                   "take the files in folders; their subfolders are kept in DIR"};
inline constexpr Option kFilesFrom{kFilesFromId, "files-from", "FILE",
                                   "take the names in FILE, too, one a line; - is standard input", Kind::file};
inline constexpr Option kNull{'0', "null", nullptr, "the names in FILE are separated by zero bytes"};
inline constexpr Option kJobs{'j', "jobs", "N", "work in N threads; 0: as many as there are processors", Kind::number};
inline constexpr Option kDrop{'c', nullptr, nullptr, "leave out characters that do not convert"};
inline constexpr Option kSubst{kSubstId, "subst", "CHAR", "write CHAR (in UTF-8) for characters that do not convert"};
inline constexpr Option kStrict{kStrictId, "strict", nullptr,
                                "a character that KX text lacks, or unites with another, ends the work"};
inline constexpr Option kEol{kEolId, "eol", "ENDS", "line ends: keep, lf or crlf", Kind::word, 0, "keep lf crlf"};
inline constexpr Option kEof{kEofId, "eof", nullptr, "a text ends at its first Ctrl-Z, as in DOS"};
inline constexpr Option kBom{kBomId, "bom", nullptr, "begin what is written with a byte order mark"};
inline constexpr Option kVerbose{'v', "verbose", nullptr, "tell about each file"};
inline constexpr Option kQuiet{'q', "quiet", nullptr,
                               "do not tell which characters were left out or came out as others"};
inline constexpr Option kYes{kYesId, "yes", nullptr, "with -f auto: take the best answer, though others are close"};
inline constexpr Option kList{kListId, "list", nullptr, "list the forms and the code pages"};
inline constexpr Option kCountry{kCountryId,
                                 "country",
                                 "NAME",
                                 "japanese, korean, traditional-chinese, simplified-chinese or none; or\n"
                                 "one of their languages",
                                 Kind::text,
                                 0,
                                 "none japanese korean traditional-chinese simplified-chinese"};

// Streams.
inline constexpr Option kKeep{kKeepId, "keep", "LIST",
                              "keep these too: attributes, hard, soft (line ends), tabs; with commas between"};
inline constexpr Option kHyphens{kHyphensId, "hyphens", nullptr, "write the hyphen codes as hyphens"};
inline constexpr Option kSoftAsSpace{kSoftAsSpaceId, "soft-as-space", nullptr,
                                     "write soft line ends as spaces, unless they are kept"};

// Detection.
inline constexpr Option kTop{kTopId,       "top", "N", "tell the N best answers for each file, not only the best",
                             Kind::number, 1};
inline constexpr Option kJson{kJsonId, "json", nullptr,
                              "write an object of JSON for each file, with the pages that decode it alike"};

// Languages and settings.
inline constexpr Option kLanguage{'l', "language", "LANG", "tell what is in force for LANG too, such as FR"};
inline constexpr Option kDos{kDosId, "dos", "PAGE", "with set: the DOS code page"};
inline constexpr Option kWindows{kWindowsId, "windows", "PAGE", "with set: the Windows code page"};
inline constexpr Option kType{kTypeId,
                              "type",
                              "TYPE",
                              "what VALUE is: text, dword, codepage, link or hex",
                              Kind::word,
                              0,
                              "text dword codepage link hex"};
inline constexpr Option kFile{kFileId, "file", "FILE", "the settings file; default: that of the library", Kind::file};

// Charts.
inline constexpr Option kSet{kSetId, "set", "N", "only the chart of set N: 0 to 14, or 36 to 222", Kind::number};
inline constexpr Option kPage{kPageId, "page", "PAGE", "a code page", Kind::page};

// Sorting: of sort(1), with its letters.
inline constexpr Option kIgnoreCase{kIgnoreCaseId, "ignore-case", nullptr, "lines that differ only in case are equal"};
inline constexpr Option kKana{kKanaId, "kana", nullptr, "hiragana before katakana (East Asian languages)"};
inline constexpr Option kKey{'k', "key", "KEY", "sort by a part of the lines: FIELD[.CHAR][bfnr][,FIELD[.CHAR][bfnr]]"};
inline constexpr Option kFieldSeparator{'t', "field-separator", "CHARACTER",
                                        "what lies between fields; without it they begin with blanks"};
inline constexpr Option kBlanks{'b', "ignore-leading-blanks", nullptr, "blanks before a line or key do not count"};
inline constexpr Option kNumeric{'n', "numeric-sort", nullptr, "by the number that a line or key begins with"};
inline constexpr Option kReverse{'r', "reverse", nullptr, "the other way round"};
inline constexpr Option kStable{'s', "stable", nullptr,
                                "lines with equal keys keep their order; else whole lines decide"};
inline constexpr Option kUnique{'u', "unique", nullptr, "write only the first of equal lines"};
inline constexpr Option kCheckFirst{'c', nullptr, nullptr, "do not sort: say the first line that is not in order"};
inline constexpr Option kCheckQuietly{'C', nullptr, nullptr, "the same by the exit status alone"};
inline constexpr Option kCheck{
    kCheckId, "check", "[quiet]", "as -c; with quiet as -C", Kind::word, 0, "quiet silent diagnose-first"};
inline constexpr Option kMerge{'m', "merge", nullptr, "do not sort: merge files that are in order"};
inline constexpr Option kZeroEnds{'z', "zero-terminated", nullptr, "lines end in a zero, not in a line feed"};
inline constexpr Option kKeys{kKeysId, "keys", nullptr, "do not sort: write each line behind its sort key and a tab"};

} // namespace option
} // namespace kx
