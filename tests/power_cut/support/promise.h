// What the retention files may say, given all that happened before the power was cut.
// SPDX-License-Identifier: MIT
#pragma once

#include "tests/power_cut/support/retained_cells.h"

#include <QtCore/QStringList>

#include <memory>
#include <optional>

/// What the module is asked to keep: by the report of one cell's change, or by a save.
struct Write
{
    QString text;            ///< "LW 105" or "save"
    std::size_t area = 0;    ///< of `values`
    int place = 0;           ///< of `values`: a whole block of words, or one bit
    std::vector<int> values; ///< what the panel has
    std::shared_ptr<const std::array<QByteArray, 3>> images; ///< of a save; null otherwise
};

/// Values are cells, or, with whole areas, sectors of 512 bytes.
struct Verdict
{
    qint64 checked = 0;
    QStringList lost; ///< one line for each value that must not be there
};

/// Values from this byte of a file on are not judged.
using JudgedBytes = std::map<QString, qint64>;

/// The promise to one panel. Writes begin and end one after the other.
class Promise
{
public:
    /// `cells` stay the caller's.
    explicit Promise(const RetainedCells& cells) : cells(&cells) {}

    /// The panel starts with these files: they are on the disk.
    void restart(const Files& files);
    /// The panel's memory is this, and the module is about to be told.
    void begin(const Write& write) { underWay = write; }
    /// The module has returned.
    void end();

    /// Whether a file says what the write that has just ended asked for; a line for each value that it does
    /// not.
    QStringList missingOf(const Write& write, const Files& files) const;
    /// Judges all that the files say, up to those bytes.
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
