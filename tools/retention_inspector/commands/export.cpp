// Writes the kept values as one plain table.
// SPDX-License-Identifier: MIT
#include "tools/retention_inspector/command.h"
#include "tools/retention_inspector/report/named_values.h"
#include "tools/retention_inspector/report/output_file.h"

namespace {

/// Collects the table and its findings.
struct Exporting
{
    bool nonzero;
    QByteArray table = "area,address,name,type,value,state\n";
    qint64 values = 0;
    qint64 leftOut = 0;
    bool doubtful = false;
};

bool isZero(const AreaReading& reading, const ValueRow& row)
{
    for (qint64 cell = row.first; cell <= row.cells().last; ++cell)
        if (reading.values.values[static_cast<std::size_t>(cell)] != 0)
            return false;
    return !textOf(reading.values, row).isNull();
}

void addRow(const AreaReading& reading, const ValueRow& row, Exporting& out)
{
    if (out.nonzero && isZero(reading, row)) {
        ++out.leftOut;
        return;
    }
    const char* const state = stateOf(reading, row.cells());
    out.doubtful = out.doubtful || qstrcmp(state, "doubtful") == 0;
    QString value = textOf(reading.values, row);
    if (row.type.kind == ValueType::Kind::String)
        value = withoutFormula(value);
    const QStringList fields = {QString::fromLatin1(row.area->name),
                                QString::number(row.first),
                                csvField(withoutFormula(row.name)),
                                row.type.text(),
                                csvField(value),
                                QString::fromLatin1(state)};
    out.table += fields.join(QLatin1Char(',')).toUtf8() + '\n';
    ++out.values;
}

Report run(const Inputs& inputs)
{
    const Layout& layout = inputs.layout();
    const std::optional<Tags> tags = tagsOf(inputs);
    Report report;
    report.facts.push_back({"mode", "Mode", layout.settings.mode});
    Exporting out{inputs.has("nonzero")};
    std::vector<Finding> notOfType;
    const AreaReadings readings = readAreas(layout, inputs.files.front());
    report.findings = findingsOf(readings);
    for (const AreaReading& reading : readings)
        forEachValue(layout, reading, tags ? &*tags : nullptr, notOfType,
                     [&](const ValueRow& row) { addRow(reading, row, out); });
    if (tags)
        addTagRemarks(layout, *tags, report);
    report.findings.insert(report.findings.end(), notOfType.begin(), notOfType.end());
    deliver(out.table, inputs.option("output"), inputs.has("force"), report);
    report.facts.push_back({"output", "Written to", placeText(inputs.option("output"))});
    report.facts.push_back({"values", "Values", out.values});
    if (out.leftOut > 0)
        report.facts.push_back({"zeros", "Zeros left out", out.leftOut});
    report.addNote(projectNote(layout));
    if (out.doubtful)
        report.notes.append(QStringLiteral("Values in files that do not fit the project have the state "
                                           "\"doubtful\"; \"import\" refuses them."));
    return report;
}

} // namespace

extern const Command exportCommand = {
    "export",
    {{"PROJECT.xml", Argument::Kind::Project}, {"DIR", Argument::Kind::Files}},
    "the retained values as a CSV table, for a spreadsheet or for git",
    "Writes every retained value in the files of DIR as one line of a CSV table: area, address, name, type,\n"
    "value, state. \"import\" creates files from such a table. With --tags, a value is one line, however "
    "many\n"
    "cells it has.",
    "project.xml /usr/tavrin/project --output values.csv\n"
    "project.xml copy --tags tags.csv --nonzero --output -",
    {{"output", "FILE.csv", "File to create; - for standard output", nullptr, Option::Kind::Required},
     {"tags", "TAGS.csv", "Names, types and units of values"},
     {"nonzero", nullptr, "Leave out zeros"},
     {"force", nullptr, "Replace an existing file"}},
    run};
