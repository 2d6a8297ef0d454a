// replay [-c COPIES] TARGET PATH...: runs a target on files, and on the files of folders, without libFuzzer, so with
// any compiler. Of each it also runs COPIES changed ones, the same each time.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "targets.h"

namespace {

namespace fs = std::filesystem;
using namespace kxstr::fuzz;

constexpr struct {
    std::string_view name;
    void (*run)(Input &input);
} kTargets[] = {
    {"conversions", conversions}, {"text", text},         {"streams", streams}, {"strings", strings},
    {"collation", collation},     {"settings", settings}, {"links", links},     {"tool", tool},
    {"detect", detect},
};

std::vector<std::uint8_t> bytes_of_file(const fs::path &path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

// A few bytes changed, or a part left out or doubled.
void change(std::vector<std::uint8_t> &bytes, std::mt19937 &random) {
    if (bytes.empty()) return;
    const auto place = [&] { return static_cast<std::ptrdiff_t>(random() % bytes.size()); };
    const auto length = [&](std::ptrdiff_t at) {
        return std::min(static_cast<std::ptrdiff_t>(random() % 16), static_cast<std::ptrdiff_t>(bytes.size()) - at);
    };
    const auto at = bytes.begin() + place();
    const std::ptrdiff_t size = length(at - bytes.begin());
    switch (random() % 4) {
    case 0: bytes.erase(at, at + size); break;
    case 1: {
        const std::vector<std::uint8_t> doubled(at, at + size);
        bytes.insert(at, doubled.begin(), doubled.end());
        break;
    }
    default:
        for (auto left = 1 + random() % 4; left > 0; --left)
            bytes[static_cast<std::size_t>(place())] = static_cast<std::uint8_t>(random());
    }
}

} // namespace

int main(int argc, char **argv) {
    int first = 1;
    unsigned copies = 0;
    if (argc > 2 && std::string_view(argv[1]) == "-c") {
        copies = static_cast<unsigned>(std::strtoul(argv[2], nullptr, 10));
        first = 3;
    }
    const auto *const target = argc > first + 1 ? std::ranges::find(kTargets, std::string_view(argv[first]),
                                                                    [](const auto &one) { return one.name; })
                                                : std::end(kTargets);
    if (target == std::end(kTargets)) {
        std::fputs("usage: replay [-c COPIES] TARGET PATH...\n", stderr);
        return 2;
    }
    std::vector<fs::path> files;
    for (int i = first + 1; i < argc; ++i) {
        if (fs::is_directory(argv[i])) {
            for (const auto &entry : fs::directory_iterator(argv[i]))
                files.push_back(entry.path());
        } else {
            files.emplace_back(argv[i]);
        }
    }
    std::ranges::sort(files); // the order of folders differs
    for (const fs::path &file : files) {
        auto bytes = bytes_of_file(file);
        std::mt19937 random(1);
        for (unsigned copy = 0; copy <= copies; ++copy) {
            std::fprintf(stderr, "\r%s %u ", file.c_str(), copy); // what it was, when it goes no further
            Input input(bytes);
            target->run(input);
            change(bytes, random);
        }
    }
    std::fprintf(stderr, "\n%s: %zu files, %zu runs\n", argv[first], files.size(),
                 files.size() * (copies + std::size_t{1}));
    return files.empty() ? 1 : 0;
}
