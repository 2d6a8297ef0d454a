#include "collate/contraction.h"

namespace kxstr::collate {
namespace {

// The target of a key in a state, or 0. No state has the key 0, so a match never goes past the end of a string.
std::uint8_t find_target(std::uint8_t state, KxChar key) noexcept {
    for (const tables::ContractionStep &step : tables::kContractionSteps) {
        if (step.state == state && step.key == key) return step.target;
    }
    return 0;
}

} // namespace

KxChar contract(KxChar &ch, const KxChar *&position, const LanguageRules &rules) noexcept {
    std::uint8_t state = rules.first_state;
    if (state == 0) return 0;
    KxChar matched = letters::to_lower(ch);
    const KxChar *ahead = position;
    state = find_target(state, matched);
    while (state != 0 && state < tables::kFirstContractionResult) {
        matched = letters::to_lower(*ahead++);
        state = find_target(state, matched);
    }
    if (state == 0) return 0;

    const auto in_case = [lower = is_lower(ch)](char letter) {
        const KxChar letter_ch = static_cast<unsigned char>(letter);
        return lower ? letter_ch : letters::to_upper(letter_ch);
    };
    const auto [first, second] = tables::kContractionResults[state - tables::kFirstContractionResult];
    ch = in_case(first);
    if (second != 0) return in_case(second);
    ++position;
    return matched | kContracted;
}

} // namespace kxstr::collate
