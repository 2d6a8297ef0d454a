// The scans of every family that this processor can run, against the plain ones.
#include <cstdlib>
#include <kxstr/prim.h>
#include <kxstr/strops.h>

#include "simd/kernels.h"
#include "simd/nearest.h"
#include "support/fenced.h"
#include "support/test.h"

namespace {

using namespace kxstr::simd;
using kxstr::test::Fenced;

TEST(Kernels, TheEnvironmentChoosesAmongThoseThatCanRun) {
    const char *const wanted = std::getenv("KXSTR_KERNELS");
    const Kernels *expected = available().back();
    for (const Kernels *family : available())
        if (wanted != nullptr && family->name == std::string(wanted)) expected = family;
    EXPECT_EQ(&kxstr::simd::kernels(), expected);
    EXPECT_EQ(nearest_end == 0, expected == available().front()); // plain is plain to the first byte
}

// Each scan of a family over texts of a few different units (so that there is something to find, and something to miss)
// gives what the plain one gives.
class Scan : public testing::TestWithParam<const Kernels *> {
  protected:
    const Kernels &family = *GetParam(), &plain = *available().front();
    Fenced memory, other_memory, destination;
    std::minstd_rand random;

    template <class Unit> Unit any_unit() {
        static constexpr std::uint16_t kUnits[] = {0x0102, 0x0001, 0x6141, 0x4161, 0x615A,
                                                   0x7A7A, 0x7B5B, 0xFFFF, 0x0061, 0x0041};
        const std::uint16_t unit = kUnits[random() % (random() % 4 == 0 ? std::size(kUnits) : 1)];
        return std::max(static_cast<Unit>(unit), Unit{1}); // no terminator
    }

    template <class Unit> void fill(Unit *units, std::size_t count) {
        std::generate_n(units, count, [this] { return any_unit<Unit>(); });
    }

    // A copy that differs in one unit or not at all, or ends early, so many bytes before the end of other_memory.
    template <class Unit> Unit *changed_copy(const Unit *units, std::size_t count) {
        Unit *copy = reinterpret_cast<Unit *>(other_memory.end()) - count - random() % 64;
        std::copy_n(units, count, copy);
        if (random() % 4 != 0) copy[random() % count] = static_cast<Unit>(random() % 3);
        copy[count - 1] = 0;
        return copy;
    }

    void check_counted(const std::uint16_t *units, std::size_t count, std::uint16_t wanted) {
        ASSERT_EQ(family.find_within16(units, count, wanted), plain.find_within16(units, count, wanted));
        const auto [low, high] = std::minmax({wanted, any_unit<std::uint16_t>()});
        ASSERT_EQ(family.outside16(units, count, low, high), plain.outside16(units, count, low, high));
    }

    void check_counted(const std::uint8_t *bytes, std::size_t count, std::uint8_t wanted) {
        const auto [low, high] = std::minmax({wanted, any_unit<std::uint8_t>()});
        ASSERT_EQ(family.outside8(bytes, count, low, high), plain.outside8(bytes, count, low, high));
    }

    // Tells nothing but what a walk finds; the families that have vectors find it in the first 15 units.
    void check_order(const std::uint16_t *a, const std::uint16_t *b) {
        OrderValues values{};
        for (std::uint8_t *value : {&values.ascii[1], &values.ascii[2], &values.latin[1]})
            *value = static_cast<std::uint8_t>(random() % 4 == 0 ? OrderValues::kNotTold : 1 + random() % 3);
        values.ascii[0x61] = values.ascii[0x41] = values.ascii[1]; // a and A
        for (std::uint16_t unit = 0; unit < OrderValues::kEndLatin; ++unit)
            values.first[unit] = random() % 2 != 0 ? values.of(unit) : OrderValues::kNotTold;
        if (random() % 2 != 0) {
            values.ascii[2] = static_cast<std::uint8_t>(values.ascii[1] + 1);
            std::ranges::fill(values.begins, OrderValues::kMoves);
            values.begins[1] = values.follows[2] = OrderValues::kMoves | 1;
            values.begins[2] = values.follows[1] = OrderValues::kMoves | 2;
            values.pairs[0] = {0x21, 0x22, 5};
            values.pairs[1] = {0x22, 0x21, 5};
            values.pair_count = random() % 3;
        }
        constexpr int kWentOn = 7;
        values.go_on = [](const std::uint16_t *, const std::uint16_t *, const OrderValues &, std::uint32_t flag,
                          std::uint32_t other_flag) noexcept { return flag == 2 && other_flag == 3 ? kWentOn : 0; };
        const int expected = plain.order_by_values16(a, b, values, 2, 3);
        const int told = family.order_by_values16(a, b, values, 2, 3);
        std::size_t i = 0;
        while (values.of(a[i]) == values.of(b[i]) && a[i] != 0 && values.of(a[i]) != OrderValues::kNotTold)
            ++i;
        const auto is_near = [](const void *text) {
            return reinterpret_cast<std::uintptr_t>(text) % 4096 <= 4096 - 32;
        };
        const bool may_go_on = i >= 15 || !is_near(a) || !is_near(b) || values.of(a[i]) == values.of(b[i]);
        ASSERT_TRUE(told == expected || (told == kWentOn && may_go_on)) << i;
    }

    // Values of a few kinds: none, of letters that have one value, and of a capital, which its letter has.
    void check_order_by_block(const std::uint16_t *a, const std::uint16_t *b) {
        constexpr int kWentOn = 7;
        std::uint8_t block[2 + 0x5F]{' ', 0x5F};
        std::generate_n(block + 2, 0x5F, [this] { return static_cast<std::uint8_t>(random() % 3); });
        const auto go_on = [](const std::uint16_t *, const std::uint16_t *) noexcept { return kWentOn; };
        const bool is_far = std::max(reinterpret_cast<std::uintptr_t>(a) % 4096,
                                     reinterpret_cast<std::uintptr_t>(b) % 4096) > 4096 - 32;
        const auto check = [&](OrderByBlock16 *told, OrderByBlock16 *expected, std::size_t place) {
            const int order = told(a, b, block, go_on);
            ASSERT_TRUE(order == expected(a, b, block, go_on) || (order == kWentOn && (is_far || place >= 16)));
        };
        check(family.order_by_block16, plain.order_by_block16, plain.mismatch16(a, b, SIZE_MAX));
        check(family.order_by_block16_caseless, plain.order_by_block16_caseless,
              plain.mismatch16_caseless(a, b, SIZE_MAX));
    }

    // `count` with the terminator.
    void check_strings(const std::uint16_t *a, std::size_t count, std::size_t limit, std::uint16_t wanted) {
        ASSERT_EQ(family.find_zero16(a), a + count - 1);
        ASSERT_EQ(family.size16(a), (count - 1) * sizeof *a);
        ASSERT_EQ(family.find16(a, wanted), plain.find16(a, wanted));
        ASSERT_EQ(family.find_last16(a, wanted), plain.find_last16(a, wanted));
        const std::uint16_t *const b = changed_copy(a, count);
        const std::size_t from = random() % count, length = std::min<std::size_t>(random() % 6 + 1, count - from);
        auto *const sought = reinterpret_cast<std::uint16_t *>(destination.end()) - length - 1 - random() % 20;
        *std::copy_n(b + from, length, sought) = 0;
        const std::uint16_t *const plain_sought = sought;
        if (*sought != 0) {
            const auto [is_known, place] = family.find_short16(a, sought);
            const auto *const found = std::search(a, a + count - 1, plain_sought, plain.find_zero16(plain_sought));
            ASSERT_TRUE(!is_known || place == (found != a + count - 1 ? found : nullptr));
        }
        Signs16 signs{};
        std::generate_n(signs.at, 3, [&] { return random() % (count + random() % 2); });
        std::ranges::sort(signs.at);
        fill(signs.units, 3);
        ASSERT_EQ(family.find_signs16(a, signs), plain.find_signs16(a, signs));
        ASSERT_NO_FATAL_FAILURE(check_order(a, b));
        ASSERT_NO_FATAL_FAILURE(check_order_by_block(a, b));
        ASSERT_EQ(family.mismatch16(a, b, limit), plain.mismatch16(a, b, limit));
        ASSERT_EQ(family.mismatch16(b, a, limit), plain.mismatch16(b, a, limit));
        ASSERT_EQ(family.mismatch16_caseless(a, b, limit), plain.mismatch16_caseless(a, b, limit));
        ASSERT_EQ(family.compare16(a, b), plain.compare16(a, b));
        auto *const room = reinterpret_cast<std::uint16_t *>(destination.end()) - count;
        std::fill_n(room - 64, 64 + count, std::uint16_t{0xA5A5});
        room[-1] = static_cast<std::uint16_t>(random() % 2); // a terminator, or none
        ASSERT_TRUE(family.copy16(room, a) == room && std::equal(a, a + count, room) && room[-1] <= 1);
        // Down, by so little that both overlap or by more; the string ends at the end of its page.
        auto *const moved = reinterpret_cast<std::uint16_t *>(other_memory.end()) - count;
        std::copy_n(a, count, moved);
        auto *const below = moved - 1 - random() % 300;
        below[-1] = 0xA5A5;
        family.copy16(below, moved);
        ASSERT_TRUE(std::equal(a, a + count, below) && below[-1] == 0xA5A5);
        ASSERT_TRUE(family.copy16(moved, below) == moved && std::equal(a, a + count, moved));
    }

    void check_strings(const std::uint8_t *a, std::size_t count, std::size_t limit, std::uint8_t wanted) {
        std::uint8_t *const b = changed_copy(a, count);
        ASSERT_EQ(family.mismatch8(a, b, limit), plain.mismatch8(a, b, limit));
        ASSERT_EQ(family.compare8(a, b), plain.compare8(a, b));
        ASSERT_EQ(family.size8(a), count - 1);
        ASSERT_EQ(family.find8(a, wanted), plain.find8(a, wanted));
        // The exported functions have a way of their own for the first bytes.
        const auto text = [](const std::uint8_t *bytes) { return reinterpret_cast<const char *>(bytes); };
        ASSERT_EQ(wstrlen(text(a)), count - 1);
        ASSERT_EQ(wstrchr(text(a), wanted), text(plain.find8(a, wanted)));
        ASSERT_EQ(wstrcmp(text(a), text(b)), plain.compare8(a, b));
        for (int changes = 0; changes < 2; ++changes) {
            ASSERT_EQ(family.compare8_caseless(a, b), plain.compare8_caseless(a, b));
            ASSERT_EQ(w_stricmp(text(a), text(b)), plain.compare8_caseless(a, b));
            b[random() % count] ^= 0x20;
            b[random() % count] = wanted;
            b[count - 1] = 0;
        }
    }

    // Around the units is what would be found if a kernel looked there.
    template <class Unit> void check(Unit *units, std::size_t count) {
        fill(units, count);
        const Unit wanted = random() % 8 == 0 ? Unit{0} : any_unit<Unit>();
        ASSERT_NO_FATAL_FAILURE(check_counted(units, count, wanted));
        if (count != 0) {
            units[count - 1] = 0;
            const std::size_t limit = random() % 2 == 0 ? SIZE_MAX : random() % (count + 2);
            ASSERT_NO_FATAL_FAILURE(check_strings(units, count, limit, wanted));
        }
        std::fill_n(units, count, Unit{0});
    }

    template <class Unit> void check_everywhere() {
        memory.for_every_place<Unit>([&](Unit *units, std::size_t count) {
            if (!HasFatalFailure()) check(units, count);
        });
        for (int i = 0; i < 3000 && !HasFatalFailure(); ++i) { // over ends of pages, and the blocks of four
            const std::size_t count = random() % 3000;
            check(reinterpret_cast<Unit *>(memory.begin()) + random() % 20000, count);
        }
    }
};

// Nothing is read behind the limit, where there need be no terminator.
TEST_P(Scan, AMismatchEndsAtTheLimit) {
    for (Fenced *const area : {&memory, &other_memory})
        std::fill(area->begin(), area->end(), std::uint8_t{1});
    for (std::size_t count = 0; count <= 700; ++count) {
        for (const std::size_t distance : {0u, 1u, 31u, 64u, 200u}) {
            const std::uint8_t *const a = memory.end() - count, *const b = other_memory.end() - count - distance;
            ASSERT_EQ(family.mismatch8(a, b, count), count);
            ASSERT_EQ(family.mismatch8(b, a, count), count);
            if (count % 2 != 0 || distance % 2 != 0) continue; // no units there
            const auto *const units_a = reinterpret_cast<const std::uint16_t *>(a);
            const auto *const units_b = reinterpret_cast<const std::uint16_t *>(b);
            ASSERT_EQ(family.mismatch16(units_a, units_b, count / 2), count / 2);
            ASSERT_EQ(family.mismatch16_caseless(units_b, units_a, count / 2), count / 2);
        }
    }
}

TEST_P(Scan, UnitsAsThePlainOnes) {
    check_everywhere<std::uint16_t>();
}

TEST_P(Scan, BytesAsThePlainOnes) {
    check_everywhere<std::uint8_t>();
}

#ifndef __SANITIZE_ADDRESS__ // the sanitizers come together, and one of them has no odd addresses
TEST_P(Scan, UnitsAtOddAddresses) {
    for (int i = 0; i < 3000 && !HasFatalFailure(); ++i)
        check(reinterpret_cast<std::uint16_t *>(memory.begin() + 2 * (random() % 5000) + 1), random() % 300);
}
#endif

INSTANTIATE_TEST_SUITE_P(Families, Scan, testing::ValuesIn(available().begin(), available().end()),
                         [](const auto &tested) { return std::string(tested.param->name); });

} // namespace
