// Kept values as rows of ten for people and one by one for scripts.
// SPDX-License-Identifier: MIT
#include "tools/retention_inspector/show_report.h"

#include "tools/retention_inspector/layout_report.h"

#include <algorithm>

namespace {

const qint64 cellsInRow = 10;

/// The cells of one row, or of several rows of zeros.
struct Row
{
    CellRange cells;
    bool zeros;
};

bool isZeros(const AreaValues& values, const CellRange& cells)
{
    for (qint64 cell = cells.first; cell <= cells.last; ++cell) {
        const auto at = static_cast<std::size_t>(cell);
        if (values.values[at] != 0 || !values.hasValue(at))
            return false;
    }
    return true;
}

std::vector<Row> rowsOf(const AreaValues& values, const CellRange& range)
{
    std::vector<Row> rows;
    for (qint64 first = range.first; first <= range.last; first += cellsInRow) {
        const CellRange cells = {first, std::min(first + cellsInRow - 1, range.last)};
        const bool zeros = isZeros(values, cells);
        if (zeros && !rows.empty() && rows.back().zeros)
            rows.back().cells.last = cells.last;
        else
            rows.push_back({cells, zeros});
    }
    return rows;
}

QString rowText(const AreaValues& values, const Row& row)
{
    if (row.zeros && row.cells.last - row.cells.first >= cellsInRow)
        return QStringLiteral("all 0");
    QString text;
    for (qint64 cell = row.cells.first; cell <= row.cells.last; ++cell) {
        const auto at = static_cast<std::size_t>(cell);
        const QString value = values.hasValue(at) ? QString::number(values.values[at]) : QStringLiteral("-");
        text += value.rightJustified(values.area->bits ? 1 : 5) + QLatin1Char(' ');
    }
    text.chop(1);
    return text;
}

CellRanges wantedCells(const AreaLayout& area, const Selection& selection)
{
    if (selection.area && selection.area != area.area)
        return {};
    return selection.addresses ? area.kept.within(*selection.addresses) : area.kept;
}

void addArea(const AreaValues& values, const CellRanges& wanted, Table& rows, Table& cells)
{
    for (const CellRange& range : wanted) {
        for (const Row& row : rowsOf(values, range))
            rows.rows.push_back({textValue(values.area->name), textValue(rangeText(row.cells)),
                                 textValue(rowText(values, row))});
        for (qint64 cell = range.first; cell <= range.last; ++cell) {
            const auto at = static_cast<std::size_t>(cell);
            cells.rows.push_back(
                {textValue(values.area->name), numberValue(cell),
                 values.hasValue(at) ? numberValue(qint64(values.values[at])) : absentValue(),
                 textValue(stateKey(values.states[at]))});
        }
    }
}

void addNotes(const AreaValues& values, const CellRanges& wanted, const RetentionFile& file, Report& report)
{
    qint64 without = 0;
    qint64 startValues = 0;
    for (const CellRange& range : wanted)
        for (qint64 cell = range.first; cell <= range.last; ++cell) {
            const CellState state = values.states[static_cast<std::size_t>(cell)];
            without += state == CellState::NoValue;
            startValues += state == CellState::StartValue;
        }
    if (without > 0)
        report.notes.append(QStringLiteral("%1: %2; %3 cells have no value in it, shown as \"-\".")
                                .arg(file.path, QLatin1String(file.state == RetentionFile::State::Missing
                                                                  ? "there is no such file"
                                                                  : "the file is too short for this project"))
                                .arg(without));
    if (startValues > 0)
        report.notes.append(QStringLiteral("%1: %2 bits lie in bytes of zeros, which leave the panel's own "
                                           "start value of these cells alone.")
                                .arg(file.path)
                                .arg(startValues));
    if (values.oddBytes > 0)
        report.notes.append(QStringLiteral("%1: %2 bytes are neither 0 nor 1, so this panel does not lay out "
                                           "its bits one a byte as assumed here.")
                                .arg(file.path)
                                .arg(values.oddBytes));
}

} // namespace

QString stateKey(CellState state)
{
    switch (state) {
    case CellState::Kept:
        return QStringLiteral("kept");
    case CellState::StartValue:
        return QStringLiteral("start-value");
    case CellState::NoValue:
        return QStringLiteral("no-value");
    case CellState::NotRetained:
        break;
    }
    return QStringLiteral("not-retained");
}

Report showReport(const Layout& layout, const RetentionFiles& files, const Selection& selection)
{
    Report report;
    report.command = QStringLiteral("show");
    report.facts.push_back(modeFact(layout.settings.mode));
    Table rows{QStringLiteral("rows"),
               {},
               QStringLiteral("Kept values"),
               {{"area", "Area"}, {"addresses", "Addresses"}, {"values", "Values"}},
               {},
               Table::Readers::People};
    Table cells{QStringLiteral("cells"),
                QStringLiteral("cell"),
                {},
                {{"area", ""}, {"address", ""}, {"value", ""}, {"state", ""}},
                {},
                Table::Readers::Scripts};
    const KeptValues values = keptValues(layout, files);
    for (std::size_t i = 0; i < files.size(); ++i) {
        const CellRanges wanted = wantedCells(layout.areas[i], selection);
        addArea(values[i], wanted, rows, cells);
        addNotes(values[i], wanted, files[i], report);
    }
    if (cells.rows.empty())
        report.notes.append(QStringLiteral("The project retains none of the cells asked for."));
    report.tables.push_back(std::move(rows));
    report.tables.push_back(std::move(cells));
    return report;
}
