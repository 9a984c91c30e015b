// Makes new files for a changed project, with the kept values carried over.
// SPDX-License-Identifier: MIT
#include "tools/retention_core/migration.h"
#include "tools/retention_core/refusal.h"
#include "tools/retention_inspector/command.h"

#include <QtCore/QFileInfo>

#include <algorithm>
#include <utility>

namespace {

std::vector<CellMove> wantedMoves(const Inputs& inputs, const Layout& from, const Layout& to,
                                  QStringList& notes)
{
    std::vector<CellMove> moves;
    if (inputs.has("by-name"))
        moves = movesByName(from, to, notes);
    for (const QString& text : inputs.option("move").split(QLatin1Char(','), Qt::SkipEmptyParts))
        moves.push_back(cellMove(text));
    return moves;
}

/// What the user may have done when the files were not written for OLD.xml but fit NEW.xml; empty otherwise.
QString swappedText(const Layout& from, const Layout& to, const RetentionFiles& old)
{
    const FileChecks underOld = checkFiles(from, old);
    const FileChecks underNew = checkFiles(to, old);
    const bool swapped =
        std::any_of(underOld.begin(), underOld.end(), [](const FileCheck& check) { return check.foreign; }) &&
        std::all_of(underNew.begin(), underNew.end(),
                    [](const FileCheck& check) { return check.findings.empty(); });
    return swapped ? QStringLiteral("They fit NEW.xml: OLD.xml and NEW.xml may be swapped, or the values may "
                                    "already have been carried over")
                   : QString();
}

/// Throws when the files show that they were written under another project, or when there are none.
void requireWrittenUnder(const Layout& from, const Layout& to, const RetentionFiles& old)
{
    const FileChecks checks = checkFiles(from, old);
    const auto foreign =
        std::find_if(checks.begin(), checks.end(), [](const FileCheck& check) { return check.foreign; });
    const bool none = std::all_of(old.begin(), old.end(), [](const RetentionFile& file) {
        return file.state == RetentionFile::State::Missing;
    });
    if (none)
        throw Refusal(QStringLiteral("%1: the directory has none of the three files, so there is nothing to "
                                     "carry over; nothing was created. Name the directory with the panel's "
                                     "files, or create files of zeros anyway with --force")
                          .arg(QFileInfo(old.front().path).path()));
    if (foreign == checks.end())
        return;
    const QString swapped = swappedText(from, to, old);
    const Finding& finding = foreign->findings.front();
    throw Refusal(
        QStringLiteral("%1: %2 The files were therefore not written for OLD.xml; nothing was created. %3")
            .arg(finding.place, finding.problem,
                 !swapped.isEmpty()
                     ? swapped
                     : QStringLiteral(
                           "Name the project that they were written for; or, if a panel has been running "
                           "with them and OLD.xml, use --force to read them as OLD.xml defines them")));
}

/// The findings about files that were carried over by force.
std::vector<Finding> forcedFindings(const Layout& from, const RetentionFiles& old)
{
    std::vector<Finding> findings;
    for (const FileCheck& check : checkFiles(from, old)) {
        for (Finding finding : check.findings) {
            if (check.foreign)
                finding.remedy = QStringLiteral("The file was read as OLD.xml defines it because of --force: "
                                                "check its values before you use them.");
            findings.push_back(finding);
        }
    }
    return findings;
}

/// The dropped values other than 0: adjacent cells with the same value, in one row.
Table droppedValues(const Migration& plan)
{
    Table table{"dropped",
                "dropped",
                "Dropped values other than 0",
                {{"area", "Area"}, {nullptr, "Addresses"}, {"first"}, {"last"}, {"value", "Value"}}};
    for (const AreaMigration& area : plan) {
        for (const CellRange& range : area.dropped) {
            for (qint64 first = range.first; first <= range.last;) {
                const ushort value = area.old.values[static_cast<std::size_t>(first)];
                qint64 last = first;
                while (last < range.last && area.old.values[static_cast<std::size_t>(last) + 1] == value)
                    ++last;
                if (value != 0)
                    table.rows.push_back(
                        {area.old.area->name, rangeText({first, last}), first, last, int(value)});
                first = last + 1;
            }
        }
    }
    return table;
}

void addCells(Table& table, const AreaFacts& area, const Words& fate, const CellRanges& cells)
{
    if (!cells.isEmpty())
        table.rows.push_back({area.name, fate, cells.count(), cells});
}

Finding foreignBits(const RetentionFile& file, const AreaMigration& area)
{
    return {
        Finding::Severity::Error,
        "foreign-bit-image",
        file.path,
        QStringLiteral(
            "%1 neither 0 nor 1, so this panel does not store one bit per byte; no bits were carried over.")
            .arg(countText(area.old.oddBytes, "byte") +
                 QLatin1String(area.old.oddBytes == 1 ? " is" : " are")),
        QStringLiteral("Set the bits on the panel after the project change."),
        QString::fromLatin1(file.area->name),
        area.without};
}

void addNotes(const Layout& from, const Layout& to, Report& report)
{
    if (bitsChangeForm(from, to))
        report.notes.append(QStringLiteral(
            "Bits were converted between an image and packed blocks. How a panel lays out the bits of its LB "
            "image is not defined; one byte per bit was assumed. Words are not affected."));
    if (from.images() && !to.images())
        report.notes.append(QStringLiteral("At the next start, bits in all-zero bytes keep the panel's own "
                                           "start values; the image restored them as 0."));
    if (to.images() && !from.images())
        report.notes.append(
            QStringLiteral("The new project restores whole areas: at the next start, every cell that was not "
                           "carried over is 0, whatever the panel's own start value."));
    report.addNote(projectNote(to, "The new project"));
}

Report run(const Inputs& inputs)
{
    const QString output = inputs.option("output");
    const Layout& from = inputs.projects[0].layout;
    const Layout& to = inputs.projects[1].layout;
    const RetentionFiles& old = inputs.files.front();
    if (!inputs.has("force"))
        requireWrittenUnder(from, to, old);
    Report report;
    const std::vector<CellMove> moves = wantedMoves(inputs, from, to, report.notes);
    const Migration plan = planMigration(from, to, old, moves);
    makeRetentionFiles(output, [&](const AreaFacts& area, QFile& file) {
        const auto i = static_cast<std::size_t>(&area - areaFacts);
        return writeMigrated(to.areas[i], plan[i], old[i], file);
    });

    report.facts = {{"from_mode", "From", from.settings.mode},
                    {"to_mode", "To", to.settings.mode},
                    {"output", "Written to", output}};
    report.findings = forcedFindings(from, old);
    report.findingsFirst = true;
    Table files{
        "files", "file", "Files", {{"file", "File"}, {"bytes", "Bytes"}, {"carried", "Cells carried over"}}};
    Table moved{"moves",
                "move",
                "Moved",
                {{nullptr, "Cells"},
                 {"from_area"},
                 {"from_first"},
                 {"from_last"},
                 {"to_area"},
                 {"to_first"},
                 {"to_last"}}};
    Table cells{"cells",
                "cells",
                "Cells",
                {{"area", "Area"}, {"fate", "Outcome"}, {"count", "Cells"}, {"cells", "Addresses"}}};
    for (const CellMove& move : moves)
        moved.rows.push_back({moveText(move), move.from->name, move.source.first, move.source.last,
                              move.to->name, move.targets().first, move.targets().last});
    for (std::size_t i = 0; i < plan.size(); ++i) {
        const AreaMigration& area = plan[i];
        const AreaFacts& facts = areaFacts[i];
        files.rows.push_back({facts.fileName, to.areas[i].fileLength, area.carried.count()});
        addCells(cells, facts, {"carried", QStringLiteral("carried over")}, area.carried);
        addCells(cells, facts, {"without-value", QStringLiteral("no value in the old files: 0")},
                 area.without);
        addCells(cells, facts, {"new", QStringLiteral("new: 0")}, area.added);
        addCells(cells, facts, {"dropped", QStringLiteral("dropped: no place in the new files")},
                 area.dropped);
        if (area.foreignBits)
            report.findings.push_back(foreignBits(old[i], area));
    }
    report.csvTable = QStringLiteral("cells");
    report.tables = {std::move(files), std::move(moved), std::move(cells), droppedValues(plan)};
    if (const QString swapped = swappedText(from, to, old); !swapped.isEmpty())
        report.notes.append(QStringLiteral("The files were not written for OLD.xml. %1.").arg(swapped));
    addNotes(from, to, report);
    return report;
}

} // namespace

extern const Command migrateCommand = {
    "migrate",
    {{"OLD.xml", Argument::Kind::Project},
     {"NEW.xml", Argument::Kind::Project},
     {"DIR", Argument::Kind::Files}},
    "new files for a changed project, with the retained values carried over",
    "Reads the files of DIR as OLD.xml defines them and creates a new directory with the files for NEW.xml.\n"
    "Every cell that both projects retain keeps its value, at its address or where --move and --by-name put\n"
    "it; all other cells are 0. Lists which cells were carried over, new and dropped. Files that were not\n"
    "written for OLD.xml are refused. Nothing is overwritten; after an error, nothing is created.",
    "old.xml new.xml /usr/tavrin/project --output carried\n"
    "old.xml new.xml copy --output carried --move LW:100-109=LW:300 --move LB:5=LB:20",
    {{"output", "DIR2", "Directory to create; it must be empty or not exist yet", nullptr,
      Option::Kind::Required},
     {"move", "CELLS", "Cells that move, such as LW:100-109=LW:300; may be repeated", nullptr,
      Option::Kind::Repeatable},
     {"by-name", nullptr, "Move the cells of entries that have the same name in both projects"},
     {"force", nullptr, "Carry over what is there even if the files do not fit OLD.xml"}},
    run};
