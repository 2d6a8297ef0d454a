// The comparison by language number as a walk, character by character, over the values themselves: what the comparison
// by tables has to answer.
#pragma once

#include <utility>

#include "collate/contraction.h"
#include "collate/east_asian.h"

namespace kxstr::reference {

using namespace collate;

template <class Value> int sign_of(Value a, Value b) noexcept {
    return static_cast<int>(a > b) - static_cast<int>(a < b);
}

// One of the two strings while they are compared.
struct Side {
    const KxChar *position;
    KxChar ch = 0;
    KxChar pending = 0;         // read before the string goes on; 0: none
    std::uint16_t previous = 0; // East Asian: primary value of the character before

    // Only a leading code is skipped, and only one.
    explicit Side(const KxChar *text) noexcept : position(is_code(*text) ? text + 1 : text) {}

    KxChar take() noexcept { return *position != 0 ? *position++ : KxChar{0}; }
    void read() noexcept { ch = pending != 0 ? std::exchange(pending, KxChar{0}) : take(); }
};

class Comparison {
  public:
    Comparison(const KxChar *s1, const KxChar *s2, std::uint16_t language, bool case_counts, bool kana_counts) noexcept
        : rules_(rules_of(language)), case_counts_(case_counts), kana_counts_(kana_counts), a_(s1), b_(s2) {}

    int run() noexcept {
        for (;;) {
            a_.read();
            b_.read();
            if (a_.ch == 0 || b_.ch == 0) return finish();
            const int difference = compare_one();
            if (difference != 0) return difference;
        }
    }

  private:
    // Compares the current characters; remembers what they say at the lower levels.
    int compare_one() noexcept {
        switch (rules_.kind) {
        case LanguageKind::kEastAsian: return compare_east_asian();
        case LanguageKind::kHebrewArabic: return compare_values();
        case LanguageKind::kPlain: return a_.ch == b_.ch ? 0 : compare_values();
        case LanguageKind::kLetters: break;
        }
        a_.pending = contract(a_.ch, a_.position, rules_);
        b_.pending = contract(b_.ch, b_.position, rules_);
        if (a_.ch != b_.ch || a_.pending != b_.pending) return compare_values();
        a_.pending = b_.pending = 0;
        return 0;
    }

    std::uint8_t take_value(Side &side) const noexcept {
        std::uint8_t value = primary_value(side.ch, rules_);
        if ((side.pending & kContracted) != 0) {
            ++value;
            side.pending &= static_cast<KxChar>(~kContracted);
        }
        return value;
    }

    int compare_values() noexcept {
        const std::uint8_t value_a = take_value(a_);
        const std::uint8_t value_b = take_value(b_);
        const bool ignorable_a = value_a == kIgnorable;
        const bool ignorable_b = value_b == kIgnorable;
        if (value_a != value_b && !ignorable_a && !ignorable_b) return sign_of(value_a, value_b);
        if (case_counts_ && third_ == 0) {
            third_ = sign_of(case_value(a_.ch), case_value(b_.ch));
            if (rules_.upper_first) third_ = -third_;
        }
        if (second_ == 0)
            second_ = sign_of(secondary_value(a_.ch, value_a, rules_), secondary_value(b_.ch, value_b, rules_));
        // An ignorable character meets nothing: the other side's is read again.
        if (ignorable_a && !ignorable_b) --b_.position;
        if (ignorable_b && !ignorable_a) --a_.position;
        return 0;
    }

    EastAsianValues take_east_asian(Side &side) const noexcept {
        side.pending = side.take();
        const EastAsianValues values = east_asian_values(side.ch, side.pending, side.previous, !case_counts_);
        if (values.characters == 2) side.pending = 0;
        side.previous = values.primary;
        return values;
    }

    int compare_east_asian() noexcept {
        const EastAsianValues a = take_east_asian(a_);
        const EastAsianValues b = take_east_asian(b_);
        if (a.primary != b.primary) return sign_of(a.primary, b.primary);
        if (second_ == 0) second_ = sign_of(a.secondary, b.secondary);
        if (case_counts_ && third_ == 0) third_ = sign_of(a.flags, b.flags);
        if (kana_counts_ && third_ == 0) third_ = sign_of(a.flags & kUnmarkedCase, b.flags & kUnmarkedCase);
        return 0;
    }

    int finish() const noexcept {
        const int lower_levels = second_ != 0 ? second_ : third_;
        if (a_.ch == 0 && b_.ch == 0) return lower_levels;
        const int longer = a_.ch != 0 ? 1 : -1;
        if (rules_.kind != LanguageKind::kHebrewArabic) return longer;
        // What is left over counts at the first level unless it is ignorable throughout.
        const KxChar *rest = (a_.ch != 0 ? a_ : b_).position - 1;
        while (*rest != 0 && primary_value(*rest, rules_) == kIgnorable)
            ++rest;
        return *rest != 0 || second_ == 0 ? longer : second_;
    }

    const LanguageRules &rules_;
    bool case_counts_;
    bool kana_counts_;
    Side a_;
    Side b_;
    int second_ = 0;
    int third_ = 0;
};

inline int compare(const KxChar *s1, const KxChar *s2, std::uint16_t language, bool case_counts, bool kana_counts) {
    return Comparison(s1, s2, language, case_counts, kana_counts).run();
}

} // namespace kxstr::reference
