// Gives a simulated panel random work: changes that reach the module through the watch list, and saves.
// SPDX-License-Identifier: MIT
#pragma once

#include "simulated_host/panel.h"
#include "tests/power_cut/support/promise.h"
#include "tests/power_cut/support/random.h"

/// Told what happens, when it happens.
class LoadLog
{
public:
    virtual ~LoadLog() = default;
    virtual void begin(const Write& write) = 0; ///< the panel's memory is this; the module is told next
    virtual void end() = 0;                     ///< the panel goes on
    virtual void sync() = 0;                    ///< the module ran "sync"
};

/// Fills areas as a panel might have them before the module restores anything: no word is 0, and some words
/// are few changes away from it.
void fillAtRandom(MemoryAreas& areas, Random& random);

/// Changes cells or has areas saved. Now and then the last change is undone, values change places, cells of
/// several areas get the same value, or the end of an area is cleared. Otherwise every value of a word
/// differs from its last one in one byte or both, and from older ones nearly always; every pattern of a group
/// of bits differs from as many as the group can have. While it exists, the commands of the module run no
/// shell; all that it is given stays the caller's.
class Load
{
public:
    Load(Panel& panel, const RetainedCells& cells, Random& random, LoadLog& log);
    ~Load();
    Load(const Load&) = delete;
    Load& operator=(const Load&) = delete;

    /// One to a few changes next to each other, or changes anywhere that are saved or not.
    void step();

private:
    /// Consecutive cells and their values before the last change.
    struct Group
    {
        std::size_t area;
        int first;
        std::vector<ushort> before;
    };

    int runCommand(const char* command);
    void changeGroup(std::size_t area, int first, int count);
    void takeGroup(std::size_t area, int first, int count);
    void undo();
    void shift();
    void clearEnd();
    void changeNamesakes(int address);
    void changeRange();
    void reportChange(std::size_t area, int address);
    void changeAreas();

    Panel& panel;
    const RetainedCells& cells;
    Random& random;
    LoadLog& log;
    Group last = {};
};
