#include <kxstr/letters.h>
#include <kxstr/strops.h>

#include "reference/streams.h"
#include "support/test.h"

namespace {

using namespace kxstr::test;
using Units = std::vector<KxChar>;

TEST(WideCompare, DifferenceOfTheCapitals) {
    const struct {
        int country;
        std::int32_t wanted;
        Units a, b;
        const char *why;
    } cases[] = {
        {0, 0, {'a', 'b', 'c', 0}, {'A', 'B', 'C', 0}, "without case"},
        {0, -0x43, {'a', 'b', 0}, {'a', 'b', 'c', 0}, "the shorter one ends"},
        {0, 0xF909 - 0x41, {KX_TAB, 'a', 0}, {'a', 0}, "codes count"},
        {0, 0x20, {0x2540, 0}, {0x2520, 0}, "no form table: double width is exact"},
        {1, 0, {0x2540, 0}, {0x2520, 0}, "double width without case"},
    };
    for (const auto &c : cases) {
        if (!runs_on(kCountries[static_cast<std::size_t>(c.country)])) continue;
        EXPECT_EQ(ww_stricmp(c.a.data(), c.b.data()), c.wanted) << c.why;
        EXPECT_EQ(ww_stricmp(c.b.data(), c.a.data()), -c.wanted) << c.why;
        EXPECT_EQ(wwstrincmp(c.a.data(), c.b.data(), 1) != 0, c.wanted != 0) << c.why << ": an odd size is no bound";
    }
}

TEST(WideCompare, EveryPairOfShortTextsAsUnitByUnit) {
    run_on(kCountries[0]);
    std::vector<Units> texts;
    kxstr::reference::for_every_sequence<KxChar>(
        {'a', 'A', 0x0128, 0x0129}, 4, [&](const Units &text) { texts.push_back(kxstr::test::terminated(text)); });
    for (const Units &a : texts) {
        for (const Units &b : texts) {
            std::size_t i = 0;
            while (a[i] != 0 && wtoupper(a[i]) == wtoupper(b[i]))
                ++i;
            ASSERT_EQ(ww_stricmp(a.data(), b.data()), wtoupper(a[i]) - wtoupper(b[i]));
        }
    }
}

TEST(WideCompare, SizeInBytes) {
    run_on(kCountries[0]);
    const Units a{'a', 'b', 'c', 0}, b{'A', 'B', 'D', 0};
    for (const std::int32_t size : {INT32_MIN, -1, 0, 2, 4})
        EXPECT_EQ(wwstrincmp(a.data(), b.data(), size), 0) << size;
    for (const std::int32_t size : {1, 3, 5, 6, 7, 8, INT32_MAX})
        EXPECT_EQ(wwstrincmp(a.data(), b.data(), size), -1) << size;
    EXPECT_EQ(wwstrincmp(a.data(), a.data(), 1000), 0) << "the terminators end it";
}

} // namespace
