#include "collate/weights.h"

#include <utility>

#include "collate/contraction.h"

namespace kxstr::collate {

constinit std::array<std::atomic<const Weights *>, std::size(tables::kCollationLanguages)> weights_by_number{};
constinit std::array<std::atomic<const Weights *>, kCodePlaces> weights_by_code{};

namespace {

constexpr std::uint8_t kLatinSet = 1;
constexpr std::size_t kKinds = 16; // of rules, their codes aside

bool alike(const LanguageRules &a, const LanguageRules &b) noexcept {
    return a.kind == b.kind && a.first_state == b.first_state && a.letter_column == b.letter_column &&
           a.late_diaeresis == b.late_diaeresis && a.upper_first == b.upper_first;
}

// A number below kKinds for each kind.
std::size_t kind_of(const LanguageRules &rules) noexcept {
    std::size_t kind = 0;
    for (const LanguageRules *other = tables::kCollationLanguages; !alike(*other, rules); ++other) {
        const auto is_alike = [other](const LanguageRules &earlier) { return alike(*other, earlier); };
        kind += std::none_of(std::begin(tables::kCollationLanguages), other, is_alike);
    }
    return kind;
}

// The compiler sees to it that of several threads one makes the table and the others wait.
template <std::size_t> const Weights &made(const LanguageRules &rules) noexcept {
    static const Weights weights(rules);
    return weights;
}

template <std::size_t... kind> const Weights &made(std::index_sequence<kind...>, const LanguageRules &rules) noexcept {
    using Make = const Weights &(const LanguageRules &) noexcept;
    static constexpr Make *by_kind[] = {made<kind>...};
    return by_kind[kind_of(rules)](rules);
}

// The states in which a match can go on, a bit for each.
std::uint32_t later_states(std::uint8_t first_state) noexcept {
    std::uint32_t states = 0;
    for (std::uint32_t before = ~states; before != states;) {
        before = states;
        for (const tables::ContractionStep &step : tables::kContractionSteps) {
            const bool reached = step.state == first_state || (states >> step.state & 1) != 0;
            if (reached && step.target < tables::kFirstContractionResult) states |= 1u << step.target;
        }
    }
    return states;
}

// Whether all that a match may come to from a state on is a contraction that lies right behind a letter: no character
// has a value in between.
bool stays_behind(KxChar letter, std::uint8_t state) noexcept {
    const std::uint32_t states = later_states(state) | 1u << state;
    return std::ranges::all_of(tables::kContractionSteps, [=](const tables::ContractionStep &step) {
        if ((states >> step.state & 1) == 0 || step.target < tables::kFirstContractionResult) return true;
        const auto &[first, second] = tables::kContractionResults[step.target - tables::kFirstContractionResult];
        return first == letter && second == 0;
    });
}

std::uint32_t contraction_traits(KxChar ch, std::uint8_t first_state, std::uint32_t later) noexcept {
    std::uint32_t traits = 0;
    for (const tables::ContractionStep &step : tables::kContractionSteps) {
        if (step.key != letters::to_lower(ch)) continue;
        if ((later >> step.state & 1) != 0) traits |= Weight::kFollows | Weight::kReaches;
        if (step.state != first_state) continue;
        traits |= Weight::kStarts | Weight::kReaches;
        if (step.target >= tables::kFirstContractionResult)
            traits |= Weight::kExpands | Weight::kMoves;
        else if (!stays_behind(letters::to_lower(ch), step.target))
            traits |= Weight::kMoves;
    }
    return traits;
}

Weights::Way way_of(const LanguageRules &rules) noexcept {
    switch (rules.kind) {
    case LanguageKind::kEastAsian: return Weights::Way::kEastAsian;
    case LanguageKind::kHebrewArabic: return Weights::Way::kIgnorables;
    default: return rules.first_state != 0 ? Weights::Way::kContractions : Weights::Way::kLetters;
    }
}

} // namespace

Weights::Weights(const LanguageRules &rules) noexcept : rules_(rules), way_(way_of(rules)) {
    compare = comparison_of(way_).compare;
    go_on = comparison_of(way_).go_on;
    table_[0] = Weight::end();
    const std::uint32_t later = later_states(rules.first_state);
    for (KxChar ch = 1; ch < kTabulated; ++ch) {
        const std::uint8_t primary = primary_value(ch, rules);
        const std::uint32_t ignored = primary == kIgnorable ? Weight::kIgnored : 0u;
        table_[ch] = {primary, secondary_value(ch, primary, rules), case_value(ch),
                      contraction_traits(ch, rules.first_state, later) | ignored};
    }
    find_pairs();
    for (unsigned index = 0; index < std::size(ascii); ++index) {
        ascii[index] = order_value(static_cast<KxChar>(index));
        // A capital and its letter.
        const std::uint8_t value = order_value(make_char(kLatinSet, 2 * index));
        latin[index] = value == order_value(make_char(kLatinSet, 2 * index + 1)) ? value : kNotTold;
    }
    latin[0] = 0;
    for (KxChar ch = 0; ch < kEndLatin; ++ch)
        first[ch] = table_[ch].is(Weight::kMoves) ? kNotTold : of(ch);
}

// Of the letters of ASCII that contract with one.
void Weights::find_pairs() noexcept {
    pair_count = 0;
    std::ranges::fill(begins, kMoves);
    std::ranges::fill(follows, std::uint8_t{0});
    for (KxChar letter = 'a'; letter <= 'z'; ++letter) {
        for (KxChar next = 'a'; next <= 'z' && table_[letter].is(Weight::kStarts); ++next) {
            const KxChar text[] = {next, 0};
            const KxChar *position = text;
            KxChar result = letter;
            if ((contract(result, position, rules_) & kContracted) == 0) continue;
            const int step = table_[result].primary() + 1 - table_[letter].primary();
            for (const KxChar case_bit : {KxChar{0}, kCaseBit}) {
                const auto bit = static_cast<std::uint8_t>(1u << pair_count);
                begins[letter ^ case_bit] |= bit;
                follows[next ^ case_bit] |= bit;
                if (table_[letter].is(Weight::kMoves)) follows[letter ^ case_bit] |= kMoves;
            }
            pairs[pair_count++] = {letter, next, static_cast<std::uint16_t>(step)};
        }
    }
}

std::uint8_t Weights::order_value(KxChar ch) const noexcept {
    if (ch == 0) return 0;
    const Weight weight = table_[ch];
    // Of the letters that contract those of ASCII are in pairs; an accented one must not be taken for one of these.
    const auto passes_for = [this, weight](KxChar letter) { return weight.has_primary_of(table_[letter]); };
    const bool is_ascii = set_of(ch) == kAsciiSet;
    const bool is_mistaken = !is_ascii && std::any_of(pairs, pairs + pair_count, [passes_for](const Pair &pair) {
        return passes_for(pair.first) || passes_for(pair.second);
    });
    const bool is_told = !is_mistaken && (!weight.is(Weight::kReaches) || (is_ascii && !weight.is(Weight::kExpands)));
    return is_told && weight.primary() < kIgnorable ? static_cast<std::uint8_t>(weight.primary() + 1)
                                                    : simd::OrderValues::kNotTold;
}

const Weights *make_weights(std::uint16_t language) noexcept {
    const std::size_t known = std::min<std::size_t>(language, weights_by_number.size() - 1);
    const Weights &weights = made(std::make_index_sequence<kKinds>{}, rules_of(language));
    weights_by_number[known].store(&weights, std::memory_order_release);
    return &weights;
}

const Weights *make_weights(const char *code) noexcept {
    const Weights &weights = weights_of(code != nullptr ? language_number(code) : std::uint16_t{0});
    weights_by_code[code != nullptr ? place_of_code(code) : 0].store(&weights, std::memory_order_release);
    return &weights;
}

} // namespace kxstr::collate
