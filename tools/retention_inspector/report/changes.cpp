// Compares the cells and findings of two reports.
// SPDX-License-Identifier: MIT
#include "tools/retention_inspector/report/changes.h"

#include <algorithm>
#include <map>
#include <utility>

namespace {

const char* const noValue = "no value";

using Cell = std::pair<QString, qint64>; // area and address

/// The values in the table "cells", whose columns begin with area, address and value.
std::map<Cell, QString> cellsOf(const Report& report)
{
    std::map<Cell, QString> cells;
    for (const Table& table : report.tables)
        if (qstrcmp(table.key, "cells") == 0)
            for (const auto& row : table.rows)
                cells[{row[0].text, row[1].text.toLongLong()}] =
                    row[2].text.isEmpty() ? QLatin1String(noValue) : row[2].text;
    return cells;
}

/// Adjacent cells that changed in the same way.
struct Change
{
    QString area;
    CellRange cells;
    QString old; ///< empty when the cell no longer has a value
    QString now;
};

QString lineOf(const Change& change)
{
    return QStringLiteral("%1 %2: %3%4")
        .arg(change.area, rangeText(change.cells),
             change.old.isEmpty() ? QString() : change.old + QLatin1String(" -> "), change.now);
}

QString lineOf(const Finding& finding)
{
    return finding.place + QLatin1String(": ") + finding.problem;
}

bool contains(const Report& report, const Finding& finding)
{
    return std::any_of(report.findings.begin(), report.findings.end(),
                       [line = lineOf(finding)](const Finding& other) { return lineOf(other) == line; });
}

} // namespace

QString changesText(const Report& before, const Report& after, const QTime& time)
{
    QString out;
    const QString clock = time.toString(QStringLiteral("HH:mm:ss  "));
    const std::map<Cell, QString> old = cellsOf(before);
    const std::map<Cell, QString> now = cellsOf(after);
    const auto valueIn = [](const std::map<Cell, QString>& cells, const Cell& cell) {
        const auto found = cells.find(cell);
        // A cell that a list omits is 0.
        return found == cells.end() ? QStringLiteral("0") : found->second;
    };
    std::map<Cell, QString> either = old;
    either.insert(now.begin(), now.end());
    std::vector<Change> changes;
    for (const auto& [cell, value] : either) {
        Change change = {cell.first, {cell.second, cell.second}, valueIn(old, cell), valueIn(now, cell)};
        if (change.old == change.now)
            continue;
        if (change.now == QLatin1String(noValue))
            change.old.clear();
        if (!changes.empty() && changes.back().area == change.area &&
            changes.back().cells.last + 1 == cell.second && changes.back().old == change.old &&
            changes.back().now == change.now)
            changes.back().cells.last = cell.second;
        else
            changes.push_back(change);
    }
    for (const Finding& finding : after.findings)
        if (!contains(before, finding))
            out += clock + lineOf(finding) + QLatin1Char('\n');
    for (const Change& change : changes)
        out += clock + lineOf(change) + QLatin1Char('\n');
    for (const Finding& finding : before.findings)
        if (!contains(after, finding))
            out += clock + QLatin1String("resolved: ") + lineOf(finding) + QLatin1Char('\n');
    return out;
}
