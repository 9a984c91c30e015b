// Findings about entries: every one names cells, reason and remedy.
// SPDX-License-Identifier: MIT
#include "tools/retention_inspector/layout_findings.h"

#include "define_header/address_type.h"

#include <QtCore/QStringList>

#include <algorithm>
#include <map>
#include <utility>

namespace {

/// The entries that were folded into one block and the cells that this cost.
struct Fold
{
    const LayoutBlock* block = nullptr;
    std::vector<const ProjectEntry*> entries;
    std::vector<CellRange> lost;
};

QString cellsText(const ProjectEntry& entry, const CellRanges& cells)
{
    return entry.address.block + QLatin1Char(' ') + cells.text();
}

Finding entryFinding(const ProjectEntry& entry, const char* kind, const CellRanges& cells,
                     const QString& problem, const QString& remedy)
{
    Finding finding;
    finding.kind = kind;
    finding.place = entryText(entry);
    if (!cells.isEmpty())
        finding.place += QLatin1String(", ") + cellsText(entry, cells);
    finding.problem = problem;
    finding.remedy = remedy;
    finding.entry = entry.number;
    finding.area = entry.area ? entry.address.block : QString();
    finding.cells = cells;
    return finding;
}

Finding unknownArea(const ProjectEntry& entry)
{
    const QString remedyHead = QStringLiteral("Set \"Block\" in its \"sourceAddress\" to ");
    if (!entry.hasSource)
        return entryFinding(
            entry, "no-source-address", {},
            QStringLiteral("it has no \"sourceAddress\", so nothing of it is retained."),
            QStringLiteral("Add a \"sourceAddress\" with \"Block\" (LB, LW or RWI) and \"index\", "
                           "or remove the entry."));
    for (const AreaFacts& area : areaFacts) {
        const QString name = QString::fromLatin1(area.name);
        if (entry.address.block.trimmed().compare(name, Qt::CaseInsensitive) == 0)
            return entryFinding(
                entry, "unknown-area", {},
                QStringLiteral(
                    "the area name \"%1\" is not \"%2\" to the letter, so nothing of it is retained.")
                    .arg(entry.address.block, name),
                remedyHead + QStringLiteral("%1, without blanks.").arg(name));
    }
    return entryFinding(entry, "unknown-area", {},
                        QStringLiteral("the area \"%1\" does not exist, so nothing of it is retained.")
                            .arg(entry.address.block),
                        remedyHead + QStringLiteral("LB, LW or RWI."));
}

Finding badLength(const ProjectEntry& entry)
{
    const QString remedy =
        QStringLiteral("Set \"addressLength\" to the number of cells to keep, or remove the entry.");
    if (entry.length == 0)
        return entryFinding(entry, "zero-length", {},
                            QStringLiteral("its addressLength is 0 or missing, so it names no cell."),
                            remedy);
    return entryFinding(
        entry, "negative-length", {},
        QStringLiteral(
            "its addressLength is %1: it names no cell and moves the blocks behind it in the file.")
            .arg(entry.length),
        remedy);
}

Finding outsideArea(const ProjectEntry& entry, const CellRanges& outside)
{
    const qint64 lastCell = cellCount(*entry.area) - 1;
    const CellRanges inside = CellRanges({{entry.first(), entry.last()}}).within({0, lastCell});
    QString remedy =
        QStringLiteral("The area's addresses are 0 to %1: move the entry there, or remove it.").arg(lastCell);
    if (!inside.isEmpty())
        remedy = QStringLiteral("Set its index to %1 and its addressLength to %2; what a panel does with the "
                                "rest of a block that leaves the area is not certain.")
                     .arg(inside.ranges().front().first)
                     .arg(inside.count());
    return entryFinding(entry, "outside-area", outside,
                        QStringLiteral("the area ends at %1, so these cells do not exist.").arg(lastCell),
                        remedy);
}

/// Finds the reasons for the lost cells of one entry; those lost to a fold are gathered in `folds`.
void explainLoss(const EntryVerdict& verdict, std::vector<Finding>& findings,
                 std::map<const LayoutBlock*, Fold>& folds)
{
    const ProjectEntry& entry = *verdict.entry;
    const CellRange area = {0, cellCount(*entry.area) - 1};
    CellRanges lost = verdict.lost.within(area);
    const CellRanges outside = verdict.lost.minus(CellRanges({area}));
    if (!outside.isEmpty())
        findings.push_back(outsideArea(entry, outside));

    const LayoutBlock* const block = verdict.block;
    const CellRanges unwritten({{unwrittenBit, unwrittenBit}});
    if (entry.area->bits && lost.contains(unwrittenBit) && (!block || block->problem.isEmpty())) {
        findings.push_back(entryFinding(entry, "unwritten-bit", unwritten,
                                        QStringLiteral("changes of this bit are never written."),
                                        QStringLiteral("Keep the value in another bit.")));
        lost = lost.minus(unwritten);
    }
    if (block && !block->problem.isEmpty() && !lost.isEmpty()) {
        findings.push_back(entryFinding(
            entry, "unsound-block", lost,
            QStringLiteral("not retained, because of block %1: %2.").arg(block->number).arg(block->problem),
            QStringLiteral("Correct the entries of %1 with a negative or too large addressLength.")
                .arg(entry.address.block)));
        return;
    }
    if (!block)
        return;
    Fold& fold = folds[block];
    fold.block = block;
    fold.entries.push_back(&entry);
    fold.lost.insert(fold.lost.end(), lost.ranges().begin(), lost.ranges().end());
}

QString entriesText(const std::vector<const ProjectEntry*>& entries)
{
    const std::size_t most = 4; // named one by one
    QStringList texts;
    for (std::size_t i = 0; i < std::min(entries.size(), most); ++i)
        texts.append(QStringLiteral("%1 \"%2\"").arg(entries[i]->number).arg(entries[i]->name));
    if (entries.size() > most)
        texts.append(QStringLiteral("%1 more").arg(entries.size() - most));
    const QString last = texts.takeLast();
    return texts.isEmpty() ? QStringLiteral("entry ") + last
                           : QStringLiteral("entries %1 and %2").arg(texts.join(QLatin1String(", ")), last);
}

Finding foldFinding(const Fold& fold, const CellRanges& lost)
{
    const ProjectEntry& any = *fold.entries.front();
    qint64 last = fold.block->last();
    for (const ProjectEntry* entry : fold.entries)
        last = std::max(last, entry->last());
    last = std::min(last, cellCount(*any.area) - 1);
    const qint64 first = std::max<qint64>(0, fold.block->first);
    Finding finding = entryFinding(
        any, "lost-in-fold", lost,
        QStringLiteral("the entries overlap and are folded into block %1, which ends one cell too early.")
            .arg(fold.block->number),
        QStringLiteral(
            "Replace them by one entry with index %1 and addressLength %2, or let each begin where "
            "the one before it ends.")
            .arg(first)
            .arg(last - first + 1));
    finding.place = entriesText(fold.entries) + QLatin1String(", ") + cellsText(any, lost);
    return finding;
}

/// Entries that could be removed without a loss.
void findSuperfluous(const Layout& layout, const std::vector<EntryVerdict>& verdicts,
                     std::vector<Finding>& findings)
{
    std::map<std::pair<const AreaFacts*, int>, const ProjectEntry*> longest; // by area and first cell
    for (const EntryVerdict& verdict : verdicts) {
        const ProjectEntry& entry = *verdict.entry;
        if (!entry.area || entry.length <= 0)
            continue;
        const ProjectEntry*& known = longest[{entry.area, entry.address.index}];
        if (!known || known->length < entry.length)
            known = &entry;
    }
    const QString remedy = QStringLiteral("Remove it.");
    for (const EntryVerdict& verdict : verdicts) {
        const ProjectEntry& entry = *verdict.entry;
        if (!entry.area || entry.length <= 0)
            continue;
        const CellRanges cells({{entry.first(), entry.last()}});
        const ProjectEntry& sameStart = *longest[{entry.area, entry.address.index}];
        QString problem;
        const char* kind = "same-start";
        if (&sameStart != &entry) {
            problem =
                QStringLiteral("%1 begins at the same cell and is as long or longer, so this one has no "
                               "effect.")
                    .arg(entryText(sameStart));
        } else if (verdict.lost.isEmpty() && verdict.block && verdict.block->maker != entry.number) {
            const ProjectEntry& maker =
                layout.settings.entries[static_cast<std::size_t>(verdict.block->maker - 1)];
            kind = "inside-another";
            if (entry.last() <= maker.last())
                problem = QStringLiteral("it lies inside %1, so it has no effect.").arg(entryText(maker));
        }
        if (problem.isEmpty())
            continue;
        findings.push_back(entryFinding(entry, kind, cells, problem, remedy));
        findings.back().severity = Finding::Severity::Warning;
    }
}

/// A double word is two words, but lengths count words.
void checkDoubleWords(const ProjectEntry& entry, std::vector<Finding>& findings)
{
    if (entry.area->bits || entry.length <= 0 || entry.length % 2 == 0 ||
        addressType2Int(entry.addressType) != 4)
        return;
    findings.push_back(entryFinding(
        entry, "half-double-word", CellRanges({{entry.last(), entry.last()}}),
        QStringLiteral(
            "its addressType is \"Double Word\" but its addressLength, which always counts words, is "
            "odd: the last double word is kept by half."),
        QStringLiteral("Set \"addressLength\" to twice the number of double words.")));
    findings.back().severity = Finding::Severity::Warning;
}

} // namespace

std::vector<Finding> entryFindings(const Layout& layout, const std::vector<EntryVerdict>& verdicts)
{
    std::vector<Finding> findings;
    std::map<const LayoutBlock*, Fold> folds;
    for (const EntryVerdict& verdict : verdicts) {
        if (!verdict.knownArea()) {
            findings.push_back(unknownArea(*verdict.entry));
            continue;
        }
        if (verdict.entry->length <= 0)
            findings.push_back(badLength(*verdict.entry));
        else
            explainLoss(verdict, findings, folds);
        checkDoubleWords(*verdict.entry, findings);
    }
    for (const AreaLayout& area : layout.areas) {
        for (const LayoutBlock& block : area.blocks) {
            const auto fold = folds.find(&block);
            if (fold == folds.end())
                continue;
            const CellRanges lost(fold->second.lost);
            if (!lost.isEmpty())
                findings.push_back(foldFinding(fold->second, lost));
        }
    }
    findSuperfluous(layout, verdicts, findings);
    return findings;
}
