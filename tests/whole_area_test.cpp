// Whole-area mode: creation, repair, restore and periodic save of the three images.
// SPDX-License-Identifier: MIT
#include "tests/support/module_test.h"
#include "tests/support/storage.h"

#include <QtCore/QDir>

#include <fcntl.h>
#include <sys/mount.h>
#include <sys/stat.h>

namespace {

struct ImageFile
{
    const char* name;
    const char* area;
    int size;
    int code; ///< of the whole area
};

const ImageFile imageFiles[] = {
    {bitFileName, "LB", 65536, 1}, {wordFileName, "LW", 131072, 0}, {rwiFileName, "RWI", 131072, 2}};

QByteArray memoryOf(const Panel& panel, const char* area)
{
    const auto& memory = panel.areas.named(QString::fromLatin1(area))->memory();
    return QByteArray(reinterpret_cast<const char*>(memory.data()), static_cast<int>(memory.size()));
}

void fillMemory(Panel& panel, const char* area, const QByteArray& bytes)
{
    auto& memory = panel.areas.named(QString::fromLatin1(area))->memory();
    std::copy(bytes.begin(), bytes.end(), memory.begin());
}

class WholeArea : public ModuleTest
{
protected:
    WholeArea() : project(wholeAreaProject(1, 5)) {}

    std::unique_ptr<Panel> openedPanel()
    {
        auto panel = makePanel(project.get());
        panel->start();
        return panel;
    }

    std::unique_ptr<object> project;
};

TEST_F(WholeArea, FirstStartMakesZeroFilesAndZeroesTheAreas)
{
    const auto panel = makePanel(project.get());
    for (const ImageFile& file : imageFiles)
        fillMemory(*panel, file.area, pattern(file.size, 1));
    panel->open();
    for (const ImageFile& file : imageFiles) {
        EXPECT_EQ(retentionFile(file.name), QByteArray(file.size, '\0')) << file.name;
        EXPECT_EQ(memoryOf(*panel, file.area), QByteArray(file.size, '\0')) << file.area;
    }
}

TEST_F(WholeArea, FilesOfExactlyTheAreasSizeAreRestoredInFull)
{
    for (const ImageFile& file : imageFiles)
        writeRetentionFile(file.name, pattern(file.size, 2));
    const auto panel = makePanel(project.get());
    panel->open();
    for (const ImageFile& file : imageFiles)
        EXPECT_EQ(memoryOf(*panel, file.area), pattern(file.size, 2)) << file.area;
}

TEST_F(WholeArea, LongerFilesKeepTheirLengthAndTheirTail)
{
    for (const ImageFile& file : imageFiles)
        writeRetentionFile(file.name, pattern(file.size + 100, 3));
    const auto panel = openedPanel();
    for (const ImageFile& file : imageFiles) {
        EXPECT_EQ(memoryOf(*panel, file.area), pattern(file.size + 100, 3).left(file.size));
        fillMemory(*panel, file.area, pattern(file.size, 4));
    }
    panel->model->cyclicRun();
    for (const ImageFile& file : imageFiles)
        EXPECT_EQ(retentionFile(file.name),
                  pattern(file.size, 4) + pattern(file.size + 100, 3).mid(file.size));
}

TEST_F(WholeArea, FilesOneByteShortAreRefilledWithZerosAndTheAreasZeroed)
{
    for (const ImageFile& file : imageFiles)
        writeRetentionFile(file.name, pattern(file.size - 1, 5));
    const auto panel = openedPanel();
    for (const ImageFile& file : imageFiles) {
        EXPECT_EQ(retentionFile(file.name), QByteArray(file.size, '\0')) << file.name;
        EXPECT_EQ(memoryOf(*panel, file.area), QByteArray(file.size, '\0')) << file.area;
    }
}

TEST_F(WholeArea, EveryCyclicCallSavesTheAreasAndThenSyncs)
{
    const auto panel = openedPanel();
    for (int seed = 6; seed < 9; ++seed) {
        for (const ImageFile& file : imageFiles)
            fillMemory(*panel, file.area, pattern(file.size, seed));
        calls.clear();
        EXPECT_EQ(panel->model->cyclicRun(), 0);
        EXPECT_EQ(calls, QStringList({QStringLiteral("getAreaMemory 1"), QStringLiteral("getAreaMemory 0"),
                                      QStringLiteral("getAreaMemory 2"), QStringLiteral("sync")}));
        for (const ImageFile& file : imageFiles)
            EXPECT_EQ(retentionFile(file.name), pattern(file.size, seed)) << file.name;
    }
}

TEST_F(WholeArea, DestructionSavesNothing)
{
    auto panel = openedPanel();
    fillMemory(*panel, "LW", pattern(131072, 9));
    panel->model->cyclicRun();
    fillMemory(*panel, "LW", pattern(131072, 10));
    calls.clear();
    panel.reset();
    EXPECT_EQ(retentionFile(wordFileName), pattern(131072, 9));
    EXPECT_EQ(syncs(), 0);
}

TEST_F(WholeArea, AnAreaThatTheHostHasNotGotKeepsItsFileAndLeavesTheOthersAlone)
{
    for (const ImageFile& file : imageFiles)
        writeRetentionFile(file.name, pattern(file.size, 11));
    const auto panel = makePanel(project.get());
    panel->comm.removeAreaMemory(0);
    panel->start();
    EXPECT_EQ(memoryOf(*panel, "LW"), QByteArray(131072, '\0'));
    EXPECT_EQ(memoryOf(*panel, "RWI"), pattern(131072, 11));
    for (const ImageFile& file : imageFiles)
        fillMemory(*panel, file.area, pattern(file.size, 12));
    panel->model->cyclicRun();
    EXPECT_EQ(retentionFile(wordFileName), pattern(131072, 11));
    EXPECT_EQ(retentionFile(bitFileName), pattern(65536, 12));
    EXPECT_EQ(retentionFile(rwiFileName), pattern(131072, 12));
    EXPECT_EQ(syncs(), 1);
}

TEST_F(WholeArea, AnAreaThatTheHostHasNotGotStillGetsItsFile)
{
    const auto panel = makePanel(project.get());
    panel->comm.removeAreaMemory(2);
    panel->start();
    EXPECT_EQ(retentionFile(rwiFileName), QByteArray(131072, '\0'));
}

/// A panel that at times does not offer the memory of one area.
class ShyComm : public SimulatedComm
{
public:
    using SimulatedComm::SimulatedComm;

    void* getAreaMemory(int areaCode) override
    {
        return areaCode == hidden ? nullptr : SimulatedComm::getAreaMemory(areaCode);
    }

    int hidden = -1; ///< whole-area code of the area that is not offered
};

TEST_F(WholeArea, AnAreaThatTheHostDoesNotOfferAtOneSaveIsSavedByTheNext)
{
    for (const ImageFile& file : imageFiles) {
        MemoryAreas areas;
        ShyComm comm(areas);
        const ModelPointer module = moduleLibrary().createModel();
        module->extModelOpen(project.get(), QString(), &comm);
        const QString name = QString::fromLatin1(file.name);
        const std::optional<QByteArray> before = retentionFile(name);
        areas.named(QString::fromLatin1(file.area))->setCell(3, 1);
        comm.hidden = file.code;
        module->cyclicRun();
        EXPECT_EQ(retentionFile(name), before) << file.area;
        comm.hidden = -1;
        module->cyclicRun();
        EXPECT_NE(retentionFile(name), before) << file.area;
    }
}

TEST_F(WholeArea, AnAreaThatTheHostDoesNotOfferAtTheRestoreIsSavedLater)
{
    for (const ImageFile& file : imageFiles) {
        const QString name = QString::fromLatin1(file.name);
        const QByteArray kept = pattern(file.size, 20);
        writeRetentionFile(name, kept);
        MemoryAreas areas;
        ShyComm comm(areas);
        comm.hidden = file.code;
        const ModelPointer module = moduleLibrary().createModel();
        module->extModelOpen(project.get(), QString(), &comm);
        EXPECT_EQ(retentionFile(name), kept) << file.area;
        comm.hidden = -1;
        module->cyclicRun();
        EXPECT_EQ(retentionFile(name), QByteArray(file.size, '\0')) << file.area;
    }
}

TEST_F(WholeArea, ASecondOpenRestoresNothingAndEndsTheSaving)
{
    const auto panel = openedPanel();
    fillMemory(*panel, "LW", pattern(131072, 13));
    panel->model->cyclicRun();
    fillMemory(*panel, "LW", pattern(131072, 14));
    panel->open();
    EXPECT_EQ(memoryOf(*panel, "LW"), pattern(131072, 14)) << "nothing restored";
    panel->model->cyclicRun();
    EXPECT_EQ(retentionFile(wordFileName), pattern(131072, 13)) << "nothing saved";
    EXPECT_EQ(syncs(), 2) << "sync goes on";
}

TEST_F(WholeArea, ADirectoryInAFilesPlaceLosesOnlyThatArea)
{
    QDir().mkpath(retentionPath(wordFileName));
    const auto panel = openedPanel();
    fillMemory(*panel, "LW", pattern(131072, 15));
    fillMemory(*panel, "LB", pattern(65536, 15));
    panel->model->cyclicRun();
    EXPECT_TRUE(QFileInfo(retentionPath(wordFileName)).isDir());
    EXPECT_EQ(retentionFile(bitFileName), pattern(65536, 15));
    EXPECT_EQ(syncs(), 1);
}

TEST_F(WholeArea, WithoutADirectoryNothingIsRestoredOrSavedButSyncRuns)
{
    QDir().mkpath(QStringLiteral("/usr/tavrin"));
    ASSERT_TRUE(QFile(QStringLiteral("/usr/tavrin/project")).open(QIODevice::WriteOnly));
    const auto panel = makePanel(project.get());
    fillMemory(*panel, "LW", pattern(131072, 16));
    panel->start();
    EXPECT_EQ(memoryOf(*panel, "LW"), pattern(131072, 16));
    panel->model->cyclicRun();
    EXPECT_EQ(callsTo({QStringLiteral("getAreaMemory"), QStringLiteral("sync")}).size(), 3 + 3 + 1);
}

/// Mounts a file system of its own on the fixed directory.
void mountOnProjectDirectory(const char* options, unsigned long flags = 0)
{
    QDir().mkpath(QLatin1String(fixedProjectDirectory));
    ASSERT_EQ(mount("tmpfs", fixedProjectDirectory, "tmpfs", flags, options), 0) << strerror(errno);
}

TEST_F(WholeArea, AReadOnlyDirectoryKeepsItsFilesAsTheyAre)
{
    NEEDS_A_MOUNT();
    mountOnProjectDirectory("size=1m");
    writeRetentionFile(wordFileName, pattern(131072, 17));
    writeRetentionFile(bitFileName, pattern(100, 17));
    ASSERT_EQ(mount(nullptr, fixedProjectDirectory, nullptr, MS_REMOUNT | MS_RDONLY, "size=1m"), 0);
    const auto panel = openedPanel();
    EXPECT_EQ(memoryOf(*panel, "LW"), QByteArray(131072, '\0')) << "opening for writing failed";
    panel->model->cyclicRun();
    EXPECT_EQ(retentionFile(wordFileName), pattern(131072, 17));
    EXPECT_EQ(retentionFile(bitFileName), pattern(100, 17));
    EXPECT_EQ(retentionFile(rwiFileName), std::nullopt);
    EXPECT_EQ(syncs(), 1);
}

TEST_F(WholeArea, AFullDiskLosesTheAreasThatDoNotFitForGood)
{
    NEEDS_A_MOUNT();
    mountOnProjectDirectory("size=128k"); // room for "LB" and a part of "LW"
    const auto panel = openedPanel();
    for (const ImageFile& file : imageFiles)
        fillMemory(*panel, file.area, pattern(file.size, 18));
    panel->model->cyclicRun();
    EXPECT_EQ(retentionFile(bitFileName), pattern(65536, 18));
    EXPECT_EQ(retentionFile(wordFileName), pattern(131072, 18).left(65536) + QByteArray(65536, '\0'));

    ASSERT_EQ(mount(nullptr, fixedProjectDirectory, nullptr, MS_REMOUNT, "size=1m"), 0);
    const auto before = retentionFile(wordFileName);
    panel->model->cyclicRun();
    EXPECT_EQ(retentionFile(wordFileName), before) << "a failed stream stays failed";
    EXPECT_EQ(syncs(), 2);
}

TEST_F(WholeArea, AFifoInAFilesPlaceDoesNotStopTheStart)
{
    QDir().mkpath(QLatin1String(fixedProjectDirectory));
    ASSERT_EQ(mkfifo(retentionPath(bitFileName).toLatin1().constData(), 0600), 0);
    const auto panel = openedPanel();
    fillMemory(*panel, "RWI", pattern(131072, 19));
    panel->model->cyclicRun();
    EXPECT_EQ(retentionFile(rwiFileName), pattern(131072, 19));
}

} // namespace
