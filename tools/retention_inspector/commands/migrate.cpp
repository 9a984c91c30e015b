// Makes new files for a changed project, with the kept values carried over.
// SPDX-License-Identifier: MIT
#include "tools/retention_core/cell_words.h"
#include "tools/retention_core/kept_values.h"
#include "tools/retention_core/refusal.h"
#include "tools/retention_inspector/command.h"

#include <QtCore/QFileInfo>

#include <algorithm>
#include <map>
#include <utility>

namespace {

/// What becomes of the cells of one area.
struct AreaMigration
{
    CellRanges carried;         ///< of the new project, with their values
    CellRanges without;         ///< kept by both projects, but without a value in the old file; 0
    CellRanges added;           ///< of the new project: neither kept by the old one nor moved to; 0
    CellRanges dropped;         ///< of the old project: neither kept by the new one nor moved
    qint64 oddBytes = 0;        ///< of the old image of "LB": those that are neither 0 nor 1
    bool foreignBits = false;   ///< no bit was carried because of these bytes
    std::vector<ushort> values; ///< for the new file
    AreaValues old;
};

/// Whether "LB" goes from packed bits to an image or the other way, so that the panel's layout of bits
/// matters.
bool bitsChangeForm(const Layout& from, const Layout& to)
{
    return from.images() != to.images();
}

std::size_t indexOf(const AreaFacts& area)
{
    return static_cast<std::size_t>(&area - areaFacts);
}

using Plan = std::array<AreaMigration, areaCount>;

/// Where the values of an area come from: its own cells except those that move away, and the cells that move
/// to it.
std::vector<CellMove> sourcesOf(const AreaFacts& area, const Layout& from, const Layout& to,
                                const std::vector<CellMove>& moves)
{
    CellRanges own = both(from.of(area).kept, to.of(area).kept);
    std::vector<CellMove> sources;
    for (const CellMove& move : moves) {
        if (move.from == &area)
            own = own.minus(CellRanges({move.source}));
        if (move.to == &area) {
            own = own.minus(CellRanges({move.targets()}));
            sources.push_back(move);
        }
    }
    for (const CellRange& range : own)
        sources.push_back({&area, range, &area, range.first});
    return sources;
}

void carry(const CellMove& source, const AreaMigration& from, AreaMigration& to,
           std::vector<CellRange>& carried, std::vector<CellRange>& without)
{
    for (qint64 i = 0; i <= source.source.last - source.source.first; ++i) {
        const auto cell = static_cast<std::size_t>(source.source.first + i);
        const qint64 target = source.target + i;
        const bool hasValue = from.old.hasValue(cell) && !from.foreignBits;
        (hasValue ? carried : without).push_back({target, target});
        if (hasValue)
            to.values[static_cast<std::size_t>(target)] = from.old.values[cell];
    }
}

Plan planAreas(const Layout& from, const Layout& to, const RetentionFiles& old,
               const std::vector<CellMove>& moves)
{
    Plan plan;
    for (std::size_t i = 0; i < plan.size(); ++i) {
        AreaMigration& area = plan[i];
        area.old = areaValues(from, old[i]);
        area.oddBytes = area.old.oddBytes;
        area.foreignBits = bitsChangeForm(from, to) && area.oddBytes > 0;
        area.values.resize(area.old.values.size());
    }
    for (const AreaFacts& facts : areaFacts) {
        AreaMigration& area = plan[indexOf(facts)];
        std::vector<CellRange> carried;
        std::vector<CellRange> without;
        std::vector<CellRange> targets;
        for (const CellMove& source : sourcesOf(facts, from, to, moves)) {
            carry(source, plan[indexOf(*source.from)], area, carried, without);
            targets.push_back(source.targets());
        }
        area.carried = CellRanges(std::move(carried));
        area.without = CellRanges(std::move(without));
        area.added = to.of(facts).kept.minus(CellRanges(std::move(targets)));
        area.dropped = from.of(facts).kept.minus(to.of(facts).kept);
        for (const CellMove& move : moves)
            if (move.from == &facts)
                area.dropped = area.dropped.minus(CellRanges({move.source}));
    }
    // Cells of the new project whose own values moved away, or that others moved to, lost what they had.
    for (const CellMove& move : moves) {
        CellRanges overwritten = both(CellRanges({move.targets()}), from.of(*move.to).kept);
        for (const CellMove& other : moves)
            if (other.from == move.to)
                overwritten = overwritten.minus(CellRanges({other.source}));
        AreaMigration& area = plan[indexOf(*move.to)];
        std::vector<CellRange> dropped(area.dropped.begin(), area.dropped.end());
        dropped.insert(dropped.end(), overwritten.begin(), overwritten.end());
        area.dropped = CellRanges(std::move(dropped));
    }
    return plan;
}

/// Cells that move must be kept on both sides, and no two may meet.
void requireMovable(const std::vector<CellMove>& moves, const Layout& from, const Layout& to)
{
    for (const CellMove& move : moves) {
        const auto require = [&move](const Layout& layout, const AreaFacts& area, const CellRange& cells,
                                     const char* which) {
            const CellRanges lacking = CellRanges({cells}).minus(layout.of(area).kept);
            if (!lacking.isEmpty())
                throw Refusal(
                    QStringLiteral("%1: %2 does not retain %3 %4; nothing was created")
                        .arg(moveText(move), QLatin1String(which), QLatin1String(area.name), lacking.text()));
        };
        require(from, *move.from, move.source, "OLD.xml");
        require(to, *move.to, move.targets(), "NEW.xml");
        for (const CellMove& other : moves) {
            const bool sameSource =
                other.from == move.from && !CellRanges({other.source}).within(move.source).isEmpty();
            const bool sameTarget =
                other.to == move.to && !CellRanges({other.targets()}).within(move.targets()).isEmpty();
            if (&other != &move && (sameSource || sameTarget))
                throw Refusal(
                    QStringLiteral("%1 and %2 overlap, but each cell can move only once; nothing was created")
                        .arg(moveText(move), moveText(other)));
        }
    }
}

std::vector<const ProjectEntry*> entriesNamed(const Layout& layout, const QString& name)
{
    std::vector<const ProjectEntry*> found;
    for (const ProjectEntry& entry : layout.settings.entries)
        if (entry.name == name)
            found.push_back(&entry);
    return found;
}

const char* const notRetainedInBoth = "its cells are not retained in both projects.";

/// Why no cells move between the entries of one name; null when they can.
const char* obstacle(const std::vector<const ProjectEntry*>& sources,
                     const std::vector<const ProjectEntry*>& targets)
{
    if (sources.empty())
        return "OLD.xml has no entry with the same name.";
    if (sources.size() > 1)
        return "OLD.xml has several entries with the same name.";
    if (targets.size() > 1)
        return "NEW.xml has several entries with the same name.";
    const ProjectEntry& source = *sources.front();
    const ProjectEntry& target = *targets.front();
    if (!source.area || !target.area || source.length() <= 0 || target.length() <= 0)
        return notRetainedInBoth;
    return source.area->bits != target.area->bits ? "one holds bits, the other one words." : nullptr;
}

/// The cells of two entries that both projects retain, from the first entry to the second.
std::vector<CellMove> movesBetween(const Layout& from, const ProjectEntry& source, const Layout& to,
                                   const ProjectEntry& target)
{
    std::vector<CellMove> moves;
    const qint64 length = std::min(source.length(), target.length());
    const qint64 step = target.first() - source.first();
    for (const CellRange& range :
         from.of(*source.area).kept.within({source.first(), source.first() + length - 1}))
        for (const CellRange& kept : to.of(*target.area).kept.within({range.first + step, range.last + step}))
            moves.push_back({source.area, {kept.first - step, kept.last - step}, target.area, kept.first});
    return moves;
}

/// The ranges of entries that have the same name in both projects but begin elsewhere. The notes say why
/// nothing moves to the others.
std::vector<CellMove> movesByName(const Layout& from, const Layout& to, QStringList& notes)
{
    if (from.images() || to.images())
        throw Refusal(
            QStringLiteral("--by-name: expected two projects with entries, but one of them retains whole "
                           "areas; name the cells with --move"));
    std::vector<CellMove> moves;
    std::map<QString, std::vector<const ProjectEntry*>> unmoved; // by reason
    bool anyInPlace = false;
    for (const ProjectEntry& target : to.settings.entries) {
        const auto sources = entriesNamed(from, target.name);
        const char* reason = obstacle(sources, entriesNamed(to, target.name));
        if (!reason && sources.front()->area == target.area && sources.front()->first() == target.first()) {
            anyInPlace = true;
        } else if (!reason) {
            const std::vector<CellMove> cells = movesBetween(from, *sources.front(), to, target);
            moves.insert(moves.end(), cells.begin(), cells.end());
            reason = cells.empty() ? notRetainedInBoth : nullptr;
        }
        if (reason)
            unmoved[QString::fromLatin1(reason)].push_back(&target);
    }
    if (moves.empty())
        notes.append(QString::fromLatin1(
            anyInPlace
                ? "--by-name moved nothing: entries with the same name begin at the same cell in both "
                  "projects, so their values stay where they are."
                : "--by-name moved nothing. Names must be equal, in upper and lower case, too: rename the "
                  "entries, or name the cells, such as --move LW:100-109=LW:300."));
    for (const auto& [reason, entries] : unmoved)
        notes.append(QStringLiteral("Nothing moved by name to %1: %2").arg(entriesText(entries), reason));
    return moves;
}

std::vector<CellMove> wantedMoves(const Inputs& inputs, const Layout& from, const Layout& to,
                                  QStringList& notes)
{
    std::vector<CellMove> moves;
    if (inputs.has("by-name"))
        moves = movesByName(from, to, notes);
    for (const QString& text : inputs.option("move").split(QLatin1Char(','), Qt::SkipEmptyParts))
        moves.push_back(cellMove(text));
    requireMovable(moves, from, to);
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
Table droppedValues(const Plan& plan)
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
        QStringLiteral(
            "%1 neither 0 nor 1, so this panel does not store one bit per byte; no bits were carried over.")
            .arg(countText(area.oddBytes, "byte") + QLatin1String(area.oddBytes == 1 ? " is" : " are")),
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
    const Plan plan = planAreas(from, to, old, moves);
    for (const CellMove& move : moves)
        if (plan[indexOf(*move.from)].oddBytes > 0)
            throw Refusal(QStringLiteral("%1: this panel does not store one bit per byte, so it is not known "
                                         "where its bits are; nothing was created")
                              .arg(moveText(move)));
    makeRetentionFiles(output, [&](const AreaFacts& area, QFile& file) {
        const std::size_t i = indexOf(area);
        return writeArea(to.areas[i], plan[i], old[i], file);
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
