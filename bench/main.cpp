// kxstr_bench --system=NAME [--corpus=FOLDER] [options of Google Benchmark]: the rows that are measured on that system.
// kxstr_bench --systems: the names of the systems. bench/table.py runs them all and makes the table.
#include "row.h"
#include "rows.h"
#include "system.h"
#include "text.h"
#include <algorithm>
#include <cstdio>
#include <string_view>

namespace {

// Takes --NAME=VALUE out of the arguments; the rest is Google Benchmark's.
std::string_view take_option(int &argc, char **argv, std::string_view name) {
    for (int i = 1; i < argc; ++i) {
        const std::string_view argument = argv[i];
        if (!argument.starts_with(name)) continue;
        std::copy(argv + i + 1, argv + argc + 1, argv + i); // the null behind the last one, too
        --argc;
        return argument.substr(name.size());
    }
    return {};
}

} // namespace

int main(int argc, char **argv) {
    if (argc == 2 && std::string_view(argv[1]) == "--systems") {
        for (const kxbench::System &system : kxbench::systems())
            std::puts(system.name);
        return 0;
    }
    const std::string_view corpus = take_option(argc, argv, "--corpus=");
    const std::string_view name = take_option(argc, argv, "--system=");
    const auto system = std::ranges::find(kxbench::systems(), name, &kxbench::System::name);
    if (system == kxbench::systems().end()) {
        std::fprintf(stderr, "kxstr_bench: give --system=NAME, one that --systems lists\n");
        return 2;
    }
    kxbench::use_corpus(corpus.empty() ? KXSTR_BENCH_CORPUS : std::string(corpus));
    kxbench::become(*system);
    kxbench::add_conversion_rows();
    kxbench::add_stream_rows();
    kxbench::add_byte_string_rows();
    kxbench::add_kx_string_rows();
    kxbench::add_case_rows();
    kxbench::add_collation_rows();
    kxbench::add_settings_rows();
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 2;
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
