#include <kxstr/collate.h>

#include "support/test.h"

namespace {

using namespace kxstr::test;

// Primary and secondary value, flags, result.
using Values = std::array<unsigned, 4>;

Values values_of(std::uint32_t ch, std::uint32_t next = 0, std::uint32_t previous = 0, std::uint32_t case_off = 0) {
    std::uint16_t primary = 0;
    std::uint16_t secondary = 0;
    std::uint8_t flags = 0;
    const auto result = AsiaGetColValues(ch, next, previous, &primary, &secondary, &flags, case_off);
    return {primary, secondary, flags, result};
}

TEST(EastAsian, KnownValues) {
    const auto rows = kxstr::reference::read_rows("../tests/collate/east_asian.txt");
    EXPECT_EQ(rows.size(), 38u);
    for (const auto &row : rows) {
        if (!runs_on(system_of(static_cast<std::uint32_t>(std::stoul(row.at(0)))))) continue;
        std::array<unsigned, 7> number{};
        std::ranges::transform(row.begin() + 1, row.end(), number.begin(),
                               [](const auto &field) { return std::stoul(field, nullptr, 16); });
        const Values wanted{number[3], number[4], number[5], number[6]};
        EXPECT_EQ(values_of(number[0], number[1], number[2]), wanted) << row[0] << ' ' << row[1] << ' ' << row[2];
    }
}

TEST(EastAsian, CaseOffMarksEveryLetter) {
    run_on(kJapanese);
    EXPECT_EQ(values_of('a', 0, 0, 1)[2], 1u);
    EXPECT_EQ(values_of('a', 0, 0, 0x10000)[2], 0u) << "only the low half counts";
    EXPECT_EQ(values_of(0x2540, 0, 0, 1)[2], 3u);
    EXPECT_EQ(values_of(0x255F, 0, 0, 1)[2], 0u) << "kana have no case";
}

} // namespace
