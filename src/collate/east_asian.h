// The values of characters in East Asian text: kana by sound, ideographs by code.
#pragma once

#include <array>
#include <atomic>

#include "codepage/country.h"
#include "collate/values.h"

namespace kxstr::collate {

struct EastAsianValues {
    std::uint16_t primary;
    std::uint16_t secondary;
    std::uint8_t flags;      // kUnmarkedCase, kOtherWidth
    std::uint8_t characters; // used up: 1, or 2 with the sound mark behind it; 0 when there is no value
};

inline constexpr std::uint16_t kNoEastAsianValue = 0xFFFF;
inline constexpr std::uint8_t kUnmarkedCase = 1; // katakana, or anything but a lowercase letter
inline constexpr std::uint8_t kOtherWidth = 2;

// `next` is the character behind `ch`, 0 at the end; `previous` the primary value of the character before it.
EastAsianValues east_asian_values(KxChar ch, KxChar next, std::uint16_t previous, bool case_off) noexcept;

// Ideographs and all that lies above sort by code.
inline constexpr KxChar kFirstByCode = 0x2B00;

inline EastAsianValues values_by_code(KxChar ch) noexcept {
    constexpr KxChar offset = 0x2900;
    return {static_cast<std::uint16_t>(ch == KX_TAB ? 0 : ch - offset), 0, 0, 1};
}

// The same, read from a table where the neighbours of a character make no difference.
class EastAsianTable {
  public:
    EastAsianTable() noexcept; // for the country of the system

    EastAsianValues values(KxChar ch, KxChar next, std::uint16_t previous, bool case_off) const noexcept {
        if (ch >= kFirstByCode) return values_by_code(ch);
        if (kGapFirst <= ch && ch < kGapEnd) return {kNoEastAsianValue, ch, kUnmarkedCase, 0};
        const Entry &entry = entry_of(ch);
        if (entry.by_neighbours) return east_asian_values(ch, next, previous, case_off);
        return {entry.primary, entry.secondary, case_off ? entry.flags_case_off : entry.flags, entry.characters};
    }

    // How a character sorts at the first level whatever lies beside it, the terminator before all; kUndecided where
    // that is not all there is to it.
    // Which characters are kana and which ideographs nobody can predict: no branch hangs on it.
    std::uint16_t order(KxChar ch) const noexcept {
        if (ch == KX_TAB) [[unlikely]]
            return order_of(values_by_code(ch).primary);
        const int above = std::max(ch - kFirstByCode, 0);
        return static_cast<std::uint16_t>(order_[static_cast<std::size_t>(ch - above)] + above);
    }
    static constexpr bool is_told(std::uint16_t order) noexcept { return order != kUndecided; }
    static constexpr bool decide(std::uint16_t a, std::uint16_t b) noexcept {
        return a != b && (static_cast<int>(a == kUndecided) | static_cast<int>(b == kUndecided)) == 0;
    }

    // Whether the characters before or behind make a difference.
    bool by_neighbours(KxChar ch) const noexcept {
        return ch < kFirstByCode && (ch < kGapFirst || kGapEnd <= ch) && entry_of(ch).by_neighbours;
    }

  private:
    // No character of the sets 16 to 35 has a value.
    static constexpr KxChar kGapFirst = 0x1000;
    static constexpr KxChar kGapEnd = 0x2400;

    struct Entry {
        std::uint16_t primary;
        std::uint16_t secondary;
        std::uint8_t flags;
        std::uint8_t flags_case_off : 4;
        std::uint8_t characters : 2;
        bool by_neighbours : 1;
    };
    const Entry &entry_of(KxChar ch) const noexcept {
        return entries_[ch < kGapFirst ? ch : ch - (kGapEnd - kGapFirst)];
    }

    static constexpr std::uint16_t kUndecided = 0xFFFF;
    // Leaves room for the terminator; the highest one by code is far below those without a value.
    static constexpr std::uint16_t order_of(std::uint16_t primary) noexcept {
        return static_cast<std::uint16_t>(primary + (primary == kNoEastAsianValue ? -1 : 1));
    }

    std::array<Entry, kFirstByCode - (kGapEnd - kGapFirst)> entries_;
    std::array<std::uint16_t, kFirstByCode + 1> order_; // the last is that of all from there on
};

// By country; null before they are made, and where no country is decided.
extern constinit std::array<std::atomic<const EastAsianTable *>, codepage::kUndecided + 1> known_east_asian_tables;
const EastAsianTable &make_east_asian_table() noexcept;

// For the country of the system; one of five, 57 KiB each, made when it is first asked for. No lock after that.
inline const EastAsianTable *known_east_asian_table() noexcept {
    const std::uint8_t country = codepage::decided_country.load(std::memory_order_relaxed);
    return known_east_asian_tables[country].load(std::memory_order_acquire);
}
inline const EastAsianTable &east_asian_table() noexcept {
    const EastAsianTable *const table = known_east_asian_table();
    return table != nullptr ? *table : make_east_asian_table();
}

} // namespace kxstr::collate
