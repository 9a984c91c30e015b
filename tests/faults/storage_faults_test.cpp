// Every call to storage fails in turn: what a life leaves must be exactly what the account of it says.
// SPDX-License-Identifier: MIT
#include "tests/faults/current_life.h"
#include "tests/faults/life.h"
#include "tests/faults/storage_faults.h"
#include "tests/faults/storage_oracle.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <iostream>
#include <unistd.h>

namespace {

using Extent = StorageFault::Extent;

struct NamedCall
{
    StorageCall call;
    const char* name;
};
const NamedCall callKinds[] = {{StorageCall::Open, "open"},   {StorageCall::StreamOpen, "fopen"},
                               {StorageCall::Read, "read"},   {StorageCall::Write, "write"},
                               {StorageCall::Seek, "lseek"},  {StorageCall::Truncate, "ftruncate"},
                               {StorageCall::Close, "close"}, {StorageCall::MakeDirectory, "mkdir"}};
const int errors[] = {ENOSPC, EIO, EROFS, EACCES, EMFILE, EDQUOT, EINTR};

const char* nameOf(StorageCall call)
{
    for (const NamedCall& kind : callKinds)
        if (kind.call == call)
            return kind.name;
    return "?";
}

const char* nameOf(Extent extent)
{
    switch (extent) {
    case Extent::Once:
        return "fails once";
    case Extent::Lasting:
        return "fails from now on";
    case Extent::Short:
        return "comes short";
    case Extent::ShortAndFail:
        return "comes short, then fails";
    }
    return "?";
}

void describeLife(const StorageFault& fault, Mode mode, StartFiles kind)
{
    const char* const kinds[] = {"no directory", "kept files", "shorter files", "empty files"};
    std::snprintf(currentLife, sizeof currentLife, "%s call %d %s with \"%s\", %s mode, start with %s",
                  nameOf(fault.call), fault.nth, nameOf(fault.extent), std::strerror(fault.error),
                  mode == Mode::WholeAreas ? "whole-area" : "per-address", kinds[static_cast<int>(kind)]);
}

class StorageFaults : public ModuleTest
{
protected:
    StorageFaults()
    {
        setCallLog(nullptr);
        tellLifeOnCrash();
    }
    ~StorageFaults() override { alarm(0); }

    static void TearDownTestSuite() { std::cout << allPoints << " storage faults in all\n"; }

    /// Sweeps one kind of fault over all its turns; returns how often it came.
    int sweep(Mode mode, StartFiles kind, StorageFault fault)
    {
        for (fault.nth = 1;; ++fault.nth) {
            describeLife(fault, mode, kind);
            SCOPED_TRACE(currentLife);
            alarm(20);
            if (!liveThrough(mode, kind, fault))
                return fault.nth - 1;
            if (HasFailure())
                return fault.nth;
        }
    }

    /// Sweeps all faults over lives of that mode and start.
    void sweepAll(Mode mode, StartFiles kind)
    {
        int points = 0;
        for (const NamedCall& named : callKinds) {
            const int before = points;
            for (const int error : errors) {
                points += sweep(mode, kind, {named.call, 1, error, Extent::Once});
                if (error != EINTR) // interrupted for ever is nothing that happens
                    points += sweep(mode, kind, {named.call, 1, error, Extent::Lasting});
                if (named.call == StorageCall::Read || named.call == StorageCall::Write)
                    points += sweep(mode, kind, {named.call, 1, error, Extent::ShortAndFail});
                if (HasFailure())
                    return;
            }
            if (named.call == StorageCall::Read || named.call == StorageCall::Write)
                points += sweep(mode, kind, {named.call, 1, 0, Extent::Short});
            // A life that begins with nothing makes every kind of call.
            EXPECT_TRUE(points > before || kind != StartFiles::NoDirectory) << named.name;
        }
        RecordProperty("fault points", points);
        std::cout << points << " storage faults\n";
        allPoints += points;
        EXPECT_GT(points, 100);
    }

private:
    inline static int allPoints = 0;

    /// One life with the fault and one without; false when the fault's turn never came.
    bool liveThrough(Mode mode, StartFiles kind, const StorageFault& fault)
    {
        const Files start = filesAtStart(mode, kind);
        lay(start, kind != StartFiles::NoDirectory);
        std::optional<int> faultStep;
        planStorageFault(fault);
        const LifeRecord record = live(mode, [&](int step, const std::function<void()>& call) {
            call();
            if (!faultStep && storageFaultHappened())
                faultStep = step;
        });
        endStorageFaults();
        std::optional<Hit> hit;
        if (faultStep)
            hit = Hit{fault, *faultStep, areaOfPath(storageFaultPath()), storageFaultOnStream()};
        check(mode, start, hit, record);

        const Files between = filesNow();
        check(mode, between, std::nullopt,
              live(mode, [](int, const std::function<void()>& call) { call(); }));
        return hit.has_value();
    }

    static int areaOfPath(const std::string& path)
    {
        for (int a = 0; a < 3; ++a)
            if (path.find(lifeAreas[static_cast<std::size_t>(a)].fileName) != std::string::npos)
                return a;
        return -1;
    }

    static void check(Mode mode, const Files& start, const std::optional<Hit>& hit, const LifeRecord& record)
    {
        EXPECT_EQ(record.syncs, eventsOf(mode));
        const Files files = filesNow();
        for (std::size_t a = 0; a < files.size(); ++a) {
            const AreaStart areaStart = {mode, static_cast<int>(a), start[a]};
            const AreaOutcome expected = outcome(areaStart, hit);
            EXPECT_EQ(files[a], expected.file) << lifeAreas[a].name;
            EXPECT_TRUE(restoredAsExpected(areaStart, hit, record.restored[a])) << lifeAreas[a].name;
        }
    }

    /// A restore may break off after any number of units.
    static bool restoredAsExpected(const AreaStart& start, const std::optional<Hit>& hit,
                                   const QByteArray& memory)
    {
        for (int units = 0; units <= restoreUnits(start); ++units)
            if (outcome(start, hit, units).restored == memory)
                return true;
        return false;
    }
};

TEST_F(StorageFaults, AreSurvivedByAFirstWholeAreaLife)
{
    sweepAll(Mode::WholeAreas, StartFiles::NoDirectory);
}

TEST_F(StorageFaults, AreSurvivedByAWholeAreaLifeWithKeptFiles)
{
    sweepAll(Mode::WholeAreas, StartFiles::Kept);
}

TEST_F(StorageFaults, AreSurvivedByAWholeAreaLifeWithShorterFiles)
{
    sweepAll(Mode::WholeAreas, StartFiles::Shorter);
}

TEST_F(StorageFaults, AreSurvivedByAFirstPerAddressLife)
{
    sweepAll(Mode::PerAddress, StartFiles::NoDirectory);
}

TEST_F(StorageFaults, AreSurvivedByAPerAddressLifeWithKeptFiles)
{
    sweepAll(Mode::PerAddress, StartFiles::Kept);
}

TEST_F(StorageFaults, AreSurvivedByAPerAddressLifeWithShorterFiles)
{
    sweepAll(Mode::PerAddress, StartFiles::Shorter);
}

TEST_F(StorageFaults, AreSurvivedByAPerAddressLifeWithEmptyFiles)
{
    sweepAll(Mode::PerAddress, StartFiles::Empty);
}

} // namespace
