// Sets the system that a test runs on, and makes the library forget what it decided about the one before.
#pragma once

#include <gtest/gtest.h>
#include <kxstr/platform.h>

#include "codepage/state.h"

namespace kxstr::test {

struct System {
    std::uint32_t ansi = 1252;
    std::uint32_t oem = 437;
    bool double_byte = false;
    std::uint16_t language = 0x0409;
    std::uint16_t keyboard = 0x0409;
};

inline constexpr System kWestern{};
inline constexpr System kJapanese{932, 932, true, 0x0411, 0x0411};
inline constexpr System kKorean{949, 949, true, 0x0412, 0x0412};
inline constexpr System kTraditionalChinese{950, 950, true, 0x0404, 0x0404};
inline constexpr System kSimplifiedChinese{936, 936, true, 0x0804, 0x0804};

// No registry file: a test that wants one says so.
inline void run_on(const System &system, const char *registry_path = "") {
    KxPlatformSettings settings{system.ansi,     system.oem,      system.double_byte ? 1u : 0u,
                                system.language, system.keyboard, {}};
    std::snprintf(settings.registry_path, sizeof settings.registry_path, "%s", registry_path);
    KxPlatformSet(&settings);
    codepage::process_state() = {};
}

} // namespace kxstr::test
