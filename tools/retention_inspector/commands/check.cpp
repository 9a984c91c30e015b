// Checks of the files against the layout.
// SPDX-License-Identifier: MIT
#include "tools/retention_inspector/file_check.h"

#include "tools/retention_inspector/layout_findings.h"
#include "tools/retention_inspector/layout_report.h"

namespace {

/// What was found about one file.
struct FileCheck
{
    QString nextStart; ///< what the module will do with it
    std::vector<Finding> findings;
};

const char* const anotherProject =
    "If it was written under another project, carry its values over with \"migrate\" before the next start.";

void add(FileCheck& check, const RetentionFile& file, Finding::Severity severity, const char* kind,
         const QString& problem, const QString& remedy)
{
    Finding finding;
    finding.severity = severity;
    finding.kind = kind;
    finding.place = file.path;
    finding.problem = problem;
    finding.remedy = remedy;
    finding.area = QString::fromLatin1(file.area->name);
    check.findings.push_back(finding);
}

FileCheck checkImage(const AreaLayout& area, const RetentionFile& file)
{
    const auto error = Finding::Severity::Error;
    const QString name = QString::fromLatin1(area.area->name);
    FileCheck check;
    if (file.state == RetentionFile::State::Missing) {
        check.nextStart =
            QStringLiteral("made with %1 zero bytes; all of %2 starts at 0").arg(area.fileLength).arg(name);
        add(check, file, error, "missing", QStringLiteral("there is no such file."),
            QStringLiteral("Nothing to do on a new panel. Otherwise put the panel's file in its place."));
    } else if (file.state == RetentionFile::State::Unreadable) {
        check.nextStart =
            QStringLiteral("if it cannot be opened on the panel either, %1 is neither restored nor "
                           "saved")
                .arg(name);
        add(check, file, error, "unreadable", file.error + QLatin1Char('.'),
            QStringLiteral("Put a readable and writable file in its place, or remove it."));
    } else if (file.size < area.fileLength) {
        check.nextStart = QStringLiteral("emptied and filled with zeros; all of %1 starts at 0").arg(name);
        add(check, file, error, file.size == 0 ? "empty" : "shorter",
            QStringLiteral(
                "it has %1 bytes, fewer than the %2 of the area: the next start empties it and its "
                "values are lost.")
                .arg(file.size)
                .arg(area.fileLength),
            QString::fromLatin1(anotherProject));
    } else {
        check.nextStart = QStringLiteral("restored");
        if (file.size > area.fileLength)
            add(check, file, Finding::Severity::Warning, "longer",
                QStringLiteral("it has %1 bytes, more than the %2 of the area; the rest is neither read nor "
                               "written.")
                    .arg(file.size)
                    .arg(area.fileLength),
                QString::fromLatin1(anotherProject));
    }
    return check;
}

/// A file that is there and has at least one byte.
void checkLength(const Layout& layout, const AreaLayout& area, const RetentionFile& file, FileCheck& check)
{
    const auto error = Finding::Severity::Error;
    const QString remedy = QString::fromLatin1(anotherProject);
    if (file.size == area.fileLength)
        return;
    if (file.size == area.area->imageBytes) {
        check.nextStart =
            QStringLiteral("its first %1 bytes are restored as if they were blocks").arg(area.fileLength);
        add(check, file, error, "other-mode",
            QStringLiteral(
                "it has the length of a whole-area image, but the project keeps single ranges: its "
                "values go to wrong addresses."),
            remedy);
    } else if (file.size < area.fileLength) {
        const CellRanges missing = areaValues(layout, file).cellsIn(CellState::NoValue);
        check.nextStart = QStringLiteral("restored as far as it goes; %1")
                              .arg(QLatin1String(area.area->bits ? "the rest keeps the panel's start values"
                                                                 : "the rest starts at 0"));
        add(check, file, error, "shorter",
            QStringLiteral("it has %1 bytes instead of %2%3.")
                .arg(file.size)
                .arg(area.fileLength)
                .arg(missing.isEmpty() ? QString()
                                       : QStringLiteral(": no value for %1 %2")
                                             .arg(QLatin1String(area.area->name), missing.text())),
            remedy);
        check.findings.back().cells = missing;
    } else {
        add(check, file, Finding::Severity::Warning, "longer",
            QStringLiteral("it has %1 bytes instead of %2, so it was written under another project and its "
                           "values may belong to other cells.")
                .arg(file.size)
                .arg(area.fileLength),
            remedy);
    }
}

FileCheck checkBlocks(const Layout& layout, const AreaLayout& area, const RetentionFile& file)
{
    const auto error = Finding::Severity::Error;
    const QString name = QString::fromLatin1(area.area->name);
    const QString startValues = QStringLiteral("%1 keeps the panel's start values").arg(name);
    FileCheck check;
    if (file.state == RetentionFile::State::Missing) {
        check.nextStart = QStringLiteral("made with %1 zero bytes; %2").arg(area.fileLength).arg(startValues);
        if (!area.kept.isEmpty())
            add(check, file, error, "missing", QStringLiteral("there is no such file."),
                QStringLiteral("Nothing to do on a new panel. Otherwise put the panel's file in its place."));
    } else if (file.state == RetentionFile::State::Unreadable) {
        check.nextStart =
            QStringLiteral("if it cannot be opened on the panel either, %1 and nothing is written")
                .arg(area.area->bits ? startValues
                                     : QStringLiteral("the retained %1 cells start at 0").arg(name));
        add(check, file, error, "unreadable", file.error + QLatin1Char('.'),
            QStringLiteral("Put a readable and writable file in its place, or remove it."));
    } else if (file.size == 0) {
        check.nextStart = QStringLiteral("left empty; %1").arg(startValues);
        if (!area.kept.isEmpty())
            add(check, file, error, "empty", QStringLiteral("the file is empty, so nothing is restored."),
                QStringLiteral("Nothing to do if its values are not needed: the first change fills it. "
                               "Otherwise put the panel's file in its place."));
    } else {
        check.nextStart =
            area.kept.isEmpty() ? QStringLiteral("nothing to restore") : QStringLiteral("restored");
        checkLength(layout, area, file, check);
        if (const qint64 bits = strayBits(layout, file))
            add(check, file, error, "bits-behind-last",
                QStringLiteral(
                    "%1 bits are set behind the last cell, which this project never does: the file "
                    "was written under another project.")
                    .arg(bits),
                QString::fromLatin1(anotherProject));
    }
    return check;
}

} // namespace

Report checkReport(const Layout& layout, const RetentionFiles& files)
{
    Report report;
    report.command = QStringLiteral("check");
    report.facts.push_back(modeFact(layout.settings.mode));
    Table table{QStringLiteral("files"),
                QStringLiteral("file"),
                QStringLiteral("Files"),
                {{"file", "File"},
                 {"bytes", "Bytes"},
                 {"expected", "Expected"},
                 {"fits", "Fits"},
                 {"next_start", "At the next start"}},
                {}};
    for (std::size_t i = 0; i < files.size(); ++i) {
        const AreaLayout& area = layout.areas[i];
        const FileCheck check =
            layout.images() ? checkImage(area, files[i]) : checkBlocks(layout, area, files[i]);
        const bool readable = files[i].state == RetentionFile::State::Readable;
        table.rows.push_back({textValue(area.area->fileName),
                              readable ? numberValue(files[i].size) : absentValue(),
                              numberValue(area.fileLength), textValue(check.findings.empty() ? "yes" : "no"),
                              textValue(check.nextStart)});
        report.findings.insert(report.findings.end(), check.findings.begin(), check.findings.end());
    }
    report.tables.push_back(std::move(table));
    const std::size_t inProject =
        settingsFindings(layout.settings).size() + entryFindings(layout, entryVerdicts(layout)).size();
    if (inProject > 0)
        report.notes.append(
            QStringLiteral("The project itself has %1 findings; \"layout\" names them.").arg(inProject));
    report.notes.append(QStringLiteral("Nothing in a file tells for which project it was written: one of the "
                                       "right length may still hold the values of other cells."));
    return report;
}
