// Tests whole-area mode: creation, repair, restore and periodic save of the three images.
// SPDX-License-Identifier: MIT
#include "tests/support/module_test.h"
#include "tests/support/storage.h"

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

QByteArray memoryOf(const MemoryAreas& areas, const ImageFile& file)
{
    const auto& memory = areas.named(QLatin1String(file.area))->memory();
    return QByteArray(reinterpret_cast<const char*>(memory.data()), static_cast<int>(memory.size()));
}

void fillMemory(MemoryAreas& areas, int seed)
{
    for (const ImageFile& file : imageFiles) {
        const QByteArray bytes = pattern(file.size, seed);
        std::copy(bytes.begin(), bytes.end(), areas.named(QLatin1String(file.area))->memory().begin());
    }
}

/// Images with that many bytes more than necessary.
void writeFiles(int seed, int more = 0)
{
    for (const ImageFile& file : imageFiles)
        writeRetentionFile(file.name, pattern(file.size + more, seed));
}

void expectFiles(int seed)
{
    for (const ImageFile& file : imageFiles)
        EXPECT_EQ(retentionFile(file.name), pattern(file.size, seed)) << file.name;
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

    void expectZeroFilesAndAreas()
    {
        for (const ImageFile& file : imageFiles) {
            EXPECT_EQ(retentionFile(file.name), QByteArray(file.size, '\0')) << file.name;
            EXPECT_EQ(memoryOf(areas, file), QByteArray(file.size, '\0')) << file.area;
        }
    }

    std::unique_ptr<object> project = wholeAreaProject(1, 5);
    MemoryAreas areas;
    ShyComm comm{areas};
    ModelPointer module = moduleLibrary().createModel();
};

TEST_F(WholeArea, FirstStartMakesZeroFilesAndZeroesTheAreas)
{
    fillMemory(areas, 1);
    open();
    expectZeroFilesAndAreas();
}

TEST_F(WholeArea, FilesOneByteShortAreRefilledWithZerosAndTheAreasZeroed)
{
    writeFiles(5, -1);
    fillMemory(areas, 1);
    open();
    expectZeroFilesAndAreas();
}

TEST_F(WholeArea, FilesOfExactlyTheAreasSizeAreRestoredInFull)
{
    writeFiles(2);
    open();
    for (const ImageFile& file : imageFiles)
        EXPECT_EQ(memoryOf(areas, file), pattern(file.size, 2)) << file.area;
    expectFiles(2);
}

TEST_F(WholeArea, LongerFilesKeepTheirLengthAndTheirTail)
{
    writeFiles(3, 100);
    open();
    for (const ImageFile& file : imageFiles)
        EXPECT_EQ(memoryOf(areas, file), pattern(file.size + 100, 3).left(file.size)) << file.area;
    fillMemory(areas, 4);
    module->cyclicRun();
    for (const ImageFile& file : imageFiles)
        EXPECT_EQ(retentionFile(file.name),
                  pattern(file.size, 4) + pattern(file.size + 100, 3).mid(file.size));
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

TEST_F(WholeArea, DestructionSavesNothing)
{
    open();
    fillMemory(areas, 9);
    module->cyclicRun();
    fillMemory(areas, 10);
    module.reset();
    expectFiles(9);
    EXPECT_EQ(syncs(), 1);
}

TEST_F(WholeArea, AnAreaThatTheHostDoesNotOfferKeepsItsFileUntilItIsOffered)
{
    for (const ImageFile& hidden : imageFiles)
        for (const bool atRestore : {true, false}) {
            SCOPED_TRACE(hidden.area + std::string(atRestore ? " at the restore" : ""));
            module = moduleLibrary().createModel();
            writeFiles(20);
            comm.hidden = atRestore ? hidden.code : -1;
            fillMemory(areas, 21);
            open();
            for (const ImageFile& file : imageFiles)
                EXPECT_EQ(memoryOf(areas, file), pattern(file.size, &file == &hidden && atRestore ? 21 : 20));
            expectFiles(20);
            comm.hidden = hidden.code;
            fillMemory(areas, 22);
            module->cyclicRun();
            for (const ImageFile& file : imageFiles)
                EXPECT_EQ(retentionFile(file.name), pattern(file.size, &file == &hidden ? 20 : 22));
            comm.hidden = -1;
            module->cyclicRun();
            expectFiles(22);
        }
}

TEST_F(WholeArea, AnAreaThatTheHostNeverOffersStillGetsItsFile)
{
    comm.hidden = 2;
    open();
    EXPECT_EQ(retentionFile(rwiFileName), QByteArray(131072, '\0'));
}

TEST_F(WholeArea, ASecondOpenRestoresNothingAndEndsTheSaving)
{
    open();
    fillMemory(areas, 13);
    module->cyclicRun();
    fillMemory(areas, 14);
    open();
    for (const ImageFile& file : imageFiles)
        EXPECT_EQ(memoryOf(areas, file), pattern(file.size, 14)) << "nothing restored";
    module->cyclicRun();
    expectFiles(13);
    EXPECT_EQ(syncs(), 2) << "sync goes on";
}

TEST_F(WholeArea, AFullDiskLosesTheAreasThatDoNotFitForGood)
{
    NEEDS_A_MOUNT();
    mountOnProjectDirectory("size=128k"); // room for "LB" and a part of "LW"
    open();
    fillMemory(areas, 18);
    module->cyclicRun();
    EXPECT_EQ(retentionFile(bitFileName), pattern(65536, 18));
    const QByteArray half = pattern(131072, 18).left(65536) + QByteArray(65536, '\0');
    EXPECT_EQ(retentionFile(wordFileName), half);

    remountProjectDirectory("size=1m");
    module->cyclicRun();
    EXPECT_EQ(retentionFile(wordFileName), half) << "a failed stream stays failed";
    EXPECT_EQ(syncs(), 2);
}

} // namespace
