// Ordering comparisons and equality tests of texts: one walk each, over what ends it and how characters compare.
#include <algorithm>
#include <kxstr/strops.h>
#include <limits>

#include "collate/coltbl_compare.h"
#include "collate/language_setup.h"
#include "forms/step.h"
#include "simd/block_order.h"
#include "simd/kernels.h"

namespace kxstr::strops {
namespace {

using collate::Case;
using forms::next_char;
using forms::skip_codes;

// A bound ends a comparison before the texts do: where a position has `reached` its distance from the start of the
// text, codes included, or when its count of characters is `spent` (asked once for each pair of equal characters).
// The equality tests give `at_start` when a bound leaves nothing to compare, and `later` when it is reached afterwards.
struct Unbounded {
    static constexpr std::int32_t at_start = 0;
    static constexpr std::int32_t later = 0;
    constexpr bool reached(std::ptrdiff_t) const noexcept { return false; }
    constexpr bool spent() const noexcept { return false; }
};

struct CharacterLimit {
    std::int32_t left;
    static constexpr std::int32_t at_start = 1;
    static constexpr std::int32_t later = 1;
    constexpr bool reached(std::ptrdiff_t) const noexcept { return left <= 0; }
    constexpr bool spent() noexcept { return --left == 0; }
};

struct UnitLimit {
    std::int32_t limit;
    std::int32_t at_start = 0;
    std::int32_t later = 0;
    constexpr bool reached(std::ptrdiff_t distance) const noexcept { return distance >= limit; }
    constexpr bool spent() const noexcept { return false; }
};

struct UnitAndCharacterLimit : UnitLimit {
    std::int32_t left = limit;
    constexpr bool spent() noexcept { return --left == 0; }
};

// 1 when a has a character left, whatever b has; -1 when only b has one.
constexpr std::int32_t compare_ends(const KxChar *a, const KxChar *b) noexcept {
    if (*a != 0) return 1;
    return *b != 0 ? -1 : 0;
}

bool same(const KxChar *p, const KxChar *q) noexcept {
    return *p == *q;
}
bool same(const std::uint8_t *p, const std::uint8_t *q) noexcept {
    return *p == *q && (*p != forms::kExtended || std::equal(p + 1, p + forms::kExtendedSize, q + 1));
}

KxChar char_at(const KxChar *position) noexcept {
    return *position;
}
KxChar char_at(const std::uint8_t *position) noexcept {
    return forms::stream_char(position);
}

template <Case letter_case, class Unit> bool equal_at(const Unit *p, const Unit *q) noexcept {
    if constexpr (letter_case == Case::kCounts) return same(p, q);
    return char_at(p) == char_at(q) || letters::to_lower(char_at(p)) == letters::to_lower(char_at(q));
}

constexpr std::size_t kUnlimited = std::numeric_limits<std::size_t>::max();
constexpr std::int32_t kUndecided = 2; // results are -1, 0 and 1

// What the characters at two positions say about the texts: first what is quickly told, small enough to stand in line.
template <Case letter_case> struct Order {
    static std::int32_t decide_quickly(KxChar p, KxChar q) noexcept {
        const std::uint8_t *const block = collate::ascii_block();
        if (block == nullptr) [[unlikely]]
            return kUndecided;
        const int order = simd::order_in_block<letter_case == Case::kCounts>(block, p, q);
        return order == 0 ? kUndecided : order < 0 ? -1 : 1;
    }
    [[gnu::noinline]] static std::int32_t decide(KxChar p, KxChar q) noexcept {
        if (p == 0 || q == 0) return compare_ends(&p, &q);
        const int difference = collate::compare_characters(p, q, letter_case);
        return difference == 0 ? kUndecided : difference < 0 ? -1 : 1;
    }
};
template <Case letter_case> struct Equality {
    static std::int32_t decide_quickly(KxChar p, KxChar q) noexcept {
        constexpr unsigned kCaseBit = letter_case == Case::kIgnored ? 0x20 : 0;
        return ((p ^ q) & ~kCaseBit) != 0 && set_of(p | q) == kAsciiSet ? 0 : kUndecided;
    }
    [[gnu::noinline]] static std::int32_t decide(KxChar p, KxChar q) noexcept {
        if (!equal_at<letter_case>(&p, &q)) return 0;
        return p == 0 ? 1 : kUndecided;
    }
};

// From a difference on: has the characters decide at which the texts differ, one pair after the other.
template <class Question, Case letter_case>
[[gnu::noinline]] std::int32_t compare_on(const KxChar *p, const KxChar *q) noexcept {
    for (;;) {
        p = skip_codes(p);
        q = skip_codes(q);
        if (const std::int32_t result = Question::decide(*p, *q); result != kUndecided) return result;
        ++p;
        ++q;
        // Texts that differ in the case of one letter often do in the next, too.
        const std::size_t same = letter_case == Case::kIgnored
                                     ? simd::kernels().mismatch_by_case16(letters::lower_map(), p, q, kUnlimited)
                                     : simd::kernels().mismatch16(p, q, kUnlimited);
        p += same;
        q += same;
    }
}

template <template <Case> class Question, Case letter_case>
std::int32_t compare_at(const KxChar *p, const KxChar *q) noexcept {
    const std::int32_t result = Question<letter_case>::decide_quickly(*p, *q);
    return result != kUndecided ? result : compare_on<Question<letter_case>, letter_case>(p, q);
}

// What is the same in both texts is stepped over at once: being the same, the codes in it are codes of both. So is,
// where case is ignored, what differs in the case of ASCII letters alone.
template <template <Case> class Question, Case letter_case>
[[gnu::noinline]] std::int32_t compare_alike(const KxChar *a, const KxChar *b) noexcept {
    const std::size_t same = letter_case == Case::kIgnored ? simd::kernels().mismatch16_caseless(a, b, kUnlimited)
                                                           : simd::kernels().mismatch16(a, b, kUnlimited);
    return compare_at<Question, letter_case>(a + same, b + same);
}

// Most comparisons end at the first difference; one at the start takes no room on the stack.
template <Case letter_case> std::int32_t equal_texts(const KxChar *a, const KxChar *b) noexcept {
    constexpr unsigned kCaseBit = letter_case == Case::kIgnored ? 0x20 : 0;
    if (((*a ^ *b) & ~kCaseBit) == 0) return compare_alike<Equality, letter_case>(a, b);
    return compare_at<Equality, letter_case>(a, b);
}

// Of words in order many begin with a letter and its capital, in no foreseeable turn: so whether case counts makes no
// difference to where the first units are looked at.
template <Case letter_case> std::int32_t order_texts(const KxChar *a, const KxChar *b) noexcept {
    constexpr unsigned kCaseBit = 0x20;
    if (((*a ^ *b) & ~kCaseBit) != 0) return compare_at<Order, letter_case>(a, b);
    const std::uint8_t *const block = collate::ascii_block();
    if (block == nullptr) [[unlikely]]
        return compare_alike<Order, letter_case>(a, b);
    const simd::Kernels &kernels = simd::kernels();
    const auto order = letter_case == Case::kCounts ? kernels.order_by_block16 : kernels.order_by_block16_caseless;
    return order(a, b, block, compare_alike<Order, letter_case>);
}

template <Case letter_case>
[[gnu::noinline]] std::int32_t order_in_new_language(const KxChar *a, const KxChar *b) noexcept {
    collate::set_up_current_language();
    return order_texts<letter_case>(a, b);
}

template <Case letter_case> std::int32_t order(const KxChar *a, const KxChar *b, Unbounded) noexcept {
    if (!collate::is_current_language_set_up()) return order_in_new_language<letter_case>(a, b);
    return order_texts<letter_case>(a, b);
}

template <Case letter_case, class Bound> std::int32_t order(const KxChar *a, const KxChar *b, Bound bound) noexcept {
    collate::set_up_current_language();
    const KxChar *p = skip_codes(a);
    const KxChar *q = skip_codes(b);
    while (!bound.reached(p - a) && !bound.reached(q - b)) {
        if (*p == 0 || *q == 0) return compare_ends(p, q);
        if (const int difference = collate::compare_characters(*p, *q, letter_case); difference != 0)
            return difference < 0 ? -1 : 1;
        if (bound.spent()) return 0;
        p = next_char(p);
        q = next_char(q);
    }
    return 0;
}

// A negative count compares no character, but still tells which text is empty; where neither is, a is the longer.
template <Case letter_case> std::int32_t order_counted(const KxChar *a, const KxChar *b, std::int32_t count) noexcept {
    if (count >= 0) return order<letter_case>(a, b, CharacterLimit{count});
    collate::set_up_current_language();
    return compare_ends(skip_codes(a), skip_codes(b));
}

template <Case letter_case> std::int32_t equal(const KxChar *a, const KxChar *b, Unbounded) noexcept {
    return equal_texts<letter_case>(a, b);
}

template <Case letter_case, class Unit, class Bound>
std::int32_t equal(const Unit *a, const Unit *b, Bound bound) noexcept {
    const Unit *p = skip_codes(a);
    const Unit *q = skip_codes(b);
    if (bound.reached(p - a) || bound.reached(q - b)) return bound.at_start;
    while (equal_at<letter_case>(p, q)) {
        // An extended character that holds character 0 equals a terminator: either of the two texts may end here.
        if (*p == 0 || *q == 0 || bound.spent()) return 1;
        p = next_char(p);
        q = next_char(q);
        if (bound.reached(p - a) || bound.reached(q - b)) return bound.later;
    }
    return 0;
}

} // namespace
} // namespace kxstr::strops

using kxstr::collate::Case;
using kxstr::strops::CharacterLimit;
using kxstr::strops::equal;
using kxstr::strops::order;
using kxstr::strops::order_counted;
using kxstr::strops::Unbounded;
using kxstr::strops::UnitAndCharacterLimit;
using kxstr::strops::UnitLimit;

extern "C" {

uint8_t W6wstrCollateCh(uint32_t ch) {
    if (kxstr::low16(ch) == 0) return 0;
    kxstr::collate::set_up_current_language();
    return kxstr::collate::coltbl_value(kxstr::low16(ch));
}

int32_t W6wstrcmp(const KxChar *a, const KxChar *b) {
    return order<Case::kCounts>(a, b, Unbounded{});
}
int32_t W6wstrccmp(const KxChar *a, const KxChar *b, int32_t count) {
    return order_counted<Case::kCounts>(a, b, count);
}
int32_t W6wstrncmp(const KxChar *a, const KxChar *b, int32_t limit) {
    return order<Case::kCounts>(a, b, UnitLimit{limit});
}
int32_t W6w_stricmp(const KxChar *a, const KxChar *b) {
    return order<Case::kIgnored>(a, b, Unbounded{});
}
int32_t W6wstrcicmp(const KxChar *a, const KxChar *b, int32_t count) {
    return order_counted<Case::kIgnored>(a, b, count);
}
int32_t W6wstrnicmp(const KxChar *a, const KxChar *b, int32_t limit) {
    return order<Case::kIgnored>(a, b, UnitLimit{limit});
}

int32_t W6wstrequ(const KxChar *a, const KxChar *b) {
    return equal<Case::kCounts>(a, b, Unbounded{});
}
int32_t W6wstriequ(const KxChar *a, const KxChar *b) {
    return equal<Case::kIgnored>(a, b, Unbounded{});
}
int32_t W6wstrnequ(const KxChar *a, const KxChar *b, int32_t limit) {
    return equal<Case::kCounts>(a, b, UnitAndCharacterLimit{{limit}});
}
int32_t W6wstrniequ(const KxChar *a, const KxChar *b, int32_t limit) {
    return equal<Case::kIgnored>(a, b, UnitLimit{.limit = limit, .at_start = 0, .later = 1});
}

int32_t W6dstrequ(const uint8_t *a, const uint8_t *b) {
    return equal<Case::kCounts>(a, b, Unbounded{});
}
int32_t W6dstriequ(const uint8_t *a, const uint8_t *b) {
    return equal<Case::kIgnored>(a, b, Unbounded{});
}
int32_t W6dstrnequ(const uint8_t *a, const uint8_t *b, int32_t limit) {
    return equal<Case::kCounts>(a, b, UnitLimit{.limit = limit, .at_start = 1, .later = 1});
}
int32_t W6dstrniequ(const uint8_t *a, const uint8_t *b, int32_t limit) {
    return equal<Case::kIgnored>(a, b, UnitLimit{.limit = limit, .at_start = 1, .later = 1});
}
int32_t W6dstrcequ(const uint8_t *a, const uint8_t *b, int32_t count) {
    return equal<Case::kCounts>(a, b, CharacterLimit{count});
}
int32_t W6dstrciequ(const uint8_t *a, const uint8_t *b, int32_t count) {
    return equal<Case::kIgnored>(a, b, CharacterLimit{count});
}
}
