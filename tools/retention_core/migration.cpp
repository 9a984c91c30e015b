// Moves values from the cells of one project to those of another.
// SPDX-License-Identifier: MIT
#include "tools/retention_core/migration.h"

#include "tools/retention_core/findings.h"
#include "tools/retention_core/refusal.h"

#include <algorithm>
#include <map>
#include <utility>

namespace {

std::size_t indexOf(const AreaFacts& area)
{
    return static_cast<std::size_t>(&area - areaFacts);
}

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

const char* const notRetainedInBoth = "none of the cells is retained in both projects.";

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
    return source.area->bits != target.area->bits ? "bits in one project, words in the other." : nullptr;
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

} // namespace

bool bitsChangeForm(const Layout& from, const Layout& to)
{
    return from.images() != to.images();
}

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

Migration planMigration(const Layout& from, const Layout& to, const RetentionFiles& old,
                        const std::vector<CellMove>& moves)
{
    requireMovable(moves, from, to);
    Migration plan;
    for (std::size_t i = 0; i < plan.size(); ++i) {
        AreaMigration& area = plan[i];
        area.old = areaValues(from, old[i]);
        area.foreignBits = bitsChangeForm(from, to) && area.old.oddBytes > 0;
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
    for (const CellMove& move : moves)
        if (plan[indexOf(*move.from)].old.oddBytes > 0)
            throw Refusal(QStringLiteral("%1: this panel does not store one bit per byte, so it is not known "
                                         "where its bits are; nothing was created")
                              .arg(moveText(move)));
    return plan;
}

bool writeMigrated(const AreaLayout& layout, const AreaMigration& area, const RetentionFile& old, QFile& file)
{
    if (!file.resize(layout.fileLength))
        return false;
    // From image to image, the bytes stay as the panel laid them out.
    if (area.old.oddBytes > 0 && layout.image) {
        const QByteArray bytes = old.read(0, layout.fileLength);
        return file.write(bytes) == bytes.size();
    }
    return writeValues(layout, area.values, file);
}
