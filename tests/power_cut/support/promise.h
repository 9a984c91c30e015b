// What the next start may restore, given all that happened before the power was cut.
// SPDX-License-Identifier: MIT
#ifndef TESTS_POWER_CUT_SUPPORT_PROMISE_H
#define TESTS_POWER_CUT_SUPPORT_PROMISE_H

#include "simulated_host/memory_areas.h"
#include "tests/power_cut/support/panel_project.h"

#include <QtCore/QByteArray>
#include <QtCore/QStringList>

#include <array>
#include <map>
#include <optional>
#include <tuple>
#include <vector>

/// One cell; `area` is a place in `areaNames`.
struct Cell
{
    int area;
    int address;
};
inline bool operator<(const Cell& a, const Cell& b)
{
    return std::tie(a.area, a.address) < std::tie(b.area, b.address);
}

struct Change
{
    Cell cell;
    ushort value;
};

/// True of "LB" 60100: reports of its changes do nothing, so that it may come back with any value it had.
bool promisesNothing(const Cell& cell);

/// The memory of the three areas.
using Images = std::array<QByteArray, 3>;
Images imagesOf(const MemoryAreas& areas);

/// Values are cells, or, in whole-area mode, sectors of 512 bytes.
struct Verdict
{
    qint64 checked = 0;
    QStringList lost; ///< one line for each value that must not have come back

    Verdict& operator+=(const Verdict& other);
};

/// The promise to one panel, which starts with all cells 0.
class Promise
{
public:
    explicit Promise(const PanelProject& project);

    /// The panel gave the cell that value.
    void give(const Change& change);
    /// The "sync" of the cell's last change has returned. Without effect for a cell that promises nothing.
    void keep(const Cell& cell);
    /// The panel has these areas and begins to save them.
    void beginSave(const Images& images);
    /// The "sync" of the save has returned.
    void completeSave();
    /// The panel started with these areas: they are on the disk.
    void restart(const MemoryAreas& restored);

    /// Compares what a start restored.
    Verdict check(const MemoryAreas& restored) const;

private:
    void checkCells(const MemoryAreas& restored, Verdict& verdict) const;
    void checkSectors(const MemoryAreas& restored, Verdict& verdict) const;

    std::map<Cell, std::vector<ushort>> possible; ///< of each retained cell; the kept value is the first
    std::optional<Images> saved;                  ///< in whole-area mode
    std::optional<Images> underWay;
};

/// No retention file gets shorter.
class LengthPromise
{
public:
    using Lengths = std::map<QString, qint64>; ///< of the files that exist

    /// From now on these lengths are the least.
    void keep(const Lengths& lengths) { least = lengths; }
    Verdict check(const Lengths& lengths) const;

private:
    Lengths least;
};

#endif
