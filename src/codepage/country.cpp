#include "codepage/country.h"

#include <array>
#include <cstddef>
#include <kxstr/codepage.h>

#include "platform/system.h"

namespace kxstr::codepage {
namespace {

// By country.
constexpr std::array<UsualCodePages, 7> kUsualCodePages{{
    {0, 0},      // none
    {932, 932},  // Japanese
    {934, 949},  // Korean
    {938, 950},  // Traditional Chinese
    {936, 936},  // Simplified Chinese
    {710, 1256}, // Arabic
    {862, 1255}, // Hebrew
}};

constexpr std::uint8_t kDefaultCharacterSet = 1;
constexpr std::uint8_t kGb2312CharacterSet = 134;
constexpr std::uint8_t kBig5CharacterSet = 136;

std::uint32_t keyboard_code_page() noexcept {
    const auto code_page = platform::ansi_code_page_of(platform::keyboard_language());
    return code_page.value_or(platform::ansi_code_page());
}

std::uint8_t character_set_or_default(std::uint32_t code_page) noexcept {
    return platform::character_set_of(code_page).value_or(kDefaultCharacterSet);
}

std::uint8_t decide_country() noexcept {
    switch (platform::system_language()) {
    case 0x0411: return kJapanese;
    case 0x0412: return kKorean;
    case 0x0404: // Taiwan
    case 0x0C04: // Hong Kong
    case 0x1404: // Macao
        return kTraditionalChinese;
    case 0x0804: // China
    case 0x1004: // Singapore
        return kSimplifiedChinese;
    case 0x0401: return kArabic;
    case 0x040D: return kHebrew;
    default: break;
    }
    // A double-byte system in another language: the keyboard tells the Chinese scripts.
    if (platform::is_double_byte_system()) {
        switch (character_set_or_default(keyboard_code_page())) {
        case kGb2312CharacterSet: return kSimplifiedChinese;
        case kBig5CharacterSet: return kTraditionalChinese;
        default: break;
        }
    }
    return kNoCountry;
}

} // namespace

std::uint8_t country_id() noexcept {
    std::uint8_t country = decided_country.load(std::memory_order_relaxed);
    if (country != kUndecided) return country;
    // One decision holds for all: another thread may have another keyboard.
    const std::uint8_t decided = decide_country();
    return decided_country.compare_exchange_strong(country, decided, std::memory_order_relaxed) ? decided : country;
}

void set_country(std::uint8_t id) noexcept {
    decided_country.store(id, std::memory_order_relaxed);
}

void forget_country() noexcept {
    set_country(kUndecided);
}

UsualCodePages usual_code_pages(std::uint8_t country) noexcept {
    return kUsualCodePages[country];
}

std::uint8_t country_of_code_page(std::uint32_t windows_number) noexcept {
    for (std::size_t country = 1; country < kUsualCodePages.size(); ++country)
        if (kUsualCodePages[country].windows == windows_number) return static_cast<std::uint8_t>(country);
    return kNoCountry;
}

} // namespace kxstr::codepage

extern "C" {

void WshGetInfoFromKeyboard(uint16_t *code_page, uint8_t *character_set) {
    const std::uint32_t found = kxstr::codepage::keyboard_code_page();
    if (character_set != nullptr) *character_set = kxstr::codepage::character_set_or_default(found);
    if (code_page != nullptr) *code_page = static_cast<uint16_t>(found);
}

uint8_t WtpiGetCountryID(void) {
    return kxstr::codepage::country_id();
}
}
