#include "dialogs/result_tree.h"

#include <gtest/gtest.h>

namespace quorvex::dialogs {
namespace {

std::vector<ResultNode> Read(std::vector<lookups::AdvancedLine> lines, std::int32_t recordCount, int& counter) {
    std::size_t next = 0;
    return ReadResultTree([&] { return next < lines.size() ? lines[next++] : lookups::AdvancedLine{}; }, recordCount,
                          counter);
}

TEST(ResultTree, LinesHangBelowTheirHeading) {
    int counter = 0;
    const auto nodes = Read({{L"Mill Lane", L"", L"h"},
                             {L"1 Mill Lane", L"AB1 3CD_1_F", L"l"},
                             {L"High Street", L"", L"h"},
                             {L"9 High Street", L"AB1 3CE_9_F", L"l"}},
                            2, counter);
    ASSERT_EQ(nodes.size(), 4u);
    EXPECT_EQ(nodes[0].key, L"k1");
    EXPECT_TRUE(nodes[0].heading);
    EXPECT_EQ(nodes[1].parent, 0);
    EXPECT_EQ(nodes[1].key, L"AB1 3CD_1_F");
    EXPECT_EQ(nodes[2].key, L"k2");
    EXPECT_EQ(nodes[3].parent, 2);
    // Keys of a second search in the same dialog are new ones.
    EXPECT_EQ(Read({{L"x", L"", L"h"}}, 1, counter).front().key, L"k3");
}

TEST(ResultTree, HeadingsStartCollapsedFromNinetyNineRecordsOn) {
    int counter = 0;
    EXPECT_TRUE(Read({{L"x", L"", L"h"}}, 98, counter).front().expanded);
    EXPECT_FALSE(Read({{L"x", L"", L"h"}}, 99, counter).front().expanded);
}

TEST(ResultTree, ALineWithoutHeadingIsARootAndAnEmptyTextEndsTheList) {
    int counter = 0;
    const auto nodes = Read({{L"a", L"1", L"l"}, {L"", L"", L"h"}, {L"b", L"2", L"l"}}, 2, counter);
    ASSERT_EQ(nodes.size(), 1u);
    EXPECT_EQ(nodes[0].parent, -1);
}

} // namespace
} // namespace quorvex::dialogs
