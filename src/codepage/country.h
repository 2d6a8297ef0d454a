// The country of the system, which chooses East Asian tables and code page defaults.
#pragma once

#include <atomic>
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

// As it is known, without a call.
inline constexpr std::uint8_t kUndecided = 0xFF;
inline constinit std::atomic<std::uint8_t> decided_country{kUndecided};

// Worked out at the first call, then kept for the life of the process. One of Country.
std::uint8_t country_id() noexcept;

// Puts a country in the place of the system's; forgetting it works it out anew at the next call.
void set_country(std::uint8_t id) noexcept;
void forget_country() noexcept;

// The code pages usual in a country; 0 where the system decides.
struct UsualCodePages {
    std::uint16_t dos;
    std::uint16_t windows;
};
UsualCodePages usual_code_pages(std::uint8_t country) noexcept;

// The country in which a Windows code page is the usual one, or kNoCountry.
std::uint8_t country_of_code_page(std::uint32_t windows_number) noexcept;

} // namespace kxstr::codepage
