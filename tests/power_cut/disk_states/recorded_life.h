// One life of a panel with everything that it did to the disk.
// SPDX-License-Identifier: MIT
#ifndef TESTS_POWER_CUT_DISK_STATES_RECORDED_LIFE_H
#define TESTS_POWER_CUT_DISK_STATES_RECORDED_LIFE_H

#include "simulated_host/module_library.h"
#include "tests/power_cut/disk_states/disk.h"
#include "tests/power_cut/support/load.h"

#include <memory>

/// In the order in which they happened.
struct Event
{
    enum class Kind
    {
        Op,
        Sync, ///< all before it is on the disk
        Give,
        Keep,
        BeginSave,
        CompleteSave
    };
    Kind kind;
    DiskOp op = {};
    Change change = {};
    std::shared_ptr<const Images> images = nullptr;

    QString text() const;
};

struct RecordedLife
{
    Disk start; ///< what the panel found
    MemoryAreas restored;
    std::vector<Event> events;
    QString error; ///< why the record cannot be used; empty otherwise
};

/// Starts a panel on `found` and lets it work for a number of steps.
RecordedLife recordLife(const ModuleLibrary& library, const PanelProject& project, const DiskImage& found,
                        int steps, Random& random);

#endif
