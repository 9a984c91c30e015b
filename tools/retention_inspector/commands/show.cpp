// Shows kept values by address: rows of ten for people, one by one for scripts.
// SPDX-License-Identifier: MIT
#include "tools/retention_core/kept_values.h"
#include "tools/retention_core/refusal.h"
#include "tools/retention_inspector/command.h"

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

/// Of a cell that the project keeps.
const char* stateKey(CellState state)
{
    return state == CellState::Kept ? "kept" : state == CellState::StartValue ? "start-value" : "no-value";
}

void addArea(const AreaValues& values, const CellRanges& wanted, Table& rows, Table& cells)
{
    for (const CellRange& range : wanted) {
        for (const Row& row : rowsOf(values, range))
            rows.rows.push_back({values.area->name, rangeText(row.cells), rowText(values, row)});
        for (qint64 cell = range.first; cell <= range.last; ++cell) {
            const auto at = static_cast<std::size_t>(cell);
            cells.rows.push_back({values.area->name, cell,
                                  values.hasValue(at) ? Value(values.values[at]) : Value(),
                                  stateKey(values.states[at])});
        }
    }
}

void addNotes(const AreaValues& values, const CellRanges& wanted, const RetentionFile& file, Report& report)
{
    const auto add = [&](const QString& note) {
        report.notes.append(QStringLiteral("%1: %2").arg(file.path, note));
    };
    const auto count = [&](CellState state) {
        return wanted.count() - wanted.minus(values.cellsIn(state)).count();
    };
    const bool missing = file.state == RetentionFile::State::Missing;
    if (const qint64 without = count(CellState::NoValue))
        add(QStringLiteral("%1; %2 no value in it, shown as \"-\".")
                .arg(QLatin1String(missing ? "there is no such file"
                                           : "the file is too short for this project"),
                     countText(without, "cell") + QLatin1String(without == 1 ? " has" : " have")));
    if (const qint64 bits = count(CellState::StartValue))
        add(QStringLiteral("%1 in bytes of zeros, which leave the panel's own start value of these cells "
                           "alone.")
                .arg(countText(bits, "bit") + QLatin1String(bits == 1 ? " lies" : " lie")));
    if (const qint64 bytes = values.oddBytes)
        add(QStringLiteral("%1 neither 0 nor 1, so this panel does not lay out its bits one a byte as "
                           "assumed here.")
                .arg(countText(bytes, "byte") + QLatin1String(bytes == 1 ? " is" : " are")));
}

const AreaFacts* wantedArea(const Inputs& inputs)
{
    const QString name = inputs.option("area");
    const AreaFacts* const area = areaNamed(name);
    if (inputs.has("area") && !area)
        throw Refusal(QStringLiteral("--area \"%1\": expected LB, LW or RWI").arg(name));
    return area;
}

CellRange wantedAddresses(const Inputs& inputs)
{
    if (!inputs.has("address"))
        return {0, 65535};
    const QString text = inputs.option("address");
    const QStringList ends = text.split(QLatin1Char('-'));
    bool firstOk = false;
    bool lastOk = false;
    const CellRange range = {ends.first().toUShort(&firstOk), ends.last().toUShort(&lastOk)};
    if (ends.size() > 2 || !firstOk || !lastOk || range.first > range.last)
        throw Refusal(
            QStringLiteral("--address \"%1\": expected an address from 0 to 65535, or two such as 100-109")
                .arg(text));
    return range;
}

Report run(const Inputs& inputs)
{
    const AreaFacts* const area = wantedArea(inputs);
    const CellRange addresses = wantedAddresses(inputs);
    Report report;
    report.facts.push_back({"mode", "Mode", inputs.layout().settings.mode});
    Table rows{
        nullptr, nullptr, "Kept values", {{nullptr, "Area"}, {nullptr, "Addresses"}, {nullptr, "Values"}}};
    Table cells{"cells", "cell", nullptr, {{"area"}, {"address"}, {"value"}, {"state"}}};
    for (const RetentionFile& file : inputs.files.front()) {
        const AreaValues values = areaValues(inputs.layout(), file);
        const CellRanges wanted =
            !area || area == file.area ? inputs.layout().of(*file.area).kept.within(addresses) : CellRanges();
        addArea(values, wanted, rows, cells);
        addNotes(values, wanted, file, report);
    }
    if (cells.rows.empty())
        report.notes.append(QStringLiteral("The project retains none of the cells asked for."));
    report.tables = {std::move(rows), std::move(cells)};
    return report;
}

} // namespace

extern const Command showCommand = {
    "show",
    {{"PROJECT.xml", Argument::Kind::Project}, {"DIR", Argument::Kind::Files}},
    "kept values by address",
    "Shows the values in the files of DIR by address.",
    "project.xml /usr/tavrin/project\nproject.xml copy --area LW --address 100-109",
    {{"area", "AREA", "Only this area: LB, LW or RWI"},
     {"address", "A[-B]", "Only these addresses, such as 100 or 100-109"}},
    run};
