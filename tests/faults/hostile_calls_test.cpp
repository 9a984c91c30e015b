// Tests calls that no project leads to but a runtime could make: no communication interface, unknown codes,
// an endless block.
// SPDX-License-Identifier: MIT
#include "poweroff_protect/poweroff_protect.h"
#include "tests/support/module_test.h"
#include "tests/support/scripted_comm.h"

#include <array>
#include <fstream>
#include <sys/stat.h>

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

/// A runtime that has memory for every code.
class GenerousComm : public ScriptedComm
{
public:
    void* getAreaMemory(int) override { return memory.data(); }
    std::array<char, 131072> memory = {};
};

TEST_F(HostileCalls, AnUnknownAreaCodeMakesAnEmptyFileAndMovesNothing)
{
    GenerousComm comm;
    poweroff_protect module;
    module.extModelOpen(nullptr, QString(), &comm);
    const QString pipeName = QStringLiteral("pipe");
    ASSERT_EQ(mkfifo(retentionPath(pipeName).toLatin1().constData(), 0600), 0);
    for (const int code : {7, 0}) { // and a known one, which has a visible effect
        comm.memory.fill('\x11');
        std::fstream file;
        module.initFile(file, QStringLiteral("%1.dat").arg(code), code);
        EXPECT_TRUE(file.is_open());
        EXPECT_TRUE(file.good()) << "nothing was read past the end";
        EXPECT_EQ(comm.memory[0], code == 7 ? '\x11' : '\0');
        comm.memory.fill('\x22');
        module.writeFile(file, code);
        EXPECT_EQ(retentionFile(QStringLiteral("%1.dat").arg(code)),
                  QByteArray(code == 7 ? 0 : 131072, '\x22'));
        std::fstream closed;
        module.writeFile(closed, code);
        EXPECT_EQ(closed.good(), code == 7) << "only a stream that is written to fails";
        std::fstream pipe;
        module.initFile(pipe, pipeName, code);
        EXPECT_EQ(pipe.good(), code == 7) << "only where it is read from, it must be able to seek";
    }
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
