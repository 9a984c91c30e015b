// Runs a scripted life of a panel: start-up with given files, changes or saves, an orderly stop.
// SPDX-License-Identifier: MIT
#pragma once

#include "tests/support/areas.h"
#include "tests/support/module_test.h"
#include "tests/support/retention_files.h"

#include <QtCore/QByteArray>

#include <array>
#include <functional>
#include <optional>
#include <vector>

enum class Mode
{
    WholeAreas,
    PerAddress
};

/// The retained cells `first` to `first + count - 1` of an area, and their place in its file: in bits for
/// "LB", in bytes for the others. Each is one entry of the project.
struct LifeBlock
{
    std::size_t area; ///< index into testAreas
    int first;
    int count;
    int place;
};
extern const std::vector<LifeBlock> lifeBlocks;

/// A change of a cell, as the panel reports it.
struct Change
{
    std::size_t area;
    int address;
    ushort value;
};
extern const std::vector<Change> lifeChanges;

/// Cyclic calls of a whole-area life.
const int lifeCycles = 3;

using Images = std::array<QByteArray, 3>; ///< the areas' memories

/// The contents of an area's memory when the panel starts, and before the n-th cyclic call (from 1).
QByteArray imageAtStart(const TestArea& area);
QByteArray imageForCycle(const TestArea& area, int cycle);

/// The file states that lives start from. Lengths are those of the mode's own files.
enum class StartFiles
{
    NoDirectory,
    Kept,    ///< full files with values
    Shorter, ///< cut off in the middle
    Empty
};
Files filesAtStart(Mode mode, StartFiles kind);

/// Puts the fixed directory into that state. Without a directory, `files` is ignored.
void lay(const Files& files, bool withDirectory);

/// Where the lives of a sweep start, and the number of faults that it reaches.
struct Sweep
{
    const char* name;
    Mode mode;
    StartFiles start;
    int faults;    ///< one in a life
    int pairs = 0; ///< two in a life
    int stops = 0; ///< states of the files left by a stop after a fault
};

inline void PrintTo(const Sweep& sweep, std::ostream* out)
{
    *out << sweep.name;
}

/// Steps of a life. From FirstEvent on, each change or cyclic call is a step; the stop is the last one.
enum Step
{
    Create,
    Open,
    Init,
    Watch,
    FirstEvent
};
int eventsOf(Mode mode);

/// Makes one call of the module. Inside `call` only the module runs, and the host functions that it calls.
using StepRunner = std::function<void(int step, const std::function<void()>& call)>;

/// The number of writes to each area in the current life.
extern std::array<int, 3> areaWrites;
/// Carries out "sync" and returns its exit status; an empty function does nothing and returns 0.
extern std::function<int()> syncCommand;

/// The result of a life.
struct LifeRecord
{
    Images restored; ///< the memories after start-up
    int syncs = 0;   ///< during the whole life
    std::vector<RegisterValueChangeSize> watched;
};

/// Checks that a sweep (a life repeated with each fault in turn) reached the known number of faults, so that
/// none goes missing unnoticed. The number is exact for Qt 5; other QtCores make other calls and allocations.
testing::AssertionResult isReached(int faults, int known);

/// Runs the life. If the module is not created, nothing else happens.
LifeRecord live(Mode mode, const StepRunner& run);

/// Room for the description of the life in progress.
extern char currentLife[200];

/// From now on a crash or an alarm() prints currentLife on standard error before it ends the program.
void tellLifeOnCrash();
