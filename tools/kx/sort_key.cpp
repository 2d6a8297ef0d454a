#include "sort_key.h"

#include <algorithm>
#include <cstring>
#include <kxstr/letters.h>
#include <kxstr/strops.h>

#include "collate/contraction.h"
#include "collate/east_asian.h"
#include "collate/weights.h"

namespace kx {
namespace {

using kxstr::collate::Weight;

// Ends a level: the end of a text sorts before every value.
constexpr std::uint8_t kEnd = 0;

std::uint8_t *add_16(std::uint8_t *out, std::uint16_t value) {
    *out++ = static_cast<std::uint8_t>(value >> 8);
    *out++ = static_cast<std::uint8_t>(value);
    return out;
}

std::uint8_t *add_32(std::uint8_t *out, std::uint32_t value) {
    return add_16(add_16(out, static_cast<std::uint16_t>(value >> 16)), static_cast<std::uint16_t>(value));
}

// Values from 0 to 0xFF, and behind them those of characters that KX lacks. No byte may look like the end.
constexpr unsigned kFirstLong = 0xFE;
constexpr std::uint16_t kLongValues = 0xFF00;

std::uint8_t *add_value(std::uint8_t *out, unsigned value) {
    if (value >= kFirstLong) return add_16(out, static_cast<std::uint16_t>(kLongValues + value - kFirstLong));
    *out++ = static_cast<std::uint8_t>(value + 1);
    return out;
}

std::uint8_t *add_lacking(std::uint8_t *out, std::uint32_t value) {
    return add_32(add_16(out, kLongValues + 0x100 - kFirstLong), value);
}

// East Asian values have no high byte 0xFE, which leaves a place for the end. Characters that KX lacks are told from
// those without a value by a byte behind.
std::uint8_t *add_east_asian_value(std::uint8_t *out, std::uint16_t value) {
    constexpr std::uint16_t first_unmoved = 0xFF00;
    out = add_16(out, static_cast<std::uint16_t>(value < first_unmoved ? value + 0x100 : value));
    if (value == kxstr::collate::kNoEastAsianValue) *out++ = 0;
    return out;
}

std::uint8_t *add_lacking_east_asian(std::uint8_t *out, std::uint32_t value) {
    out = add_16(out, kxstr::collate::kNoEastAsianValue);
    *out++ = 1;
    return add_32(out, value);
}

// What a character takes at most: it expands to two letters, each of three bytes on the first level, three on the
// second and one on the third; one that KX lacks takes seven on the first. coltbl has six bytes for it and the ends
// have one each.
constexpr std::size_t kMostValues = 2;
constexpr std::size_t kMostBytes = 7 + kMostValues * (3 + 1) + 6;
constexpr std::size_t kEnds = 4;

} // namespace

SortKeys::Made SortKeys::add(const LineText &text, std::size_t limit, std::vector<std::uint8_t> &key) {
    return add(text, false, limit, key);
}

void SortKeys::add_always(const LineText &text, std::vector<std::uint8_t> &key) {
    add(text, true, kNoLimit, key);
}

SortKeys::Made SortKeys::add(const LineText &text, bool always, std::size_t limit, std::vector<std::uint8_t> &key) {
    const std::size_t old_size = key.size();
    LineText start = text;
    const bool cut = text.chars.size() > limit;
    if (cut) start.chars = text.chars.first(limit);
    if (second_.size() < kMostValues * start.chars.size()) {
        second_.resize(kMostValues * start.chars.size());
        third_.resize(kMostValues * start.chars.size());
    }
    key.resize(old_size + kMostBytes * start.chars.size() + kEnds);
    std::uint8_t *out = key.data() + old_size;
    const auto finish = [&](const std::uint8_t *end, Made made) {
        key.resize(end != nullptr ? static_cast<std::size_t>(end - key.data()) : old_size);
        return made;
    };
    const auto is_long_enough = [&] { return static_cast<std::size_t>(out - key.data()) - old_size >= limit; };

    if (collation_.by_coltbl()) {
        out = add_coltbl(start, out);
        if (cut && is_long_enough()) return finish(out, Made::cut);
        if (cut) return finish(nullptr, Made::none);
        *out++ = kEnd;
    }
    count_ = 0;
    if (!start.chars.empty() && kxstr::is_code(start.chars[0]) && start.chars[0] != kLacking)
        start.chars = start.chars.subspan(1); // as the comparison does
    out = add_first_level(start, always, out);
    if (out == nullptr || (cut && !is_long_enough())) return finish(nullptr, Made::none);
    if (cut) return finish(out, Made::cut);
    *out++ = kEnd;
    return finish(add_lower_levels(out), Made::whole);
}

// Characters without a value lie behind all others, by their codes.
std::uint8_t *SortKeys::add_coltbl(const LineText &text, std::uint8_t *out) const {
    const std::uint32_t *lacking = text.lacking;
    for (const KxChar ch : text.chars) {
        if (ch == kLacking) {
            out = add_lacking(out, *lacking++);
            continue;
        }
        if (kxstr::is_code(ch)) continue;
        const KxChar lower = wtolower(ch);
        const unsigned value = W6wstrCollateCh(lower);
        out = add_value(out, value);
        if (value == kxstr::collate::kNoValue) out = add_16(out, lower);
    }
    return out;
}

std::uint8_t *SortKeys::add_first_level(const LineText &text, bool always, std::uint8_t *out) {
    if (collation_.is_east_asian()) return add_east_asian(text, out);
    const bool contractions = kxstr::collate::rules_of(kxstr::low16(collation_.language())).first_state != 0;
    if (collation_.refinement() != nullptr)
        return contractions ? add_letters<true, true>(text, always, out) : add_letters<false, true>(text, always, out);
    return contractions ? add_letters<true, false>(text, always, out) : add_letters<false, false>(text, always, out);
}

template <bool contractions, bool refined>
std::uint8_t *SortKeys::add_letters(const LineText &text, bool always, std::uint8_t *out) {
    const auto &weights = kxstr::collate::weights_of(kxstr::low16(collation_.language()));
    const auto &rules = weights.rules();
    const std::uint32_t *lacking = text.lacking;
    const bool last_case = !rules.upper_first;
    const bool case_counts = collation_.case_counts;
    std::uint16_t *second = second_.data();
    std::uint8_t *third = third_.data();
    const auto add = [&](KxChar ch, Weight weight, unsigned mark) {
        const unsigned primary = weight.primary() + mark;
        out = add_value(out, primary);
        if constexpr (refined) {
            if (collation_.refinement()->is_divided[primary])
                out = add_value(out, collation_.refinement()->place_of(ch));
        }
        *second++ = weight.secondary();
        *third++ = static_cast<std::uint8_t>(((weight.letter_case() != 0) == last_case) & case_counts);
    };
    const KxChar *position = text.chars.data();
    const KxChar *const end = position + text.chars.size();
    while (position < end) {
        const bool contracts = contractions && weights.may_contract(position);
        KxChar ch = *position++;
        KxChar pending = contracts ? kxstr::collate::contract(ch, position, rules) : KxChar{0};
        const Weight weight = weights[ch];
        if (weight.primary() >= kxstr::collate::kIgnorable) {
            if (ch == kLacking) {
                out = add_lacking(out, *lacking++);
                *second++ = 0;
                *third++ = 0;
                continue;
            }
            if (weight.primary() == kxstr::collate::kIgnorable) {
                if (!always) return nullptr;
                *second++ = weight.secondary();
                *third++ = 0;
                continue;
            }
        }
        const unsigned mark = pending & kxstr::collate::kContracted;
        add(ch, weight, mark != 0 ? 1 : 0);
        if (pending == 0) continue;
        // Against another contraction the pending letter takes part in the next one, against the same it does not.
        pending = static_cast<KxChar>(pending ^ mark);
        const KxChar *ahead = position;
        KxChar next = pending;
        if (!always && kxstr::collate::contract(next, ahead, rules) != 0) return nullptr;
        add(pending, weights[pending], 0);
    }
    count_ = static_cast<std::size_t>(second - second_.data());
    return out;
}

std::uint8_t *SortKeys::add_east_asian(const LineText &text, std::uint8_t *out) {
    const auto &table = kxstr::collate::east_asian_table();
    const std::uint32_t *lacking = text.lacking;
    std::uint16_t previous = 0;
    const KxChar *position = text.chars.data();
    const KxChar *const end = position + text.chars.size();
    while (position < end) {
        if (*position == kLacking) {
            out = add_lacking_east_asian(out, *lacking++);
            second_[count_] = 0;
            third_[count_++] = 0;
            previous = 0;
            ++position;
            continue;
        }
        const auto values = table.values(position[0], position[1], previous, !collation_.case_counts);
        out = add_east_asian_value(out, values.primary);
        const unsigned kana = collation_.kana_counts ? kxstr::collate::kUnmarkedCase : 0u;
        second_[count_] = values.secondary;
        third_[count_++] = static_cast<std::uint8_t>(collation_.case_counts ? values.flags : values.flags & kana);
        previous = values.primary;
        position += values.characters == 2 ? 2 : 1;
    }
    return out;
}

// Where the first level is the same on both sides each has as many values of the others, so that zeros at the end of
// the second need not be written.
std::uint8_t *SortKeys::add_lower_levels(std::uint8_t *out) const {
    std::size_t seconds = count_;
    while (seconds > 0 && second_[seconds - 1] == 0)
        --seconds;
    for (std::size_t i = 0; i < seconds; ++i) {
        constexpr std::uint8_t zero = 1, other = 2;
        *out++ = second_[i] == 0 ? zero : other;
        if (second_[i] != 0) out = add_16(out, second_[i]);
    }
    *out++ = kEnd;
    const unsigned third_bits = collation_.is_east_asian() ? 2 : 1;
    unsigned bits = 1; // with a mark above the bits of one byte
    for (std::size_t i = 0; i < count_; ++i) {
        bits = bits << third_bits | third_[i];
        if (bits < 0x100) continue;
        *out++ = static_cast<std::uint8_t>(bits);
        bits = 1;
    }
    if (bits == 1) return out;
    while (bits < 0x100)
        bits <<= third_bits;
    *out++ = static_cast<std::uint8_t>(bits);
    return out;
}

bool is_blank(KxChar ch) {
    return ch == ' ' || ch == KX_TAB || ch == KX_LINE_FEED;
}

void add_number(const LineText &text, const NumberMarks &marks, std::vector<std::uint8_t> &key) {
    const auto is_digit = [](KxChar ch) { return ch >= '0' && ch <= '9'; };
    auto at = std::ranges::find_if_not(text.chars, is_blank);
    const auto end = text.chars.end();
    const bool minus = at != end && *at == '-';
    if (minus) ++at;
    const std::size_t old_size = key.size();
    constexpr std::uint8_t below_zero = 1, zero = 2, above_zero = 3;
    constexpr std::size_t count_size = 4;
    key.push_back(minus ? below_zero : above_zero);
    // The number of digits before the point, then the digits.
    key.resize(key.size() + count_size);
    const std::size_t digits = key.size();
    for (; at != end && (is_digit(*at) || *at == marks.thousands); ++at) {
        if (*at == marks.thousands || (*at == '0' && key.size() == digits)) continue;
        key.push_back(static_cast<std::uint8_t>(*at));
    }
    add_32(key.data() + digits - count_size, static_cast<std::uint32_t>(key.size() - digits));
    if (at != end && *at == marks.point) {
        for (++at; at != end && is_digit(*at); ++at)
            key.push_back(static_cast<std::uint8_t>(*at));
        std::size_t count = 0;
        for (std::size_t i = digits - 4; i < digits; ++i)
            count = count << 8 | key[i];
        const std::size_t whole = digits + count;
        while (key.size() > whole && key.back() == '0')
            key.pop_back();
    }
    if (key.size() == digits) {
        key.resize(old_size);
        key.push_back(zero);
        return;
    }
    key.push_back(kEnd);
    if (!minus) return;
    for (std::size_t i = old_size + 1; i < key.size(); ++i)
        key[i] = static_cast<std::uint8_t>(~key[i]);
}

} // namespace kx
