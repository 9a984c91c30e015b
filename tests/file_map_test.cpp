// Tests the places of blocks in their file: examples of the rules, and what goes beyond the small lists, all
// of which small_worlds/entry_lists_test.cpp covers.
// SPDX-License-Identifier: MIT
#include "poweroff_protect/poweroff_protect.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <utility>
#include <vector>

namespace {

using testing::ElementsAre;
using testing::Pair;
using Places = std::vector<std::pair<int, int>>;

/// (fileOffset, bitOffset) of every block of (area, count).
Places placesOf(const std::vector<std::pair<const char*, int>>& cells)
{
    QList<MaintenanceFileInfo> blocks;
    for (const auto& each : cells) {
        MaintenanceFileInfo block;
        block.address.block = QString::fromLatin1(each.first);
        block.count = each.second;
        block.fileOffset = block.bitOffset = 4711; // to be overwritten
        blocks.append(block);
    }
    poweroff_protect().fileMemoryMap(blocks);
    Places places;
    for (const MaintenanceFileInfo& block : std::as_const(blocks))
        places.emplace_back(block.fileOffset, block.bitOffset);
    return places;
}

/// The same for blocks of one area, with an empty block after them that shows the end position.
Places placesAndEndOf(const char* area, const std::vector<int>& counts)
{
    std::vector<std::pair<const char*, int>> cells;
    for (const int count : counts)
        cells.emplace_back(area, count);
    cells.emplace_back(area, 0);
    return placesOf(cells);
}

TEST(FileMap, PacksBitsWithoutGaps)
{
    EXPECT_THAT(placesAndEndOf("LB", {3, 6, 8, 0, 5}),
                ElementsAre(Pair(0, 0), Pair(0, 3), Pair(1, 1), Pair(2, 1), Pair(2, 1), Pair(2, 6)));
}

TEST(FileMap, NegativeBitCountsMoveBackAndMayLeaveANegativeBit)
{
    EXPECT_THAT(placesAndEndOf("LB", {-9, 10}), ElementsAre(Pair(0, 0), Pair(-1, -1), Pair(0, 1)));
    EXPECT_THAT(placesAndEndOf("LB", {-7, -7}), ElementsAre(Pair(0, 0), Pair(0, -7), Pair(0, -14)));
}

TEST(FileMap, GoesByEachBlocksExactAreaName)
{
    EXPECT_THAT(placesOf({{"LB", 3}, {"LW", 2}, {"RWI", 1}, {"LB", 5}, {"LB", 0}}),
                ElementsAre(Pair(0, 0), Pair(0, 3), Pair(4, 3), Pair(6, 3), Pair(7, 0)));
    for (const char* other : {"lb", "Lw", "LB ", " LW", "RW", "RWIX", ""})
        EXPECT_THAT(placesOf({{"LW", 1}, {other, 9}, {"LW", 1}}),
                    ElementsAre(Pair(0, 0), Pair(2, 0), Pair(2, 0)))
            << '"' << other << '"';
}

} // namespace
