// Tests whole-area mode: creation, repair, restore and periodic save of the three images.
// SPDX-License-Identifier: MIT
#include "tests/support/module_test.h"
#include "tests/support/storage.h"

#include <sys/mount.h>

namespace {

QByteArray memoryOf(const MemoryAreas& areas, const TestArea& area)
{
    const auto& memory = areas.named(QLatin1String(area.name))->memory();
    return QByteArray(reinterpret_cast<const char*>(memory.data()), static_cast<int>(memory.size()));
}

void fillMemory(MemoryAreas& areas, int seed)
{
    for (const TestArea& area : testAreas) {
        const QByteArray bytes = pattern(area.imageBytes, seed);
        std::copy(bytes.begin(), bytes.end(), areas.named(QLatin1String(area.name))->memory().begin());
    }
}

/// Images with that many bytes more than necessary.
void writeFiles(int seed, int more = 0)
{
    for (const TestArea& area : testAreas)
        writeRetentionFile(area.fileName, pattern(area.imageBytes + more, seed));
}

void expectFiles(int seed)
{
    for (const TestArea& area : testAreas)
        EXPECT_EQ(retentionFile(area.fileName), pattern(area.imageBytes, seed)) << area.fileName;
}

/// A panel that can withhold the memory of one area.
class ShyComm : public SimulatedComm
{
public:
    using SimulatedComm::SimulatedComm;

    void* getAreaMemory(int areaCode) override
    {
        return areaCode == hidden ? nullptr : SimulatedComm::getAreaMemory(areaCode);
    }

    int hidden = -1; ///< whole-area code of the area that is withheld
};

class WholeArea : public ModuleTest
{
protected:
    void open() { module->extModelOpen(project.get(), QString(), &comm); }

    std::unique_ptr<object> project = wholeAreaProject(1, 5);
    MemoryAreas areas;
    ShyComm comm{areas};
    ModelPointer module = moduleLibrary().createModel();
};

TEST_F(WholeArea, FilesOfExactlyTheAreasSizeAreRestoredInFull)
{
    writeFiles(2);
    open();
    for (const TestArea& area : testAreas)
        EXPECT_EQ(memoryOf(areas, area), pattern(area.imageBytes, 2)) << area.name;
    expectFiles(2);
}

TEST_F(WholeArea, LongerFilesKeepTheirLengthAndTheirTail)
{
    writeFiles(3, 100);
    open();
    for (const TestArea& area : testAreas)
        EXPECT_EQ(memoryOf(areas, area), pattern(area.imageBytes + 100, 3).left(area.imageBytes))
            << area.name;
    fillMemory(areas, 4);
    module->cyclicRun();
    for (const TestArea& area : testAreas)
        EXPECT_EQ(retentionFile(area.fileName),
                  pattern(area.imageBytes, 4) + pattern(area.imageBytes + 100, 3).mid(area.imageBytes));
}

TEST_F(WholeArea, EveryCyclicCallSavesTheAreasAndThenSyncs)
{
    open();
    for (int seed = 6; seed < 9; ++seed) {
        fillMemory(areas, seed);
        calls.clear();
        EXPECT_EQ(module->cyclicRun(), 0);
        EXPECT_EQ(lines(calls), "getAreaMemory 1\ngetAreaMemory 0\ngetAreaMemory 2\nsync");
        expectFiles(seed);
    }
}

TEST_F(WholeArea, AnAreaThatTheHostDoesNotOfferKeepsItsFileUntilItIsOffered)
{
    for (const TestArea& hidden : testAreas)
        for (const bool atRestore : {true, false}) {
            SCOPED_TRACE(hidden.name + std::string(atRestore ? " at the restore" : ""));
            module = moduleLibrary().createModel();
            writeFiles(20);
            comm.hidden = atRestore ? areas.named(QLatin1String(hidden.name))->areaCode() : -1;
            fillMemory(areas, 21);
            open();
            for (const TestArea& area : testAreas)
                EXPECT_EQ(memoryOf(areas, area),
                          pattern(area.imageBytes, &area == &hidden && atRestore ? 21 : 20));
            expectFiles(20);
            comm.hidden = areas.named(QLatin1String(hidden.name))->areaCode();
            fillMemory(areas, 22);
            module->cyclicRun();
            for (const TestArea& area : testAreas)
                EXPECT_EQ(retentionFile(area.fileName), pattern(area.imageBytes, &area == &hidden ? 20 : 22));
            comm.hidden = -1;
            module->cyclicRun();
            expectFiles(22);
        }
}

TEST_F(WholeArea, ASecondOpenRestoresNothingAndEndsTheSaving)
{
    open();
    fillMemory(areas, 13);
    module->cyclicRun();
    fillMemory(areas, 14);
    open();
    for (const TestArea& area : testAreas)
        EXPECT_EQ(memoryOf(areas, area), pattern(area.imageBytes, 14)) << "nothing restored";
    module->cyclicRun();
    expectFiles(13);
    EXPECT_EQ(syncs(), 2) << "sync goes on";
}

TEST_F(WholeArea, AFullDiskLosesTheAreasThatDoNotFitForGood)
{
    if (!pathMappingNotice().isEmpty())
        GTEST_SKIP() << "needs a mount, which the fixture undoes";
    const auto mountTmpfs = [](unsigned long flags, const char* options) {
        ASSERT_EQ(mount("tmpfs", fixedProjectDirectory, "tmpfs", flags, options), 0) << strerror(errno);
    };
    mountTmpfs(0, "size=128k"); // room for "LB" and a part of "LW"
    open();
    fillMemory(areas, 18);
    module->cyclicRun();
    EXPECT_EQ(retentionFile(bitFileName), pattern(65536, 18));
    const QByteArray half = pattern(131072, 18).left(65536) + QByteArray(65536, '\0');
    EXPECT_EQ(retentionFile(wordFileName), half);

    mountTmpfs(MS_REMOUNT, "size=1m");
    module->cyclicRun();
    EXPECT_EQ(retentionFile(wordFileName), half) << "a failed stream stays failed";
    EXPECT_EQ(syncs(), 2);
}

} // namespace
