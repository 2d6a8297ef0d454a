// Sixteen threads come to the library at once. CTest gives each test a process of its own, where nothing has been
// worked out before; ThreadSanitizer (`make test-tsan`) sees what would only go wrong once in a million times.
#include <kxstr/kxstr.h>

#include <atomic>
#include <functional>
#include <thread>

#include "settings_folder.h"
#include "support/coltbl_state.h"
#include "support/test.h"

namespace {

using namespace kxstr::test;

constexpr unsigned kThreads = 16;

std::string bytes(const auto *text, std::size_t units) {
    return {reinterpret_cast<const char *>(text), units * sizeof *text};
}

// Each comes to another piece of what is worked out at the first use. "\x82\xA0" is one character in code page 932.
const std::function<std::string()> kJobs[] = {
    [] { return std::to_string(WcvtGetDOSCodepage()); },
    [] { return std::to_string(WcvtGetWinCodepage()); },
    [] { return std::to_string(WtpiGetCountryID()); },
    [] { return std::string(WcvtGetRegistryLoc()); },
    [] { return std::to_string(WtpiGetOemCodepageTbl()->input_code_page); },
    [] { return std::to_string(WtpiGetAnsiCodepageTbl()->output_code_page); },
    [] {
        KxChar out[16]{};
        W6azTowz("caf\xE9 \x82\xA0", out);
        char back[16]{};
        W6wzToaz(out, back);
        return bytes(out, 16) + back;
    },
    [] {
        KxChar out[16]{};
        W6ozTowz("\x82\xA0 plain", out);
        return bytes(out, 16);
    },
    [] {
        const std::uint16_t units[] = {'a', 0xE9, 0x3042, 0x0416, 0};
        KxChar out[8]{};
        std::uint16_t back[8]{};
        W6VaskTowz(units, out);
        W6wzToVask(out, back);
        return bytes(out, 8) + bytes(back, 8);
    },
    [] {
        const KxChar a[] = {'I', 0x0129, 0x255F, 0}, b[] = {'i', 'f', 0x2560, 0};
        const int orders[] = {W6wstrcmp(a, b), W6w_stricmp(b, a), W6wstriequ(a, b), xch2col('I')}; // one by one
        return bytes(orders, 4);
    },
    [] {
        std::string all;
        for (const char *language : {"US", "ES", "DK", "JP", "HE"}) {
            const KxChar a[] = {'l', 'l', 0x0129, 0}, b[] = {'l', 'm', 'e', 0};
            all += std::to_string(KxWS6CmpcollLang(a, b, language, 1, 1));
        }
        return all;
    },
    [] { return std::to_string(wtolower(0x2439)) + std::to_string(wtoupper(0x0129)); },
    [] { return std::to_string(ValidKxCharacter(0x2400)) + std::to_string(KxLanguage("DK")); },
};

using Results = std::vector<std::vector<std::string>>; // by thread and job

// All threads begin with one job, and go on with the others.
Results all_at_once(std::size_t first_job) {
    Results results(kThreads, std::vector<std::string>(std::size(kJobs)));
    std::atomic<unsigned> waiting = kThreads;
    const auto work = [&](std::vector<std::string> &own) {
        for (--waiting; waiting != 0;) // spinning: who sleeps comes late
            std::this_thread::yield();
        for (std::size_t i = 0; i < std::size(kJobs); ++i) {
            const std::size_t job = (first_job + i) % std::size(kJobs);
            own[job] = kJobs[job]();
        }
    };
    std::vector<std::thread> threads;
    for (auto &own : results)
        threads.emplace_back(work, std::ref(own));
    for (std::thread &thread : threads)
        thread.join();
    return results;
}

// The first round is cold; before each further one the library is made to forget what it can.
void start_cold(const System &system, const char *language, const std::string &anchor) {
    const SettingsFolder folder;
    folder.write("[HKEY_CURRENT_USER\\Software\\Norvane\\Conversions\\21\\CodePageData\\" + std::string(language) +
                 "]\n\"DOS Code Page\"=hex(80000008):3c,00,76,00,3e,00\n" // <v>
                 "[HKEY_CURRENT_USER\\Software]\n\"v\"=hex:54,03\n");
    for (std::size_t round = 0; round < 2 * std::size(kJobs); ++round) {
        run_on(system, folder.file().c_str());
        const ColtblAtLoad at_load;
        VaskSetLanguage(language);
        const Results results = all_at_once(round % std::size(kJobs));
        for (std::size_t job = 0; job < std::size(kJobs); ++job) {
            const std::string alone = kJobs[job]();
            for (const auto &result : results)
                EXPECT_EQ(result[job], alone) << "job " << job;
        }
        std::string seen;
        for (const std::size_t job : {0u, 1u, 2u, 4u, 5u})
            seen += results[0][job] + ' ';
        EXPECT_EQ(seen, anchor);
    }
}

TEST(Threads, WesternColdStart) {
    start_cold(kWestern, "TR", "852 1252 0 852 1252 ");
}

TEST(Threads, JapaneseColdStart) {
    start_cold(kJapanese, "SU", "852 932 1 932 932 ");
}

// Two bytes of a language are remembered: this one is set up at every comparison.
TEST(Threads, ALongerLanguage) {
    start_cold(kWestern, "TRK", "852 1252 0 852 1252 ");
}

} // namespace
