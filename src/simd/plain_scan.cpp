#include <algorithm>
#include <cstring>

#include "simd/block_order.h"
#include "simd/families.h"
#include "simd/order_values.h"

namespace kxstr::simd::plain {
namespace {

template <class Unit> std::size_t outside(const Unit *units, std::size_t count, Unit low, Unit high) noexcept {
    return static_cast<std::size_t>(
        std::find_if(units, units + count, [=](Unit unit) { return unit < low || unit > high; }) - units);
}

constexpr auto as_it_is = [](auto unit) { return unit; };
constexpr auto capital = [](auto unit) { return unit >= 'a' && unit <= 'z' ? unit - 'a' + 'A' : unit; };

template <class Unit, class Fold>
std::size_t mismatch(const Unit *a, const Unit *b, std::size_t limit, Fold fold) noexcept {
    std::size_t i = 0;
    while (i < limit && fold(a[i]) == fold(b[i]) && a[i] != 0)
        ++i;
    return i;
}

template <class Unit, class Fold> int compare(const Unit *a, const Unit *b, Fold fold) noexcept {
    const std::size_t i = mismatch(a, b, SIZE_MAX, fold);
    return fold(a[i]) - fold(b[i]);
}

} // namespace

const std::uint16_t *find_zero16(const std::uint16_t *string) noexcept {
    while (*string != 0)
        ++string;
    return string;
}

std::uint32_t size8(const std::uint8_t *string) noexcept {
    return static_cast<std::uint32_t>(std::strlen(reinterpret_cast<const char *>(string)));
}

std::uint32_t size16(const std::uint16_t *string) noexcept {
    return static_cast<std::uint32_t>(find_zero16(string) - string) * std::uint32_t{sizeof *string};
}

const std::uint8_t *find8(const std::uint8_t *string, std::uint8_t wanted) noexcept {
    const char *const found = std::strchr(reinterpret_cast<const char *>(string), wanted);
    return wanted != 0 ? reinterpret_cast<const std::uint8_t *>(found) : nullptr;
}

const std::uint16_t *find16(const std::uint16_t *string, std::uint16_t wanted) noexcept {
    while (*string != 0 && *string != wanted)
        ++string;
    return *string != 0 ? string : nullptr;
}

const std::uint16_t *find_last16(const std::uint16_t *string, std::uint16_t wanted) noexcept {
    const std::uint16_t *found = nullptr;
    for (; *string != 0; ++string) {
        if (*string == wanted) found = string;
    }
    return found;
}

std::size_t find_within16(const std::uint16_t *units, std::size_t count, std::uint16_t wanted) noexcept {
    std::size_t i = 0;
    while (i < count && units[i] != wanted)
        ++i;
    return i;
}

const std::uint16_t *find_signs16(const std::uint16_t *string, const Signs16 &signs) noexcept {
    const auto &[at, units] = signs;
    if (find_within16(string, at[2], 0) < at[2]) return nullptr;
    for (; string[at[2]] != 0; ++string) {
        if (string[at[2]] == units[2] && string[at[1]] == units[1] && string[at[0]] == units[0]) return string;
    }
    return nullptr;
}

Found16 find_short16(const std::uint16_t *, const std::uint16_t *) noexcept {
    return {false, nullptr};
}

std::size_t outside8(const std::uint8_t *bytes, std::size_t count, std::uint8_t low, std::uint8_t high) noexcept {
    return outside(bytes, count, low, high);
}

std::size_t outside16(const std::uint16_t *units, std::size_t count, std::uint16_t low, std::uint16_t high) noexcept {
    return outside(units, count, low, high);
}

std::size_t mismatch8(const std::uint8_t *a, const std::uint8_t *b, std::size_t limit) noexcept {
    return mismatch(a, b, limit, as_it_is);
}

std::size_t mismatch16(const std::uint16_t *a, const std::uint16_t *b, std::size_t limit) noexcept {
    return mismatch(a, b, limit, as_it_is);
}

std::size_t mismatch16_caseless(const std::uint16_t *a, const std::uint16_t *b, std::size_t limit) noexcept {
    return mismatch(a, b, limit, capital);
}

int compare8(const std::uint8_t *a, const std::uint8_t *b) noexcept {
    return compare(a, b, as_it_is);
}

int compare8_caseless(const std::uint8_t *a, const std::uint8_t *b) noexcept {
    return compare(a, b, capital);
}

int compare16(const std::uint16_t *a, const std::uint16_t *b) noexcept {
    return compare(a, b, as_it_is);
}

int order_by_values16(const std::uint16_t *a, const std::uint16_t *b, const OrderValues &values, std::uint32_t flag,
                      std::uint32_t other_flag) noexcept {
    Order order = order_of_first(values, a, b);
    for (std::size_t i = 0; order == kSame; ++i) {
        if (a[i] != b[i] || a[i] == 0) order = order_at(values, a, b, i);
    }
    return order != kOpen ? order : values.go_on(a, b, values, flag, other_flag);
}

int order_by_block16(const std::uint16_t *a, const std::uint16_t *b, const std::uint8_t *block,
                     Compare16 *go_on) noexcept {
    const std::size_t i = mismatch16(a, b, SIZE_MAX);
    return order_at_place<true>(block, a, b, i, go_on);
}

int order_by_block16_caseless(const std::uint16_t *a, const std::uint16_t *b, const std::uint8_t *block,
                              Compare16 *go_on) noexcept {
    const std::size_t i = mismatch16_caseless(a, b, SIZE_MAX);
    return order_at_place<false>(block, a, b, i, go_on);
}

std::uint16_t *copy16(std::uint16_t *destination, const std::uint16_t *source) noexcept {
    const auto length = static_cast<std::size_t>(find_zero16(source) - source);
    std::memmove(destination, source, (length + 1) * sizeof *source);
    return destination;
}

} // namespace kxstr::simd::plain
