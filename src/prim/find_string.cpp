#include "prim/find_string.h"

#include <algorithm>
#include <array>
#include <functional>
#include <span>
#include <string_view>

#include "core/text.h"
#include "simd/kernels.h"

namespace kxstr::prim {
namespace {

using simd::kernels;
using Units = std::span<const KxChar>;

// How many units at a place are as in `wanted`; most places differ at once.
std::size_t equal_units(const KxChar *place, Units wanted) noexcept {
    const std::size_t few = std::min<std::size_t>(wanted.size(), 4);
    for (std::size_t i = 0; i < few; ++i) {
        if (place[i] != wanted[i]) return i;
    }
    return few + kernels().mismatch16(place + few, wanted.data() + few, wanted.size() - few);
}

// Small where text has a unit often: the letters of English by their frequency come close enough for others, too.
constexpr auto kRarity = [] {
    std::array<std::uint8_t, 0x80> rarity{};
    rarity.fill(0xFF);
    std::uint8_t rank = 0;
    for (const char16_t ch : std::u16string_view(u" etaoinsrhldcumfpgwybvkxjqz"))
        rarity[ch] = rank++;
    return rarity;
}();

std::uint8_t rarity_of(KxChar ch) noexcept {
    return ch < kRarity.size() ? kRarity[ch] : std::uint8_t{0xFF};
}

// The two rarest units near the start, and one that differs from them, if there is one: so a run of one character holds
// no place that looks right.
simd::Signs16 signs_of(Units wanted) noexcept {
    constexpr std::size_t kNear = 32;
    std::size_t rarest = 0, second = 0;
    for (std::size_t i = 1; i < std::min(wanted.size(), kNear); ++i) {
        if (rarity_of(wanted[i]) >= rarity_of(wanted[rarest])) {
            second = rarest;
            rarest = i;
        } else if (second == rarest || rarity_of(wanted[i]) >= rarity_of(wanted[second])) {
            second = i;
        }
    }
    std::size_t other = 0;
    if (wanted[0] == wanted[rarest]) {
        const std::size_t run = equal_units(wanted.data(), wanted.subspan(1)) + 1;
        if (run < wanted.size()) other = run;
    }
    std::size_t at[] = {other, second, rarest};
    std::ranges::sort(at);
    return {{at[0], at[1], at[2]}, {wanted[at[0]], wanted[at[1]], wanted[at[2]]}};
}

bool has_signs(const KxChar *place, const simd::Signs16 &signs) noexcept {
    const auto &[at, units] = signs;
    return place[at[0]] == units[0] && place[at[1]] == units[1] && place[at[2]] == units[2];
}

// Where the greatest suffix begins, by an order of the units, and the period of that suffix.
struct Suffix {
    std::size_t start, period;
};
template <class Less> Suffix greatest_suffix(Units wanted, Less less) noexcept {
    Suffix greatest{0, 1};
    std::size_t rival = 1, equal = 0; // the suffixes at both places begin with so many equal units
    while (rival + equal < wanted.size()) {
        const KxChar ours = wanted[greatest.start + equal], theirs = wanted[rival + equal];
        if (less(ours, theirs)) {
            greatest = {rival, 1};
            ++rival;
            equal = 0;
        } else if (less(theirs, ours)) {
            rival += equal + 1;
            equal = 0;
            greatest.period = rival - greatest.start;
        } else if (++equal == greatest.period) {
            rival += equal;
            equal = 0;
        }
    }
    return greatest;
}

// The two-way search of Crochemore and Perrin. `wanted` is split where no shift short of its period makes both halves
// fit what was read; so a difference in the right half, read first, allows to go on behind it, and one in the left half
// to go on by the period.
const KxChar *find_two_way(const KxChar *text, Units wanted, const simd::Signs16 &signs) noexcept {
    const Suffix ascending = greatest_suffix(wanted, std::less<>{});
    const Suffix descending = greatest_suffix(wanted, std::greater<>{});
    const auto [split, suffix_period] = ascending.start > descending.start ? ascending : descending;
    const bool is_periodic = split + suffix_period <= wanted.size() &&
                             equal_units(wanted.data() + suffix_period, wanted.first(split)) == split;
    const std::size_t period = is_periodic ? suffix_period : std::max(split, wanted.size() - split) + 1;

    const KxChar *end = text;   // there is text up to here
    std::size_t remembered = 0; // units at the start that are known to be equal
    for (const KxChar *place = text;;) {
        if (end < place + wanted.size()) {
            end += kernels().find_within16(end, wanted.size() + 1024, 0);
            if (end < place + wanted.size()) return nullptr;
        }
        // A step by the period keeps what it remembers; to leap then would read the same units again and again.
        if (remembered == 0 && !has_signs(place, signs)) {
            ++place;
            if (!has_signs(place, signs)) place = kernels().find_signs16(place, signs);
            if (place == nullptr) return nullptr;
            continue;
        }
        const std::size_t from = std::max(split, remembered);
        const std::size_t right = from + equal_units(place + from, wanted.subspan(from));
        if (right < wanted.size()) {
            place += right - split + 1;
            remembered = 0;
            continue;
        }
        if (remembered >= split ||
            equal_units(place + remembered, wanted.subspan(remembered, split - remembered)) == split - remembered)
            return place;
        place += period;
        remembered = is_periodic ? wanted.size() - period : 0;
    }
}

} // namespace

const KxChar *find_string(const KxChar *text, const KxChar *wanted) noexcept {
    if (const auto [is_known, place] = kernels().find_short16(text, wanted); is_known) return place;
    const Units units(wanted, length_of(wanted));
    if (units.size() == 1) return kernels().find16(text, wanted[0]);
    // The choice of signs pays only in a longer text.
    for (const KxChar *const nearby = text + 32; text != nearby; ++text) {
        if (*text == 0) return nullptr;
        if (text[0] == units[0] && text[1] == units[1] && equal_units(text, units) == units.size()) return text;
    }
    const simd::Signs16 signs = signs_of(units);
    // Places that have the signs are rare in ordinary text, and looking at them costs little. Where it comes to cost
    // more than the way so far, the search that nothing can slow down takes over.
    constexpr std::size_t kCostOfLooking = 16, kStart = 512; // in units
    std::size_t cost = 0;
    const KxChar *place = text;
    while ((place = kernels().find_signs16(place, signs)) != nullptr) {
        const std::size_t equal = equal_units(place, units);
        if (equal == units.size()) return place;
        cost += equal + kCostOfLooking;
        ++place;
        if (cost > static_cast<std::size_t>(place - text) + kStart) return find_two_way(place, units, signs);
    }
    return nullptr;
}

} // namespace kxstr::prim
