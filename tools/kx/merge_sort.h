// A sort for orders that are none: the comparisons of some languages are not transitive in every corner, with which
// std::stable_sort may leave its bounds. This one does not, whatever the comparison answers.
#pragma once

#include <algorithm>
#include <span>

namespace kx {

// Merges the halves of the items, the first of which is rounded down, when each of them is sorted.
template <class Item, class Compare> void merge_halves(std::span<Item> items, std::span<Item> spare, Compare &compare) {
    const std::span<Item> left = items.first(items.size() / 2);
    const std::span<Item> right = items.subspan(left.size());
    if (compare(left.back(), right.front()) <= 0) return;

    std::ranges::copy(left, spare.begin());
    std::span<const Item> waiting = spare.first(left.size());
    auto out = items.begin();
    auto next = right.begin();
    while (!waiting.empty() && next != right.end()) {
        if (compare(waiting.front(), *next) <= 0) {
            *out++ = waiting.front();
            waiting = waiting.subspan(1);
        } else {
            *out++ = *next++;
        }
    }
    std::ranges::copy(waiting, out); // what is left on the right already lies in its place
}

// Stable. `compare` gives less than 0, 0 or more; `spare` has room for half of the items, rounded down. Every step of a
// merge brings one new item to the comparison; the other is the one of the step before, on the same side.
template <class Item, class Compare> void merge_sort(std::span<Item> items, std::span<Item> spare, Compare &compare) {
    if (items.size() < 2) return;
    const std::span<Item> left = items.first(items.size() / 2);
    const std::span<Item> right = items.subspan(left.size());
    merge_sort(left, spare, compare);
    merge_sort(right, spare, compare);
    merge_halves(items, spare, compare);
}

} // namespace kx
