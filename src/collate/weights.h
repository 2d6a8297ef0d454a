// What the comparison asks of a character, in one word: flat tables, one for each set of rules, made when they are
// first needed. values.h and contraction.h say what stands in them.
#pragma once

#include <array>
#include <atomic>
#include <compare>

#include "collate/values.h"

namespace kxstr::collate {

class Weight {
  public:
    enum Trait : std::uint32_t {
        kStarts = 1u << 17,  // a contraction or an expansion may begin with the character
        kExpands = 1u << 18, // it begins one whatever follows
        kFollows = 1u << 19, // it may go on with the character
        kStartsOrFollows = kStarts | kFollows,
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

    constexpr bool begins_contraction(Weight next) const noexcept {
        const std::uint32_t goes_on = (bits_ & kExpands) / kExpands | (next.bits_ & kFollows) / kFollows;
        return ((bits_ & kStarts) / kStarts & goes_on) != 0;
    }

    constexpr bool has_primary_of(Weight other) const noexcept { return (bits_ ^ other.bits_) >> kPrimaryShift == 0; }
    // First level alone, where it differs.
    constexpr bool sorts_before(Weight other) const noexcept { return bits_ < other.bits_; }

  private:
    static constexpr unsigned kCaseShift = 16;
    static constexpr unsigned kPrimaryShift = 20;

    std::uint32_t bits_ = 0;
};

// The weights of the characters by the rules of a language (of an East Asian one: those of its letters).
class Weights {
  public:
    explicit Weights(const LanguageRules &rules) noexcept;

    // Those of the first language whose weights these are; nothing but the code tells them from the others'.
    const LanguageRules &rules() const noexcept { return rules_; }

    Weight operator[](KxChar ch) const noexcept { return ch < kTabulated ? table_[ch] : beyond_table(ch); }

    // Whether contract() has to be asked about the character at the position. Without branches: which words begin
    // with such letters nobody can predict.
    bool may_contract(const KxChar *position) const noexcept {
        const Weight weight = (*this)[position[0]];
        const Weight next = (*this)[position[static_cast<std::size_t>(position[0] != 0)]];
        return weight.begins_contraction(next);
    }

  private:
    static constexpr KxChar kTabulated = 0x1000; // sets 0 to 15: no sequence and no letter lies beyond

    static Weight beyond_table(KxChar ch) noexcept {
        return ch == KX_TAB ? Weight{0, 0, 1, 0} : Weight{kNoValue, ch, 1, 0};
    }

    LanguageRules rules_;
    std::array<Weight, kTabulated> table_;
};

// Languages of the same rules share their weights: 16 KiB for each of 16 kinds, in static storage.
extern constinit std::array<std::atomic<const Weights *>, std::size(tables::kCollationLanguages)> known_weights;
const Weights &make_weights(std::size_t language) noexcept;

// No lock once they are made.
inline const Weights &weights_of(std::uint16_t language) noexcept {
    const std::size_t known = std::min<std::size_t>(language, known_weights.size() - 1);
    const Weights *weights = known_weights[known].load(std::memory_order_acquire);
    return weights != nullptr ? *weights : make_weights(known);
}

} // namespace kxstr::collate
