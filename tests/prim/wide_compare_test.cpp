#include <gtest/gtest.h>
#include <kxstr/prim.h>
#include <kxstr/strops.h>

#include "support/countries.h"

namespace {

using kxstr::test::kCountries;
using kxstr::test::run_on;
using Units = std::vector<KxChar>;

TEST(WideCompare, DifferenceOfTheCapitals) {
    const struct {
        int country;
        std::int32_t wanted;
        Units a, b;
        const char *why;
    } cases[] = {
        {0, 0, {'a', 'b', 'c', 0}, {'A', 'B', 'C', 0}, "without case"},
        {0, -1, {'a', 'b', 'c', 0}, {'a', 'b', 'd', 0}, "one less"},
        {0, -0x43, {'a', 'b', 0}, {'a', 'b', 'c', 0}, "the shorter one ends"},
        {0, 0x43, {'a', 'b', 'c', 0}, {'a', 'b', 0}, "the longer one goes on"},
        {0, 0, {0}, {0}, "both empty"},
        {0, 0xFFFE, {0xFFFF, 0}, {1, 0}, "units are unsigned"},
        {0, 0xF909 - 0x41, {KX_TAB, 'a', 0}, {'a', 0}, "codes count"},
        {0, 0x20, {0x2540, 0}, {0x2520, 0}, "no form table: double width is exact"},
        {1, 0, {0x2540, 0}, {0x2520, 0}, "double width without case"},
        {2, 0x20, {0x2540, 0}, {0x2520, 0}, "of another country"},
    };
    for (const auto &c : cases) {
        run_on(kCountries[static_cast<std::size_t>(c.country)]);
        EXPECT_EQ(ww_stricmp(c.a.data(), c.b.data()), c.wanted) << c.why;
        EXPECT_EQ(ww_stricmp(c.b.data(), c.a.data()), -c.wanted) << c.why;
        EXPECT_EQ(wwstrincmp(c.a.data(), c.b.data(), 1) != 0, c.wanted != 0) << c.why << ": an odd size is no bound";
    }
}

TEST(WideCompare, SizeInBytes) {
    run_on(kCountries[0]);
    const Units a{'a', 'b', 'c', 0}, b{'A', 'B', 'D', 0};
    const std::pair<std::int32_t, std::int32_t> cases[] = {{-1, 0}, {0, 0},  {1, -1},        {2, 0},
                                                           {3, -1}, {4, 0},  {5, -1},        {6, -1},
                                                           {7, -1}, {8, -1}, {INT32_MIN, 0}, {INT32_MAX, -1}};
    for (const auto &[size, wanted] : cases)
        EXPECT_EQ(wwstrincmp(a.data(), b.data(), size), wanted) << size;
    // Exact buffers without terminators: nothing past the size is read.
    const Units c{'x', 'y'}, d{'X', 'Y'};
    EXPECT_EQ(wwstrincmp(c.data(), d.data(), 4), 0);
    EXPECT_EQ(wwstrincmp(a.data(), a.data(), 1000), 0) << "the terminators end it";
}

} // namespace
