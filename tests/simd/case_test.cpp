// The kernels of letter case in every family, against the single characters.
#include <kxstr/letters.h>

#include "letters/case.h"
#include "support/fenced.h"
#include "support/test.h"

namespace {

using namespace kxstr::simd;
using namespace kxstr::test;
using Units = std::vector<std::uint16_t>;

constexpr std::size_t kUnlimited = SIZE_MAX;
constexpr std::uint16_t kFence = 0x7777;

std::uint16_t single(bool lower, std::uint16_t ch) {
    return lower ? wtolower(ch) : wtoupper(ch);
}

Units every_unit() {
    Units units;
    for (std::uint32_t ch = 1; ch <= 0xFFFF; ++ch)
        units.push_back(static_cast<std::uint16_t>(ch));
    units.push_back(0);
    return units;
}

TEST(CaseKernels, EveryUnitOfEveryCountry) {
    for (const auto &system : kCountries) {
        if (!runs_on(system)) continue;
        for (const bool lower : {false, true}) {
            const CaseMap &map = lower ? kxstr::letters::lower_map() : kxstr::letters::upper_map();
            const Units all = every_unit();
            Units wanted = all;
            for (std::uint16_t &unit : wanted) {
                const std::uint16_t ch = unit;
                unit = single(lower, ch);
                ASSERT_TRUE(ch < 0x1000 || unit == wtoall(lower ? 1 : 2, ch)) << ch;
                ASSERT_EQ(single(lower, unit), unit) << ch << ": changes again";
            }
            for (const Kernels *family : available()) {
                Units mapped = all;
                ASSERT_EQ(family->change_case16(map, mapped.data()), mapped.data());
                ASSERT_EQ(mapped, wanted) << family->name << system.language;
                ASSERT_EQ(family->mismatch_by_case16(map, all.data(), wanted.data(), kUnlimited), all.size() - 1);
            }
        }
    }
}

TEST(CaseKernels, EveryPlaceAndLimit) {
    kxstr::test::run_on(kCountries[1]);
    const Units letters{'a',    'A',    'z',    'Z',    '[',    0xF90A, 0x011A,
                        0x011B, 0x0A00, 0x2520, 0x2540, 0x2705, 0x2C0A, 0x0119};
    constexpr std::size_t kAsciiAndCodes = 6; // of which some texts are alone
    const CaseMap &map = kxstr::letters::lower_map();
    kxstr::test::Fenced memory;
    std::mt19937 random(1);
    for (const Kernels *family : available()) {
        SCOPED_TRACE(family->name);
        memory.for_every_place<std::uint16_t>([&](std::uint16_t *units, std::size_t count) {
            if (count == 0) return;
            const std::size_t length = count - 1, limit = random() % 4 != 0 ? kUnlimited : random() % (count + 2);
            const std::size_t mapped = std::min(length, limit);
            const std::size_t kinds = random() % 2 != 0 ? letters.size() : kAsciiAndCodes;
            for (std::size_t i = 0; i < length; ++i)
                units[i] = letters[random() % kinds];
            units[length] = 0;
            Units wanted(units, units + count);
            for (std::size_t i = 0; i < mapped; ++i)
                wanted[i] = wtolower(wanted[i]);
            Units copy(count + 1, kFence), copied = wanted;
            std::fill(copied.begin() + static_cast<std::ptrdiff_t>(mapped), copied.end(), kFence);
            copied.push_back(kFence);
            ASSERT_EQ(family->map_case16(map, units, copy.data(), limit), mapped) << count;
            ASSERT_EQ(copy, copied) << count;

            const std::size_t other = random() % count; // where the two are made to differ
            copy.assign(wanted.begin(), wanted.end());
            copy[other] = '!';
            ASSERT_EQ(family->mismatch_by_case16(map, units, copy.data(), limit), std::min(other, limit)) << count;

            // Where the limit ends the work, nothing behind it is read.
            if (mapped != 0 && random() % 2 != 0) {
                units[length] = 'A';
                ASSERT_EQ(family->map_case16(map, units, units, mapped), mapped);
                ASSERT_EQ(units[length], 'A');
                units[length] = 0;
            } else if (limit == kUnlimited) {
                ASSERT_EQ(family->change_case16(map, units), units);
            } else {
                ASSERT_EQ(family->map_case16(map, units, units, limit), mapped);
            }
            ASSERT_EQ(Units(units, units + count), wanted) << count;
            std::fill_n(units, count, std::uint16_t{0});
        });
    }
}

} // namespace
