// Judges what the retention files may say, given everything that happened before the power cut.
// SPDX-License-Identifier: MIT
#pragma once

#include "tests/power_cut/disk_states/retained_cells.h"

#include <QtCore/QStringList>

#include <memory>
#include <optional>

/// What the module is to keep: by the report of one cell's change, or by a save.
struct Write
{
    QString text;            ///< "LW 105" or "save"
    std::size_t area = 0;    ///< of `values`
    int place = 0;           ///< of `values`: a whole block of words, or one bit
    std::vector<int> values; ///< the panel's values
    std::shared_ptr<const std::array<QByteArray, 3>> images; ///< of a save; null otherwise
};

/// Values are cells, or, with whole areas, sectors of 512 bytes.
struct Verdict
{
    qint64 checked = 0;
    QStringList lost; ///< one line for each wrong value
};

/// From this byte of a file on, values are not judged.
using JudgedBytes = std::map<QString, qint64>;

/// The promise to one panel. One write ends before the next begins.
class Promise
{
public:
    /// The caller owns `cells`.
    explicit Promise(const RetainedCells& cells) : cells(&cells) {}

    /// The panel starts with these files, which are on the disk.
    void restart(const Files& files);
    /// The panel's memory has these values, and the module is about to be told.
    void begin(const Write& write) { underWay = write; }
    /// The module has returned.
    void end();

    /// One line for each value of the write that has just ended and that the files lack.
    QStringList missingOf(const Write& write, const Files& files) const;
    /// Judges everything in the files, up to those bytes.
    Verdict check(const Files& files, const JudgedBytes& judged = {}) const;

    /// Values that were changed and kept since the restart.
    qint64 keptInLife() const { return changed; }

private:
    struct Value
    {
        int kept = nothing;
        int before = nothing; ///< the value that was kept before this one
        bool changed = false; ///< since the restart
    };

    void checkCells(std::size_t area, const Files& files, int judgedBytes, Verdict& verdict) const;
    void checkSectors(std::size_t area, const Files& files, Verdict& verdict) const;

    const RetainedCells* cells;
    std::array<std::vector<Value>, 3> values; ///< by place
    std::array<QByteArray, 3> saved;          ///< with whole areas
    std::array<QByteArray, 3> repaired;       ///< old bytes of a file that the start had to make longer
    std::array<std::vector<bool>, 3> changedSectors;
    std::optional<Write> underWay;
    qint64 changed = 0;
};
