// Tests the way from sorted entries to blocks: examples of the rules, and what goes beyond the small lists,
// all of which small_worlds/entry_lists_test.cpp covers.
// SPDX-License-Identifier: MIT
#include "poweroff_protect/poweroff_protect.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <tuple>
#include <utility>
#include <vector>

namespace {

using testing::ElementsAre;
using testing::Pair;
using Ranges = std::vector<std::pair<int, int>>; ///< (index, addressLength) or (index, count)

structMaintenance entryAt(int index, int addressLength, int length = 0)
{
    structMaintenance entry;
    entry.address.index = index;
    entry.address.length = length;
    entry.addressLength = addressLength;
    return entry;
}

Ranges blocksOf(QVector<structMaintenance> entries)
{
    QList<MaintenanceFileInfo> blocks;
    poweroff_protect().memoryPartition(entries, blocks);
    Ranges result;
    for (const MaintenanceFileInfo& block : std::as_const(blocks))
        result.emplace_back(block.address.index, block.count);
    return result;
}

Ranges blocksOf(const Ranges& ranges)
{
    QVector<structMaintenance> entries;
    for (const auto& range : ranges)
        entries.append(entryAt(range.first, range.second));
    return blocksOf(entries);
}

TEST(Partition, GivesTheWorkedExample)
{
    EXPECT_THAT(blocksOf(Ranges{{0, 4}, {2, 4}, {10, 2}, {12, 3}, {12, 5}, {20, 10}, {22, 3}}),
                ElementsAre(Pair(0, 5), Pair(10, 2), Pair(12, 5), Pair(20, 10)));
}

TEST(Partition, AnEntryThatComesTooLateAndOverlapsGoesByItsAddressesOwnLength)
{
    EXPECT_THAT(blocksOf({entryAt(10, 5), entryAt(8, 4, 8)}), ElementsAre(Pair(8, 4))) << "8 + 8 is past 15";
    EXPECT_THAT(blocksOf({entryAt(10, 5), entryAt(8, 4, 7)}), ElementsAre(Pair(10, 6))) << "15 - 1 - 8 cells";
}

TEST(Partition, AppendsToTheListBlocksWithAllFieldsOfTheirEntrysAddress)
{
    structMaintenance entry = entryAt(12, 34, 56);
    _ADDRESS_& address = entry.address;
    address.link = QStringLiteral("link");
    address.station = 78;
    address.block = QStringLiteral("LW");
    address.number = QStringLiteral("number");
    address.spareText = QStringLiteral("spare");
    address.bitOrWord = 4;
    entry.addressType = QStringLiteral("Double Word");
    QVector<structMaintenance> entries(1, entry);
    QList<MaintenanceFileInfo> blocks;
    blocks.append(MaintenanceFileInfo());
    poweroff_protect().memoryPartition(entries, blocks);
    ASSERT_EQ(blocks.size(), 2);
    const MaintenanceFileInfo& block = blocks[1];
    EXPECT_EQ(block.count, 34) << "neither type nor size of the address scale anything";
    EXPECT_TRUE(block.address.link == address.link && block.address.block == address.block &&
                block.address.number == address.number && block.address.spareText == address.spareText);
    EXPECT_EQ(std::make_tuple(block.address.station, block.address.index, block.address.length,
                              block.address.bitOrWord),
              std::make_tuple(78, 12, 56, 4));
}

} // namespace
