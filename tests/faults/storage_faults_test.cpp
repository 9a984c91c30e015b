// Fails every call to storage in turn, alone, with a second one, or before a stop: what a life leaves must be
// exactly what the model says.
// SPDX-License-Identifier: MIT
#include "tests/faults/life.h"
#include "tests/faults/storage_faults.h"
#include "tests/faults/storage_oracle.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <set>
#include <thread>
#include <unistd.h>

namespace {

using Extent = StorageFault::Extent;
using Kind = FileCall::Kind;

struct NamedCall
{
    Kind kind;
    const char* name;
};
const NamedCall callKinds[] = {
    {Kind::Look, "stat"},          {Kind::Open, "open"},     {Kind::StreamOpen, "fopen"},
    {Kind::Read, "read"},          {Kind::Write, "write"},   {Kind::Seek, "lseek"},
    {Kind::Truncate, "ftruncate"}, {Kind::Close, "close"},   {Kind::MakeDirectory, "mkdir"},
    {Kind::Sync, "fsync"},         {Kind::Rename, "rename"}, {Kind::Remove, "unlink"},
};
const std::vector<int> errors = {ENOSPC, EIO, EROFS, EACCES, EMFILE, EDQUOT, EINTR};
const std::vector<int> errorsOfLooks = {EIO, EACCES, ENOMEM, EINTR, EOVERFLOW, ELOOP, ENAMETOOLONG};

std::string described(const StorageFault& fault)
{
    static const char* const extents[] = {"fails", "fails from now on", "comes short",
                                          "comes short, then fails"};
    std::string call = "file";
    for (const NamedCall& named : callKinds)
        if (fault.kind == named.kind)
            call = named.name;
    return call + " call " + std::to_string(fault.nth) + ' ' + extents[static_cast<int>(fault.extent)] +
           " with \"" + std::strerror(fault.error) + '"';
}

/// A state of the three files during a life.
struct Stop
{
    int step;
    Files files;
};

class StorageFaults : public ModuleTest, public testing::WithParamInterface<Sweep>
{
protected:
    StorageFaults()
    {
        setCallLog(nullptr);
        tellLifeOnCrash();
    }
    ~StorageFaults() override
    {
        alarm(0);
        syncCommand = nullptr;
    }

    const Mode mode = GetParam().mode;

    /// Moves the last fault over all calls after the first fault; returns the number of times it occurred.
    int sweep(std::vector<StorageFault> faults)
    {
        const int before = faults.size() > 1 ? faults.front().nth : 0;
        int& nth = faults.back().nth;
        for (nth = before + 1; liveThrough(faults).size() == faults.size() && !HasFailure();)
            ++nth;
        return nth - 1 - before;
    }

    /// Runs a life with the faults, then one without on what it left; returns the faults that occurred.
    /// `stops` gets the files at each call after the first fault.
    Hits liveThrough(const std::vector<StorageFault>& faults, std::vector<Stop>* stops = nullptr)
    {
        std::string text = GetParam().name;
        for (const StorageFault& fault : faults)
            text += ", " + described(fault);
        std::snprintf(currentLife, sizeof currentLife, "%s", text.c_str());
        SCOPED_TRACE(currentLife);
        alarm(60);

        const bool hasDirectory = GetParam().start != StartFiles::NoDirectory;
        const Files start = filesAtStart(mode, GetParam().start);
        lay(start, hasDirectory);
        Hits hits;
        int step = Create;
        planStorageFaults(faults, [&](const StorageTurn& turn) {
            if (stops && !hits.empty())
                stops->push_back({step, filesNow()});
            if (!turn.fault)
                return;
            const auto area = areaOfPath(turn.path);
            hits.push_back({*turn.fault, step, area, turn.onStream, area ? areaWrites[*area] : 0,
                            static_cast<int>(turn.position)});
            hits.back().fault.kind = turn.kind;
        });
        const LifeRecord record = live(mode, [&](int newStep, const std::function<void()>& call) {
            step = newStep;
            call();
        });
        endStorageFaults();
        check(start, hasDirectory, hits, record);
        if (stops)
            checkStops(start, hasDirectory, hits, *stops);
        restart(filesNow());
        return hits;
    }

    /// Runs a life without faults on these files, once for each state.
    void restart(const Files& files)
    {
        if (!restarted.insert({files[0], files[1], files[2]}).second)
            return;
        lay(files, true);
        check(files, true, {}, live(mode, plainly));
    }

    int restarts() const { return static_cast<int>(restarted.size()); }

    static void plainly(int, const std::function<void()>& call) { call(); }

    /// Compares what a life left and restored with the model.
    void check(const Files& start, bool hasDirectory, const Hits& hits, const LifeRecord& record) const
    {
        EXPECT_EQ(record.syncs, eventsOf(mode));
        const Files files = filesNow();
        for (std::size_t a = 0; a < files.size(); ++a) {
            const AreaOutcome expected = outcome({mode, a, start[a], hasDirectory}, hits);
            EXPECT_EQ(files[a], expected.files.back().file) << testAreas[a].name;
            EXPECT_TRUE(record.restored[a] == expected.restored) << testAreas[a].name << " as restored";
        }
    }

    /// Checks that at each instant every file is in a state of that step, or in the last one before it, and
    /// that no file returns to an earlier state.
    void checkStops(const Files& start, bool hasDirectory, const Hits& hits,
                    const std::vector<Stop>& stops) const
    {
        for (std::size_t a = 0; a < start.size(); ++a) {
            const auto states = outcome({mode, a, start[a], hasDirectory}, hits).files;
            std::size_t at = 0;
            for (const Stop& stop : stops) {
                while (at < states.size() &&
                       (states[at].file != stop.files[a] || isOver(states, at, stop.step)))
                    ++at;
                EXPECT_TRUE(at < states.size() && states[at].step <= stop.step)
                    << testAreas[a].name << " when the process stops in step " << stop.step;
            }
        }
    }

    /// Whether a later state had been reached before the step began.
    static bool isOver(const std::vector<FileState>& states, std::size_t at, int step)
    {
        return at + 1 < states.size() && states[at + 1].step < step;
    }

    static std::optional<std::size_t> areaOfPath(const std::string& path)
    {
        for (std::size_t a = 0; a < testAreas.size(); ++a)
            if (path.find(testAreas[a].fileName) != std::string::npos)
                return a;
        return std::nullopt;
    }

private:
    std::set<std::array<std::optional<QByteArray>, 3>> restarted;
};

TEST_P(StorageFaults, LeaveExactlyTheFilesAndCellsOfTheAccount)
{
    int points = 0;
    for (const NamedCall& named : callKinds) {
        const bool transfers = named.kind == Kind::Read || named.kind == Kind::Write;
        for (const int error : named.kind == Kind::Look ? errorsOfLooks : errors) {
            points += sweep({{named.kind, 1, error, Extent::Once}});
            if (error != EINTR) // endless interruption does not happen
                points += sweep({{named.kind, 1, error, Extent::Lasting}});
            if (transfers)
                points += sweep({{named.kind, 1, error, Extent::ShortAndFail}});
            ASSERT_FALSE(HasFailure());
        }
        if (transfers)
            points += sweep({{named.kind, 1, 0, Extent::Short}});
    }
    EXPECT_TRUE(isReached(points, GetParam().faults));
}

TEST_P(StorageFaults, InPairsLeaveExactlyTheFilesAndCellsOfTheAccount)
{
    int pairs = 0;
    StorageFault first = {std::nullopt, 1, EIO, Extent::Once};
    for (; !liveThrough({first}).empty(); ++first.nth) {
        pairs += sweep({first, {std::nullopt, 1, ENOSPC, Extent::Once}});
        ASSERT_FALSE(HasFailure());
    }
    EXPECT_TRUE(isReached(pairs, GetParam().pairs));
}

TEST_P(StorageFaults, BeforeTheProcessStopsLeaveFilesOfTheAccountThatAStartRestores)
{
    StorageFault fault = {std::nullopt, 1, EIO, Extent::Once};
    for (std::vector<Stop> stops; !liveThrough({fault}, &stops).empty(); ++fault.nth, stops.clear()) {
        for (const Stop& stop : stops)
            restart(stop.files);
        ASSERT_FALSE(HasFailure());
    }
    EXPECT_TRUE(isReached(restarts(), GetParam().stops));
}

TEST_P(StorageFaults, OfSyncChangeNothing)
{
    for (const int status : {-1, 1 << 8, 127 << 8}) {
        syncCommand = [=] { return status; };
        liveThrough({});
    }
}

TEST_P(StorageFaults, OfASyncThatNeverReturnsFindEverythingWritten)
{
    const auto thread = std::this_thread::get_id();
    std::vector<Stop> stops;
    int step = Create;
    syncCommand = [&] {
        EXPECT_EQ(std::this_thread::get_id(), thread) << "the change would return before its sync";
        stops.push_back({step, filesNow()});
        return 0;
    };
    const Files start = filesAtStart(mode, GetParam().start);
    const bool hasDirectory = GetParam().start != StartFiles::NoDirectory;
    lay(start, hasDirectory);
    live(mode, [&](int newStep, const std::function<void()>& call) {
        step = newStep;
        call();
        EXPECT_EQ(stops.size(), static_cast<std::size_t>(qBound(0, step - FirstEvent + 1, eventsOf(mode))));
    });
    syncCommand = nullptr;
    for (const Stop& stop : stops) {
        for (std::size_t a = 0; a < start.size(); ++a) {
            std::optional<QByteArray> written;
            for (const FileState& state : outcome({mode, a, start[a], hasDirectory}, {}).files)
                if (state.step <= stop.step)
                    written = state.file;
            EXPECT_EQ(stop.files[a], written) << testAreas[a].name << " in step " << stop.step;
        }
        restart(stop.files);
    }
}

INSTANTIATE_TEST_SUITE_P(
    In, StorageFaults,
    testing::Values(
        Sweep{"AFirstWholeAreaLife", Mode::WholeAreas, StartFiles::NoDirectory, 733, 873, 91},
        Sweep{"AWholeAreaLifeWithKeptFiles", Mode::WholeAreas, StartFiles::Kept, 538, 452, 37},
        Sweep{"AWholeAreaLifeWithShorterFiles", Mode::WholeAreas, StartFiles::Shorter, 694, 875, 103},
        Sweep{"AFirstPerAddressLife", Mode::PerAddress, StartFiles::NoDirectory, 805, 1249, 122},
        Sweep{"APerAddressLifeWithKeptFiles", Mode::PerAddress, StartFiles::Kept, 1292, 2356, 71},
        Sweep{"APerAddressLifeWithShorterFiles", Mode::PerAddress, StartFiles::Shorter, 1310, 2515, 82},
        Sweep{"APerAddressLifeWithEmptyFiles", Mode::PerAddress, StartFiles::Empty, 610, 732, 89}),
    [](const auto& info) { return info.param.name; });

} // namespace
