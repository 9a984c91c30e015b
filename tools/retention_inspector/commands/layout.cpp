// The layout of a project as a report.
// SPDX-License-Identifier: MIT
#include "tools/retention_inspector/layout_report.h"

#include "tools/retention_core/entry_verdict.h"
#include "tools/retention_inspector/layout_findings.h"

namespace {

Value cellsOf(qint64 first, qint64 count)
{
    return count > 0 ? textValue(rangeText({first, first + count - 1})) : textValue("no cell");
}

Value lastOf(qint64 first, qint64 count)
{
    return count > 0 ? numberValue(first + count - 1) : absentValue();
}

Table fileTable(const Layout& layout)
{
    Table table{
        QStringLiteral("files"),
        QStringLiteral("file"),
        QStringLiteral("Files"),
        {{"file", "File"}, {"area", "Area"}, {"blocks", "Blocks"}, {"cells", "Cells"}, {"bytes", "Bytes"}},
        {}};
    for (const AreaLayout& area : layout.areas)
        table.rows.push_back({textValue(area.area->fileName), textValue(area.area->name),
                              numberValue(qint64(area.blocks.size())), numberValue(area.cells),
                              numberValue(area.fileLength)});
    return table;
}

Table blockTable(const Layout& layout)
{
    Table table{QStringLiteral("blocks"),
                QStringLiteral("block"),
                QStringLiteral("Blocks"),
                {{"area", "Area"},
                 {"block", "Block"},
                 {nullptr, "Addresses"},
                 {"first", nullptr},
                 {"last", nullptr},
                 {"cells", "Cells"},
                 {"byte", "At byte"},
                 {"bit", "Bit"},
                 {"entries", layout.images() ? nullptr : "From entry"},
                 {"problem", nullptr}},
                {}};
    for (const AreaLayout& area : layout.areas) {
        for (const LayoutBlock& block : area.blocks)
            table.rows.push_back({textValue(area.area->name), numberValue(qint64(block.number)),
                                  cellsOf(block.first, block.count), numberValue(block.first),
                                  lastOf(block.first, block.count), numberValue(block.count),
                                  numberValue(block.byte), numberValue(qint64(block.bit)),
                                  numbersValue(block.entries),
                                  block.problem.isEmpty() ? absentValue() : textValue(block.problem)});
    }
    return table;
}

Table entryTable(const std::vector<EntryVerdict>& verdicts)
{
    Table table{QStringLiteral("entries"),
                QStringLiteral("entry"),
                QStringLiteral("Entries"),
                {{"entry", "Entry"},
                 {"name", "Name"},
                 {"area", "Area"},
                 {nullptr, "Addresses"},
                 {"first", nullptr},
                 {"last", nullptr},
                 {"cells", "Cells"},
                 {"verdict", nullptr},
                 {"block", nullptr},
                 {nullptr, "Verdict"},
                 {"lost", "Cells not retained"}},
                {}};
    for (const EntryVerdict& verdict : verdicts) {
        const ProjectEntry& entry = *verdict.entry;
        Value lost = rangesValue(verdict.lost);
        if (verdict.kind == EntryVerdict::Kind::None)
            lost.text = entry.length > 0 ? QStringLiteral("all") : QString();
        table.rows.push_back({numberValue(qint64(entry.number)), textValue(entry.name),
                              textValue(entry.address.block), cellsOf(entry.first(), entry.length),
                              numberValue(entry.first()), lastOf(entry.first(), entry.length),
                              numberValue(qint64(entry.length)), textValue(verdictKey(verdict)),
                              verdict.block ? numberValue(qint64(verdict.block->number)) : absentValue(),
                              textValue(verdictText(verdict)), lost});
    }
    return table;
}

void addPeriod(const ProjectSettings& settings, Report& report)
{
    report.facts.push_back(
        {QStringLiteral("period_minutes"),
         QStringLiteral("Period"),
         {QJsonValue(int(settings.saveTimeMinutes)),
          QStringLiteral("%1 minutes (%2 ms)%3")
              .arg(int(settings.saveTimeMinutes))
              .arg(settings.periodMs())
              .arg(QLatin1String(
                  settings.hasSaveTime ? "" : "; \"Save Time\" is not set, so it is the usual one"))}});
    report.facts.push_back({QStringLiteral("period_ms"), QString(), numberValue(settings.periodMs())});
    if (settings.hasSaveTime)
        report.facts.push_back(
            {QStringLiteral("save_time"), QString(), numberValue(qint64(settings.saveTimeSetting))});
}

} // namespace

QString modeText(RetentionMode mode)
{
    switch (mode) {
    case RetentionMode::WholeAreas:
        return QStringLiteral("whole areas");
    case RetentionMode::PerAddress:
        return QStringLiteral("per-address entries");
    case RetentionMode::None:
        break;
    }
    return QStringLiteral("none");
}

QString modeKey(RetentionMode mode)
{
    switch (mode) {
    case RetentionMode::WholeAreas:
        return QStringLiteral("whole-area");
    case RetentionMode::PerAddress:
        return QStringLiteral("per-address");
    case RetentionMode::None:
        break;
    }
    return QStringLiteral("none");
}

Fact modeFact(RetentionMode mode)
{
    return {QStringLiteral("mode"), QStringLiteral("Mode"), {modeKey(mode), modeText(mode)}};
}

Report layoutReport(const Layout& layout)
{
    Report report;
    report.command = QStringLiteral("layout");
    report.facts.push_back(modeFact(layout.settings.mode));
    if (layout.images())
        addPeriod(layout.settings, report);
    report.tables.push_back(fileTable(layout));
    report.tables.push_back(blockTable(layout));
    const std::vector<EntryVerdict> verdicts = entryVerdicts(layout);
    report.tables.push_back(entryTable(verdicts));
    report.findings = settingsFindings(layout.settings);
    for (const Finding& finding : entryFindings(layout, verdicts))
        report.findings.push_back(finding);
    return report;
}
