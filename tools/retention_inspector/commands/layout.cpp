// Shows what a project retains: mode, files, blocks and what becomes of each entry.
// SPDX-License-Identifier: MIT
#include "tools/retention_inspector/command.h"

namespace {

Value cellsOf(const CellRange& cells)
{
    return cells.first > cells.last ? "none" : rangeText(cells);
}

Value lastOf(const CellRange& cells)
{
    return cells.first > cells.last ? Value() : cells.last;
}

Table fileTable(const Layout& layout)
{
    Table table{
        "files",
        "file",
        "Files",
        {{"file", "File"}, {"area", "Area"}, {"blocks", "Blocks"}, {"cells", "Cells"}, {"bytes", "Bytes"}}};
    for (const AreaLayout& area : layout.areas)
        table.rows.push_back(
            {area.area->fileName, area.area->name, qint64(area.blocks.size()), area.cells, area.fileLength});
    return table;
}

Table blockTable(const Layout& layout)
{
    Table table{"blocks",
                "block",
                "Blocks",
                {{"area", "Area"},
                 {"block", "Block"},
                 {nullptr, "Addresses"},
                 {"first"},
                 {"last"},
                 {"cells", "Cells"},
                 {"byte", "At byte"},
                 {"bit", "Bit"},
                 {"entries", layout.images() ? nullptr : "Entries"},
                 {"problem"}}};
    for (const AreaLayout& area : layout.areas)
        for (const LayoutBlock& block : area.blocks)
            table.rows.push_back({area.area->name, block.number, cellsOf(block.cells()), block.first(),
                                  lastOf(block.cells()), block.info.count, block.info.fileOffset,
                                  block.info.bitOffset, block.entries,
                                  area.problem.isEmpty() ? Value() : area.problem});
    return table;
}

Table entryTable(const Layout& layout)
{
    Table table{"entries",
                "entry",
                "Entries",
                {{"entry", "Entry"},
                 {"name", "Name"},
                 {"area", "Area"},
                 {nullptr, "Addresses"},
                 {"first"},
                 {"last"},
                 {"cells", "Cells"},
                 {"verdict", "Verdict"},
                 {"block"},
                 {"lost"},
                 {nullptr, "Cells not retained"}}};
    for (const EntryVerdict& verdict : entryVerdicts(layout)) {
        const ProjectEntry& entry = *verdict.entry;
        const CellRange cells = {entry.first(), entry.last()};
        QString lost = verdict.lost.text();
        if (verdict.kind == EntryVerdict::Kind::None)
            lost = QString::fromLatin1(entry.length() > 0 ? "all" : "");
        table.rows.push_back({entry.number, entry.name, entry.areaName(), cellsOf(cells), cells.first,
                              lastOf(cells), entry.length(), verdict.words(),
                              verdict.block ? Value(verdict.block->number) : Value(), verdict.lost, lost});
    }
    return table;
}

void addPeriod(const ProjectSettings& settings, Report& report)
{
    const int minutes = settings.saveTimeMinutes;
    const QString text =
        QStringLiteral("%1 minutes (%2 ms)%3")
            .arg(minutes)
            .arg(settings.periodMs())
            .arg(QLatin1String(settings.saveTime ? "" : "; the default, because \"Save Time\" is not set"));
    report.facts.push_back({"period_minutes", "Period", {QJsonValue(minutes), text}});
    report.facts.push_back({"period_ms", nullptr, settings.periodMs()});
    if (settings.saveTime)
        report.facts.push_back({"save_time", nullptr, qint64(*settings.saveTime)});
}

Report run(const Inputs& inputs)
{
    const Layout& layout = inputs.layout();
    Report report;
    report.facts.push_back({"mode", "Mode", layout.settings.mode});
    if (layout.images())
        addPeriod(layout.settings, report);
    report.tables = {fileTable(layout), blockTable(layout), entryTable(layout)};
    report.csvTable = QStringLiteral("entries");
    report.findings = projectFindings(layout);
    report.addNote(defaultsNote(layout.settings));
    return report;
}

} // namespace

extern const Command layoutCommand = {
    "layout",
    {{"PROJECT.xml", Argument::Kind::Project}},
    "mode, files and blocks of a project, with a verdict on every entry",
    "Shows what a project retains: the mode, the blocks of each file with addresses, offset and bit, and\n"
    "a verdict on every entry. Each finding says how to correct the project.",
    "project.xml\nproject.xml --format json",
    {},
    run};
