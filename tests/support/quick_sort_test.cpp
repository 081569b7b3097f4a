#include "support/quick_sort.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <numeric>
#include <string>

namespace quorvex::support {
namespace {

TEST(QuickSortTest, SortsTheRangeAndNothingElse) {
    std::vector<std::wstring> items = {L"z", L"Rose Cottage", L"2", L"10", L"Rose Cottage", L"", L"a"};
    QuickSort(items, 1, 5);
    EXPECT_EQ(items, (std::vector<std::wstring>{L"z", L"", L"10", L"2", L"Rose Cottage", L"Rose Cottage", L"a"}));
    const auto before = items;
    QuickSort(items, 3, 2);  // empty
    QuickSort(items, 0, 7);  // outside
    QuickSort(items, -1, 3); // outside
    EXPECT_EQ(items, before);
    QuickSort(items, 0, 6, std::greater<>());
    EXPECT_TRUE(std::is_sorted(items.rbegin(), items.rend()));
}

// Counted, not timed: the comparisons must stay near n log n for the orders that undo a plain quicksort.
TEST(QuickSortTest, AMillionEntriesInAnyOrderStayNearNLogN) {
    constexpr std::ptrdiff_t kCount = 1'000'000;
    std::vector<int> rising(kCount);
    std::iota(rising.begin(), rising.end(), 0);
    std::vector<int> few(kCount);
    for (std::size_t i = 0; i < few.size(); ++i) few[i] = static_cast<int>(i * 7919 % 3);
    const std::vector<int> falling(rising.rbegin(), rising.rend());
    for (std::vector<int> items : {rising, falling, few, std::vector<int>(kCount, 5)}) {
        std::size_t comparisons = 0;
        QuickSort(items, 0, kCount - 1, [&comparisons](int a, int b) {
            ++comparisons;
            return a < b;
        });
        EXPECT_TRUE(std::is_sorted(items.begin(), items.end()));
        EXPECT_LT(comparisons, 100U * kCount); // 2 * 1.39 * n * log2 n is 55 n
    }
}

} // namespace
} // namespace quorvex::support
