// Places of blocks in their file: the worked cases. The blocks of every small list are compared with the
// rules in small_worlds/entry_lists_test.cpp. SPDX-License-Identifier: MIT
#include "poweroff_protect/poweroff_protect.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <utility>
#include <vector>

namespace {

using testing::ElementsAre;
using testing::Pair;

struct Cells
{
    const char* area;
    int count;
};

QList<MaintenanceFileInfo> blocksOf(const std::vector<Cells>& cells)
{
    QList<MaintenanceFileInfo> blocks;
    for (const Cells& each : cells) {
        MaintenanceFileInfo block;
        block.address.block = QString::fromLatin1(each.area);
        block.address.index = 100 * blocks.size();
        block.count = each.count;
        block.fileOffset = 4711; // to be overwritten
        block.bitOffset = 4712;
        blocks.append(block);
    }
    return blocks;
}

using Places = std::vector<std::pair<int, int>>;

/// (fileOffset, bitOffset) of every block.
Places placesOf(const std::vector<Cells>& cells)
{
    QList<MaintenanceFileInfo> blocks = blocksOf(cells);
    poweroff_protect().fileMemoryMap(blocks);
    Places places;
    for (const MaintenanceFileInfo& block : std::as_const(blocks))
        places.emplace_back(block.fileOffset, block.bitOffset);
    return places;
}

/// The same for blocks of one area, with an empty block behind them that shows where the position stands.
Places placesAndEndOf(const char* area, const std::vector<int>& counts)
{
    std::vector<Cells> cells;
    for (const int count : counts)
        cells.push_back({area, count});
    cells.push_back({area, 0});
    return placesOf(cells);
}

TEST(FileMap, LeavesAnEmptyListAsItIs)
{
    QList<MaintenanceFileInfo> blocks;
    poweroff_protect().fileMemoryMap(blocks);
    EXPECT_TRUE(blocks.isEmpty());
}

TEST(FileMap, PlacesTheFirstBlockAtTheStart)
{
    for (const char* area : {"LB", "LW", "RWI", "other"})
        for (const int count : {-5, 0, 1, 1000})
            EXPECT_THAT(placesOf({{area, count}}), ElementsAre(Pair(0, 0))) << area << ' ' << count;
}

TEST(FileMap, ChangesNothingButThePlaces)
{
    QList<MaintenanceFileInfo> blocks = blocksOf({{"LB", 3}, {"LB", 6}});
    blocks[1].address.link = QStringLiteral("link");
    blocks[1].address.length = 9;
    poweroff_protect().fileMemoryMap(blocks);
    ASSERT_EQ(blocks.size(), 2);
    EXPECT_EQ(blocks[0].address.index, 0);
    EXPECT_EQ(blocks[0].count, 3);
    EXPECT_EQ(blocks[1].address.index, 100);
    EXPECT_EQ(blocks[1].count, 6);
    EXPECT_TRUE(blocks[1].address.link == QStringLiteral("link"));
    EXPECT_EQ(blocks[1].address.length, 9);
}

TEST(FileMap, PacksBitsWithoutGaps)
{
    EXPECT_THAT(placesAndEndOf("LB", {3, 6, 8, 0, 5}),
                ElementsAre(Pair(0, 0), Pair(0, 3), Pair(1, 1), Pair(2, 1), Pair(2, 1), Pair(2, 6)));
    EXPECT_THAT(placesAndEndOf("LB", {5, 6}), ElementsAre(Pair(0, 0), Pair(0, 5), Pair(1, 3)));
    EXPECT_THAT(placesAndEndOf("LB", {8}), ElementsAre(Pair(0, 0), Pair(1, 0)));
    EXPECT_THAT(placesAndEndOf("LB", {7, 1}), ElementsAre(Pair(0, 0), Pair(0, 7), Pair(1, 0)));
    EXPECT_THAT(placesAndEndOf("LB", {7, 7, 7}), ElementsAre(Pair(0, 0), Pair(0, 7), Pair(1, 6), Pair(2, 5)));
}

TEST(FileMap, GivesWordsTwoBytesEach)
{
    for (const char* area : {"LW", "RWI"})
        EXPECT_THAT(placesAndEndOf(area, {4, 1, 10}),
                    ElementsAre(Pair(0, 0), Pair(8, 0), Pair(10, 0), Pair(30, 0)))
            << area;
}

TEST(FileMap, AnEmptyBlockSharesThePlaceOfTheNext)
{
    EXPECT_THAT(placesAndEndOf("LB", {5, 0, 2}), ElementsAre(Pair(0, 0), Pair(0, 5), Pair(0, 5), Pair(0, 7)));
    EXPECT_THAT(placesAndEndOf("LW", {0, 2}), ElementsAre(Pair(0, 0), Pair(0, 0), Pair(4, 0)));
}

TEST(FileMap, NegativeBitCountsMoveBackAndMayLeaveANegativeBit)
{
    EXPECT_THAT(placesAndEndOf("LB", {-3, 2}), ElementsAre(Pair(0, 0), Pair(0, -3), Pair(0, -1)));
    EXPECT_THAT(placesAndEndOf("LB", {-9, 10}), ElementsAre(Pair(0, 0), Pair(-1, -1), Pair(0, 1)));
    EXPECT_THAT(placesAndEndOf("LB", {-7, -7}), ElementsAre(Pair(0, 0), Pair(0, -7), Pair(0, -14)));
}

TEST(FileMap, NegativeWordCountsMoveBack)
{
    EXPECT_THAT(placesAndEndOf("RWI", {-2, 3}), ElementsAre(Pair(0, 0), Pair(-4, 0), Pair(2, 0)));
}

TEST(FileMap, SumsWrapAt32Bits)
{
    EXPECT_THAT(placesAndEndOf("LW", {1 << 30}),
                ElementsAre(Pair(0, 0), Pair(std::numeric_limits<int>::min(), 0)));
    EXPECT_THAT(placesAndEndOf("LW", {std::numeric_limits<int>::max()}),
                ElementsAre(Pair(0, 0), Pair(-2, 0)));
    EXPECT_THAT(placesAndEndOf("LB", {std::numeric_limits<int>::max()}),
                ElementsAre(Pair(0, 0), Pair((1 << 28) - 1, 7)));
    EXPECT_THAT(placesAndEndOf("LB", {std::numeric_limits<int>::min()}),
                ElementsAre(Pair(0, 0), Pair(-(1 << 28), 0)));
}

TEST(FileMap, GoesByEachBlocksExactAreaName)
{
    EXPECT_THAT(placesOf({{"LB", 3}, {"LW", 2}, {"RWI", 1}, {"LB", 5}, {"LB", 0}}),
                ElementsAre(Pair(0, 0), Pair(0, 3), Pair(4, 3), Pair(6, 3), Pair(7, 0)));
    for (const char* other : {"lb", "Lw", "LB ", "RW", "RWIX", ""})
        EXPECT_THAT(placesOf({{"LW", 1}, {other, 9}, {"LW", 1}}),
                    ElementsAre(Pair(0, 0), Pair(2, 0), Pair(2, 0)))
            << '"' << other << '"';
}

TEST(FileMap, StartsAnewWithEveryList)
{
    placesOf({{"LB", 13}});
    EXPECT_THAT(placesOf({{"LB", 1}, {"LB", 1}}), ElementsAre(Pair(0, 0), Pair(0, 1)));
    EXPECT_THAT(placesOf({{"LB", 1}, {"LB", 1}}), ElementsAre(Pair(0, 0), Pair(0, 1)));
}

} // namespace
