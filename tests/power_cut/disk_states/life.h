// Records one life of a panel, and checks on the way that every write is synced before the module returns.
// SPDX-License-Identifier: MIT
#pragma once

#include "simulated_host/module_library.h"
#include "tests/power_cut/disk_states/disk.h"
#include "tests/power_cut/disk_states/load.h"

#include <functional>

/// In the order in which they happened.
struct Event
{
    enum class Kind
    {
        Op,
        Sync, ///< everything before it is on the disk
        Begin,
        End
    };
    Kind kind;
    DiskOp op = {};
    std::shared_ptr<const Write> write = nullptr; ///< of Begin and End

    QString text() const;
};

/// The disk and the promise after some events.
struct LifeState
{
    LifeState(const RetainedCells& cells, const DiskImage& found, Disk disk);

    void apply(const Event& event);
    /// The disk with everything written.
    Disk written() const;
    /// Files that are shorter than they must be.
    QStringList shortened(const Files& files) const;
    /// How far the files of a state are judged: past its synced end, a growing file may show anything.
    JudgedBytes judged(const DiskImage& image) const;

    Disk synced;
    std::vector<DiskOp> unsynced;
    Promise promise;

private:
    void settle(const std::function<bool(const DiskOp&)>& isDurable);

    const RetainedCells* cells;
    std::map<QString, qint64> lengths; ///< the least
};

/// The length of a life, and the part of it from which disk states are made.
struct LifePlan
{
    int steps = 0;
    int changes = 0;     ///< continues past `steps` until so many changes or saves are kept
    int windowBegin = 0; ///< in changes kept; 0: the whole life is the window
    int windowSteps = 0;
};

struct RecordedLife
{
    LifeState begin;           ///< where the window begins
    std::vector<Event> events; ///< of the window
    int eventsBefore = 0;
    int kept = 0;     ///< changes or saves
    QStringList lost; ///< found during the life itself
};

/// Starts a panel on `found` and makes it work until something is lost.
RecordedLife recordLife(const ModuleLibrary& library, object* project, const RetainedCells& cells,
                        const DiskImage& found, const LifePlan& plan, RandomSource& random);

/// Starts a panel with random memory. Returns a line for everything in its whole memory and in the files that
/// is not as the start must leave it.
QStringList startPanel(Panel& panel, const RetainedCells& cells, const Files& found, RandomSource& random);
