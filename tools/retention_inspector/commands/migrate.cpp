// What a migration carried, and what not.
// SPDX-License-Identifier: MIT
#include "tools/retention_inspector/migration.h"

#include "tools/retention_inspector/file_check.h"
#include "tools/retention_inspector/layout_findings.h"
#include "tools/retention_inspector/layout_report.h"

namespace {

void addCells(Table& table, const AreaFacts& area, const char* key, const char* text, const CellRanges& cells)
{
    if (cells.isEmpty())
        return;
    table.rows.push_back({textValue(area.name),
                          {QString::fromLatin1(key), QString::fromLatin1(text)},
                          numberValue(cells.count()),
                          rangesValue(cells)});
}

Finding foreignBits(const RetentionFile& file, const AreaMigration& area)
{
    Finding finding;
    finding.kind = "foreign-bit-image";
    finding.place = file.path;
    finding.problem =
        QStringLiteral("%1 bytes are neither 0 nor 1, so this panel does not lay out its bits one a "
                       "byte; no bit was carried.")
            .arg(area.values.oddBytes);
    finding.remedy = QStringLiteral("Set the bits on the panel after the change of the project.");
    finding.area = QString::fromLatin1(file.area->name);
    finding.cells = area.without;
    return finding;
}

void addNotes(const Migration& migration, Report& report)
{
    if (migration.bitsChangeForm())
        report.notes.append(QStringLiteral(
            "Bits changed between an image and packed blocks. How a panel lays out the bits of its "
            "LB image is its own affair; one byte a bit was assumed. Words are certain."));
    if (migration.from->images() && !migration.to->images())
        report.notes.append(
            QStringLiteral("At the start a bit that is 0 in a byte of zeros keeps the panel's own start "
                           "value; the image restored it as 0."));
    if (migration.to->images() && !migration.from->images())
        report.notes.append(
            QStringLiteral("The new project restores whole areas: at the next start every cell "
                           "that was not carried is 0, whatever its own start value."));
    const std::size_t findings = settingsFindings(migration.to->settings).size() +
                                 entryFindings(*migration.to, entryVerdicts(*migration.to)).size();
    if (findings > 0)
        report.notes.append(
            QStringLiteral("The new project itself has %1 findings; \"layout\" names them.").arg(findings));
}

} // namespace

Report migrationReport(const Migration& migration, const QString& directory)
{
    Report report;
    report.command = QStringLiteral("migrate");
    report.facts = {{QStringLiteral("from_mode"),
                     QStringLiteral("From"),
                     {modeKey(migration.from->settings.mode), modeText(migration.from->settings.mode)}},
                    {QStringLiteral("to_mode"),
                     QStringLiteral("To"),
                     {modeKey(migration.to->settings.mode), modeText(migration.to->settings.mode)}},
                    {QStringLiteral("output"), QStringLiteral("Written to"), textValue(directory)}};
    Table files{QStringLiteral("files"),
                QStringLiteral("file"),
                QStringLiteral("Files"),
                {{"file", "File"}, {"bytes", "Bytes"}, {"carried", "Cells carried"}},
                {}};
    Table cells{
        QStringLiteral("cells"),
        QStringLiteral("cells"),
        QStringLiteral("Cells"),
        {{"area", "Area"}, {"fate", "What became of them"}, {"count", "Cells"}, {"cells", "Addresses"}},
        {}};
    report.findings = checkReport(*migration.from, *migration.files).findings;
    for (std::size_t i = 0; i < migration.areas.size(); ++i) {
        const AreaMigration& area = migration.areas[i];
        const AreaLayout& layout = migration.to->areas[i];
        files.rows.push_back({textValue(layout.area->fileName), numberValue(layout.fileLength),
                              numberValue(area.carried.count())});
        addCells(cells, *layout.area, "carried", "carried over", area.carried);
        addCells(cells, *layout.area, "without-value", "without a value in the old files: 0", area.without);
        addCells(cells, *layout.area, "new", "new: 0", area.added);
        addCells(cells, *layout.area, "dropped", "dropped: no longer retained", area.dropped);
        if (area.foreignBits)
            report.findings.push_back(foreignBits((*migration.files)[i], area));
    }
    report.tables.push_back(std::move(files));
    report.tables.push_back(std::move(cells));
    addNotes(migration, report);
    return report;
}
