// faults [--sample] [CASE]: lets every allocation and every system call fail in turn, once and from then on. Whatever
// fails, files are the old or the new ones, whole, success means the new ones, failure is told, nothing is left behind,
// and the next try works.
#include "faults.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <functional>
#include <getopt.h>
#include <iterator>
#include <kxdetect/detect.h>
#include <kxstr/kxstr.h>
#include <map>
#include <string>
#include <unistd.h>
#include <vector>

#include "platform/system.h"
#include "support/process_state.h"

int kx_main(int argc, char **argv); // the tool's own

namespace {

namespace fs = std::filesystem;
using namespace kxstr;
using namespace kxstr::faults;
using namespace kxstr::test;
using Files = std::map<std::string, std::string>; // content by name, with the permissions in front

std::string g_where; // the case and the fault
unsigned g_faults = 0, g_wrong = 0;

void expect(bool holds, const std::string &what) {
    if (holds) return;
    ++g_wrong;
    std::printf("%s: %s\n", g_where.c_str(), what.c_str());
    static_cast<void>(std::fflush(stdout));
}

const fs::path &folder() {
    static const fs::path path = [] {
        // In memory where there is such a folder: flushing to a disk takes time.
        const fs::path above = fs::exists("/dev/shm") ? "/dev/shm" : fs::temp_directory_path();
        std::string name = (above / "kxstr-faults-XXXXXX").string();
        if (::mkdtemp(name.data()) == nullptr) std::abort();
        return fs::path(name);
    }();
    return path;
}
std::string at(const char *name) {
    return (folder() / name).string();
}

Files files_now() {
    Files files;
    for (const auto &entry : fs::recursive_directory_iterator(folder())) {
        if (!entry.is_regular_file()) continue;
        std::ifstream in(entry.path(), std::ios::binary);
        const auto mode = static_cast<unsigned>(entry.status().permissions());
        files[fs::relative(entry.path(), folder()).string()] =
            std::to_string(mode) + ' ' + std::string(std::istreambuf_iterator<char>(in), {});
    }
    return files;
}

void put_files(const Files &files) {
    for (const auto &entry : fs::directory_iterator(folder()))
        fs::remove_all(entry.path());
    for (const auto &[name, content] : files) {
        std::ofstream(folder() / name, std::ios::binary) << content;
        fs::permissions(folder() / name, fs::perms(0640));
    }
}

std::size_t open_descriptors() {
    return static_cast<std::size_t>(std::distance(fs::directory_iterator("/proc/self/fd"), {}));
}

struct Case {
    std::string name;
    Files before;
    std::function<bool()> run;        // whether it succeeded
    std::function<bool()> tells = {}; // whether a failure was told; empty: its result tells
    System system = kWestern;
};

void set_up(const Case &one) {
    run_on(one.system, one.before.contains("registry.reg") ? at("registry.reg").c_str() : "");
    VaskSetLanguage("EN");
}

void prepare(const Case &one) {
    put_files(one.before);
    set_up(one);
}

// One fault, and the next try.
void try_with(const Case &one, const Plan &plan, const Files &before, const Files &after, std::size_t descriptors,
              std::ptrdiff_t blocks) {
    ++g_faults;
    g_where = one.name + ", " + (plan.call ? name_of(*plan.call) : "any call") + " " + std::to_string(plan.first) +
              (plan.from_then_on ? " and all that follow" : "") + ": " +
              (plan.error != 0 ? std::strerror(plan.error) : "in part");
    prepare(one);
    faults::plan(plan);
    const bool done = one.run();
    const bool may_leave = failures_of(Call::unlink) > 0;
    faults::plan({});
    const Files now = files_now();
    if (done) {
        expect(now == after, "success, but not what it should have done");
    } else {
        if (one.tells) expect(one.tells(), "failed without a word");
        expect(plan.error != 0 || !plan.call, "less at once is no failure");
    }
    for (const auto &file : now) {
        const std::string &name = file.first;
        const auto is = [&file](const Files &files) {
            return files.contains(file.first) && files.at(file.first) == file.second;
        };
        const bool left_over = !before.contains(name) && !after.contains(name);
        expect(is(before) || is(after) || (left_over && may_leave), name + " is neither old nor new");
    }
    for (const auto &[name, content] : before)
        expect(now.contains(name) || !after.contains(name), name + " is lost");
    set_up(one);
    if (!done || now != after) {
        if (now != before) put_files(one.before); // what happened to other files would be done twice
        expect(one.run(), "the next try fails");
    }
    expect(files_now() == after, "the next try does something else");
    expect(open_descriptors() == descriptors, "a descriptor is left open");
    expect(live_blocks() <= blocks, "memory is left behind");
}

void run_case(const Case &one, bool sample) {
    g_where = one.name;
    prepare(one);
    const Files before = files_now();
    expect(one.run(), "fails by itself");
    for (int i = 0; i < 2; ++i) { // what is kept from now on is kept
        prepare(one);
        expect(one.run(), "fails by itself");
    }
    const Files after = files_now();
    const std::size_t descriptors = open_descriptors();
    const std::ptrdiff_t blocks = live_blocks();
    prepare(one);
    faults::plan({});
    one.run();
    std::size_t counts[kCalls], all = 0;
    for (std::size_t i = 0; i < kCalls; ++i)
        all += counts[i] = count_of(static_cast<Call>(i));
    const auto each = [&](std::size_t count, const std::function<void(std::size_t)> &fail) {
        const std::size_t step = sample && count > 8 ? count / 8 : 1;
        for (std::size_t first = 1; first <= count; first += step)
            fail(first);
    };
    for (std::size_t i = 0; i < kCalls; ++i) {
        const auto call = static_cast<Call>(i);
        for (const int error : errors_of(call)) {
            for (const bool from_then_on : {false, true}) {
                if (error == EINTR && from_then_on) continue; // for ever: no system does that
                each(counts[i], [&](std::size_t first) {
                    try_with(one, {call, first, from_then_on, error}, before, after, descriptors, blocks);
                });
            }
        }
    }
    each(all, [&](std::size_t first) { try_with(one, {{}, first, true, 0}, before, after, descriptors, blocks); });
    std::printf("%s: %zu calls\n", one.name.c_str(), all);
}

// ---- The cases ----

std::string repeated(const char *line, int times) {
    std::string text;
    while (times-- > 0)
        text += line;
    return text;
}

// With all keys that writing would make first: each write is whole, and here it is one. The two links lead to K and to
// \HKEY_CURRENT_USER\K.
constexpr const char *kSettings = R"(Windows Registry Editor Version 5.00
; kept
[HKEY_CURRENT_USER\Software\K]
"v"="old"
"p"=hex(80000002):54,03
[HKEY_CURRENT_USER\K]
"p"=hex(80000002):e4,04
[HKEY_USERS\Gone]
"w"=hex:01
[HKEY_CURRENT_USER\Software\Norvane\Yarrowind\21\LogicalCharacters]
"Yarrowind Logical Syntax Characters"="'*<>|"
[HKEY_CURRENT_USER\Software\Norvane\Conversions\21\CodePageData\FR]
[HKEY_CURRENT_USER\Software\Norvane\Conversions\21\CodePageData\EN]
"DOS Code Page"=hex(80000008):3c,00,4b,00,5c,00,70,00,3e,00
"Windows Code Page"=hex(80000008):3c,00,5c,00,48,00,4b,00,45,00,59,00,5f,00,43,00,55,00,52,00,52,00,45,00,4e,00,54,\
  00,5f,00,55,00,53,00,45,00,52,00,5c,00,4b,00,5c,00,70,00,3e,00
)";

// A run of the tool, with its messages in a file. What stands for a file begins with @.
Case tool(const std::string &name, Files before, std::vector<std::string> arguments) {
    for (std::string &argument : arguments)
        if (argument.starts_with("@")) argument = at(argument.c_str() + 1);
    arguments.insert(arguments.begin(), "kx");
    static const int messages = ::fileno(std::tmpfile());
    const auto run = [arguments] {
        std::vector<std::string> copies = arguments;
        std::vector<char *> argv;
        argv.reserve(copies.size() + 1);
        for (std::string &argument : copies)
            argv.push_back(argument.data());
        argv.push_back(nullptr);
        static_cast<void>(std::fflush(stderr));
        const int kept = ::dup(2);
        static_cast<void>(::ftruncate(messages, 0));
        ::dup2(messages, 2);
        optind = 0;
        const bool done = under_test([&] { return kx_main(static_cast<int>(copies.size()), argv.data()); }) == 0;
        ::dup2(kept, 2);
        ::close(kept);
        return done;
    };
    return {name, std::move(before), run, [] { return ::lseek(messages, 0, SEEK_END) > 0; }};
}

// The same text in another form; the whole destination, or nothing and the result that says so.
template <class Unit> bool converts(const std::vector<Unit> &expected, const std::function<bool(Unit *to)> &convert) {
    std::vector<Unit> to(expected.size(), static_cast<Unit>(0x7E7E));
    const std::vector<Unit> untouched = to;
    const bool done = under_test([&] { return convert(to.data()); });
    expect(to == (done ? expected : untouched), "neither the whole text nor nothing");
    return done;
}

std::vector<Case> all_cases() {
    const std::string text = repeated("\xC4"
                                      "pfel und \xE9"
                                      "clairs, zweiundzwanzig Zeichen\n",
                                      3000); // several chunks
    const std::string lines = repeated("zebra\n\xC3\x84"
                                       "pfel\nllama 10\nc\xC3\xB4"
                                       "te\n",
                                       2000);
    std::vector<Case> cases{
        tool("convert -o", {{"in", text}, {"out", "old"}},
             {"convert", "-f", "1252", "-t", "utf-8", "-o", "@out", "@in"}),
        tool("convert -o, a new file", {{"in", text}}, {"convert", "-f", "1252", "-t", "kx", "-o", "@out", "@in"}),
        tool("convert -o onto itself", {{"in", text}}, {"convert", "-f", "1252", "-t", "utf-16le", "-o", "@in", "@in"}),
        tool("convert -i", {{"a", text}, {"b", "\xE9\n"}}, {"convert", "-f", "1252", "-t", "utf-8", "-i", "@a", "@b"}),
        tool("convert -i.old", {{"a", text}}, {"convert", "-f", "1252", "-t", "utf-8", "-i.old", "@a"}),
        tool("convert -O", {{"a", text}, {"b", "\xE9\n"}},
             {"convert", "-f", "auto", "--yes", "-t", "utf-8", "-j2", "-O", "@to", "@a", "@b"}),
        tool("sort -o onto itself", {{"in", lines}}, {"sort", "-l", "de", "-o", "@in", "@in"}),
        tool("sort -j2", {{"in", lines}, {"out", "old"}},
             {"sort", "-l", "es", "-j2", "-u", "-k2n", "-o", "@out", "@in"}),
        tool("sort -m", {{"in", "a\nb\n"}, {"to", "b\n"}}, {"sort", "-l", "ja", "-m", "-o", "@out", "@in", "@to"}),
        tool("strip -o", {{"in", repeated("A\xF0\x29\x01\xF0\xCC", 50)}},
             {"strip", "-t", "utf-8", "-o", "@out", "@in"}),
        tool("registry set", {{"f.reg", kSettings}},
             {"registry", "-f", "@f.reg", "set", "HKCU\\Software\\K", "v", "new"}),
        tool("registry set, a new file", {},
             {"registry", "-f", "@made/of/f.reg", "set", "HKCU\\Software\\K", "v", "new"}),
        tool("registry delete", {{"f.reg", kSettings}}, {"registry", "-f", "@f.reg", "delete", "HKU\\Gone"}),
        tool("registry import",
             {{"f.reg", kSettings},
              {"in.reg", "Windows Registry Editor Version 5.00\n[-HKEY_USERS\\Gone]\n[HKEY_USERS\\New]\n@=\"x\"\n"}},
             {"registry", "-f", "@f.reg", "import", "@in.reg"}),
        tool("codepages set", {{"registry.reg", kSettings}}, {"codepages", "set", "FR", "--dos", "850"}),
    };
    const auto add = [&](const char *name, const System &system, Files before, std::function<bool()> run) {
        cases.push_back({name, std::move(before), std::move(run), {}, system});
    };
    add("WcvtSetWinCodepage through a link", kWestern, {{"registry.reg", kSettings}},
        [] { return under_test([] { return WcvtSetWinCodepage(1250); }) == 1; });
    add("WcvtGetDOSCodepage through a link", kWestern, {{"registry.reg", kSettings}}, [] {
        const std::uint16_t page = under_test(WcvtGetDOSCodepage);
        expect(page == 852 || page == 437, "neither the stored page nor the system's");
        return page == 852;
    });
    add("strings on a double-byte system", kJapanese, {}, [] {
        const bool native = converts<KxChar>({0x255F, 'a', 0}, [](KxChar *to) {
            return W6azTowz("\x82\xA0"
                            "a",
                            to) == 1;
        });
        const bool counted = converts<KxChar>({0x255F, 0}, [](KxChar *to) {
            return W6ozTowzN("\x82\xA0"
                             "a",
                             to, 2) == 1;
        });
        static constexpr KxChar kText[] = {'a', 0x0129, KX_LINE_FEED, 0};
        const bool sio = converts<std::uint8_t>({'a', 0xFD, 0x29, 0x01, 0x0D, 0}, [](std::uint8_t *to) {
            return W6wzTotz(kText, to, 6, KX_KEEP_HARD_ENDS) == 5;
        });
        char ansi[9];
        static constexpr std::uint16_t kWide[] = {0x3042, 'a', 0};
        expect(under_test([&] { return W6VaskToazN(kWide, ansi, 5); }) == 1, "always 1");
        const bool whole = std::string(ansi) == "\x82\xA0"
                                                "a";
        expect(whole || *ansi == 0, "neither the whole text nor an empty one");
        return native && counted && sio && whole;
    });
    add("KxDetect", kWestern, {}, [text] {
        KxDetectGuess guesses[3];
        const std::size_t count = under_test(
            [&] { return KxDetect(reinterpret_cast<const std::uint8_t *>(text.data()), text.size(), guesses, 3); });
        expect(count == 0 || std::strcmp(guesses[0].page, "850") == 0, "another answer");
        return count != 0;
    });
    return cases;
}

} // namespace

int main(int argc, char **argv) {
    const bool sample = argc > 1 && std::strcmp(argv[1], "--sample") == 0;
    const char *const only = argc > (sample ? 2 : 1) ? argv[argc - 1] : "";
    for (const Case &one : all_cases())
        if (one.name.find(only) != std::string::npos) run_case(one, sample);
    std::printf("%u faults, %u expectations that do not hold\n", g_faults, g_wrong);
    fs::remove_all(folder());
    return g_wrong == 0 && g_faults > 0 ? 0 : 1;
}
