// The comparison of strings by language number, and the values of which a caller builds sort keys.
#include <kxstr/collate.h>
#include <limits>
#include <utility>

#include "collate/contraction.h"
#include "collate/east_asian.h"
#include "collate/language_number.h"
#include "collate/weights.h"
#include "simd/kernels.h"

namespace kxstr::collate {
namespace {

template <class Value> int sign_of(Value a, Value b) noexcept {
    return static_cast<int>(a > b) - static_cast<int>(a < b);
}

// The first difference at each of the lower levels; 0: none so far.
struct LowerLevels {
    int second = 0;
    int third = 0;

    void note_second(unsigned a, unsigned b) noexcept {
        if (second == 0) second = sign_of(a, b);
    }
    void note_third(unsigned a, unsigned b) noexcept {
        if (third == 0) third = sign_of(a, b);
    }
    void note(Weight a, Weight b) noexcept {
        note_second(a.secondary(), b.secondary());
        note_third(a.letter_case(), b.letter_case());
    }
    // The result where the first level finds no difference.
    int result(bool third_counts) const noexcept { return second != 0 || !third_counts ? second : third; }
};

// How many characters the strings have in common from the start, terminators not among them.
std::size_t common_start(const KxChar *a, const KxChar *b) noexcept {
    if (*a != *b) return 0;
    return simd::kernels().mismatch16(a, b, std::numeric_limits<std::size_t>::max());
}

// The same for words that have little in common at the start: the processor guesses how much sooner than it can tell.
std::size_t short_common_start(const KxChar *a, const KxChar *b) noexcept {
    constexpr std::size_t kShort = 4;
    std::size_t alike = 0;
    while (alike < kShort && a[alike] == b[alike] && a[alike] != 0)
        ++alike;
    return alike < kShort ? alike : kShort + common_start(a + kShort, b + kShort);
}

// Most comparisons are decided where the strings differ first, at the first level. So that has a short way for each
// kind of language, which keeps nothing and ends in a jump: to the function for strings that begin alike, or to the one
// that goes on where nothing is decided. `case_flag` and `kana_flag` are what the caller gave, looked at by the last.
bool counts(std::uint32_t flag) noexcept {
    return low16(flag) != 0;
}

// Only a leading code is skipped, and only one.
const KxChar *behind_leading_code(const KxChar *text) noexcept {
    return is_code(*text) ? text + 1 : text;
}

// ---- Letters ----

// One of the strings while contractions are looked for.
struct Side {
    const KxChar *position;
    KxChar ch = 0;
    KxChar pending = 0; // read before the string goes on; 0: none

    KxChar take() noexcept { return *position != 0 ? *position++ : KxChar{0}; }
    void read() noexcept { ch = pending != 0 ? std::exchange(pending, KxChar{0}) : take(); }

    // Of the character that was read. Nothing is pending before.
    void contract(const Weights &weights) noexcept {
        if (weights[ch].begins_contraction(weights[*position]) != 0)
            pending = collate::contract(ch, position, weights.rules());
    }

    // The first-level value; a contraction's is that behind the letter it begins with.
    int take_primary(Weight weight) noexcept {
        const bool contracted = (pending & kContracted) != 0;
        pending &= static_cast<KxChar>(~kContracted);
        return weight.primary() + static_cast<int>(contracted);
    }
};

// Goes on over characters that may contract, until nothing is pending on either side. Not 0: the first level differs.
int compare_contracted(const KxChar *&s1, const KxChar *&s2, LowerLevels &lower, const Weights &weights) noexcept {
    Side a{s1};
    Side b{s2};
    do {
        a.read();
        b.read();
        if (a.ch == 0 || b.ch == 0) return a.ch != 0 ? 1 : -1; // where nothing is pending both have gone on
        a.contract(weights);
        b.contract(weights);
        if (a.ch == b.ch && a.pending == b.pending) {
            a.pending = b.pending = 0;
            continue;
        }
        const Weight weight_a = weights[a.ch];
        const Weight weight_b = weights[b.ch];
        if (const int difference = sign_of(a.take_primary(weight_a), b.take_primary(weight_b)); difference != 0)
            return difference;
        lower.note(weight_a, weight_b);
    } while (a.pending != 0 || b.pending != 0);
    s1 = a.position;
    s2 = b.position;
    return 0;
}

// Nothing but the end of both strings is left, or the first level is decided.
int decide(Weight a, Weight b, LowerLevels lower, const Weights &weights, bool case_counts) noexcept {
    // The end has a weight of its own, so that the longer string sorts behind.
    if (!a.has_primary_of(b)) return a.sorts_before(b) ? -1 : 1;
    if (weights.rules().upper_first) lower.third = -lower.third;
    return lower.result(case_counts);
}

// From where no contraction reaches over from before.
template <bool contractions>
[[gnu::noinline]] int compare_letters_from(const KxChar *a, const KxChar *b, const Weights &weights,
                                           std::uint32_t case_flag) noexcept {
    LowerLevels lower;
    for (;;) {
        if constexpr (contractions) {
            if ((weights.may_contract(a) | weights.may_contract(b)) != 0) {
                if (const int difference = compare_contracted(a, b, lower, weights); difference != 0) return difference;
                continue;
            }
        }
        const Weight weight_a = weights[*a];
        const Weight weight_b = weights[*b];
        if (!weight_a.has_primary_of(weight_b) || *a == 0)
            return decide(weight_a, weight_b, lower, weights, counts(case_flag));
        lower.note(weight_a, weight_b);
        ++a;
        ++b;
    }
}

template <bool contractions>
[[gnu::noinline]] int compare_letters_alike(const KxChar *a, const KxChar *b, const Weights &weights,
                                            std::uint32_t case_flag) noexcept {
    std::size_t alike = common_start(a, b);
    const Weight weight_a = weights[a[alike]];
    const Weight weight_b = weights[b[alike]];
    std::uint32_t contracts = 0;
    if constexpr (contractions) {
        const Weight before = alike != 0 ? weights[a[alike - 1]] : Weight::end();
        contracts = Weight::reaches_over(before, weight_a, weight_b) | weights.may_contract(a + alike) |
                    weights.may_contract(b + alike);
    }
    if (contracts == 0 && !weight_a.has_primary_of(weight_b)) return weight_a.sorts_before(weight_b) ? -1 : 1;
    if constexpr (contractions) {
        while (alike > 0 && weights[a[alike - 1]].is(Weight::kReaches))
            --alike;
    }
    return compare_letters_from<contractions>(a + alike, b + alike, weights, case_flag);
}

template <bool contractions>
[[gnu::noinline]] int compare_rare_letters(const KxChar *a, const KxChar *b, const Weights &weights,
                                           std::uint32_t case_flag) noexcept {
    return compare_letters_alike<contractions>(behind_leading_code(a), behind_leading_code(b), weights, case_flag);
}

// Where the kernels' values tell nothing: of other alphabets the first letters may.
template <bool contractions>
int go_on_with_letters(const KxChar *a, const KxChar *b, const simd::OrderValues &values, std::uint32_t case_flag,
                       std::uint32_t) noexcept {
    const Weights &weights = static_cast<const Weights &>(values);
    if (!Weights::has_all(*a, *b)) [[unlikely]]
        return compare_rare_letters<contractions>(a, b, weights, case_flag);
    const Weight weight_a = weights.tabulated(*a);
    const Weight weight_b = weights.tabulated(*b);
    if (!weight_a.has_primary_of(weight_b) && Weight::stay(weight_a, weight_b))
        return weight_a.sorts_before(weight_b) ? -1 : 1;
    return compare_letters_alike<contractions>(a, b, weights, case_flag);
}

// ---- Hebrew and Arabic ----

[[gnu::noinline]] int compare_with_ignorables_from(const KxChar *a, const KxChar *b, const Weights &weights,
                                                   std::uint32_t case_flag) noexcept {
    LowerLevels lower;
    while (*a != 0 && *b != 0) {
        const Weight weight_a = weights[*a];
        const Weight weight_b = weights[*b];
        if (Weight::decide(weight_a, weight_b)) return weight_a.sorts_before(weight_b) ? -1 : 1;
        lower.note(weight_a, weight_b);
        // An ignorable character meets nothing: the other side's is read again.
        const bool ignored_a = weight_a.is(Weight::kIgnored);
        const bool ignored_b = weight_b.is(Weight::kIgnored);
        if (ignored_a || !ignored_b) ++a;
        if (ignored_b || !ignored_a) ++b;
    }
    if (*a == *b) return lower.result(counts(case_flag));
    // What is left over counts at the first level unless it is ignorable throughout.
    const int longer = *a != 0 ? 1 : -1;
    const KxChar *rest = *a != 0 ? a : b;
    while (weights[*rest].is(Weight::kIgnored))
        ++rest;
    return *rest != 0 || lower.second == 0 ? longer : lower.second;
}

[[gnu::noinline]] int compare_with_ignorables_alike(const KxChar *a, const KxChar *b, const Weights &weights,
                                                    std::uint32_t case_flag) noexcept {
    const std::size_t alike = short_common_start(a, b);
    const Weight weight_a = weights[a[alike]];
    const Weight weight_b = weights[b[alike]];
    if (Weight::decide(weight_a, weight_b)) return weight_a.sorts_before(weight_b) ? -1 : 1;
    return compare_with_ignorables_from(a + alike, b + alike, weights, case_flag);
}

[[gnu::noinline]] int compare_rare_with_ignorables(const KxChar *a, const KxChar *b, const Weights &weights,
                                                   std::uint32_t case_flag) noexcept {
    return compare_with_ignorables_alike(behind_leading_code(a), behind_leading_code(b), weights, case_flag);
}

int compare_with_ignorables(const KxChar *a, const KxChar *b, const simd::OrderValues &values, std::uint32_t case_flag,
                            std::uint32_t) noexcept {
    const Weights &weights = static_cast<const Weights &>(values);
    const KxChar first_a = *a, first_b = *b;
    if (!Weights::has_all(first_a, first_b)) [[unlikely]]
        return compare_rare_with_ignorables(a, b, weights, case_flag);
    const Weight weight_a = weights.tabulated(first_a);
    const Weight weight_b = weights.tabulated(first_b);
    if (Weight::decide(weight_a, weight_b)) return weight_a.sorts_before(weight_b) ? -1 : 1;
    return compare_with_ignorables_alike(a, b, weights, case_flag);
}

// ---- East Asian ----

// From where no character takes something up from before.
[[gnu::noinline]] int compare_east_asian_from(const KxChar *a, const KxChar *b, const EastAsianTable &table,
                                              std::uint32_t case_flag, std::uint32_t kana_flag) noexcept {
    LowerLevels lower;
    const bool case_counts = counts(case_flag), kana_counts = counts(kana_flag);
    std::uint16_t previous = 0; // one for both: the values of the first level were the same so far
    while (*a != 0 && *b != 0) {
        const EastAsianValues values_a = table.values(a[0], a[1], previous, !case_counts);
        const EastAsianValues values_b = table.values(b[0], b[1], previous, !case_counts);
        if (values_a.primary != values_b.primary) return values_a.primary < values_b.primary ? -1 : 1;
        lower.note_second(values_a.secondary, values_b.secondary);
        if (counts(case_flag)) lower.note_third(values_a.flags, values_b.flags);
        if (kana_counts) lower.note_third(values_a.flags & kUnmarkedCase, values_b.flags & kUnmarkedCase);
        previous = values_a.primary;
        a += values_a.characters == 2 ? 2 : 1;
        b += values_b.characters == 2 ? 2 : 1;
    }
    if (*a == *b) return lower.result(true);
    return *a != 0 ? 1 : -1;
}

[[gnu::noinline]] int compare_east_asian_alike(const KxChar *a, const KxChar *b, const EastAsianTable &table,
                                               std::uint32_t case_flag, std::uint32_t kana_flag) noexcept {
    const std::size_t alike = short_common_start(a, b);
    // Kana that differ in their sound marks or in their kind are the same at the first level, and often more than one.
    for (std::size_t i = alike;; ++i) {
        const auto order_a = table.order(a[i]), order_b = table.order(b[i]);
        if (EastAsianTable::decide(order_a, order_b)) return order_a < order_b ? -1 : 1;
        if (order_a != order_b || !EastAsianTable::is_told(order_a) || order_a == 0) break;
    }
    // What the strings have in common says nothing, but to characters that take something up from before them.
    const bool says = table.by_neighbours(a[alike]) || table.by_neighbours(b[alike]);
    return compare_east_asian_from(says ? a : a + alike, says ? b : b + alike, table, case_flag, kana_flag);
}

[[gnu::noinline]] int compare_rare_east_asian(const KxChar *a, const KxChar *b, std::uint32_t case_flag,
                                              std::uint32_t kana_flag) noexcept {
    return compare_east_asian_alike(behind_leading_code(a), behind_leading_code(b), east_asian_table(), case_flag,
                                    kana_flag);
}

int compare_east_asian(const KxChar *a, const KxChar *b, const simd::OrderValues &, std::uint32_t case_flag,
                       std::uint32_t kana_flag) noexcept {
    const EastAsianTable *const table = known_east_asian_table();
    const KxChar first_a = *a, first_b = *b;
    if (table == nullptr || is_code(first_a) || is_code(first_b)) [[unlikely]]
        return compare_rare_east_asian(a, b, case_flag, kana_flag);
    const auto order_a = table->order(first_a), order_b = table->order(first_b);
    if (EastAsianTable::decide(order_a, order_b)) return order_a < order_b ? -1 : 1;
    return compare_east_asian_alike(a, b, *table, case_flag, kana_flag);
}

// One of them is null.
int compare_absent(const KxChar *s1, const KxChar *s2) noexcept {
    return static_cast<int>(s1 != nullptr) - static_cast<int>(s2 != nullptr);
}

// The first time that a language is asked for.
template <class Language>
[[gnu::noinline]] int compare_first(const KxChar *s1, const KxChar *s2, Language language, std::uint32_t case_flag,
                                    std::uint32_t kana_flag) noexcept {
    const Weights *const weights = make_weights(language);
    return weights->compare(s1, s2, *weights, case_flag, kana_flag);
}

template <class Language>
int compare_in(Language language, const KxChar *s1, const KxChar *s2, std::uint32_t case_flag,
               std::uint32_t kana_flag) noexcept {
    if (s1 == nullptr || s2 == nullptr) return compare_absent(s1, s2);
    const Weights *const weights = known_weights(language);
    if (weights == nullptr) return compare_first(s1, s2, language, case_flag, kana_flag);
    return weights->compare(s1, s2, *weights, case_flag, kana_flag);
}

} // namespace

Comparison comparison_of(Weights::Way way) noexcept {
    switch (way) {
    case Weights::Way::kContractions: return {simd::kernels().order_by_values16, go_on_with_letters<true>};
    case Weights::Way::kIgnorables: return {compare_with_ignorables, compare_with_ignorables};
    case Weights::Way::kEastAsian: return {compare_east_asian, compare_east_asian};
    default: return {simd::kernels().order_by_values16, go_on_with_letters<false>};
    }
}

} // namespace kxstr::collate

using kxstr::low16;
namespace collate = kxstr::collate;

extern "C" {

int32_t KxWS6Cmpcoll(const KxChar *s1, const KxChar *s2, uint32_t lang, uint32_t case_flag, uint32_t kana_flag) {
    return collate::compare_in(low16(lang), s1, s2, case_flag, kana_flag);
}

int32_t KxWS6CmpcollLang(const KxChar *s1, const KxChar *s2, const char *code, uint32_t case_flag, uint32_t kana_flag) {
    return collate::compare_in(code, s1, s2, case_flag, kana_flag);
}

uint32_t getColValues(const KxChar **position, uint8_t *primary, uint16_t *secondary, uint8_t *tertiary,
                      uint32_t case_on, uint32_t previous, uint32_t lang) {
    constexpr uint32_t kNothing = 0;
    constexpr uint32_t kValues = 2;
    const collate::Weights &weights = collate::weights_of(low16(lang));
    KxChar ch = **position;
    if (ch == 0) return kNothing;
    const KxChar *const start = (*position)++;

    if (weights.way() == collate::Weights::Way::kEastAsian) {
        const auto values = collate::east_asian_table().values(ch, **position, low16(previous), low16(case_on) == 0);
        if (values.characters == 2) ++*position;
        primary[0] = static_cast<uint8_t>(values.primary >> 8);
        primary[1] = static_cast<uint8_t>(values.primary);
        *secondary = values.secondary;
        *tertiary = values.flags;
        return kValues;
    }
    if (weights.may_contract(start) != 0) {
        // The pending character keeps the mark of a contraction, with which it has no value.
        if (const KxChar pending = collate::contract(ch, *position, weights.rules()); pending != 0) {
            const collate::Weight first = weights[ch];
            const collate::Weight second = weights[pending];
            primary[0] = first.primary();
            primary[1] = second.primary();
            *secondary = 0;
            *tertiary = static_cast<uint8_t>(2 * first.letter_case() + second.letter_case());
            return kValues;
        }
    }
    const collate::Weight weight = weights[ch];
    *secondary = weight.secondary();
    if (weight.primary() == collate::kIgnorable) {
        *tertiary = 1;
        return kNothing;
    }
    primary[0] = weight.primary();
    *tertiary = weight.letter_case();
    return kValues;
}
}
