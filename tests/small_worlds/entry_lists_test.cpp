// Takes every short list of entries through partition and map, and random long lists of extreme numbers, and
// compares the blocks with the rules taken literally.
// SPDX-License-Identifier: MIT
#include "poweroff_protect/poweroff_protect.h"
#include "tests/support/literal_rules.h"
#include "tests/support/random_source.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <iostream>
#include <sstream>
#include <vector>

namespace {

using Entries = std::vector<RuleEntry>;
using Areas = std::array<QString, 4>; ///< of the blocks of a list, in turn

const QString bitArea = QStringLiteral("LB");
const QString wordArea = QStringLiteral("LW");
const QString rwiArea = QStringLiteral("RWI");
const std::array<Areas, 4> areasOfBlocks = {{{bitArea, bitArea, bitArea, bitArea},
                                             {wordArea, wordArea, wordArea, wordArea},
                                             {rwiArea, rwiArea, rwiArea, rwiArea},
                                             {bitArea, wordArea, QStringLiteral("other"), rwiArea}}};

/// The module and what it works on, kept from list to list for speed.
class Lists
{
public:
    /// Compares the module with the rules on one list.
    void check(const Entries& entries)
    {
        ++count;
        std::vector<RuleBlock> expected = partitionByRules(entries);
        setRecords(entries);
        blocks.clear();
        module.memoryPartition(records, blocks);
        bool same = blocks.size() == static_cast<int>(expected.size());
        for (int k = 0; same && k < blocks.size(); ++k) {
            const MaintenanceFileInfo& block = blocks.at(k);
            const RuleBlock& rule = expected[static_cast<std::size_t>(k)];
            same = block.address.index == rule.index && block.count == rule.count &&
                   block.address.station == rule.origin && block.fileOffset == 0 && block.bitOffset == 0;
        }
        for (const Areas& areas : areasOfBlocks)
            same = same && isMapped(expected, areas);
        if (!same)
            FAIL() << described(entries, expected);
    }

    qint64 checked() const { return count; }

private:
    /// Sets every number of every record, since a partition may use its input as working storage.
    void setRecords(const Entries& entries)
    {
        records.resize(static_cast<int>(entries.size()));
        for (std::size_t k = 0; k < entries.size(); ++k) {
            structMaintenance& record = records[static_cast<int>(k)];
            record.address.index = entries[k].index;
            record.address.length = entries[k].length;
            record.address.station = entries[k].origin;
            record.addressLength = entries[k].addressLength;
        }
    }

    /// Maps blocks that the partition made; they keep their counts.
    bool isMapped(std::vector<RuleBlock>& expected, const Areas& areas)
    {
        for (std::size_t k = 0; k < expected.size(); ++k)
            blocks[static_cast<int>(k)].address.block = expected[k].area = areas[k % areas.size()];
        mapByRules(expected);
        module.fileMemoryMap(blocks);
        for (std::size_t k = 0; k < expected.size(); ++k) {
            const MaintenanceFileInfo& block = blocks.at(static_cast<int>(k));
            if (block.fileOffset != expected[k].fileOffset || block.bitOffset != expected[k].bitOffset ||
                block.count != expected[k].count)
                return false;
        }
        return true;
    }

    std::string described(const Entries& entries, const std::vector<RuleBlock>& expected) const
    {
        std::ostringstream text;
        text << "entries (index, addressLength, address.length):";
        for (const RuleEntry& entry : entries)
            text << " (" << entry.index << ", " << entry.addressLength << ", " << entry.length << ")";
        text << "\nexpected blocks (index, count; origin; byte, bit):";
        for (const RuleBlock& block : expected)
            text << " (" << block.index << ", " << block.count << "; " << block.origin << "; "
                 << block.fileOffset << ", " << block.bitOffset << ")";
        text << "\nthe module's blocks, in '"
             << (blocks.isEmpty() ? std::string() : blocks.at(0).address.block.toStdString()) << "':";
        for (const MaintenanceFileInfo& block : blocks)
            text << " (" << block.address.index << ", " << block.count << "; " << block.address.station
                 << "; " << block.fileOffset << ", " << block.bitOffset << ")";
        return text.str();
    }

    poweroff_protect module;
    QVector<structMaintenance> records;
    QList<MaintenanceFileInfo> blocks;
    qint64 count = 0;
};

/// Checks every list of `size` entries of the set `world`, in every order.
void checkListsOf(std::size_t size, const Entries& world, Lists& lists)
{
    Entries entries(size);
    std::vector<std::size_t> choice(size, 0);
    for (;;) {
        for (std::size_t k = 0; k < size; ++k) {
            entries[k] = world[choice[k]];
            entries[k].origin = static_cast<int>(k) + 1;
        }
        lists.check(entries);
        if (testing::Test::HasFatalFailure())
            return;
        std::size_t at = 0;
        while (at < size && ++choice[at] == world.size())
            choice[at++] = 0;
        if (at == size)
            return;
    }
}

/// Every entry at the addresses 0 to 5 with a length from -2 to 6: 54 of them.
Entries sixAddresses()
{
    Entries world;
    for (int index = 0; index < 6; ++index)
        for (int length = -2; length <= 6; ++length)
            world.push_back({index, length, (index + length) % 5, 0});
    return world;
}

/// Fewer addresses and lengths, but with every length value of the address itself, which counts in lists that
/// are out of order: 100 of them.
Entries fourAddressesWithLengthValues()
{
    Entries world;
    for (int index = 0; index < 4; ++index)
        for (int addressLength = -1; addressLength < 4; ++addressLength)
            for (int length = 0; length < 5; ++length)
                world.push_back({index, addressLength, length, 0});
    return world;
}

void printCount(const Lists& lists)
{
    std::cout << lists.checked() << " lists\n";
}

void checkEveryList(std::size_t leastSize, std::size_t mostSize, const Entries& world)
{
    Lists lists;
    for (std::size_t size = leastSize; size <= mostSize; ++size)
        checkListsOf(size, world, lists);
    printCount(lists);
}

TEST(EveryList, OfUpToThreeEntriesOverSixAddressesBecomesTheBlocksOfTheRules)
{
    checkEveryList(0, 3, sixAddresses());
}

TEST(EveryList, OfFourEntriesOverSixAddressesBecomesTheBlocksOfTheRules)
{
    checkEveryList(4, 4, sixAddresses());
}

TEST(EveryList, OfUpToTwoEntriesWithLengthValuesBecomesTheBlocksOfTheRules)
{
    checkEveryList(1, 2, fourAddressesWithLengthValues());
}

TEST(EveryList, OfThreeEntriesWithLengthValuesBecomesTheBlocksOfTheRules)
{
    checkEveryList(3, 3, fourAddressesWithLengthValues());
}

Entries randomEntries(RandomSource& random)
{
    Entries entries(static_cast<std::size_t>(random.between(0, 9)));
    int origin = 0;
    for (RuleEntry& entry : entries) {
        const bool extreme = !random.oneIn(3);
        entry.index = extreme ? random.extreme() : random.between(-10, 40);
        entry.addressLength = extreme ? random.extreme() : random.between(-4, 12);
        entry.length = extreme ? random.extreme() : random.between(-3, 20);
        entry.origin = ++origin;
    }
    return entries;
}

TEST(RandomLists, OfExtremeNumbersBecomeTheBlocksOfTheRulesSortedOrNot)
{
    RandomSource random(printedSeed());
    Lists lists;
    for (int round = 0; round < 100000 && !HasFatalFailure(); ++round) {
        Entries entries = randomEntries(random);
        lists.check(entries);
        std::sort(entries.begin(), entries.end(),
                  [](const RuleEntry& a, const RuleEntry& b) { return a.index < b.index; });
        lists.check(entries);
    }
    printCount(lists);
}

} // namespace
