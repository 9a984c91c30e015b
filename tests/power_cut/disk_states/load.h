// Gives a simulated panel random work: changes that reach the module through the watch list, and saves.
// SPDX-License-Identifier: MIT
#pragma once

#include "simulated_host/panel.h"
#include "tests/power_cut/disk_states/promise.h"
#include "tests/support/random_source.h"

/// Is told of events as they happen.
class LoadLog
{
public:
    virtual ~LoadLog() = default;
    virtual void begin(const Write& write) = 0; ///< the panel's memory has it; the module is told next
    virtual void end() = 0;                     ///< the module has returned
    virtual void sync() = 0;                    ///< the module ran "sync"
};

/// Fills areas as they might be before the module restores anything: no word is 0, and some are only a few
/// changes away from it.
void fillAtRandom(MemoryAreas& areas, RandomSource& random);

/// Changes cells or saves areas. Sometimes it undoes the last change, swaps values, gives cells of several
/// areas the same value, or clears the end of an area. Otherwise every value of a word differs from its last
/// one in one byte or both, and from older ones nearly always; every pattern of a group of bits differs from
/// as many earlier ones as the group allows. While it exists, the module's commands run no shell. The caller
/// owns all arguments.
class Load
{
public:
    Load(Panel& panel, const RetainedCells& cells, RandomSource& random, LoadLog& log);
    ~Load();
    Load(const Load&) = delete;
    Load& operator=(const Load&) = delete;

    /// Makes one or a few adjacent changes, or changes anywhere that may be saved.
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
    RandomSource& random;
    LoadLog& log;
    Group last = {};
};
