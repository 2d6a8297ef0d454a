#include "forms/kx5_characters.h"

#include <array>
#include <kxstr/forms.h>
#include <span>

#include "codepage/country.h"
#include "tables/kx5.h"

namespace kxstr::forms {
namespace {

// The table of the character's set, empty when the generations agree on it. In Japan they agree on the katakana.
std::span<const KxChar> table_of(const std::array<std::uint8_t, 14> &numbers, KxChar ch) noexcept {
    const std::uint8_t set = set_of(ch);
    if (set >= numbers.size() || numbers[set] == 0) return {};
    if (set == kKatakanaSet && codepage::country_id() == codepage::kJapanese) return {};
    return tables::kKx5Sets[numbers[set] - 1u];
}

} // namespace

KxChar kx6_to_kx5(KxChar ch) noexcept {
    const auto table = table_of(tables::kKx6ToKx5, ch);
    return table.empty() ? ch : table[index_of(ch)];
}

Kx6Characters kx5_to_kx6(KxChar ch) noexcept {
    const auto table = table_of(tables::kKx5ToKx6, ch);
    if (table.empty()) return {ch, 0};
    return {table[index_of(ch)], set_of(ch) == kKatakanaSet ? tables::kKx5Marks[index_of(ch)] : KxChar{0}};
}

} // namespace kxstr::forms

extern "C" {

uint32_t WtpiKX6toKX5(uint32_t ch) {
    return kxstr::forms::kx6_to_kx5(kxstr::low16(ch));
}

uint32_t WtpiKX5toKX6(uint32_t ch, KxChar *first, KxChar *second) {
    const auto [character, mark] = kxstr::forms::kx5_to_kx6(kxstr::low16(ch));
    *first = character;
    if (mark == 0) return 1;
    *second = mark;
    return 2;
}
}
