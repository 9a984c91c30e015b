// From sorted entries to blocks: the worked cases. Every small list is compared with the rules in
// small_worlds/entry_lists_test.cpp.
// SPDX-License-Identifier: MIT
#include "poweroff_protect/poweroff_protect.h"
#include "tests/support/literal_rules.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <utility>
#include <vector>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

constexpr int least = std::numeric_limits<int>::min();
constexpr int most = std::numeric_limits<int>::max();

/// The module's entry; every carried field tells where it came from.
structMaintenance moduleEntry(const RuleEntry& from)
{
    structMaintenance entry;
    entry.address.link = QStringLiteral("link %1").arg(from.origin);
    entry.address.station = from.origin + 1000;
    entry.address.block = QStringLiteral("LW");
    entry.address.number = QStringLiteral("number %1").arg(from.origin);
    entry.address.index = from.index;
    entry.address.spareText = QStringLiteral("spare %1").arg(from.origin);
    entry.address.length = from.length;
    entry.address.bitOrWord = from.origin + 2000;
    entry.addressType = QStringLiteral("Double Word");
    entry.addressLength = from.addressLength;
    return entry;
}

QList<MaintenanceFileInfo> partitioned(const std::vector<RuleEntry>& from)
{
    QVector<structMaintenance> entries;
    for (const RuleEntry& entry : from)
        entries.append(moduleEntry(entry));
    QList<MaintenanceFileInfo> blocks;
    static poweroff_protect module;
    module.memoryPartition(entries, blocks);
    return blocks;
}

bool sameAddress(const _ADDRESS_& a, const _ADDRESS_& b)
{
    return a.link == b.link && a.station == b.station && a.block == b.block && a.number == b.number &&
           a.index == b.index && a.spareText == b.spareText && a.length == b.length &&
           a.bitOrWord == b.bitOrWord;
}

/// (index, count) of the blocks that entries of (index, addressLength, length) give.
std::vector<std::pair<int, int>> blocksOf(const std::vector<RuleEntry>& entries)
{
    std::vector<std::pair<int, int>> result;
    const QList<MaintenanceFileInfo> blocks = partitioned(entries);
    for (const MaintenanceFileInfo& block : blocks)
        result.emplace_back(block.address.index, block.count);
    return result;
}

/// The same for entries of (index, addressLength).
std::vector<std::pair<int, int>> blocksOf(const std::vector<std::pair<int, int>>& ranges)
{
    std::vector<RuleEntry> entries;
    for (const auto& range : ranges)
        entries.push_back({range.first, range.second, 0, static_cast<int>(entries.size())});
    return blocksOf(entries);
}

using Ranges = std::vector<std::pair<int, int>>;
using Entries = std::vector<RuleEntry>;

TEST(Partition, OfNoEntryIsNoBlock)
{
    EXPECT_THAT(blocksOf(Ranges{}), IsEmpty());
}

TEST(Partition, OfOneEntryIsThatEntryWithAllItsAddressFields)
{
    const RuleEntry entry = {12, 34, 56, 7};
    const QList<MaintenanceFileInfo> blocks = partitioned({entry});
    ASSERT_EQ(blocks.size(), 1);
    EXPECT_TRUE(sameAddress(blocks[0].address, moduleEntry(entry).address));
    EXPECT_EQ(blocks[0].count, 34);
    EXPECT_EQ(blocks[0].bitOffset, 0);
    EXPECT_EQ(blocks[0].fileOffset, 0);
}

TEST(Partition, AppendsToWhatTheListHolds)
{
    QList<MaintenanceFileInfo> blocks;
    blocks.append(MaintenanceFileInfo());
    blocks[0].count = 77;
    QVector<structMaintenance> entries;
    poweroff_protect().memoryPartition(entries, blocks);
    ASSERT_EQ(blocks.size(), 1);
    entries.append(moduleEntry({1, 2, 0, 0}));
    poweroff_protect().memoryPartition(entries, blocks);
    ASSERT_EQ(blocks.size(), 2);
    EXPECT_EQ(blocks[0].count, 77);
    EXPECT_EQ(blocks[1].count, 2);
}

TEST(Partition, GivesTheWorkedExample)
{
    EXPECT_THAT(blocksOf(Ranges{{0, 4}, {2, 4}, {10, 2}, {12, 3}, {12, 5}, {20, 10}, {22, 3}}),
                ElementsAre(Pair(0, 5), Pair(10, 2), Pair(12, 5), Pair(20, 10)));
}

TEST(Partition, KeepsEntriesThatAreApartOrAdjacentAsBlocksOfTheirOwn)
{
    EXPECT_THAT(blocksOf(Ranges{{0, 3}, {4, 2}}), ElementsAre(Pair(0, 3), Pair(4, 2)));
    EXPECT_THAT(blocksOf(Ranges{{0, 4}, {4, 2}}), ElementsAre(Pair(0, 4), Pair(4, 2)));
    EXPECT_THAT(blocksOf(Ranges{{-4, 4}, {0, 2}}), ElementsAre(Pair(-4, 4), Pair(0, 2)));
}

TEST(Partition, AnEntryStrictlyInsideAnotherLeavesItAlone)
{
    EXPECT_THAT(blocksOf(Ranges{{0, 10}, {4, 5}}), ElementsAre(Pair(0, 10)));
    EXPECT_THAT(blocksOf(Ranges{{0, 10}, {1, 1}, {2, 3}, {8, 1}}), ElementsAre(Pair(0, 10)));
}

TEST(Partition, AFoldedBlockIsOneCellShortOfBothEntries)
{
    EXPECT_THAT(blocksOf(Ranges{{0, 4}, {2, 4}}), ElementsAre(Pair(0, 5)));
    EXPECT_THAT(blocksOf(Ranges{{0, 4}, {3, 4}}), ElementsAre(Pair(0, 6)));
}

TEST(Partition, AnEntryThatEndsWhereTheBlockEndsTakesTheBlocksLastCell)
{
    EXPECT_THAT(blocksOf(Ranges{{0, 10}, {4, 6}}), ElementsAre(Pair(0, 9)));
    EXPECT_THAT(blocksOf(Ranges{{0, 10}, {9, 1}}), ElementsAre(Pair(0, 9)));
}

TEST(Partition, TheEntryAtTheShortenedEndIsApart)
{
    EXPECT_THAT(blocksOf(Ranges{{0, 10}, {5, 10}, {14, 1}}), ElementsAre(Pair(0, 14), Pair(14, 1)));
    EXPECT_THAT(blocksOf(Ranges{{0, 10}, {5, 10}, {13, 1}}), ElementsAre(Pair(0, 13)));
}

TEST(Partition, AChainOfOverlapsIsOneBlock)
{
    EXPECT_THAT(blocksOf(Ranges{{0, 10}, {5, 10}, {12, 10}}), ElementsAre(Pair(0, 21)));
}

TEST(Partition, OfEntriesAtOneAddressTheLongestSurvivesWhole)
{
    EXPECT_THAT(blocksOf(Ranges{{5, 3}, {5, 3}}), ElementsAre(Pair(5, 3)));
    EXPECT_THAT(blocksOf(Ranges{{5, 1}, {5, 7}, {5, 3}}), ElementsAre(Pair(5, 7)));
    EXPECT_THAT(blocksOf(Ranges{{5, 0}, {5, 3}}), ElementsAre(Pair(5, 3)));
    EXPECT_THAT(blocksOf(Ranges{{5, 3}, {5, 0}}), ElementsAre(Pair(5, 3)));
}

TEST(Partition, EmptyEntriesPassThrough)
{
    EXPECT_THAT(blocksOf(Ranges{{5, 0}, {7, 1}}), ElementsAre(Pair(5, 0), Pair(7, 1)));
    EXPECT_THAT(blocksOf(Ranges{{5, 3}, {6, 0}}), ElementsAre(Pair(5, 3)));
    EXPECT_THAT(blocksOf(Ranges{{5, 3}, {7, 0}}), ElementsAre(Pair(5, 3)));
    EXPECT_THAT(blocksOf(Ranges{{5, 2}, {7, 0}}), ElementsAre(Pair(5, 2), Pair(7, 0)));
}

TEST(Partition, NegativeLengthsPassThrough)
{
    EXPECT_THAT(blocksOf(Ranges{{5, -2}, {6, 1}}), ElementsAre(Pair(5, -2), Pair(6, 1)));
    EXPECT_THAT(blocksOf(Ranges{{5, 3}, {6, -4}}), ElementsAre(Pair(5, 3)));
    EXPECT_THAT(blocksOf(Ranges{{5, -2}, {5, -9}}), ElementsAre(Pair(5, -2)));
    EXPECT_THAT(blocksOf(Ranges{{5, -1}}), ElementsAre(Pair(5, -1)));
}

TEST(Partition, SumsWrapAt32Bits)
{
    EXPECT_THAT(blocksOf(Ranges{{most - 1, 5}, {most, 1}}), ElementsAre(Pair(most - 1, 5), Pair(most, 1)));
    EXPECT_THAT(blocksOf(Ranges{{0, 10}, {5, most}}), ElementsAre(Pair(0, 10)))
        << "the later end wraps to below the earlier one";
    EXPECT_THAT(blocksOf(Ranges{{least, -1}, {0, most}}), ElementsAre(Pair(least, -2)))
        << "the earlier end wraps to the greatest number, and so does the folded length";
}

TEST(Partition, AnEntryThatComesTooLateAndEndsBeforeTheOtherIsApart)
{
    EXPECT_THAT(blocksOf(Ranges{{10, 5}, {3, 4}}), ElementsAre(Pair(10, 5), Pair(3, 4)));
    EXPECT_THAT(blocksOf(Ranges{{10, 5}, {6, 4}}), ElementsAre(Pair(10, 5), Pair(6, 4)));
}

TEST(Partition, AnEntryThatComesTooLateAndOverlapsGoesByItsAddressesOwnLength)
{
    EXPECT_THAT(blocksOf(Entries{{10, 5, 0, 0}, {8, 4, 8, 1}}), ElementsAre(Pair(8, 4)))
        << "8 + 8 is past 15: the earlier one is dropped";
    EXPECT_THAT(blocksOf(Entries{{10, 5, 0, 0}, {8, 4, 7, 1}}), ElementsAre(Pair(10, 6)))
        << "8 + 7 is not past 15: the earlier one goes on with 15 - 1 - 8 cells";
    EXPECT_THAT(blocksOf(Entries{{10, 5, 0, 0}, {8, 40, 0, 1}}), ElementsAre(Pair(10, 6)))
        << "the range's own length does not count";
}

/// Which entry each block's address comes from.
std::vector<int> originsOf(const std::vector<RuleEntry>& entries)
{
    std::vector<int> origins;
    const QList<MaintenanceFileInfo> blocks = partitioned(entries);
    for (const MaintenanceFileInfo& block : blocks)
        origins.push_back(block.address.station - 1000);
    return origins;
}

TEST(Partition, ABlockKeepsTheAddressOfTheFirstEntryOfItsChain)
{
    EXPECT_THAT(originsOf({{0, 10, 0, 1}, {5, 10, 0, 2}, {12, 10, 0, 3}, {40, 1, 0, 4}}), ElementsAre(1, 4));
    EXPECT_THAT(originsOf({{0, 10, 0, 1}, {5, 2, 0, 2}}), ElementsAre(1));
}

TEST(Partition, AtOneAddressTheLongestEntrysAddressIsKeptAndOfEquallyLongOnesTheFirst)
{
    EXPECT_THAT(originsOf({{5, 1, 0, 1}, {5, 7, 0, 2}, {5, 3, 0, 3}}), ElementsAre(2));
    EXPECT_THAT(originsOf({{5, 3, 0, 1}, {5, 3, 0, 2}, {5, 3, 0, 3}}), ElementsAre(1));
}

TEST(Partition, TypeTextAndBitOrWordScaleNothing)
{
    for (const char* type : {"Bit", "Word", "Double Word", ""}) {
        QVector<structMaintenance> entries(1, moduleEntry({0, 10, 0, 0}));
        entries[0].addressType = QString::fromLatin1(type);
        entries[0].address.bitOrWord = 4;
        QList<MaintenanceFileInfo> blocks;
        poweroff_protect().memoryPartition(entries, blocks);
        ASSERT_EQ(blocks.size(), 1);
        EXPECT_EQ(blocks[0].count, 10) << type;
    }
}

TEST(Partition, HasNoLimitOnEntries)
{
    Ranges apart;
    for (int i = 0; i < 20000; ++i)
        apart.emplace_back(2 * i, 1);
    EXPECT_EQ(blocksOf(apart), apart);
}

} // namespace
