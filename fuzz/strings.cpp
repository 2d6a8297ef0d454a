// Byte strings, KX strings and memory; traversal, search, repair and case of KX strings.
#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <kxstr/letters.h>
#include <kxstr/prim.h>
#include <kxstr/strops.h>

#include "targets.h"

namespace kxstr::fuzz {
namespace {

int sign(std::int32_t value) {
    return (value > 0) - (value < 0);
}

// Not the smallest number, whose negative is none.
std::int32_t limit_of(Input &input, std::size_t size) {
    const auto limit = static_cast<std::int32_t>(input.below(static_cast<std::uint32_t>(size + 3)));
    return input.below(8) == 0 ? -limit : limit;
}

void byte_strings(Input &input) {
    const auto first = bytes_of(input, input.below(300)), second = bytes_of(input, 300);
    const Buffer<char> a(input, first), b(input, second);
    const auto count = static_cast<std::uint32_t>(input.below(static_cast<std::uint32_t>(b.size() + 3)));
    const std::size_t length = b.size() - 1;
    require(wstrlen(b.data()) == length && wstrlen(nullptr) == 0, "the length");
    const Buffer<char> copy(input, b.size());
    require(wstrcpy(copy.data(), b.data()) == copy.data() && copy == b, "a copy");
    require(wstrcpy(nullptr, b.data()) == nullptr, "null");
    const Buffer<char> both(input, first, a.size() + length);
    require(wstrcat(both.data(), b.data()) == both.data() && wstrlen(both.data()) == both.size() - 1, "both");
    const Buffer<char> some(input, first, a.size() + std::min<std::size_t>(count, length));
    require(wstrncat(some.data(), b.data(), count) == some.data() && wstrlen(some.data()) == some.size() - 1, "a part");
    const Buffer<char> room(input, count);
    require(wstrncpy(room.data(), b.data(), count) == room.data(), "the destination");
    const std::int32_t size = limit_of(input, b.size());
    const Buffer<char> ended(input, static_cast<std::size_t>(std::max(size, 0)));
    CopyUpToAndNullTerminate(ended.data(), b.data(), size);
    require(size <= 0 || std::memchr(ended.data(), 0, ended.size()) != nullptr, "ends within its room");

    require(wstrcmp(a.data(), b.data()) == -wstrcmp(b.data(), a.data()), "the other way round");
    require(sign(wstrcmp(a.data(), b.data())) == sign(std::strcmp(a.data(), b.data())), "as bytes compare");
    require(wstrncmp(a.data(), b.data(), size) == -wstrncmp(b.data(), a.data(), size), "the other way round");
    require(w_stricmp(a.data(), b.data()) == -w_stricmp(b.data(), a.data()), "the other way round");
    const std::uint8_t byte = input.byte();
    const char *const from_left = byte == 0 ? nullptr : std::strchr(b.data(), static_cast<char>(byte));
    const char *const from_right = byte == 0 ? nullptr : std::strrchr(b.data(), static_cast<char>(byte));
    require(wstrchr(b.data(), byte | 0x100u) == from_left && wstrrchr(b.data(), byte | 0x100u) == from_right, "found");

    const Buffer<char> menu(input, b.size());
    const std::int16_t key = VaskStripAmpersand(menu.data(), b.data());
    const Buffer<char> in_place(input, second);
    require(VaskStripAmpersand(in_place.data(), in_place.data()) == key &&
                std::strcmp(in_place.data(), menu.data()) == 0,
            "the same in place");
    const Buffer<char> cut(input, second,
                           std::max<std::size_t>(b.size(), static_cast<std::size_t>(std::max(size, 0)) + 1));
    require(WMBStrTrunc(cut.data(), size) <= std::max(size, 0), "cut");
}

void kx_strings(Input &input) {
    const auto first = kx_of(input, input.below(300)), second = kx_of(input, 300);
    const Buffer<KxChar> a(input, first), b(input, second);
    const auto count = static_cast<std::uint32_t>(input.below(static_cast<std::uint32_t>(b.size() + 3)));
    const std::size_t length = b.size() - 1;
    require(wwstrlen(b.data()) == 2 * length, "the length");
    const Buffer<KxChar> copy(input, b.size());
    require(wwstrcpy(copy.data(), b.data()) == copy.data() && copy == b, "a copy");
    const Buffer<KxChar> both(input, first, a.size() + length);
    require(wwstrcat(both.data(), b.data()) == both.data() && wwstrlen(both.data()) == 2 * (both.size() - 1), "both");
    const Buffer<KxChar> some(input, first, a.size() + std::min<std::size_t>(count, length));
    require(wwstrncat(some.data(), b.data(), count) == some.data() && wwstrlen(some.data()) == 2 * (some.size() - 1),
            "a part");
    const Buffer<KxChar> room(input, count);
    require(wwstrncpy(room.data(), b.data(), count) == room.data(), "the destination");
    const std::int32_t size = limit_of(input, 2 * b.size());
    require(wwstrcmp(a.data(), b.data()) == -wwstrcmp(b.data(), a.data()), "the other way round");
    require(wwstrncmp(a.data(), b.data(), size) == -wwstrncmp(b.data(), a.data(), size), "the other way round");
    require(ww_stricmp(a.data(), b.data()) == -ww_stricmp(b.data(), a.data()), "the other way round");
    require(wwstrincmp(a.data(), b.data(), size) == -wwstrincmp(b.data(), a.data(), size), "the other way round");
    const std::uint16_t ch =
        length != 0 && input.flag() ? b[input.below(static_cast<std::uint32_t>(length))] : input.word();
    const auto *const left = std::find(b.begin(), b.end() - 1, ch);
    require(wwstrchr(b.data(), ch) == (left != b.end() - 1 ? left : nullptr), "the first");
    const KxChar *const right = wwstrrchr(b.data(), ch);
    require(right == nullptr
                ? left == b.end() - 1
                : *right == ch && std::find(right + 1, static_cast<const KxChar *>(b.end()) - 1, ch) == b.end() - 1,
            "the last");
    const auto part = std::span<const KxChar>(second).subspan(input.below(static_cast<std::uint32_t>(length + 1)));
    std::vector<KxChar> looked_for(part.begin(), part.begin() + static_cast<std::ptrdiff_t>(std::min<std::size_t>(
                                                                    part.size() - 1, input.below(6))));
    looked_for.push_back(0);
    const Buffer<KxChar> to_find(input, looked_for);
    const auto *const found = std::search(b.begin(), b.end(), to_find.begin(), to_find.end() - 1);
    require(wwstrstr(b.data(), to_find.data()) == (to_find.size() > 1 ? found : nullptr), "found");
    wwstrstr(b.data(), a.data());
}

void memory(Input &input) {
    const auto first = input.part(input.below(600)), second = input.part(600);
    const auto count = static_cast<std::uint32_t>(std::min(first.size(), second.size()));
    const Buffer<std::uint8_t> a(input, first.first(count)), b(input, second.first(count));
    require(KXwmemcmp(a.data(), b.data(), count) == sign(count == 0 ? 0 : std::memcmp(a.data(), b.data(), count)),
            "compared");
    require(KXwmemcmp(nullptr, b.data(), count) == 0, "null");
    const std::uint32_t units = count / 2;
    std::vector<std::uint16_t> area(units);
    if (units != 0) std::memcpy(area.data(), a.data(), 2 * std::size_t{units});
    const Buffer<KxChar> in(input, area);
    const std::uint16_t ch = input.word();
    const auto *const at = std::find(in.begin(), in.end(), ch);
    require(KXwmemwchr(in.data(), ch, units) == (at != in.end() ? at : nullptr), "found");
    const std::size_t shift = input.below(count + 1);
    for (const auto move : {KXwmemcpy, KXwhmemmove, +[](void *to, const void *from, std::uint32_t size) {
                                KXwmemmove(to, from, static_cast<std::int32_t>(size));
                            }}) {
        const Buffer<std::uint8_t> overlapping(input, first.first(count));
        if (input.flag()) {
            move(overlapping.data() + shift, overlapping.data(), static_cast<std::uint32_t>(count - shift));
            require(std::equal(overlapping.begin() + shift, overlapping.end(), first.begin()), "moved");
        } else {
            move(overlapping.data(), overlapping.data() + shift, static_cast<std::uint32_t>(count - shift));
            require(std::equal(overlapping.begin(), overlapping.end() - shift,
                               first.begin() + static_cast<std::ptrdiff_t>(shift)),
                    "moved");
        }
    }
    KXwhmemset(a.data(), input.number(), count);
    KXwmemset(b.data(), input.number(), static_cast<std::int32_t>(count));
    require(std::adjacent_find(a.begin(), a.end(), std::not_equal_to<>()) == a.end(), "filled");
    require(std::adjacent_find(b.begin(), b.end(), std::not_equal_to<>()) == b.end(), "filled");
    KXwmemset(b.data(), 1, -1);
}

void traversal(Input &input) {
    const auto first = kx_of(input, input.below(100)), second = kx_of(input, 300);
    const Buffer<KxChar> a(input, first), b(input, second);
    std::int32_t characters = 0;
    const KxChar *before = nullptr;
    for (const KxChar *at = W6wstrFirstCh(b.data()); *at != 0; at = W6wstrNextCh(at)) {
        require(*at < KX_FIRST_CODE, "a character");
        require(W6wstrPrevCh(b.data(), at) == (before != nullptr ? before : b.data()), "the one before");
        before = at;
        ++characters;
    }
    require(W6wstrchrcnt(b.data()) == characters, "as many as there are");
    const KxChar *const found = W6wstrstr(b.data(), a.data());
    require(found == nullptr || (found >= b.begin() && found < b.end()), "within");
    const KxChar *const delimiter = W6wstrdelim(b.data(), a.data());
    require(delimiter == std::find_first_of(b.begin(), b.end() - 1, a.begin(), a.end() - 1), "the first of them");

    const Buffer<KxChar> escaped(input, second);
    W6wstrFixExtChars(escaped.data());
    const auto *const bytes = reinterpret_cast<std::uint8_t *>(escaped.data());
    require(std::find(bytes, bytes + 2 * escaped.size(), 0) == bytes + 2 * escaped.size() - 1, "one 0, the last byte");
    W6wstrUnFixExtChars(reinterpret_cast<std::uint8_t *>(escaped.data()));
    const auto plain = [](KxChar unit) { return (unit & 0xFF) != 0xFF && unit >> 8 != 0xFF; };
    require(!std::all_of(b.begin(), b.end(), plain) || escaped == b, "there and back");
    const Buffer<KxChar> renumbered(input, second);
    const std::uint16_t mode = static_cast<std::uint16_t>(input.below(4));
    require(W6wzFix(renumbered.data(), mode) == renumbered.data() && (mode == 1 || mode == 2 || renumbered == b),
            "renumbered");

    // Tests of equality; the orders are among the collation's.
    const std::int32_t limit = limit_of(input, b.size());
    for (const auto equal : {W6wstrequ, W6wstriequ}) {
        require(equal(b.data(), b.data()) == 1, "equal to itself");
        require(equal(a.data(), b.data()) == equal(b.data(), a.data()), "the other way round");
    }
    for (const auto equal : {W6wstrnequ, W6wstrniequ})
        require(equal(a.data(), b.data(), limit) == equal(b.data(), a.data(), limit), "the other way round");
}

void letters(Input &input) {
    const auto text = kx_of(input, 300);
    const Buffer<KxChar> source(input, text);
    const Buffer<KxChar> lower(input, text), upper(input, text), copied(input, text.size()), in_place(input, text);
    require(W6wstrlwr(lower.data()) == lower.data() && W6wstrupr(upper.data()) == upper.data(), "the string");
    ws2upper(copied.data(), source.data());
    ws2upper(in_place.data(), in_place.data());
    require(copied == upper && in_place == upper, "one rule for capitals");
    ws2upper(nullptr, source.data());
    const std::int32_t size = limit_of(input, 2 * source.size());
    const Buffer<std::uint8_t> part(input, static_cast<std::size_t>(std::max(size, 0) / 2 * 2));
    ws2uppern(reinterpret_cast<KxChar *>(part.data()), source.data(), size);
    for (std::size_t i = 0; i < text.size(); ++i) {
        const std::uint32_t ch = text[i];
        require(lower[i] == (ch < KX_FIRST_CODE ? wtolower(ch) : ch), "the small letter");
        require(wtolower(ch) == W6wstrLowerCh(ch) && wtoupper(ch) == W6wstrUpperCh(ch), "two names");
        require(W6wstrIsAlphaNum(ch) == (W6wstrIsAlpha(ch) | W6wstrIsDigit(ch)), "letters and digits");
        require(W6wstrIsSpace(ch) <= 1 && wisupper(ch) <= 1, "yes or no");
        const unsigned set = ch >> 8;
        const bool has_range = set >= 1 && set <= 15;
        require(!has_range || rngchr[2 * set - 2] <= rngchr[2 * set - 1] || rngchr[2 * set - 1] == 0, "a range");
        wtoall(static_cast<std::uint16_t>(input.below(8)), ch);
        KxChar next = i + 1 < text.size() ? text[i + 1] : KxChar{0}, mark = 0;
        wtodouble(ch, input.flag() ? &next : nullptr);
        wtosingle(ch, input.flag() ? &mark : nullptr);
        wtokatakana(wtohiragana(ch));
        gbtobig5(big5togb(ch));
    }
    // A table of ranges that ends where it says.
    std::vector<KxIndexRange> ranges(input.below(8));
    for (KxIndexRange &range : ranges)
        range = {static_cast<std::uint16_t>(input.below(48)), input.byte(), input.byte()};
    std::ranges::sort(ranges, {}, &KxIndexRange::set);
    ranges.push_back({KX_RANGES_END, 0, 0});
    const Buffer<KxIndexRange> table(input, ranges);
    const std::uint16_t ch = input.word();
    const bool there = std::any_of(ranges.begin(), ranges.end() - 1, [ch](const KxIndexRange &range) {
        return range.set == ch >> 8 && range.first <= (ch & 0xFF) && (ch & 0xFF) <= range.last;
    });
    require(lW6wstrFoundInTable(ch, table.data()) == (there ? 1 : 0), "found in a table");
}

} // namespace

void strings(Input &input) {
    static constexpr void (*kFamilies[])(Input &) = {byte_strings, kx_strings, memory, traversal, letters};
    choose_system(input);
    choose_language(input);
    input.one_of(kFamilies)(input);
}

} // namespace kxstr::fuzz
