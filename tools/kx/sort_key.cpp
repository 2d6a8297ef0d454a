#include "sort_key.h"

#include <kxstr/letters.h>
#include <kxstr/strops.h>

#include "collate/contraction.h"
#include "collate/east_asian.h"
#include "collate/weights.h"

namespace kx {
namespace {

using kxstr::collate::Weight;

// Ends a level: the end of a line sorts before every value.
constexpr std::uint8_t kEnd = 0;

std::uint8_t *add_16(std::uint8_t *out, std::uint16_t value) {
    *out++ = static_cast<std::uint8_t>(value >> 8);
    *out++ = static_cast<std::uint8_t>(value);
    return out;
}

// Values from 0 to 0xFF, none of which may look like the end.
std::uint8_t *add_value(std::uint8_t *out, unsigned value) {
    constexpr unsigned first_long = 0xFE;
    if (value >= first_long) return add_16(out, static_cast<std::uint16_t>(0xFF00 + value - first_long));
    *out++ = static_cast<std::uint8_t>(value + 1);
    return out;
}

// East Asian values have no high byte 0xFE, which leaves a place for the end.
std::uint8_t *add_east_asian_value(std::uint8_t *out, std::uint16_t value) {
    constexpr std::uint16_t first_unmoved = 0xFF00;
    return add_16(out, static_cast<std::uint16_t>(value < first_unmoved ? value + 0x100 : value));
}

// What a character takes at most: it expands to two letters, each of two bytes on the first level, three on the second
// and one on the third. coltbl has four bytes for it and the three ends have one each.
constexpr std::size_t kMostValues = 2;
constexpr std::size_t kMostBytes = kMostValues * (2 + 3 + 1) + 4;
constexpr std::size_t kEnds = 3;

} // namespace

std::optional<std::span<const std::uint8_t>> SortKeys::make(std::span<const KxChar> text) {
    if (second_.size() < kMostValues * text.size()) {
        second_.resize(kMostValues * text.size());
        third_.resize(kMostValues * text.size());
        key_.resize(kMostBytes * text.size() + kEnds);
    }
    const KxChar *position = text.data();
    std::uint8_t *out = key_.data();
    if (collation_.by_coltbl()) out = add_coltbl(position, out);
    if (kxstr::is_code(*position)) ++position; // as the comparison does
    out = collation_.is_east_asian() ? add_east_asian(position, out) : add_letters(position, out);
    if (out == nullptr) return std::nullopt;
    while (out != key_.data() && out[-1] == 0)
        --out;
    return std::span<const std::uint8_t>(key_.data(), out);
}

// Characters without a value lie behind all others, by their codes.
std::uint8_t *SortKeys::add_coltbl(const KxChar *text, std::uint8_t *out) const {
    for (; *text != 0; ++text) {
        if (kxstr::is_code(*text)) continue;
        const KxChar lower = wtolower(*text);
        const unsigned value = W6wstrCollateCh(lower);
        out = add_value(out, value);
        if (value == kxstr::collate::kNoValue) out = add_16(out, lower);
    }
    *out++ = kEnd;
    return out;
}

std::uint8_t *SortKeys::add_letters(const KxChar *text, std::uint8_t *out) {
    const auto &weights = kxstr::collate::weights_of(kxstr::low16(collation_.language));
    const auto &rules = weights.rules();
    std::size_t count = 0;
    const auto add = [&](Weight weight, unsigned primary) {
        out = add_value(out, primary);
        const bool sorts_last = (weight.letter_case() != 0) != rules.upper_first;
        second_[count] = weight.secondary();
        third_[count] = static_cast<std::uint8_t>(sorts_last && collation_.case_counts);
        ++count;
    };
    while (*text != 0) {
        const bool contracts = weights.may_contract(text);
        KxChar ch = *text++;
        KxChar pending = contracts ? kxstr::collate::contract(ch, text, rules) : KxChar{0};
        const unsigned mark = pending & kxstr::collate::kContracted;
        const Weight weight = weights[ch];
        if (weight.primary() == kxstr::collate::kIgnorable) return nullptr;
        add(weight, weight.primary() + (mark != 0 ? 1u : 0u));
        if (pending == 0) continue;
        // Against another contraction the pending letter takes part in the next one, against the same it does not.
        pending = static_cast<KxChar>(pending ^ mark);
        const Weight pending_weight = weights[pending];
        const KxChar *ahead = text;
        if (kxstr::collate::contract(pending, ahead, rules) != 0) return nullptr;
        add(pending_weight, pending_weight.primary());
    }
    constexpr unsigned case_bits = 1;
    return add_lower_levels(out, count, case_bits);
}

std::uint8_t *SortKeys::add_east_asian(const KxChar *text, std::uint8_t *out) {
    const auto &table = kxstr::collate::east_asian_table();
    std::size_t count = 0;
    std::uint16_t previous = 0;
    while (*text != 0) {
        const auto values = table.values(text[0], text[1], previous, !collation_.case_counts);
        out = add_east_asian_value(out, values.primary);
        const unsigned kana = collation_.kana_counts ? kxstr::collate::kUnmarkedCase : 0u;
        second_[count] = values.secondary;
        third_[count] = static_cast<std::uint8_t>(collation_.case_counts ? values.flags : values.flags & kana);
        ++count;
        previous = values.primary;
        text += values.characters == 2 ? 2 : 1;
    }
    constexpr unsigned flag_bits = 2;
    return add_lower_levels(out, count, flag_bits);
}

// Where the first level is the same on both sides each has as many values of the others, so that zeros at the end of a
// level need not be written.
std::uint8_t *SortKeys::add_lower_levels(std::uint8_t *out, std::size_t count, unsigned third_bits) const {
    *out++ = kEnd;
    std::size_t seconds = count;
    while (seconds > 0 && second_[seconds - 1] == 0)
        --seconds;
    for (std::size_t i = 0; i < seconds; ++i) {
        constexpr std::uint8_t zero = 1, other = 2;
        *out++ = second_[i] == 0 ? zero : other;
        if (second_[i] != 0) out = add_16(out, second_[i]);
    }
    *out++ = kEnd;
    unsigned bits = 1; // with a mark above the bits of one byte
    for (std::size_t i = 0; i < count; ++i) {
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

} // namespace kx
