// The systems of the countries 0 to 4, by country.
#pragma once

#include <array>

#include "support/process_state.h"

namespace kxstr::test {

inline constexpr std::array<System, 5> kCountries{kWestern, kJapanese, kKorean, kTraditionalChinese,
                                                  kSimplifiedChinese};

} // namespace kxstr::test
