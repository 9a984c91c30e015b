// The records by which a module asks for change messages.
// SPDX-License-Identifier: MIT
#include "poweroff_protect/poweroff_protect.h"
#include "tests/support/module_test.h"

#include <cstring>
#include <limits>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

const QString LB = QStringLiteral("LB");
const QString LW = QStringLiteral("LW");
const QString RWI = QStringLiteral("RWI");

/// The record's 56 bytes; those of the alignment gap, which nobody sets, as zeros.
QByteArray bytesOf(const RegisterValueChangeSize& record)
{
    QByteArray bytes(reinterpret_cast<const char*>(&record), sizeof record);
    return bytes.replace(49, 3, QByteArray(3, '\0'));
}

QByteArray expectedBytes(int address, const QByteArray& areaName)
{
    QByteArray bytes(56, '\0');
    bytes.replace(4, 4, QByteArray(4, '\xff'));
    for (int j = 0; j < 4; ++j)
        bytes[8 + j] = static_cast<char>((static_cast<unsigned>(address) >> (8 * j)) & 0xff);
    bytes.replace(16, areaName.size(), areaName);
    bytes[52] = 1;
    return bytes;
}

/// "AREA ADDRESS" of every record.
std::vector<std::string> cellsOf(const QList<RegisterValueChangeSize>& records)
{
    std::vector<std::string> cells;
    for (const RegisterValueChangeSize& record : records)
        cells.push_back(std::string(record.areaName) + ' ' + std::to_string(record.address));
    return cells;
}

class WatchRecords : public ModuleTest
{
protected:
    QList<RegisterValueChangeSize> recordsFor(const std::vector<Entry>& entries)
    {
        const auto project = perAddressProject(entries);
        const auto panel = makePanel(project.get());
        panel->open();
        panel->init();
        QList<RegisterValueChangeSize> records;
        panel->model->getMonitorTriggerAddr(records);
        return records;
    }

    /// The records of _getMonitorTriggerAddr() for blocks of (index, count).
    static QList<RegisterValueChangeSize> recordsOf(const std::vector<std::pair<int, int>>& ranges,
                                                    const char* areaName)
    {
        QList<MaintenanceFileInfo> blocks;
        for (const auto& range : ranges) {
            blocks.append(MaintenanceFileInfo());
            blocks.last().address.block = LW;
            blocks.last().address.index = range.first;
            blocks.last().count = range.second;
        }
        QList<RegisterValueChangeSize> records;
        poweroff_protect model;
        model._getMonitorTriggerAddr(blocks, records, areaName);
        return records;
    }
};

TEST_F(WatchRecords, NameEveryKeptCellByAreaAndAddress)
{
    const auto records = recordsFor({{LW, 0, 3}, {LB, 100, 5}});
    EXPECT_THAT(cellsOf(records),
                ElementsAre("LB 100", "LB 101", "LB 102", "LB 103", "LB 104", "LW 0", "LW 1", "LW 2"));
    for (const RegisterValueChangeSize& record : records)
        EXPECT_EQ(record.changeSize, 1);
}

TEST_F(WatchRecords, ComeInTheOrderOfAreasAndThenOfBlocks)
{
    EXPECT_THAT(
        cellsOf(recordsFor({{RWI, 9, 1}, {LW, 30, 1}, {LW, 10, 2}, {LB, 5, 1}, {RWI, 2, 1}, {LW, 20, 1}})),
        ElementsAre("LB 5", "LW 10", "LW 11", "LW 20", "LW 30", "RWI 2", "RWI 9"));
}

TEST_F(WatchRecords, HaveTheirFiftySixBytes)
{
    for (const QString& area : {LB, LW, RWI})
        for (const int address : {0, 1, 258, 65535, -3}) {
            const auto records = recordsFor({{area, address, 1}});
            ASSERT_EQ(records.size(), 1);
            EXPECT_EQ(bytesOf(records[0]).toHex(), expectedBytes(address, area.toLatin1()).toHex())
                << area.toStdString() << ' ' << address;
        }
}

TEST_F(WatchRecords, AreThereBeforeTheInitialisation)
{
    const auto project = perAddressProject({{LW, 4, 1}});
    const auto panel = makePanel(project.get());
    panel->open();
    QList<RegisterValueChangeSize> records;
    panel->model->getMonitorTriggerAddr(records);
    EXPECT_THAT(cellsOf(records), ElementsAre("LW 4"));
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

TEST_F(WatchRecords, LeaveOutBlocksWithoutCells)
{
    EXPECT_THAT(cellsOf(recordsFor({{LW, 4, 0}, {LW, 10, -3}, {LW, 20, 1}, {LB, 0, 0}})),
                ElementsAre("LW 20"));
}

TEST_F(WatchRecords, LeaveOutTheCellThatAFoldedBlockLacks)
{
    EXPECT_THAT(cellsOf(recordsFor({{LW, 0, 2}, {LW, 1, 3}})), ElementsAre("LW 0", "LW 1", "LW 2"));
}

TEST_F(WatchRecords, IncludeTheIgnoredBitAddress)
{
    EXPECT_THAT(cellsOf(recordsFor({{LB, 60100, 1}})), ElementsAre("LB 60100"));
}

TEST_F(WatchRecords, AreNoneInWholeAreaModeAndWithoutAProject)
{
    const auto wholeAreas = wholeAreaProject(1, 5);
    for (object* project : {wholeAreas.get(), static_cast<object*>(nullptr)}) {
        const auto panel = startPanel(project);
        QList<RegisterValueChangeSize> records;
        panel->model->getMonitorTriggerAddr(records);
        EXPECT_THAT(cellsOf(records), IsEmpty());
    }
    const auto entries = perAddressProject({{QStringLiteral("LW"), 5, 1}});
    EXPECT_EQ(startPanel(entries.get())->watched.ranges().size(), 1U) << "with entries there are";
}

TEST_F(WatchRecords, CarryTheGivenNameAndNotTheBlocks)
{
    EXPECT_THAT(cellsOf(recordsOf({{3, 2}, {9, 1}}, "RWI")), ElementsAre("RWI 3", "RWI 4", "RWI 9"));
    EXPECT_THAT(cellsOf(recordsOf({{3, 1}}, "")), ElementsAre(" 3"));
}

TEST_F(WatchRecords, CutTheNameOffAt32Bytes)
{
    const QByteArray name = "0123456789abcdefghijklmnopqrstuvwxyz";
    for (const int length : {31, 32, 36}) {
        const auto records = recordsOf({{3, 1}}, name.left(length).constData());
        ASSERT_EQ(records.size(), 1);
        EXPECT_EQ(bytesOf(records[0]).toHex(), expectedBytes(3, name.left(length).left(32)).toHex())
            << length;
    }
}

TEST_F(WatchRecords, GoOnWithWrappedAddresses)
{
    const int most = std::numeric_limits<int>::max();
    const auto records = recordsOf({{most, 2}}, "LW");
    ASSERT_EQ(records.size(), 2);
    EXPECT_EQ(records[0].address, most);
    EXPECT_EQ(records[1].address, std::numeric_limits<int>::min());
}

} // namespace
