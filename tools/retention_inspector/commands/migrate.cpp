// Makes new files for a changed project, with the kept values carried over.
// SPDX-License-Identifier: MIT
#include "tools/retention_core/kept_values.h"
#include "tools/retention_core/refusal.h"
#include "tools/retention_inspector/command.h"

#include <algorithm>
#include <utility>

namespace {

/// What becomes of the cells of one area.
struct AreaMigration
{
    CellRanges carried;         ///< kept by both projects, with their values
    CellRanges without;         ///< kept by both projects, but without a value in the old file; 0
    CellRanges added;           ///< kept by the new project only; 0
    CellRanges dropped;         ///< kept by the old project only
    qint64 oddBytes = 0;        ///< of the old image of "LB": those that are neither 0 nor 1
    bool foreignBits = false;   ///< because of these bytes no bit was carried
    std::vector<ushort> values; ///< for the new file
};

CellRanges both(const CellRanges& a, const CellRanges& b)
{
    return a.minus(a.minus(b));
}

/// Whether "LB" goes from packed bits to an image or the other way, so that the panel's layout of bits
/// matters.
bool bitsChangeForm(const Layout& from, const Layout& to)
{
    return from.images() != to.images();
}

AreaMigration planArea(const Layout& from, const Layout& to, const RetentionFile& file)
{
    const CellRanges& oldCells = from.of(*file.area).kept;
    const CellRanges& newCells = to.of(*file.area).kept;
    const AreaValues values = areaValues(from, file);
    AreaMigration area;
    area.oddBytes = values.oddBytes;
    area.foreignBits = bitsChangeForm(from, to) && values.oddBytes > 0;
    const CellRanges common = both(oldCells, newCells);
    area.without = area.foreignBits ? common : both(common, values.cellsIn(CellState::NoValue));
    area.carried = common.minus(area.without);
    area.added = newCells.minus(oldCells);
    area.dropped = oldCells.minus(newCells);
    area.values.resize(values.values.size());
    for (const CellRange& range : area.carried)
        std::copy(values.values.begin() + range.first, values.values.begin() + range.last + 1,
                  area.values.begin() + range.first);
    return area;
}

bool writeArea(const AreaLayout& layout, const AreaMigration& area, const RetentionFile& old, QFile& file)
{
    if (!file.resize(layout.fileLength))
        return false;
    if (area.oddBytes > 0 && layout.image) { // from image to image the bytes stay as the panel laid them out
        const QByteArray bytes = old.read(0, layout.fileLength);
        return file.write(bytes) == bytes.size();
    }
    return writeValues(layout, area.values, file);
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
        QStringLiteral("%1 neither 0 nor 1, so this panel does not lay out its bits one a byte; no bit was "
                       "carried.")
            .arg(countText(area.oddBytes, "byte") + QLatin1String(area.oddBytes == 1 ? " is" : " are")),
        QStringLiteral("Set the bits on the panel after the change of the project."),
        QString::fromLatin1(file.area->name),
        area.without};
}

void addNotes(const Layout& from, const Layout& to, Report& report)
{
    if (bitsChangeForm(from, to))
        report.notes.append(QStringLiteral(
            "Bits changed between an image and packed blocks. How a panel lays out the bits of its "
            "LB image is its own affair; one byte a bit was assumed. Words are certain."));
    if (from.images() && !to.images())
        report.notes.append(
            QStringLiteral("At the start a bit that is 0 in a byte of zeros keeps the panel's own start "
                           "value; the image restored it as 0."));
    if (to.images() && !from.images())
        report.notes.append(
            QStringLiteral("The new project restores whole areas: at the next start every cell "
                           "that was not carried is 0, whatever its own start value."));
    if (const std::size_t findings = projectFindings(to).size())
        report.notes.append(
            QStringLiteral("The new project itself has %1; \"layout\" names %2.")
                .arg(countText(qint64(findings), "finding"), QLatin1String(findings == 1 ? "it" : "them")));
}

Report run(const Inputs& inputs)
{
    if (!inputs.has("output"))
        throw Refusal(QStringLiteral("migrate: expected --output DIR, a new directory for the files"));
    const Layout& from = inputs.projects[0].layout;
    const Layout& to = inputs.projects[1].layout;
    const RetentionFiles& old = inputs.files.front();
    std::array<AreaMigration, areaCount> areas;
    for (std::size_t i = 0; i < areas.size(); ++i)
        areas[i] = planArea(from, to, old[i]);
    makeRetentionFiles(inputs.option("output"), [&](const AreaFacts& area, QFile& file) {
        const auto i = static_cast<std::size_t>(&area - areaFacts);
        return writeArea(to.areas[i], areas[i], old[i], file);
    });

    Report report;
    report.facts = {{"from_mode", "From", from.settings.mode},
                    {"to_mode", "To", to.settings.mode},
                    {"output", "Written to", inputs.option("output")}};
    Table files{
        "files", "file", "Files", {{"file", "File"}, {"bytes", "Bytes"}, {"carried", "Cells carried"}}};
    Table cells{
        "cells",
        "cells",
        "Cells",
        {{"area", "Area"}, {"fate", "What became of them"}, {"count", "Cells"}, {"cells", "Addresses"}}};
    for (const RetentionFile& file : old) {
        const FileCheck check = checkFile(from, file);
        report.findings.insert(report.findings.end(), check.findings.begin(), check.findings.end());
    }
    for (std::size_t i = 0; i < areas.size(); ++i) {
        const AreaMigration& area = areas[i];
        const AreaFacts& facts = areaFacts[i];
        files.rows.push_back({facts.fileName, to.areas[i].fileLength, area.carried.count()});
        addCells(cells, facts, {"carried", QStringLiteral("carried over")}, area.carried);
        addCells(cells, facts, {"without-value", QStringLiteral("without a value in the old files: 0")},
                 area.without);
        addCells(cells, facts, {"new", QStringLiteral("new: 0")}, area.added);
        addCells(cells, facts, {"dropped", QStringLiteral("dropped: no longer retained")}, area.dropped);
        if (area.foreignBits)
            report.findings.push_back(foreignBits(old[i], area));
    }
    report.tables = {std::move(files), std::move(cells)};
    addNotes(from, to, report);
    return report;
}

} // namespace

extern const Command migrateCommand = {
    "migrate",
    {{"OLD.xml", Argument::Kind::Project},
     {"NEW.xml", Argument::Kind::Project},
     {"DIR", Argument::Kind::Files}},
    "new files for a changed project, with the kept values carried over",
    "Reads the files of DIR by the project OLD.xml and makes a new directory with the files that NEW.xml\n"
    "needs. Every cell that both projects retain keeps its value, by address; the others are 0. Lists what\n"
    "was carried, new and dropped. Nothing is overwritten; on an error nothing is made.",
    "old.xml new.xml /usr/tavrin/project --output carried",
    {{"output", "DIR2", "The directory to make; it must not exist, or be empty"}},
    run};
