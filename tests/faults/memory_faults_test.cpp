// Fails every allocation of the module in turn: at most that file, block or change is left out, and
// everything else is as it should be.
// SPDX-License-Identifier: MIT
#include "tests/faults/life.h"
#include "tests/faults/memory_faults.h"
#include "tests/faults/storage_oracle.h"
#include "tests/support/storage.h"

#if QT_VERSION < 0x060000
#include <QtCore/QTextCodec>
#endif

#include <cerrno>
#include <cstdio>
#include <new>
#include <set>
#include <unistd.h>

namespace {

void plainly(int, const std::function<void()>& call)
{
    call();
}

/// The cells of an area that share one allocation, as bytes in its image. A whole area is one unit.
struct Unit
{
    int first, bytes;
};

std::vector<Unit> unitsOf(Mode mode, std::size_t area)
{
    const TestArea& facts = testAreas[area];
    if (mode == Mode::WholeAreas)
        return {{0, facts.imageBytes}};
    std::vector<Unit> units;
    const int size = facts.bits ? 1 : 2;
    for (const LifeBlock& block : lifeBlocks)
        if (block.area == area)
            units.push_back({size * block.first, size * block.count});
    return units;
}

/// Whether the memory is `complete`, except for units that are as in `before`.
bool isCompleteButForUnits(const QByteArray& memory, QByteArray before, const QByteArray& complete,
                           const std::vector<Unit>& units)
{
    for (const Unit& unit : units)
        if (memory.mid(unit.first, unit.bytes) == complete.mid(unit.first, unit.bytes))
            before.replace(unit.first, unit.bytes, complete.mid(unit.first, unit.bytes));
    return memory == before;
}

/// Whether the watched addresses of an area are all of its blocks' or, unless `complete`, lack only whole
/// blocks.
bool isWatchedButForBlocks(const QList<int>& addresses, std::size_t area, bool complete)
{
    int at = 0;
    for (const LifeBlock& block : lifeBlocks) {
        if (block.area != area)
            continue;
        QList<int> cells;
        for (int j = 0; j < block.count; ++j)
            cells.append(block.first + j);
        if (addresses.mid(at, block.count) == cells)
            at += block.count;
        else if (complete)
            return false;
    }
    return at == addresses.size();
}

QList<int> watchedAddresses(const LifeRecord& record, const char* area)
{
    QList<int> addresses;
    for (const RegisterValueChangeSize& watch : record.watched)
        if (qstrcmp(watch.areaName, area) == 0)
            addresses.append(watch.address);
    return addresses;
}

/// All subsets of the steps.
std::vector<std::set<int>> subsets(const std::vector<int>& steps)
{
    std::vector<std::set<int>> result(1);
    for (const int step : steps)
        for (std::size_t k = result.size(); k-- > 0;) {
            result.push_back(result[k]);
            result.back().insert(step);
        }
    return result;
}

struct MemoryLife
{
    LifeRecord record;
    Files files;
    std::optional<int> failedIn; ///< the step in which the fault occurred
    std::optional<int> thrownIn; ///< the step that threw std::bad_alloc
};

class MemoryFaults : public ModuleTest
{
protected:
    MemoryFaults()
    {
        setCallLog(nullptr);
        tellLifeOnCrash();
#if QT_VERSION < 0x060000
        // The same codec in every locale. Qt 4's codec for the C locale leaks an iconv handle when memory
        // runs out right after opening one.
        QTextCodec::setCodecForLocale(QTextCodec::codecForName("UTF-8"));
#endif
    }
    ~MemoryFaults() override
    {
        alarm(0);
    }
};

class MemoryFaultSweep : public MemoryFaults, public testing::WithParamInterface<Sweep>
{
protected:
    const Mode mode = GetParam().mode;
    const int startStep = mode == Mode::WholeAreas ? Open : Init; ///< in which files are made and restored
    const bool hasDirectory = GetParam().start != StartFiles::NoDirectory;
    const Files start = filesAtStart(mode, GetParam().start);

    MemoryLife liveOnce(const MemoryFault& fault) const
    {
        lay(start, hasDirectory);
        alarm(20);
        MemoryLife life;
        planMemoryFault(fault);
        life.record = live(mode, [&](int step, const std::function<void()>& call) {
            if (life.thrownIn && step != FirstEvent + eventsOf(mode))
                return; // a runtime destroys a model that it could not open
            enterModule();
            try {
                call();
            } catch (const std::bad_alloc&) {
                life.thrownIn = step;
            }
            leaveModule();
            if (!life.failedIn && memoryFaultHappened())
                life.failedIn = step;
        });
        endMemoryFaults();
        life.files = filesNow();
        return life;
    }

    /// False when the fault was never reached.
    bool liveThrough(const MemoryFault& fault)
    {
        std::snprintf(currentLife, sizeof currentLife, "%s, allocation %d fails%s", GetParam().name,
                      fault.nth, fault.lasting ? " and all later ones" : "");
        SCOPED_TRACE(currentLife);
        const int before = moduleBlocksInUse();
        const MemoryLife life = liveOnce(fault);
        EXPECT_EQ(moduleBlocksInUse(), before) << "memory leaked";
        EXPECT_TRUE(!life.thrownIn || *life.thrownIn == Create || *life.thrownIn == Open)
            << "std::bad_alloc out of step " << *life.thrownIn;
        EXPECT_EQ(life.record.syncs, life.thrownIn ? 0 : eventsOf(mode));
        int leftOut = 0;
        for (std::size_t a = 0; a < testAreas.size(); ++a)
            leftOut += !checkArea(a, life, fault.lasting);
        EXPECT_TRUE(leftOut <= 1 || life.thrownIn || fault.lasting) << "a single fault reaches one area";
        checkNextLife();
        return life.failedIn.has_value();
    }

private:
    /// Compares one area with the model; returns whether it is as after a life without a fault.
    bool checkArea(std::size_t area, const MemoryLife& life, bool lasting) const
    {
        const TestArea& facts = testAreas[area];
        const auto mayLeaveOut = [&](int step) {
            return life.failedIn && (step == *life.failedIn || (lasting && step > *life.failedIn));
        };
        const AreaStart areaStart = {mode, area, start[area], hasDirectory};
        const AreaOutcome clean = outcome(areaStart, {});

        const QByteArray& restored = life.record.restored[area];
        const bool isRestored = restored == clean.restored;
        const bool isRestoredInPart =
            restored == notOpened(areaStart).restored ||
            isCompleteButForUnits(restored, imageAtStart(facts), clean.restored, unitsOf(mode, area));
        EXPECT_TRUE(isRestored || ((mayLeaveOut(startStep) || life.thrownIn) && isRestoredInPart))
            << facts.name << " as restored";

        const QList<int> watched = watchedAddresses(life.record, facts.name);
        const bool isWatched =
            mode == Mode::WholeAreas ? watched.isEmpty() : isWatchedButForBlocks(watched, area, true);
        EXPECT_TRUE(isWatched || life.thrownIn ||
                    (mayLeaveOut(Watch) && isWatchedButForBlocks(watched, area, false)))
            << facts.name << " as watched";

        const std::optional<QByteArray>& file = life.files[area];
        bool isExpected = false;
        for (const AreaStart& made : afterStartUp(areaStart, clean, life))
            isExpected =
                isExpected ||
                (life.thrownIn ? file == made.file : isAtEnd(file, made, restored, isRestored, mayLeaveOut));
        EXPECT_TRUE(isExpected) << facts.name << " with " << (file ? file->size() : -1) << " bytes";
        return isRestored && isWatched && file == clean.files.back().file;
    }

    /// The rules' result for a file that cannot be opened at start: its words are restored as 0.
    AreaOutcome notOpened(const AreaStart& areaStart) const
    {
        const StorageFault fault = {FileCall::Kind::StreamOpen, 1, ENOMEM, StorageFault::Extent::Once};
        return outcome(areaStart, {{fault, startStep, areaStart.area, false, 0, 0}});
    }

    /// What the start-up can have left as the file: the complete file or, if the fault occurred by then, an
    /// intermediate step.
    std::vector<AreaStart> afterStartUp(AreaStart areaStart, const AreaOutcome& clean,
                                        const MemoryLife& life) const
    {
        const bool failed = life.failedIn && *life.failedIn <= startStep;
        std::vector<AreaStart> result;
        for (const FileState& state : clean.files) {
            if (state.step > life.thrownIn.value_or(startStep))
                break;
            if (!failed)
                result.clear();
            areaStart.file = state.file;
            result.push_back(areaStart);
        }
        return result;
    }

    /// Whether the file holds the last value of every cell, except for changes that may be left out. An area
    /// whose file could not be opened is not saved either.
    template <typename MayLeaveOut>
    bool isAtEnd(const std::optional<QByteArray>& file, const AreaStart& made, const QByteArray& restored,
                 bool isRestored, MayLeaveOut mayLeaveOut) const
    {
        if (mode == Mode::WholeAreas)
            return file == (isRestored ? fileAtEnd(made, restored, {}) : made.file);
        std::vector<int> steps;
        for (int event = 0; event < eventsOf(mode); ++event)
            if (lifeChanges[static_cast<std::size_t>(event)].area == made.area &&
                mayLeaveOut(FirstEvent + event))
                steps.push_back(FirstEvent + event);
        for (const std::set<int>& leftOut : subsets(steps))
            if (file == fileAtEnd(made, restored, leftOut))
                return true;
        return false;
    }

    /// Once there is memory again, everything is retained again.
    void checkNextLife() const
    {
        const Files between = filesNow();
        const LifeRecord record = live(mode, plainly);
        const Files files = filesNow();
        for (std::size_t a = 0; a < files.size(); ++a) {
            const AreaOutcome expected = outcome({mode, a, between[a], true}, {});
            EXPECT_EQ(files[a], expected.files.back().file) << testAreas[a].name << " in the next life";
            EXPECT_TRUE(record.restored[a] == expected.restored) << testAreas[a].name << " in the next life";
        }
    }
};

TEST_P(MemoryFaultSweep, LeavesFilesAsTheyBeganOrAsTheyShouldBe)
{
    int points = 0;
    for (const bool lasting : {false, true}) {
        liveOnce({1 << 30, false}); // so that QtCore's one-time allocations are done
        liveOnce({1 << 30, false});
        MemoryFault fault = {1, lasting};
        for (; liveThrough(fault); ++fault.nth)
            ASSERT_FALSE(HasFailure());
        points += fault.nth - 1;
    }
    // With four-byte pointers, the list of watched cells grows once less, in both sweeps.
    const bool smallPointers = sizeof(void*) == 4 && GetParam().mode == Mode::PerAddress;
    EXPECT_TRUE(isReached(points, GetParam().faults - (smallPointers ? 2 : 0)));
}

INSTANTIATE_TEST_SUITE_P(
    In, MemoryFaultSweep,
    testing::Values(Sweep{"AFirstWholeAreaLife", Mode::WholeAreas, StartFiles::NoDirectory, 98},
                    Sweep{"AWholeAreaLifeWithKeptFiles", Mode::WholeAreas, StartFiles::Kept, 56},
                    Sweep{"AWholeAreaLifeWithShorterFiles", Mode::WholeAreas, StartFiles::Shorter, 92},
                    Sweep{"AFirstPerAddressLife", Mode::PerAddress, StartFiles::NoDirectory, 404},
                    Sweep{"APerAddressLifeWithKeptFiles", Mode::PerAddress, StartFiles::Kept, 352},
                    Sweep{"APerAddressLifeWithShorterFiles", Mode::PerAddress, StartFiles::Shorter, 352},
                    Sweep{"APerAddressLifeWithEmptyFiles", Mode::PerAddress, StartFiles::Empty, 362}),
    [](const auto& info) { return info.param.name; });

/// Saves areas full of that byte; returns how many files then have it.
int savedFiles(Panel& panel, int byte)
{
    for (MemoryArea& area : panel.areas.all())
        std::fill(area.memory().begin(), area.memory().end(), static_cast<unsigned char>(byte));
    panel.model->cyclicRun();
    int saved = 0;
    for (const auto& file : filesNow())
        saved += file->count(static_cast<char>(byte)) == file->size();
    return saved;
}

TEST_F(MemoryFaults, InASecondOpeningCloseNoFileThatWasOpenBeforeAndEndItsSavingAllTheSame)
{
    const auto project = wholeAreaProject(1, 5);
    bool came = true;
    int points = 0;
    for (MemoryFault fault = {1, false}; came; ++fault.nth, ++points) {
        const auto panel = startPanel(project.get());
        ASSERT_EQ(openFiles().size(), 3);
        ASSERT_EQ(savedFiles(*panel, 1), 3);
        planMemoryFault(fault);
        enterModule();
        bool isOpened = false;
        try {
            panel->open();
            isOpened = true;
        } catch (const std::bad_alloc&) {
        }
        leaveModule();
        came = memoryFaultHappened();
        endMemoryFaults();
        EXPECT_EQ(openFiles().size(), 3) << "allocation " << fault.nth;
        EXPECT_TRUE(!isOpened || savedFiles(*panel, 2) == 0) << "allocation " << fault.nth;
    }
    EXPECT_GT(points, 5);
}

} // namespace
