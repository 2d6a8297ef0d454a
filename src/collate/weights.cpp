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

std::uint32_t contraction_traits(KxChar ch, std::uint8_t first_state, std::uint32_t later) noexcept {
    std::uint32_t traits = 0;
    for (const tables::ContractionStep &step : tables::kContractionSteps) {
        if (step.key != letters::to_lower(ch)) continue;
        if ((later >> step.state & 1) != 0) traits |= Weight::kFollows | Weight::kReaches;
        if (step.state != first_state) continue;
        traits |= Weight::kStarts | Weight::kReaches;
        if (step.target >= tables::kFirstContractionResult) traits |= Weight::kExpands;
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
    has_traits = rules.first_state != 0;
    for (unsigned index = 0; index < std::size(ascii); ++index) {
        const auto ch = static_cast<KxChar>(index);
        ascii[ch] = order_value(ch);
        ascii_traits[ch] = (table_[ch].is(Weight::kStarts) ? simd::OrderValues::kBegins : 0) |
                           (table_[ch].is(Weight::kFollows) ? simd::OrderValues::kFollows : 0);
        // A capital and its letter.
        const std::uint8_t value = order_value(make_char(kLatinSet, 2 * index));
        latin[index] = value == order_value(make_char(kLatinSet, 2 * index + 1)) ? value : kNotTold;
    }
}

std::uint8_t Weights::order_value(KxChar ch) const noexcept {
    if (ch == 0) return 0;
    const Weight weight = table_[ch];
    // Of the letters that contract those of ASCII have traits.
    const bool is_told = !weight.is(Weight::kReaches) || (set_of(ch) == kAsciiSet && !weight.is(Weight::kExpands));
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
