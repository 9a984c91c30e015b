// The random work of a panel until its power is cut.
// SPDX-License-Identifier: MIT
#ifndef TESTS_POWER_CUT_SUPPORT_LOAD_H
#define TESTS_POWER_CUT_SUPPORT_LOAD_H

#include "simulated_host/panel.h"
#include "tests/power_cut/support/promise.h"
#include "tests/power_cut/support/random.h"

/// Where the panel writes down what it does, each thing before or after it happens, as said.
class LoadLog
{
public:
    virtual ~LoadLog() = default;
    virtual void give(const Change& change) = 0;          ///< before the cell gets the value
    virtual void keep(const Change& change) = 0;          ///< after the change's "sync" or report returned
    virtual void beginSave(const MemoryAreas& areas) = 0; ///< before the cyclic call
    virtual void completeSave() = 0; ///< after the save's "sync" or the cyclic call returned
    virtual void sync() = 0;         ///< the module ran "sync"; nothing is kept yet
};

/// Changes cells and reports them, or changes areas and has them saved. While it exists, the commands of the
/// module run no shell; `panel`, `project`, `random` and `log` stay the caller's.
class Load
{
public:
    Load(Panel& panel, const PanelProject& project, Random& random, LoadLog& log);
    ~Load();
    Load(const Load&) = delete;
    Load& operator=(const Load&) = delete;

    /// One to a few changes next to each other, or one save.
    void step();

private:
    int runCommand(const char* command);
    void finishCurrent();
    void changeRange();
    void changeAreas();

    Panel& panel;
    const PanelProject& project;
    Random& random;
    LoadLog& log;
    const Change* reporting = nullptr;
    bool saving = false;
};

#endif
