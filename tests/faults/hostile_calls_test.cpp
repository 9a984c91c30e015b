// Calls that no project leads to but a runtime could make: no way to the areas, unknown codes, a block
// without end.
// SPDX-License-Identifier: MIT
#include "poweroff_protect/poweroff_protect.h"
#include "tests/support/module_test.h"

#include <QtCore/QDir>

#include <fstream>

namespace {

using HostileCalls = ModuleTest;

TEST_F(HostileCalls, AWholeAreaPanelWithoutAreasStillMakesItsFilesAndSyncs)
{
    const auto project = wholeAreaProject(1, 5);
    poweroff_protect module;
    module.extModelOpen(project.get(), QString(), nullptr);
    module.extModelInit();
    EXPECT_EQ(module.cyclicRun(), 0);
    EXPECT_EQ(retentionFile(bitFileName), QByteArray(65536, '\0'));
    EXPECT_EQ(syncs(), 1);
}

TEST_F(HostileCalls, AnUnknownAreaCodeMakesAnEmptyFileAndMovesNothing)
{
    QDir().mkpath(QLatin1String(fixedProjectDirectory));
    poweroff_protect module;
    std::fstream file;
    module.initFile(file, QStringLiteral("other.dat"), 7);
    module.writeFile(file, 7);
    EXPECT_TRUE(file.is_open());
    EXPECT_EQ(retentionFile(QStringLiteral("other.dat")), QByteArray(""));
}

TEST_F(HostileCalls, ABlockOfMoreThanAMillionCellsIsWatchedToItsEnd)
{
    setCallLog(nullptr);
    const auto project = perAddressProject({{LW, 0, 1000001}});
    poweroff_protect module;
    module.extModelOpen(project.get(), QString(), nullptr);
    QList<RegisterValueChangeSize> watched;
    module.getMonitorTriggerAddr(watched);
    ASSERT_EQ(watched.size(), 1000001);
    EXPECT_EQ(watched.last().address, 1000000);
}

} // namespace
