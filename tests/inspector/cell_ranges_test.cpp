// Tests ranges of cells: union, difference, limits and text.
// SPDX-License-Identifier: MIT
#include "tools/retention_core/cell_ranges.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

std::string textOf(const CellRanges& ranges)
{
    return ranges.text().toStdString();
}

TEST(CellRanges, JoinWhatOverlapsOrTouchesAndLeaveOutWhatIsEmpty)
{
    EXPECT_EQ(textOf(CellRanges({{20, 25}, {0, 4}, {5, 9}, {7, 8}, {31, 30}})), "0 to 9, 20 to 25");
    EXPECT_EQ(textOf(CellRanges({{3, 3}})), "3");
    EXPECT_EQ(textOf(CellRanges()), "");
}

TEST(CellRanges, TakeCellsAway)
{
    const CellRanges all({{0, 100}});
    EXPECT_EQ(textOf(all.minus(CellRanges({{0, 0}, {50, 59}, {100, 200}}))), "1 to 49, 60 to 99");
    EXPECT_TRUE(all.minus(all).isEmpty());
    EXPECT_EQ(textOf(all.minus(CellRanges())), "0 to 100");
    EXPECT_EQ(textOf(CellRanges({{0, 3}, {10, 13}}).minus(CellRanges({{2, 11}}))), "0 to 1, 12 to 13");
}

TEST(CellRanges, AreCutToLimits)
{
    const CellRanges ranges({{-5, 3}, {10, 20}, {65530, 70000}});
    EXPECT_EQ(textOf(ranges.within({0, 65535})), "0 to 3, 10 to 20, 65530 to 65535");
    EXPECT_TRUE(ranges.within({4, 9}).isEmpty());
    EXPECT_TRUE(ranges.contains(20));
    EXPECT_FALSE(ranges.contains(21));
}

TEST(CellRanges, CountHugeRangesAtOnce)
{
    EXPECT_EQ(CellRanges({{-2147483648LL, 2147483647LL}}).count(), 4294967296LL);
}

} // namespace
