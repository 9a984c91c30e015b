// Tests the records by which a module asks for change messages.
// SPDX-License-Identifier: MIT
#include "poweroff_protect/poweroff_protect.h"
#include "tests/support/module_test.h"

#include <cstring>
#include <limits>

namespace {

using testing::ElementsAre;

/// The record's 56 bytes; those of the alignment gap, which are never set, as zeros.
QByteArray bytesOf(const RegisterValueChangeSize& record)
{
    QByteArray bytes(reinterpret_cast<const char*>(&record), sizeof record);
    return bytes.replace(49, 3, QByteArray(3, '\0'));
}

QByteArray expectedBytes(int address, const QByteArray& areaName)
{
    const int one = 1;
    QByteArray bytes(56, '\0');
    bytes.replace(4, 4, QByteArray(4, '\xff'));
    std::memcpy(bytes.data() + 8, &address, 4);
    bytes.replace(16, areaName.size(), areaName);
    std::memcpy(bytes.data() + 52, &one, 4);
    return bytes;
}

class WatchRecords : public ModuleTest
{
protected:
    /// The cells of these entries that a module watches once opened, before its initialisation.
    std::vector<std::string> cellsFor(const std::vector<Entry>& entries)
    {
        const auto project = perAddressProject(entries);
        const auto panel = makePanel(project.get());
        panel->open();
        return watchedCells(*panel->model);
    }

    /// The records of _getMonitorTriggerAddr() for a block of "LW".
    static QList<RegisterValueChangeSize> recordsOf(int index, int count, const char* areaName)
    {
        QList<MaintenanceFileInfo> blocks;
        blocks.append(MaintenanceFileInfo());
        blocks[0].address.block = LW;
        blocks[0].address.index = index;
        blocks[0].count = count;
        QList<RegisterValueChangeSize> records;
        poweroff_protect model;
        model._getMonitorTriggerAddr(blocks, records, areaName);
        return records;
    }
};

TEST_F(WatchRecords, NameEveryKeptCellInTheOrderOfAreasAndThenOfBlocks)
{
    EXPECT_THAT(cellsFor({{RWI, 9, 1}, {LW, 30, 1}, {LW, 10, 2}, {LB, 60100, 1}, {RWI, 2, 1}}),
                ElementsAre("LB 60100", "LW 10", "LW 11", "LW 30", "RWI 2", "RWI 9"))
        << "the ignored bit among them";
}

TEST_F(WatchRecords, HaveTheirFiftySixBytes)
{
    const QByteArray longName = "0123456789abcdefghijklmnopqrstuvwxyz"; // cut off at 32 bytes
    for (const QByteArray& area :
         {QByteArray("LB"), QByteArray("RWI"), longName.left(31), longName.left(32), longName})
        for (const int address : {0, 1, 258, 65535, -3}) {
            const auto records = recordsOf(address, 1, area.constData());
            ASSERT_EQ(records.size(), 1);
            EXPECT_EQ(bytesOf(records[0]).toHex(), expectedBytes(address, area.left(32)).toHex())
                << area.constData() << ' ' << address;
        }
}

TEST_F(WatchRecords, AreAppendedWithEveryCall)
{
    const auto project = perAddressProject({{LW, 4, 2}, {LB, 1, 1}});
    const auto panel = startPanel(project.get());
    QList<RegisterValueChangeSize> records;
    records.append(RegisterValueChangeSize());
    std::strcpy(records[0].areaName, "own");
    records[0].address = 7;
    panel->model->getMonitorTriggerAddr(records);
    panel->model->getMonitorTriggerAddr(records);
    EXPECT_THAT(cellsOf(records), ElementsAre("own 7", "LB 1", "LW 4", "LW 5", "LB 1", "LW 4", "LW 5"));
}

TEST_F(WatchRecords, CarryTheGivenNameAndNotTheBlocks)
{
    EXPECT_THAT(cellsOf(recordsOf(3, 2, "RWI")), ElementsAre("RWI 3", "RWI 4"));
    EXPECT_THAT(cellsOf(recordsOf(3, 1, "")), ElementsAre(" 3"));
}

TEST_F(WatchRecords, GoOnWithWrappedAddresses)
{
    EXPECT_THAT(cellsOf(recordsOf(std::numeric_limits<int>::max(), 2, "LW")),
                ElementsAre("LW 2147483647", "LW -2147483648"));
}

} // namespace
