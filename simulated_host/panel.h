// Simulates a panel: areas, a project and one model, driven in the real runtime's order.
// SPDX-License-Identifier: MIT
#pragma once

#include "project_tree/project_tree.h"
#include "simulated_host/memory_areas.h"
#include "simulated_host/module_library.h"
#include "simulated_host/simulated_comm.h"
#include "simulated_host/watch_list.h"

#include "host_interface/extend_func_model_base.h"

#include <functional>
#include <vector>

/// Members may be used directly between the steps. Destroying the panel destroys the model, which is an
/// orderly stop; for a power cut, end the process.
class Panel
{
public:
    /// `project` may be null. The caller owns it and `library`, which must outlive the panel.
    Panel(const ModuleLibrary& library, object* project);

    /// Runs the whole start-up: open(), init(), watch().
    void start();
    void open();  ///< extModelOpen()
    void init();  ///< extModelInit()
    void watch(); ///< asks the model which cells to watch

    /// Writes values into consecutive cells, then reports each watched one to the model. False, with no
    /// effect, when a cell lies outside the area or the area does not exist. `progress`, if given, is called
    /// before each report.
    bool setCells(const QString& area, int address, const std::vector<ushort>& values,
                  const std::function<void(int done, int all)>& progress = {});
    /// Reports a change of the cell to the model, watched or not.
    void reportChange(const QString& area, int address);

    /// Tells the model that time has passed, which runs the cyclic call when it is due.
    void advance(long long elapsedMs) { model->ArriveTimeCyclicRun(elapsedMs); }

    MemoryAreas areas;    ///< the cells of the panel
    SimulatedComm comm;   ///< the model's access to them
    ModelPointer model;   ///< null when the library is not loaded
    WatchList watched;    ///< the cells whose changes setCells() reports
    bool started = false; ///< start() is complete

private:
    object* project;
};
