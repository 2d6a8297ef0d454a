// Sets the system that a test runs on, and makes the library forget what it decided about the one before.
#pragma once

#include <cstdint>

namespace kxstr::test {

struct System {
    std::uint32_t ansi = 1252;
    std::uint32_t oem = 437;
    bool double_byte = false;
    std::uint16_t language = 0x0409;
    std::uint16_t keyboard = 0x0409;

    bool operator==(const System &) const = default;
};

inline constexpr System kWestern{};
inline constexpr System kJapanese{932, 932, true, 0x0411, 0x0411};
inline constexpr System kKorean{949, 949, true, 0x0412, 0x0412};
inline constexpr System kTraditionalChinese{950, 950, true, 0x0404, 0x0404};
inline constexpr System kSimplifiedChinese{936, 936, true, 0x0804, 0x0804};
inline constexpr System kArabic{1256, 720, false, 0x0401, 0x0401};
inline constexpr System kHebrew{1255, 862, false, 0x040D, 0x040D};
inline constexpr System kRussian{1251, 866, false, 0x0419, 0x0419};

inline constexpr System kSystems[]{kWestern,           kJapanese, kKorean, kTraditionalChinese,
                                   kSimplifiedChinese, kArabic,   kHebrew, kRussian};

// The one of them with an ANSI code page; else the western one with that page.
constexpr System system_of(std::uint32_t ansi) {
    for (const System &system : kSystems)
        if (system.ansi == ansi) return system;
    return {.ansi = ansi};
}

// Whether the test runs on the system from here on. The portable build can be any system. Windows is what it is: there
// a test with several systems leaves out the others, and the whole suite runs once on each of the systems above.
//
// Without a registry path there are no stored settings: a test that wants some says so.
bool runs_on(const System &system, const char *registry_path = "");

// The same for tests of one system, which end here as skipped where it cannot be had.
void run_on(const System &system, const char *registry_path = "");

} // namespace kxstr::test
