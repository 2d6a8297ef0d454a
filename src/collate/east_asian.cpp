#include "collate/east_asian.h"

#include <kxstr/collate.h>
#include <span>

#include "letters/letter_forms.h"
#include "letters/width.h"

namespace kxstr::collate {
namespace {

constexpr KxChar kFirstEastAsian = 0x2400;
constexpr KxChar kFirstHiragana = 0x255E;
constexpr KxChar kFirstKatakana = 0x2600;
constexpr KxChar kLastKatakana = 0x2655;
constexpr std::uint8_t kLastPlainKatakana = 0x3F; // bits 6 and 7 of a set-11 index stand for a sound mark

// Primary values of kana lie in 0x100..0x1FF.
constexpr std::uint16_t kKanaBase = 0x100;

// Marks that take up the kana before them, by index.
constexpr std::uint8_t kIterationMarks[] = {0x12, 0x14};
constexpr std::uint8_t kVoicedIterationMarks[] = {0x13, 0x15};
constexpr std::uint8_t kProlongedSoundMark = 0x1B;
constexpr std::uint8_t kDittoMark = 0x18; // repeats any character
constexpr std::uint16_t kPlainSound = 1;
constexpr std::uint16_t kVoicedSound = 3;

struct Weights {
    std::uint16_t primary;
    std::uint16_t secondary;
    bool has_value = true; // a ditto mark has one even where it takes over 0xFFFF
};

constexpr Weights without_value(KxChar ch) noexcept {
    return {kNoEastAsianValue, ch, false};
}

bool is_one_of(std::uint8_t index, std::span<const std::uint8_t> indices) noexcept {
    return std::ranges::find(indices, index) != indices.end();
}

Weights kana_weights(KxChar ch) noexcept {
    const auto position = static_cast<std::size_t>(ch - (ch >= kFirstKatakana ? kFirstKatakana : kFirstHiragana));
    if (position >= std::size(tables::kKanaValues)) return without_value(ch); // between the two kana
    return {static_cast<std::uint16_t>(kKanaBase + tables::kKanaValues[position]), tables::kKanaSounds[position]};
}

// By the index alone: the double-byte sets of all countries are read as set 0x24 of the Japanese one.
Weights symbol_weights(KxChar ch, std::uint16_t previous) noexcept {
    const std::uint8_t index = index_of(ch);
    std::uint16_t place = 0;
    for (const tables::EastAsianSymbol &symbol : tables::kEastAsianSymbols) {
        ++place;
        if (symbol.index != index) continue;
        return {symbol.primary, symbol.primary < kKanaBase ? place : std::uint16_t{0}};
    }
    const bool after_kana = previous / 0x100 == 1;
    if (after_kana && is_one_of(index, kIterationMarks)) return {previous, kPlainSound};
    if (after_kana && is_one_of(index, kVoicedIterationMarks)) return {previous, kVoicedSound};
    const unsigned kana = static_cast<unsigned>(previous) - kKanaBase; // wraps below the kana
    if (index == kProlongedSoundMark && kana < std::size(tables::kKanaVowels))
        return {static_cast<std::uint16_t>(kKanaBase + tables::kKanaVowels[kana]), kPlainSound};
    if (index == kDittoMark) return {previous, 0};
    return without_value(ch);
}

Weights plain_weights(KxChar ch) noexcept {
    const LanguageRules &plain = rules_of(0);
    const std::uint8_t primary = primary_value(ch, plain);
    const std::uint16_t secondary = secondary_value(ch, primary, plain);
    return primary == kNoValue ? without_value(secondary) : Weights{primary, secondary};
}

} // namespace

EastAsianValues east_asian_values(KxChar ch, KxChar next, std::uint16_t previous, bool case_off) noexcept {
    if (ch >= kFirstByCode) return values_by_code(ch);

    EastAsianValues values{0, 0, 0, 1};
    if (set_of(ch) == kKatakanaSet) {
        const bool marked = next == letters::kVoicingMark || next == letters::kHalfVoicingMark;
        KxChar mark = next;
        ch = letters::to_double(marked ? ch : make_char(kKatakanaSet, ch & kLastPlainKatakana), &mark);
        if (marked && mark == 0) values.characters = 2;
        values.flags = kOtherWidth;
    }

    const auto give = [&values](Weights weights) {
        values.primary = weights.primary;
        values.secondary = weights.secondary;
        if (!weights.has_value) values.characters = 0;
        return values;
    };
    if (ch >= kFirstEastAsian) {
        if (kFirstHiragana <= ch && ch <= kLastKatakana) {
            if (ch >= kFirstKatakana) values.flags |= kUnmarkedCase;
            return give(kana_weights(ch));
        }
        const KxChar single = letters::convert_letter_form(letters::LetterFormMode::kSingle, ch);
        if (set_of(single) >= kKatakanaSet) return give(symbol_weights(ch, previous));
        ch = single;
        values.flags = kOtherWidth;
    }
    if (case_off || !is_lower(ch)) values.flags |= kUnmarkedCase;
    return give(plain_weights(ch));
}

EastAsianTable::EastAsianTable() noexcept {
    // What a sound mark may follow, and the marks that take up the value before them: those of a space and of a kana
    // tell all of them.
    const auto by_neighbours = [](KxChar ch) {
        const auto primary_behind = [ch](std::uint16_t previous) {
            return east_asian_values(ch, 0, previous, false).primary;
        };
        return set_of(ch) == kKatakanaSet || primary_behind(0) != primary_behind(kKanaBase + 1);
    };
    Entry *entry = entries_.data();
    for (KxChar ch = 0; ch < kFirstByCode; ++ch) {
        if (ch == kGapFirst) ch = kGapEnd;
        const EastAsianValues values = east_asian_values(ch, 0, 0, false);
        entry->primary = values.primary;
        entry->secondary = values.secondary;
        entry->flags = values.flags;
        entry->flags_case_off = east_asian_values(ch, 0, 0, true).flags & 0xF;
        entry->characters = values.characters & 3;
        entry->by_neighbours = by_neighbours(ch);
        ++entry;
    }
    for (KxChar ch = 1; ch < kFirstByCode; ++ch)
        order_[ch] = EastAsianTable::by_neighbours(ch) ? kUndecided : order_of(values(ch, 0, 0, false).primary);
    order_[0] = 0;
    order_[kFirstByCode] = order_of(values_by_code(kFirstByCode).primary);
}

namespace {

// The compiler sees to it that of several threads one makes the table and the others wait.
template <unsigned country> const EastAsianTable &made() noexcept {
    static const EastAsianTable table;
    return table;
}

const EastAsianTable *make_table(std::uint8_t country) noexcept {
    switch (country) {
    case codepage::kJapanese: return &made<codepage::kJapanese>();
    case codepage::kKorean: return &made<codepage::kKorean>();
    case codepage::kTraditionalChinese: return &made<codepage::kTraditionalChinese>();
    case codepage::kSimplifiedChinese: return &made<codepage::kSimplifiedChinese>();
    default: return &made<codepage::kNoCountry>(); // no East Asian forms
    }
}

} // namespace

constinit std::array<std::atomic<const EastAsianTable *>, codepage::kUndecided + 1> known_east_asian_tables{};

const EastAsianTable &make_east_asian_table() noexcept {
    const std::uint8_t country = codepage::country_id();
    const EastAsianTable *const table = make_table(country);
    known_east_asian_tables[country].store(table, std::memory_order_release);
    return *table;
}

} // namespace kxstr::collate

extern "C" uint32_t AsiaGetColValues(uint32_t ch, uint32_t next, uint32_t previous, uint16_t *primary,
                                     uint16_t *secondary, uint8_t *flags, uint32_t case_off) {
    const auto values = kxstr::collate::east_asian_table().values(kxstr::low16(ch), kxstr::low16(next),
                                                                  kxstr::low16(previous), kxstr::low16(case_off) != 0);
    *primary = values.primary;
    *secondary = values.secondary;
    *flags = values.flags;
    return values.characters;
}
