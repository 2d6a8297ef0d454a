// The values of characters in East Asian text: kana by sound, ideographs by code.
#pragma once

#include "collate/values.h"

namespace kxstr::collate {

struct EastAsianValues {
    std::uint16_t primary;
    std::uint16_t secondary;
    std::uint8_t flags;      // kUnmarkedCase, kOtherWidth
    std::uint8_t characters; // used up: 1, or 2 with the sound mark behind it; 0 when there is no value
};

inline constexpr std::uint16_t kNoEastAsianValue = 0xFFFF;
inline constexpr std::uint8_t kUnmarkedCase = 1; // katakana, or anything but a lowercase letter
inline constexpr std::uint8_t kOtherWidth = 2;

// `next` is the character behind `ch`, 0 at the end; `previous` the primary value of the character before it.
EastAsianValues east_asian_values(KxChar ch, KxChar next, std::uint16_t previous, bool case_off) noexcept;

} // namespace kxstr::collate
