// Every allocation of the module fails in turn: at most that file or block is left out, and no file is
// harmed.
// SPDX-License-Identifier: MIT
#include "tests/faults/current_life.h"
#include "tests/faults/life.h"
#include "tests/faults/memory_faults.h"
#include "tests/faults/storage_oracle.h"

#include <QtCore/QDir>
#include <QtCore/QFileInfo>
#if QT_VERSION < 0x050000
#include <QtCore/QTextCodec>
#endif

#include <cstdio>
#include <iostream>
#include <new>
#include <set>
#include <unistd.h>

namespace {

void plainly(int, const std::function<void()>& call)
{
    call();
}

ushort wordAt(const QByteArray& bytes, int offset)
{
    const auto at = [&](int k) { return k < bytes.size() ? static_cast<unsigned char>(bytes.at(k)) : 0; };
    return static_cast<ushort>(at(offset) | at(offset + 1) << 8);
}

/// The j-th cell of a block as a file or an area's memory has it.
ushort cellInFile(const QByteArray& file, const LifeBlock& block, int j)
{
    const int bit = block.place + j;
    if (lifeAreas[static_cast<std::size_t>(block.area)].bits)
        return bit / 8 < file.size() ? file.at(bit / 8) >> (bit % 8) & 1 : 0;
    return wordAt(file, block.place + 2 * j);
}

ushort cellInMemory(const QByteArray& memory, const LifeBlock& block, int j)
{
    const int address = block.first + j;
    return lifeAreas[static_cast<std::size_t>(block.area)].bits ? static_cast<ushort>(memory.at(address) != 0)
                                                                : wordAt(memory, 2 * address);
}

/// All values that the cell has had, or 0.
std::set<ushort> valuesHad(const QByteArray& startFile, const LifeBlock& block, int j)
{
    const LifeArea& area = lifeAreas[static_cast<std::size_t>(block.area)];
    std::set<ushort> values = {0, cellInFile(startFile, block, j),
                               cellInMemory(imageAtStart(area), block, j)};
    for (const Change& change : lifeChanges)
        if (change.area == block.area && change.address == block.first + j)
            values.insert(change.value);
    return values;
}

/// A per-address file may lack changes, but holds nothing that its cells never had.
testing::AssertionResult isUnharmed(int area, const std::optional<QByteArray>& startFile,
                                    const std::optional<QByteArray>& file, int fullLength)
{
    if (!file)
        return startFile ? testing::AssertionFailure() << "the file is gone" : testing::AssertionSuccess();
    if (file->size() > fullLength || (startFile && file->size() < startFile->size()))
        return testing::AssertionFailure() << "length " << file->size();
    for (const LifeBlock& block : lifeBlocks)
        for (int j = 0; block.area == area && j < block.count; ++j)
            if (!valuesHad(startFile.value_or(QByteArray()), block, j).count(cellInFile(*file, block, j)))
                return testing::AssertionFailure()
                       << "cell " << block.first + j << " holds " << cellInFile(*file, block, j);
    return testing::AssertionSuccess();
}

/// A whole-area file is always one whole image, or was not given its length.
testing::AssertionResult isWholeImage(const LifeArea& area, const std::optional<QByteArray>& startFile,
                                      const std::optional<QByteArray>& file)
{
    if (file == startFile || file == QByteArray("") || file == QByteArray(area.imageBytes, '\0'))
        return testing::AssertionSuccess();
    for (int cycle = 1; cycle <= lifeCycles; ++cycle)
        if (file == imageForCycle(area, cycle))
            return testing::AssertionSuccess();
    return testing::AssertionFailure() << "a mixture of " << (file ? file->size() : -1) << " bytes";
}

QList<int> watchedAddresses(const LifeRecord& record, const char* area)
{
    QList<int> addresses;
    for (const RegisterValueChangeSize& watch : record.watched)
        if (qstrcmp(watch.areaName, area) == 0)
            addresses.append(watch.address);
    return addresses;
}

struct MemoryLife
{
    LifeRecord record;
    Files files;
    std::optional<int> thrownIn; ///< the step out of which std::bad_alloc came
};

class MemoryFaults : public ModuleTest
{
protected:
    MemoryFaults()
    {
        setCallLog(nullptr);
        tellLifeOnCrash();
#if QT_VERSION < 0x050000
        // Its codec for the C locale loses an iconv handle when memory ends right after opening one.
        QTextCodec::setCodecForLocale(QTextCodec::codecForName("UTF-8"));
#endif
    }
    ~MemoryFaults() override
    {
        alarm(0);
    }

    void SetUp() override
    {
#ifdef OWN_ALLOCATOR
        GTEST_SKIP() << "a sanitizer brings its own allocator, which these faults do not reach";
#endif
    }

    static void TearDownTestSuite()
    {
        std::cout << allPoints << " memory faults in all\n";
    }

    void sweepAll(Mode mode, StartFiles kind)
    {
        int points = 0;
        for (const bool lasting : {false, true}) {
            const MemoryLife clean = liveOnce(mode, kind, {1 << 30, false});
            liveOnce(mode, kind, {1 << 30, false}); // what QtCore makes once is made now
            for (MemoryFault fault = {1, lasting};; ++fault.nth) {
                std::snprintf(currentLife, sizeof currentLife, "allocation %d fails%s, %s mode, start %d",
                              fault.nth, lasting ? " and all later ones" : "",
                              mode == Mode::WholeAreas ? "whole-area" : "per-address",
                              static_cast<int>(kind));
                SCOPED_TRACE(currentLife);
                if (!check(mode, kind, fault, clean))
                    break;
                ++points;
                if (HasFailure())
                    return;
            }
        }
        allPoints += points;
        std::cout << points << " memory faults\n";
        EXPECT_GT(points, 20);
    }

private:
    inline static int allPoints = 0;

    static MemoryLife liveOnce(Mode mode, StartFiles kind, const MemoryFault& fault)
    {
        lay(filesAtStart(mode, kind), kind != StartFiles::NoDirectory);
        alarm(20);
        MemoryLife life;
        planMemoryFault(fault);
        life.record = live(mode, [&](int step, const std::function<void()>& call) {
            if (life.thrownIn && step != FirstEvent + eventsOf(mode))
                return; // a runtime gives up a model that it could not open
            enterModule();
            try {
                call();
            } catch (const std::bad_alloc&) {
                life.thrownIn = step;
            }
            leaveModule();
        });
        endMemoryFaults();
        life.files = filesNow();
        return life;
    }

    /// False when the fault's turn never came.
    bool check(Mode mode, StartFiles kind, const MemoryFault& fault, const MemoryLife& clean)
    {
        const int before = moduleBlocksInUse();
        const MemoryLife life = liveOnce(mode, kind, fault);
        const bool came = memoryFaultHappened();
        EXPECT_EQ(moduleBlocksInUse(), before) << "memory leaked";
        EXPECT_TRUE(!life.thrownIn || *life.thrownIn == Create || *life.thrownIn == Open)
            << "std::bad_alloc out of step " << *life.thrownIn;
        EXPECT_EQ(life.record.syncs, life.thrownIn ? 0 : eventsOf(mode));

        int leftOut = 0;
        const Files start = filesAtStart(mode, kind);
        for (std::size_t a = 0; a < start.size(); ++a) {
            const LifeArea& area = lifeAreas[a];
            if (mode == Mode::WholeAreas)
                EXPECT_TRUE(isWholeImage(area, start[a], life.files[a])) << area.name;
            else
                EXPECT_TRUE(isUnharmed(static_cast<int>(a), start[a], life.files[a], clean.files[a]->size()))
                    << area.name;
            leftOut += life.files[a] != clean.files[a] ||
                       life.record.restored[a] != clean.record.restored[a] ||
                       watchedAddresses(life.record, area.name) != watchedAddresses(clean.record, area.name);
        }
        EXPECT_TRUE(leftOut <= 1 || life.thrownIn || fault.lasting) << "a single fault reaches one area";
        checkNextLife(mode);
        return came;
    }

    /// With memory again, all is retained again.
    static void checkNextLife(Mode mode)
    {
        const Files between = filesNow();
        live(mode, plainly);
        const Files files = filesNow();
        for (std::size_t a = 0; a < files.size(); ++a)
            EXPECT_EQ(files[a], outcome({mode, static_cast<int>(a), between[a]}, std::nullopt).file)
                << lifeAreas[a].name << " in the next life";
    }
};

TEST_F(MemoryFaults, AreSurvivedByAFirstWholeAreaLife)
{
    sweepAll(Mode::WholeAreas, StartFiles::NoDirectory);
}

TEST_F(MemoryFaults, AreSurvivedByAWholeAreaLifeWithKeptFiles)
{
    sweepAll(Mode::WholeAreas, StartFiles::Kept);
}

TEST_F(MemoryFaults, AreSurvivedByAFirstPerAddressLife)
{
    sweepAll(Mode::PerAddress, StartFiles::NoDirectory);
}

TEST_F(MemoryFaults, AreSurvivedByAPerAddressLifeWithKeptFiles)
{
    sweepAll(Mode::PerAddress, StartFiles::Kept);
}

TEST_F(MemoryFaults, AreSurvivedByAPerAddressLifeWithShorterFiles)
{
    sweepAll(Mode::PerAddress, StartFiles::Shorter);
}

TEST_F(MemoryFaults, AreSurvivedByAPerAddressLifeWithEmptyFiles)
{
    sweepAll(Mode::PerAddress, StartFiles::Empty);
}

/// Number of this process's descriptors that are open on retention files.
int openRetentionFiles()
{
    int count = 0;
    const QDir descriptors(QStringLiteral("/proc/self/fd"));
    for (const QFileInfo& descriptor : descriptors.entryInfoList(QDir::Files | QDir::System))
        count += descriptor.symLinkTarget().contains(QLatin1String("/maintenance-")) ? 1 : 0;
    return count;
}

TEST_F(MemoryFaults, InASecondOpeningCloseNoFileThatWasOpenBefore)
{
    const auto project = wholeAreaProject(1, 5);
    bool came = true;
    int points = 0;
    for (MemoryFault fault = {1, false}; came; ++fault.nth, ++points) {
        const auto panel = startPanel(project.get());
        ASSERT_EQ(openRetentionFiles(), 3);
        planMemoryFault(fault);
        enterModule();
        try {
            panel->open();
        } catch (const std::bad_alloc&) {
        }
        leaveModule();
        came = memoryFaultHappened();
        endMemoryFaults();
        EXPECT_EQ(openRetentionFiles(), 3) << "allocation " << fault.nth;
    }
    EXPECT_GT(points, 5);
}

} // namespace
