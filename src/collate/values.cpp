#include "collate/values.h"

#include <kxstr/collate.h>

#include "collate/weights.h"
#include "core/validity.h"

namespace kxstr::collate {
namespace {

constexpr std::uint8_t kLatinSet = 1;
constexpr std::uint8_t kGreekSet = 8;
constexpr std::uint8_t kHebrewSet = 9;
constexpr std::uint8_t kCyrillicSet = 10;
constexpr std::uint8_t kArabicSet = 13;
constexpr std::uint8_t kMoreArabicSet = 14;

constexpr std::uint8_t kDiaeresis = 7;
constexpr std::uint16_t kLateDiaeresisRank = 9;

// From these characters on, the letters of a set are variants that differ at the second level by their codes.
constexpr KxChar kFirstGreekVariant = 0x0834;
constexpr KxChar kFirstHebrewVariant = 0x0954;
constexpr KxChar kFirstCyrillicVariant = 0x0A90;
constexpr KxChar kGreekBetaVariant = 0x0804;
constexpr KxChar kGreekFinalSigma = 0x0826;

// Carriers of hamza share its first-level value with plain alef, which ranks behind them.
constexpr std::uint8_t kHamzaValue = 0xC7;
constexpr std::uint16_t kPlainAlefRank = 7;
constexpr std::uint16_t kTehRank = 8;
constexpr std::uint8_t kLastArabicSign = 0x2E;
constexpr std::uint8_t kTeh = 0x40;
constexpr std::uint8_t kFirstLamAlef = 0xB5;
constexpr KxChar kTatweel = 0x0DC2;
constexpr KxChar kLastTatweel = 0x0DC3;

std::uint16_t latin_secondary(KxChar ch, const LanguageRules &rules) noexcept {
    const tables::Composite *composite = find_composite(ch);
    if (composite == nullptr) return ch;
    const std::uint8_t diacritic = index_of(composite->diacritic);
    if (diacritic == kDiaeresis && rules.late_diaeresis) return kLateDiaeresisRank;
    return tables::kDiacriticRanks[diacritic];
}

std::uint16_t arabic_secondary(KxChar ch, std::uint8_t primary) noexcept {
    const std::uint8_t index = index_of(ch);
    if (index <= kLastArabicSign) return 0;
    if (primary == kHamzaValue) {
        return ch < tables::kFirstHamzaCarrier ? kPlainAlefRank : tables::kHamzaRanks[ch - tables::kFirstHamzaCarrier];
    }
    if (index >= kFirstLamAlef) return ch;
    return index == kTeh ? kTehRank : 0;
}

std::uint16_t more_arabic_secondary(KxChar ch) noexcept {
    const auto holds = [ch](const tables::CharacterRange &range) { return range.first <= ch && ch <= range.last; };
    return std::ranges::any_of(tables::kArabicLettersApart, holds) ? ch : 0;
}

} // namespace

std::uint8_t primary_value(KxChar ch, const LanguageRules &rules) noexcept {
    if (rules.letter_column != 0) {
        for (const tables::LetterValues &letter : tables::kLetters) {
            if (letter.upper == (ch & 0xFFFE)) return letter.values[rules.letter_column];
        }
    }
    const bool hebrew_arabic = rules.kind == LanguageKind::kHebrewArabic;
    const std::uint8_t set = set_of(ch);
    // A set can have several blocks.
    const auto *entry = find_entry(hebrew_arabic ? tables::kHebrewArabicSequence : tables::kDefaultSequence, set);
    for (; entry->block != nullptr; entry = find_entry(entry + 1, set)) {
        const std::uint8_t *value = find_in_block(entry->block, index_of(ch));
        if (value != nullptr) return *value;
    }
    if (hebrew_arabic && (set == kHebrewSet || set == kArabicSet || set == kMoreArabicSet)) return kIgnorable;
    return ch == KX_TAB ? 0 : kNoValue;
}

std::uint16_t secondary_value(KxChar ch, std::uint8_t primary, const LanguageRules &rules) noexcept {
    const KxChar upper = is_lower(ch) ? letters::to_upper(ch) : ch;
    if (primary == kNoValue) return upper;
    if (primary == kIgnorable) return ch == kTatweel || ch == kLastTatweel ? 0 : static_cast<KxChar>(ch + 0x8000);
    switch (set_of(ch)) {
    case kLatinSet: return latin_secondary(upper, rules);
    case kGreekSet:
        return upper >= kFirstGreekVariant || upper == kGreekBetaVariant || upper == kGreekFinalSigma ? upper : 0;
    case kHebrewSet: return upper >= kFirstHebrewVariant ? upper : 0;
    case kCyrillicSet: return upper >= kFirstCyrillicVariant ? upper : 0;
    case kArabicSet: return arabic_secondary(upper, primary);
    case kMoreArabicSet: return more_arabic_secondary(upper);
    default: return 0;
    }
}

const tables::Composite *find_composite(KxChar ch) noexcept {
    for (const tables::CompositeTable &table : tables::kCompositeTables) {
        if (table.set != set_of(ch)) continue;
        const unsigned offset = static_cast<unsigned>(index_of(ch)) - table.first; // wraps below the first index
        if (offset >= table.entries.size() || table.entries[offset].base == kNone) return nullptr;
        return &table.entries[offset];
    }
    return nullptr;
}

namespace {

std::uint8_t default_value(KxChar ch) noexcept {
    const std::uint8_t *value = find_in_block(find_entry(tables::kDefaultSequence, set_of(ch))->block, index_of(ch));
    return value != nullptr ? *value : kNoValue;
}

bool is_known(KxChar ch) noexcept {
    const std::uint8_t set = set_of(ch);
    const std::uint8_t index = index_of(ch);
    if (set >= core::kSetRanges.size()) return kFirstDoubleByteSet <= set && set <= kLastDoubleByteSet && index != 0xFF;
    const auto [first, last] = core::kSetRanges[set];
    // Native bytes are counted from the space on, as ASCII is: all but 0x1F.
    if (set == kNativeByteSet) return index != 0x1F;
    return first <= index && index <= last;
}

// The composite of a base and a diacritic's index without its top bit, or kNone. Gaps in the table take part, too.
KxChar combine(KxChar base, std::uint8_t diacritic) noexcept {
    const std::uint8_t set = set_of(base) == kAsciiSet ? kLatinSet : set_of(base);
    for (const tables::CompositeTable &table : tables::kCompositeTables) {
        if (table.set != set) continue;
        const auto fits = [&](const tables::Composite &composite) {
            return index_of(composite.base) == index_of(base) && (index_of(composite.diacritic) & 0x7F) == diacritic;
        };
        const auto found = std::ranges::find_if(table.entries, fits);
        if (found == table.entries.end()) return kNone;
        return make_char(set, table.first + static_cast<unsigned>(found - table.entries.begin()));
    }
    return kNone;
}

} // namespace
} // namespace kxstr::collate

using kxstr::low16;

extern "C" {

uint32_t f_KX60ColVal(uint32_t ch, uint32_t lang) {
    return kxstr::collate::weights_of(low16(lang))[low16(ch)].primary();
}

uint8_t f_wislower(uint32_t ch) {
    return kxstr::collate::case_value(low16(ch));
}

uint32_t KxCh6Iskxc(uint32_t ch) {
    return kxstr::collate::is_known(low16(ch)) ? 1 : 0;
}

uint8_t KxCh6Getcoll(uint32_t ch) {
    return kxstr::collate::default_value(low16(ch));
}

uint8_t KxCh6Cmpcoll(uint32_t a, uint32_t b) {
    constexpr uint8_t kBefore = 8;
    constexpr uint8_t kEqual = 4;
    constexpr uint8_t kAfter = 2;
    uint16_t value_a = kxstr::collate::default_value(low16(a));
    uint16_t value_b = kxstr::collate::default_value(low16(b));
    if (value_a == kxstr::collate::kNoValue && value_b == kxstr::collate::kNoValue) {
        value_a = low16(a);
        value_b = low16(b);
    }
    if (value_a == value_b) return kEqual;
    return value_a < value_b ? kBefore : kAfter;
}

uint32_t KxCh6Brkcar(uint32_t ch, KxChar *base, KxChar *diacritic) {
    const auto *composite = kxstr::collate::find_composite(low16(ch));
    if (composite == nullptr) return 1;
    *base = composite->base;
    *diacritic = composite->diacritic;
    return 0;
}

uint16_t KxCh6Cmbcar(KxChar *out, uint32_t base, uint8_t diacritic) {
    const KxChar composite = kxstr::collate::combine(low16(base), diacritic);
    if (composite == kxstr::kNone) return 1;
    *out = composite;
    return 0;
}

uint32_t KxCh6Getdia(uint32_t ch) {
    const auto *composite = kxstr::collate::find_composite(low16(ch));
    if (composite == nullptr) return 0;
    const uint8_t diacritic = kxstr::index_of(composite->diacritic);
    return diacritic < std::size(kxstr::tables::kDiacriticRanks) ? kxstr::tables::kDiacriticRanks[diacritic] : 0;
}
}
