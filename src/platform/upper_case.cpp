#include <algorithm>

#include "platform/ansi_text.h"
#include "tables/upper_case.h"

namespace kxstr::platform {

char16_t upper_case(char16_t unit) noexcept {
    if (unit < 0x80) return 'a' <= unit && unit <= 'z' ? static_cast<char16_t>(unit - 'a' + 'A') : unit;
    const auto &runs = tables::kUpperCaseRuns;
    const auto run = std::ranges::lower_bound(runs, unit, {}, &tables::CaseRun::last);
    if (run == runs.end() || unit < run->first || (unit - run->first) % run->step != 0) return unit;
    return static_cast<char16_t>(unit + run->add);
}

std::u16string upper_case(std::u16string_view text) {
    std::u16string upper(text);
    std::ranges::transform(upper, upper.begin(), [](char16_t unit) { return upper_case(unit); });
    return upper;
}

} // namespace kxstr::platform
