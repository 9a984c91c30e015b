// Tests the simulated runtime: areas, watch list, cyclic calls, shell, loading of the module.
// SPDX-License-Identifier: MIT
#include "host_interface/shell.h"
#include "tests/support/module_test.h"
#include "tests/support/word_bytes.h"

#include <QtCore/QTemporaryFile>

namespace {

class SimulatedPanel : public ModuleTest
{
};

TEST(MemoryArea, OneMemoryServesAsImageAndAsCells)
{
    MemoryAreas areas;
    MemoryArea& bits = *areas.named(LB);
    MemoryArea& words = *areas.withCode(0);
    EXPECT_EQ(words.name(), LW);
    EXPECT_EQ(areas.withCode(2)->name(), RWI);
    EXPECT_EQ(bits.memory().size(), 65536U);
    EXPECT_EQ(words.memory().size(), 131072U);

    EXPECT_TRUE(bits.setCell(65535, 0x100));
    EXPECT_EQ(bits.memory()[65535], 1) << "any non-zero value sets a bit";
    EXPECT_TRUE(words.setCell(65535, 0x1234));
    EXPECT_EQ(words.memory()[131070], 0x34);
    EXPECT_EQ(words.memory()[131071], 0x12);
    words.memory()[2] = 0xcd;
    words.memory()[3] = 0xab;
    EXPECT_EQ(words.cell(1), 0xabcd);
}

TEST(MemoryArea, CellsOutsideTheAreaDoNotExist)
{
    MemoryAreas areas;
    MemoryArea& words = *areas.named(LW);
    EXPECT_EQ(words.cell(-1), std::nullopt);
    EXPECT_EQ(words.cell(65536), std::nullopt);
    EXPECT_FALSE(words.setCell(-1, 1));
    EXPECT_FALSE(words.setCell(65536, 1));
    EXPECT_EQ(areas.named(QStringLiteral("lw")), nullptr);
    EXPECT_EQ(areas.withCode(3), nullptr);
}

TEST(SimulatedComm, CutsRequestsAtTheAreasEdges)
{
    MemoryAreas areas;
    SimulatedComm comm(areas);
    const ushort data[] = {1, 2, 3, 4};
    const QString area = LW;
    EXPECT_EQ(comm.writeRegisterValues(QString(), area, -2, -1, 4, data), 2);
    EXPECT_EQ(areas.named(area)->cell(0), 3);
    EXPECT_EQ(areas.named(area)->cell(1), 4);
    EXPECT_EQ(comm.writeRegisterValues(QString(), area, 65535, -1, 4, data), 1);
    EXPECT_EQ(areas.named(area)->cell(65535), 1);
    EXPECT_EQ(comm.writeRegisterValues(QString(), QStringLiteral("XX"), 0, -1, 4, data), 0);
    EXPECT_EQ(comm.writeRegisterValues(QString(), area, 2147483647, -1, 4, data), 0);
    EXPECT_EQ(comm.writeRegisterValues(QString(), area, 0, -1, -4, data), 0);

    ushort units[] = {9, 9, 9, 9};
    EXPECT_EQ(comm.readRegisterValues(area, area, -2, 0, 4, units), 2);
    EXPECT_THAT(units, testing::ElementsAre(9, 9, 3, 4)) << "units of cells outside stay as they were";
}

TEST(WatchList, JoinsNeighboursIntoRanges)
{
    QList<RegisterValueChangeSize> records;
    for (const int address : {5, 3, 4, 10}) {
        RegisterValueChangeSize record = {};
        record.areaName[0] = 'L';
        record.areaName[1] = 'W';
        record.address = address;
        record.changeSize = address == 10 ? 3 : 1;
        records.append(record);
    }
    WatchList list;
    list.add(records);
    const auto ranges = list.ranges();
    ASSERT_EQ(ranges.size(), 2U);
    EXPECT_EQ(ranges[0].area, LW);
    EXPECT_EQ(ranges[0].first, 3);
    EXPECT_EQ(ranges[0].last, 5);
    EXPECT_EQ(ranges[1].first, 10);
    EXPECT_EQ(ranges[1].last, 12);
    EXPECT_TRUE(list.contains(LW, 12));
    EXPECT_FALSE(list.contains(LW, 13));
    EXPECT_FALSE(list.contains(LB, 12));
}

TEST_F(SimulatedPanel, ReportsWatchedCellsThatAreSetAndOnlyThose)
{
    const auto project = perAddressProject({{LW, 100, 2}});
    const auto panel = startPanel(project.get());
    calls.clear();
    EXPECT_TRUE(panel->setCells(LW, 99, {1, 2, 3, 4}));
    EXPECT_EQ(syncs(), 2) << "one for each of the two watched cells";
    EXPECT_EQ(retentionFile(wordFileName), wordBytes("02000300"));
    EXPECT_FALSE(panel->setCells(LW, 65535, {1, 2}));
    EXPECT_FALSE(panel->setCells(QStringLiteral("XX"), 0, {1}));
    EXPECT_EQ(syncs(), 2);
}

TEST_F(SimulatedPanel, RunsTheCyclicCallWhenThePeriodHasPassed)
{
    const auto project = wholeAreaProject(1, 2);
    const auto panel = startPanel(project.get());
    panel->advance(119999);
    EXPECT_EQ(syncs(), 0);
    panel->advance(1);
    EXPECT_EQ(syncs(), 1);
    panel->advance(600000);
    EXPECT_EQ(syncs(), 2) << "missed calls are made up for by one";
    panel->advance(119999);
    EXPECT_EQ(syncs(), 2);
}

TEST_F(SimulatedPanel, MakesNoCyclicCallsForAZeroOrNegativePeriod)
{
    for (const int saveTime : {0, 40000}) {
        const auto project = wholeAreaProject(1, saveTime);
        const auto panel = startPanel(project.get());
        panel->advance(1LL << 40);
        EXPECT_EQ(syncs(), 0);
        panel->model->cyclicRun();
        EXPECT_EQ(syncs(), 1) << "as many as are made";
        calls.clear();
    }
}

TEST_F(SimulatedPanel, CountsCommandsAndRunsThemThroughTheRunner)
{
    QStringList run;
    setCommandRunner([&](const char* command) {
        run.append(QLatin1String(command));
        return 7;
    });
    const int before = commandsRun(QStringLiteral("sync"));
    EXPECT_EQ(sys_base_do_system("sync"), 7);
    EXPECT_EQ(run, QStringList(QStringLiteral("sync")));
    EXPECT_EQ(commandsRun(QStringLiteral("sync")), before + 1);
    setCommandRunner({});
    EXPECT_EQ(sys_base_do_system("sync"), 0);
    EXPECT_EQ(commandsRun(QStringLiteral("sync")), before + 2);
}

TEST(ModuleLibrary, SaysWhatIsWrongWithAMissingOrUnfitLibrary)
{
    const ModuleLibrary missing(QStringLiteral("/nowhere/lib.so"));
    EXPECT_FALSE(missing.isLoaded());
    EXPECT_THAT(missing.error().toStdString(), testing::HasSubstr("/nowhere/lib.so: no such module library"));
    EXPECT_EQ(missing.createModel(), nullptr);

    QTemporaryFile text;
    ASSERT_TRUE(text.open());
    text.write("not a library");
    text.flush();
    const ModuleLibrary unreadable(text.fileName());
    EXPECT_FALSE(unreadable.isLoaded());
    EXPECT_THAT(unreadable.error().toStdString(), testing::HasSubstr("cannot be loaded as a module"));

    const ModuleLibrary foreign(QStringLiteral(SIMULATED_HOST_PATH));
    EXPECT_FALSE(foreign.isLoaded());
    EXPECT_THAT(foreign.error().toStdString(),
                testing::HasSubstr("is not a module library: it does not export createModel"));
    EXPECT_EQ(foreign.createModel(), nullptr);
}

} // namespace
