// Lists the kept values that differ between two directories of files of one project.
// SPDX-License-Identifier: MIT
#include "tools/retention_inspector/command.h"
#include "tools/retention_inspector/report/named_values.h"

namespace {

/// The value of the cell or, where both directories have one, that of its tag.
ValueRow rowOf(const Tags* tags, const std::array<AreaValues, 2>& sides, qint64 cell)
{
    const AreaFacts& area = *sides[0].area;
    const Tag* const tag = tags ? tags->of(area, cell) : nullptr;
    if (tag) {
        ValueRow row = {&area, tag->first, tag->type, tag, tag->name};
        if (!textOf(sides[0], row).isNull() && !textOf(sides[1], row).isNull())
            return row;
    }
    return {&area, cell, cellType(area.bits), tag, tag ? tag->name : QString()};
}

/// For people: adjacent cells that differ in the same way, in one row.
Table joined(const Table& differences)
{
    Table table{nullptr, nullptr, "Different cells (\"-\" means no value)", differences.columns};
    for (Column& column : table.columns)
        column.key = nullptr;
    CellRange cells = {};
    const auto isAlike = [](const std::vector<Value>& a, const std::vector<Value>& b) {
        for (std::size_t i = 0; i < a.size(); ++i)
            if (i != 1 && a[i].text != b[i].text)
                return false;
        return true;
    };
    for (const auto& row : differences.rows) {
        const qint64 cell = row[1].data.toInt();
        if (!table.rows.empty() && cells.last + 1 == cell && isAlike(table.rows.back(), row)) {
            cells.last = cell;
        } else {
            cells = {cell, cell};
            table.rows.push_back(row);
        }
        if (cells.last > cells.first)
            table.rows.back()[1] = rangeText(cells);
    }
    return table;
}

Report run(const Inputs& inputs)
{
    const std::optional<Tags> tags = tagsOf(inputs);
    Table table{"differences",
                "difference",
                nullptr,
                {{"area", "Area"}, {"address", "Address"}, {"first", "First"}, {"second", "Second"}}};
    if (tags) {
        table.columns.push_back({"name", "Name"});
        table.columns.push_back({"unit", "Unit"});
    }
    Report report;
    report.findingsFirst = true;
    std::array<AreaReadings, 2> readings;
    for (std::size_t i = 0; i < readings.size(); ++i) {
        readings[i] = readAreas(inputs.layout(), inputs.files[i]);
        for (Finding& finding : findingsOf(readings[i]))
            report.findings.push_back(std::move(finding));
    }
    qint64 compared = 0;
    for (std::size_t i = 0; i < areaCount; ++i) {
        const std::array<AreaValues, 2> sides = {readings[0][i].values, readings[1][i].values};
        const CellRanges& kept = inputs.layout().areas[i].kept;
        compared += kept.count();
        for (const CellRange& range : kept) {
            for (qint64 at = range.first; at <= range.last; ++at) {
                const auto cell = static_cast<std::size_t>(at);
                if (sides[0].values[cell] == sides[1].values[cell] &&
                    sides[0].hasValue(cell) == sides[1].hasValue(cell))
                    continue;
                const ValueRow row = rowOf(tags ? &*tags : nullptr, sides, at);
                table.rows.push_back({row.area->name, row.first, valueOf(row.type, textOf(sides[0], row)),
                                      valueOf(row.type, textOf(sides[1], row))});
                if (tags) {
                    table.rows.back().push_back(row.name);
                    table.rows.back().push_back(row.tag ? row.tag->unit : QString());
                }
                at = row.cells().last; // a value differs once
            }
        }
    }
    report.differs = !table.rows.empty();
    if (tags)
        addTagRemarks(inputs.layout(), *tags, report);
    report.facts = {{"compared", "Compared cells", compared},
                    {"different", "Different", qint64(table.rows.size())}};
    report.tables = {joined(table), std::move(table)};
    return report;
}

} // namespace

extern const Command diffCommand = {"diff",
                                    {{"PROJECT.xml", Argument::Kind::Project},
                                     {"DIR1", Argument::Kind::Files},
                                     {"DIR2", Argument::Kind::Files}},
                                    "retained values that differ between two directories",
                                    "Compares the values in the files of two directories by address, after "
                                    "the findings of \"check\". The exit\n"
                                    "status is 1 if any value differs, too.",
                                    "project.xml monday friday\nproject.xml monday friday --format csv",
                                    {{"tags", "TAGS.csv", "Values by name, type and unit"}},
                                    run};
