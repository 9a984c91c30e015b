// Records one life of a panel, and checks on the way that every write is synced before the module returns.
// SPDX-License-Identifier: MIT
#pragma once

#include "simulated_host/module_library.h"
#include "tests/power_cut/disk_states/disk.h"
#include "tests/power_cut/support/load.h"

#include <functional>

/// In the order in which they happened.
struct Event
{
    enum class Kind
    {
        Op,
        Sync, ///< all before it is on the disk
        Begin,
        End
    };
    Kind kind;
    DiskOp op = {};
    std::shared_ptr<const Write> write = nullptr; ///< of Begin and End

    QString text() const;
};

/// What is on the disk, and what is promised, after some events.
struct LifeState
{
    LifeState(const RetainedCells& cells, const DiskImage& found, Disk disk);

    void apply(const Event& event);
    /// The disk with all that was written.
    Disk written() const;
    /// Files that are shorter than they must be.
    QStringList shortened(const Files& files) const;
    /// How far the files of a state are judged: what a growing file shows past its synced end may be
    /// anything.
    JudgedBytes judged(const DiskImage& image) const;

    Disk synced;
    std::vector<DiskOp> unsynced;
    Promise promise;

private:
    void settle(const std::function<bool(const DiskOp&)>& isDurable);

    const RetainedCells* cells;
    std::map<QString, qint64> lengths; ///< the least
};

/// How long a panel lives, and which part of it the disk states are made from.
struct LifePlan
{
    int steps = 0;
    int changes = 0;     ///< goes on, past `steps`, until so many changes or saves are kept
    int windowBegin = 0; ///< in changes kept; 0: the whole life is the window
    int windowSteps = 0;
};

struct RecordedLife
{
    LifeState begin;           ///< where the window begins
    std::vector<Event> events; ///< of the window
    int eventsBefore = 0;
    int kept = 0;     ///< changes or saves
    QStringList lost; ///< what the life itself showed
};

/// Starts a panel on `found` and lets it work, until something is lost.
RecordedLife recordLife(const ModuleLibrary& library, object* project, const RetainedCells& cells,
                        const DiskImage& found, const LifePlan& plan, RandomSource& random);

/// Starts a panel whose memory is random; a line for everything in all of the memory and in the files that is
/// not what the start must make of it.
QStringList startPanel(Panel& panel, const RetainedCells& cells, const Files& found, RandomSource& random);
