// What the comparison asks of a character, in one word: flat tables, one for each set of rules, made when they are
// first needed. values.h and contraction.h say what stands in them.
#pragma once

#include <array>
#include <atomic>
#include <compare>

#include "collate/language_number.h"
#include "collate/values.h"
#include "simd/kernels.h"

namespace kxstr::collate {

class Weight {
  public:
    enum Trait : std::uint32_t {
        kFollows = 1u << 17, // a contraction may go on with the character
        kStarts = 1u << 18,  // a contraction or an expansion may begin with it
        kReaches = 1u << 19, // either: what comes behind it may belong to it
        kExpands = 1u << 20, // it begins one whatever follows
        kIgnored = 1u << 21, // it decides nothing at the first level
        kMoves = 1u << 22,   // what begins with it may lie elsewhere than right behind it
    };

    constexpr Weight() noexcept = default;
    // Of the terminator, which sorts before all characters.
    static constexpr Weight end() noexcept { return Weight{}; }

    constexpr Weight(std::uint8_t primary, std::uint16_t secondary, std::uint8_t letter_case, std::uint32_t traits)
        : bits_((primary + 1u) << kPrimaryShift | traits | std::uint32_t{letter_case} << kCaseShift | secondary) {}

    constexpr std::uint8_t primary() const noexcept { return static_cast<std::uint8_t>((bits_ >> kPrimaryShift) - 1); }
    constexpr std::uint16_t secondary() const noexcept { return static_cast<std::uint16_t>(bits_); }
    constexpr std::uint8_t letter_case() const noexcept { return bits_ >> kCaseShift & 1; }
    constexpr bool is(Trait trait) const noexcept { return (bits_ & trait) != 0; }

    // Not 0 if so: which words begin with such letters nobody can predict, so several answers take one test.
    constexpr std::uint32_t begins_contraction(Weight next) const noexcept {
        static_assert(kStarts == kFollows << 1);
        return bits_ & ((next.bits_ << 1 & kStarts) | kExpands);
    }
    // The same of a contraction that begins before two texts differ and may reach over that place.
    static constexpr std::uint32_t reaches_over(Weight before, Weight a, Weight b) noexcept {
        static_assert(kReaches == kFollows << 2);
        return before.bits_ & (a.bits_ | b.bits_) << 2 & kReaches;
    }

    constexpr bool has_primary_of(Weight other) const noexcept { return (bits_ ^ other.bits_) >> kPrimaryShift == 0; }
    // First level alone, where it differs.
    constexpr bool sorts_before(Weight other) const noexcept { return bits_ < other.bits_; }
    // Whether the first level tells the two apart.
    static constexpr bool decide(Weight a, Weight b) noexcept {
        return !a.has_primary_of(b) && ((a.bits_ | b.bits_) & kIgnored) == 0;
    }

    // Whether what lies behind the two, which differ at the first level, makes no difference.
    static constexpr bool stay(Weight a, Weight b) noexcept { return ((a.bits_ | b.bits_) & kMoves) == 0; }

  private:
    static constexpr unsigned kCaseShift = 16;
    static constexpr unsigned kPrimaryShift = 23;

    std::uint32_t bits_ = 0;
};

// The weights of the characters by the rules of a language (of an East Asian one: those of its letters), and the first
// level as the kernels take it.
class Weights : public simd::OrderValues {
  public:
    explicit Weights(const LanguageRules &rules) noexcept;

    // Those of the first language whose weights these are; nothing but the code tells them from the others'.
    const LanguageRules &rules() const noexcept { return rules_; }

    // How the comparison goes.
    enum class Way : std::uint8_t { kLetters, kContractions, kIgnorables, kEastAsian };
    Way way() const noexcept { return way_; }

    // The comparison of two strings that are there, by the caller's flags.
    GoOn *compare;

    Weight operator[](KxChar ch) const noexcept {
        if (ch < kTabulated) [[likely]]
            return table_[ch];
        return beyond_table(ch);
    }

    // Whether these are in the table.
    template <class... Char> static bool has_all(Char... chars) noexcept { return (chars | ...) < kTabulated; }
    Weight tabulated(KxChar ch) const noexcept { return table_[ch]; }

    // Not 0 if contract() has to be asked about the character at the position.
    std::uint32_t may_contract(const KxChar *position) const noexcept {
        const Weight weight = (*this)[position[0]];
        const Weight next = (*this)[position[weight.is(Weight::kStarts) ? 1 : 0]];
        return weight.begins_contraction(next);
    }

  private:
    static constexpr KxChar kTabulated = 0x1000; // sets 0 to 15: no sequence and no letter lies beyond

    static Weight beyond_table(KxChar ch) noexcept {
        return ch == KX_TAB ? Weight{0, 0, 1, 0} : Weight{kNoValue, ch, 1, 0};
    }

    std::uint8_t order_value(KxChar ch) const noexcept;
    void find_pairs() noexcept;

    LanguageRules rules_;
    Way way_;
    std::array<Weight, kTabulated> table_;
};

// What compares in each way: from the start, and where the kernels' values have told nothing.
struct Comparison {
    Weights::GoOn *compare;
    Weights::GoOn *go_on;
};
Comparison comparison_of(Weights::Way way) noexcept;

// Languages of the same rules share their weights: 18 KiB for each of 16 kinds, in static storage.
extern constinit std::array<std::atomic<const Weights *>, std::size(tables::kCollationLanguages)> weights_by_number;
extern constinit std::array<std::atomic<const Weights *>, kCodePlaces> weights_by_code;

// Those of a language by its number or by its code (null for that of the number 0); null before they are made. No lock.
inline const Weights *known_weights(std::uint16_t language) noexcept {
    const std::size_t known = std::min<std::size_t>(language, weights_by_number.size() - 1);
    return weights_by_number[known].load(std::memory_order_acquire);
}
inline const Weights *known_weights(const char *code) noexcept {
    return weights_by_code[code != nullptr ? place_of_code(code) : 0].load(std::memory_order_acquire);
}
const Weights *make_weights(std::uint16_t language) noexcept;
const Weights *make_weights(const char *code) noexcept;

inline const Weights &weights_of(std::uint16_t language) noexcept {
    const Weights *const weights = known_weights(language);
    return weights != nullptr ? *weights : *make_weights(language);
}

} // namespace kxstr::collate
