// A panel's lives, each ended by a cut of which every possible disk state is started.
// SPDX-License-Identifier: MIT
#ifndef TESTS_POWER_CUT_DISK_STATES_HISTORY_H
#define TESTS_POWER_CUT_DISK_STATES_HISTORY_H

#include "tests/power_cut/disk_states/recorded_life.h"
#include "tests/power_cut/support/command.h"

#include <unordered_set>

struct StateCounts
{
    Counts counts;
    qint64 cutPoints = 0;
    qint64 exhausted = 0; ///< cut points of which all states were started
};

/// One panel. `library`, `evidence` and `totals` stay the caller's.
class History
{
public:
    /// `number` chooses the kind of project; with `seed` it fixes everything.
    History(const ModuleLibrary& library, quint64 seed, quint64 number, Evidence& evidence,
            StateCounts& totals);

    /// Lives a few lives, until `most` states were started in all histories. The first begins without a
    /// project directory or on random files, each further one on a random state of the life before.
    void run(qint64 most);

private:
    void live();
    void beginFromNextStart();
    void applyPromise(const Event& event, const Disk& now);
    void becomeStricter(const Disk& now);
    void cutHere(const Disk& synced, const std::vector<DiskOp>& pending, std::size_t eventsDone);
    void startOn(const DiskImage& image, std::size_t eventsDone);

    const ModuleLibrary& library;
    const quint64 seed;
    const quint64 number;
    Random random;
    const PanelProject project;
    Promise promise;
    LengthPromise lengths;
    Evidence& evidence;
    StateCounts& totals;
    qint64 most = 0;

    int lives = 0;
    RecordedLife life;
    DiskImage nextStart;      ///< a state that was started
    MemoryAreas nextRestored; ///< what that start restored
    qint64 statesOfLife = 0;
    std::unordered_set<std::size_t> checked; ///< states that need no further check under the present promise
};

#endif
