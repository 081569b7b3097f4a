#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <random>
#include <utility>
#include <vector>

namespace quorvex::support {
namespace detail {

template <typename T, typename Less, typename Random>
void SortRange(std::vector<T>& items, std::ptrdiff_t low, std::ptrdiff_t high, Less& less, Random& random) {
    const auto at = [&items](std::ptrdiff_t i) -> T& { return items[static_cast<std::size_t>(i)]; };
    while (low < high) {
        const T pivot = at(std::uniform_int_distribution<std::ptrdiff_t>(low, high)(random));
        std::ptrdiff_t below = low;  // [low, below) is less than the pivot
        std::ptrdiff_t next = low;   // [below, next) equals it
        std::ptrdiff_t above = high; // (above, high] is greater
        while (next <= above) {
            if (less(at(next), pivot)) {
                std::swap(at(below++), at(next++));
            } else if (less(pivot, at(next))) {
                std::swap(at(next), at(above--));
            } else {
                ++next;
            }
        }
        // The smaller part by a call, the larger one by the loop: the stack stays as deep as the logarithm.
        if (below - low < high - above) {
            SortRange(items, low, below - 1, less, random);
            low = above + 1;
        } else {
            SortRange(items, above + 1, high, less, random);
            high = below - 1;
        }
    }
}

} // namespace detail

// Sorts the entries from low to high (0-based, both included) in place by quicksort with a pivot chosen at random.
// Equal entries are set aside in one pass, so that a million of them cost no more than others. An empty range (high
// below low) and positions outside the entries do nothing.
template <typename T, typename Less = std::less<T>>
void QuickSort(std::vector<T>& items, std::ptrdiff_t low, std::ptrdiff_t high, Less less = {}) {
    if (low < 0 || high >= static_cast<std::ptrdiff_t>(items.size()) || low >= high) return;
    std::minstd_rand random{
        static_cast<std::minstd_rand::result_type>(std::chrono::steady_clock::now().time_since_epoch().count())};
    detail::SortRange(items, low, high, less, random);
}

} // namespace quorvex::support
