// kx, run as often as there are inputs: the arguments are made of options and names that there are, the files of any
// bytes.
#include <algorithm>
#include <cstdio>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <getopt.h>
#include <iterator>
#include <string>
#include <unistd.h>

#include "targets.h"

int kx_main(int argc, char **argv); // the tool's own

namespace kxstr::fuzz {
namespace {

const std::string &folder() {
    static const std::string path = own_folder();
    return path;
}
std::string in_file() {
    return folder() + "/in";
}
std::string out_file() {
    return folder() + "/out";
}

std::string read_file(const std::string &path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

void write_file(const std::string &path, std::span<const std::uint8_t> bytes) {
    std::ofstream(path, std::ios::binary)
        .write(reinterpret_cast<const char *>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
}

int run(std::vector<std::string> arguments) {
    std::vector<char *> argv;
    arguments.insert(arguments.begin(), "kx");
    argv.reserve(arguments.size() + 1);
    for (std::string &argument : arguments)
        argv.push_back(argument.data());
    argv.push_back(nullptr);
    static const int nowhere = ::open("/dev/null", O_WRONLY | O_CLOEXEC);
    ::dup2(nowhere, 1); // the tool closes its output, and there are more runs
    optind = 0;         // getopt_long begins anew
    std::clearerr(stdout);
    const int status = kx_main(static_cast<int>(arguments.size()), argv.data());
    require(status >= 0 && status <= 2, "an exit status");
    for (const auto &entry : std::filesystem::directory_iterator(folder()))
        require(!entry.path().filename().string().starts_with(".kx-"), "no temporary file stays");
    return status;
}

const char *const kForms[] = {"utf-8", "utf-16le", "utf-16be", "kx",     "stream",     "stream5", "sio",
                              "auto",  "437",      "850",      "852",    "866",        "874",     "932",
                              "936",   "949",      "950",      "1250",   "1251",       "1252",    "1253",
                              "1255",  "1256",     "1258",     "koi8-r", "iso-8859-2", "none"};
const char *const kTextOptions[] = {"-c",         "--subst=?",   "--subst=\xE2\x82\xAC",
                                    "--strict",   "--ansi=1252", "--ansi=932",
                                    "--eol=crlf", "--eol=lf",    "--eof",
                                    "--bom",      "-v",          "-q",
                                    "-j2"};
const char *const kSortOptions[] = {"-b",     "-n",       "-r",           "-s",         "-u",     "-z",
                                    "-c",     "-C",       "-m",           "-j2",        "-k2",    "-k1.2,3",
                                    "-k2n,2", "-k1,1fr",  "-t:",          "-t\xC3\xA9", "--keys", "--ignore-case",
                                    "--kana", "--strict", "--check=quiet"};
const char *const kLanguages[] = {"cs", "de", "es", "da", "ja", "zh", "he", "en", "tr", "xx"};

template <std::size_t Count>
void add_options(Input &input, std::vector<std::string> &arguments, const char *const (&options)[Count]) {
    for (auto count = input.below(4); count > 0; --count)
        arguments.emplace_back(input.one_of(options));
}

// What a code page became in UTF-8 comes back through it.
void check_return(Input &input) {
    const std::string page = kForms[8 + input.below(18)];
    if (run({"convert", "-f", page, "-t", "utf-8", "-o", out_file(), in_file()}) != 0) return;
    const std::string text = read_file(out_file());
    require(run({"convert", "-f", "utf-8", "-t", page, "-o", in_file(), out_file()}) == 0, "the way back");
    require(run({"convert", "-f", page, "-t", "utf-8", "-o", out_file(), in_file()}) == 0, "and there again");
    // A mark at the start of a file is no text.
    require(read_file(out_file()) == text || text.starts_with("\xEF\xBB\xBF"), "the same text");
}

void check_sorting(Input &input) {
    std::vector<std::string> arguments{"sort", "-l", input.one_of(kLanguages), "-o", out_file()};
    std::vector<std::string> options;
    add_options(input, options, kSortOptions);
    arguments.insert(arguments.end(), options.begin(), options.end());
    if (input.flag()) arguments.insert(arguments.end(), {"-f", input.one_of(kForms)});
    arguments.push_back(in_file());
    const bool plain = std::ranges::none_of(options, [](const std::string &option) {
        return option == "-u" || option == "--keys" || option == "-z" || option == "-m";
    });
    if (run(arguments) != 0 || !plain || arguments.size() > 6 + options.size()) return;
    const auto lines_of = [](std::string text) {
        if (text.starts_with("\xEF\xBB\xBF")) text.erase(0, 3); // a mark is dropped
        if (!text.empty() && text.back() != '\n') text += '\n';
        std::vector<std::string> lines;
        for (std::size_t at = 0; at < text.size();) {
            const std::size_t end = text.find('\n', at) + 1;
            lines.push_back(text.substr(at, end - at));
            at = end;
        }
        std::ranges::sort(lines);
        return lines;
    };
    const bool checks = std::ranges::any_of(options, [](const std::string &option) {
        return option == "-c" || option == "-C" || option.starts_with("--check");
    });
    if (!checks) require(lines_of(read_file(in_file())) == lines_of(read_file(out_file())), "no line is lost");
}

} // namespace

void tool(Input &input) {
    choose_system(input, (folder() + "/settings.reg").c_str());
    const std::uint32_t command = input.below(12);
    std::vector<std::string> arguments;
    const auto texts = [&] {
        if (input.flag()) arguments.insert(arguments.end(), {"-f", input.one_of(kForms)});
        arguments.insert(arguments.end(), {"-t", input.one_of(kForms)});
        add_options(input, arguments, kTextOptions);
        arguments.insert(arguments.end(), {"-o", out_file(), in_file()});
    };
    std::error_code ignored;
    std::filesystem::remove(out_file(), ignored);
    write_file(in_file(), input.rest());
    switch (command) {
    case 0: return check_return(input);
    case 1: return check_sorting(input);
    case 2:
    case 3:
        arguments = {"convert"};
        texts();
        break;
    case 4: arguments = {"detect", input.flag() ? "--json" : "--top=3", in_file()}; break;
    case 5:
        arguments = {"case", input.flag() ? "upper" : "lower"};
        texts();
        break;
    case 6: {
        static constexpr const char *kWays[] = {"single", "double", "hiragana", "katakana"};
        arguments = {"width", input.one_of(kWays)};
        if (input.flag()) arguments.emplace_back("--country=japan");
        texts();
        break;
    }
    case 7:
        arguments = {"han", input.flag() ? "big5" : "gb"};
        texts();
        break;
    case 8: arguments = {"dump", input.flag() ? "--ansi=932" : "--ansi=1252", in_file()}; break;
    case 9:
        arguments = {"strip"};
        if (input.flag()) arguments.emplace_back("--keep=attributes,hard,soft,tabs");
        if (input.flag()) arguments.emplace_back(input.flag() ? "--hyphens" : "--soft-as-space");
        if (input.flag()) arguments.insert(arguments.end(), {"-t", input.one_of(kForms)});
        arguments.insert(arguments.end(), {"-o", out_file(), in_file()});
        break;
    case 10: {
        static constexpr const char *kCommands[] = {"show", "export", "import", "get"};
        const std::string name = input.one_of(kCommands);
        arguments = {"registry", "-f", name == "import" ? out_file() : in_file(), name};
        if (name == "import") arguments.push_back(in_file());
        if (name == "get") arguments.insert(arguments.end(), {"HKCU\\Software\\K", "v"});
        break;
    }
    default:
        arguments = {"codepages"};
        if (input.flag()) arguments.push_back(std::to_string(code_page_of(input)));
        break;
    }
    run(arguments);
}

} // namespace kxstr::fuzz
