// A scripted life of a panel: start-up with given files, changes or saves, an orderly stop.
// SPDX-License-Identifier: MIT
#pragma once

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

/// One of the three areas as lives use it.
struct LifeArea
{
    const char* name;
    const char* fileName;
    bool bits;
    int imageBytes;
};
extern const std::array<LifeArea, 3> lifeAreas; ///< "LB", "LW", "RWI"

/// The retained cells `first` to `first + count - 1` of an area and their place in its file: in bits for
/// "LB", in bytes for the others. The project's entries are these blocks.
struct LifeBlock
{
    int area; ///< index into lifeAreas
    int first;
    int count;
    int place;
};
extern const std::vector<LifeBlock> lifeBlocks;

/// A change of a cell, as the panel reports it.
struct Change
{
    int area;
    int address;
    ushort value;
};
extern const std::vector<Change> lifeChanges;

/// Cyclic calls of a whole-area life.
const int lifeCycles = 3;

using Images = std::array<QByteArray, 3>; ///< the areas' memories

/// What an area's memory holds when the panel starts, and before the n-th cyclic call (from 1).
QByteArray imageAtStart(const LifeArea& area);
QByteArray imageForCycle(const LifeArea& area, int cycle);

/// The file states that lives start from. The length is that of the mode's own files.
enum class StartFiles
{
    NoDirectory,
    Kept,    ///< full files with values
    Shorter, ///< cut off in the middle
    Empty
};
Files filesAtStart(Mode mode, StartFiles kind);

/// Puts the fixed directory into that state. Without a directory there are no files.
void lay(const Files& files, bool withDirectory);

/// Steps of a life. From FirstEvent on each change or cyclic call is a step, and the stop is the last one.
enum Step
{
    Create,
    Open,
    Init,
    Watch,
    FirstEvent
};
int eventsOf(Mode mode);

/// Makes one call of the module; nothing but the module runs inside `call`, and what it calls of the host.
using StepRunner = std::function<void(int step, const std::function<void()>& call)>;

/// How often the life in progress has written to each area.
extern std::array<int, 3> areaWrites;
/// What "sync" does, and its exit status; an empty one does nothing and answers 0.
extern std::function<int()> syncCommand;

/// What became of a life.
struct LifeRecord
{
    Images restored; ///< the memories after start-up
    int syncs = 0;   ///< during the whole life
    std::vector<RegisterValueChangeSize> watched;
};

/// Whether a sweep reached as many faults as it is known to reach, so that none goes missing unseen. The
/// number is exact for Qt 5; another QtCore makes other calls and allocations of its own.
testing::AssertionResult isReached(int faults, int known);

/// Lives through it. When the module is not even created, nothing else happens.
LifeRecord live(Mode mode, const StepRunner& run);

/// Room for the description of the life in progress.
extern char currentLife[200];

/// From now on a crash prints currentLife on standard error before it ends the program, and so does an
/// alarm().
void tellLifeOnCrash();
