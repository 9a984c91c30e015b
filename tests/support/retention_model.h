// An independent model of the per-address mode: what the files hold and what the host is asked for, said
// again without the module.
// SPDX-License-Identifier: MIT
#pragma once

#include "tests/support/literal_rules.h"
#include "tests/support/module_test.h"

#include <QtCore/QByteArray>
#include <QtCore/QString>
#include <QtCore/QStringList>

#include <array>
#include <optional>
#include <vector>

/// One area: its cells in the host, its file, and the module's blocks and stream.
struct ModelArea
{
    enum Stream
    {
        Closed,
        Open,
        Failed
    };

    QString name;
    QString fileName;
    bool bits;
    std::vector<ushort> cells = std::vector<ushort>(65536, 0);
    std::optional<QByteArray> file = std::nullopt;
    std::vector<RuleBlock> blocks = {};
    bool isOpen = false; ///< a stream that is open may have failed all the same
    Stream stream = Closed;
};

/// The cell's value; 0 outside the area.
ushort cellOf(const ModelArea& area, int address);

/// A panel's life as it must be. Entries of one area at one index must be equal: their order is not settled.
class RetentionModel
{
public:
    RetentionModel();

    std::array<ModelArea, 3> areas; ///< "LB", "LW", "RWI"

    /// A new module opens a project with these entries and finishes its start-up; the calls that the host
    /// sees.
    QStringList start(const std::vector<Entry>& entries);
    /// A reported change of a cell, whose value the caller has set; the calls that the host sees.
    QStringList change(const QString& areaName, int address);
    /// Sets a cell, if there is one, without reporting it.
    void setCell(ModelArea& area, int address, ushort value);
    /// "AREA ADDRESS" of every watched cell.
    QStringList watched() const;

private:
    void makeBlocks(ModelArea& area, const std::vector<Entry>& entries);
    void startArea(ModelArea& area, QStringList& calls);
    void restoreBits(ModelArea& area, QStringList& calls);
    void restoreWords(ModelArea& area, QStringList& calls);
    void changeBit(ModelArea& area, const RuleBlock& block, int address, QStringList& calls);
    void changeWords(ModelArea& area, const RuleBlock& block, QStringList& calls);
};
