// The country of the system, which chooses East Asian tables and code page defaults.
#pragma once

#include <cstdint>

namespace kxstr::codepage {

enum Country : std::uint8_t {
    kNoCountry = 0,
    kJapanese = 1,
    kKorean = 2,
    kTraditionalChinese = 3,
    kSimplifiedChinese = 4,
    kArabic = 5,
    kHebrew = 6,
};

// Worked out at the first call, then kept for the life of the process. One of Country.
std::uint8_t country_id() noexcept;

} // namespace kxstr::codepage
