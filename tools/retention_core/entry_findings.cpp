// Judges what becomes of each entry, and names cells, reason and remedy where values are lost.
// SPDX-License-Identifier: MIT
#include "tools/retention_core/findings.h"

#include "define_header/address_type.h"

#include <QtCore/QStringList>

#include <algorithm>
#include <map>
#include <utility>

namespace {

/// The entries that were folded into one block, and the cells lost by that.
struct Fold
{
    const LayoutBlock* block = nullptr;
    std::vector<const ProjectEntry*> entries;
    std::vector<CellRange> lost;
};

EntryVerdict::Kind kindOf(const EntryVerdict& verdict)
{
    const ProjectEntry& entry = *verdict.entry;
    const qint64 lost = verdict.lost.count();
    if (!entry.area || entry.length() <= 0 || lost == entry.length())
        return EntryVerdict::Kind::None;
    if (verdict.block && verdict.block->entries.size() > 1)
        return EntryVerdict::Kind::Folded;
    return lost == 0 ? EntryVerdict::Kind::Whole : EntryVerdict::Kind::Partial;
}

QString cellsText(const ProjectEntry& entry, const CellRanges& cells)
{
    return entry.areaName() + QLatin1Char(' ') + cells.text();
}

Finding entryFinding(const ProjectEntry& entry, const char* kind, const CellRanges& cells,
                     const QString& problem, const QString& remedy,
                     Finding::Severity severity = Finding::Severity::Error)
{
    const QString place =
        cells.isEmpty() ? entry.text() : entry.text() + QLatin1String(", ") + cellsText(entry, cells);
    return {severity, kind,        place, problem, remedy, entry.area ? entry.areaName() : QString(),
            cells,    entry.number};
}

Finding unknownArea(const ProjectEntry& entry)
{
    const QString remedyHead = QStringLiteral("Set \"Block\" in its \"sourceAddress\" to ");
    if (!entry.hasSource)
        return entryFinding(
            entry, "no-source-address", {},
            QStringLiteral("it has no \"sourceAddress\", so none of the entry is retained."),
            QStringLiteral("Add a \"sourceAddress\" with \"Block\" (LB, LW or RWI) and \"index\", "
                           "or remove the entry."));
    for (const AreaFacts& area : areaFacts) {
        const QString name = QString::fromLatin1(area.name);
        if (entry.areaName().trimmed().compare(name, Qt::CaseInsensitive) == 0)
            return entryFinding(
                entry, "unknown-area", {},
                QStringLiteral(
                    "the area name \"%1\" is not exactly \"%2\", so none of the entry is retained.")
                    .arg(entry.areaName(), name),
                remedyHead + QStringLiteral("%1, in upper case and without spaces.").arg(name));
    }
    return entryFinding(
        entry, "unknown-area", {},
        QStringLiteral("there is no area \"%1\", so none of the entry is retained.").arg(entry.areaName()),
        remedyHead + QStringLiteral("LB, LW or RWI."));
}

Finding badLength(const ProjectEntry& entry)
{
    const QString remedy =
        QStringLiteral("Set \"addressLength\" to the number of cells to retain, or remove the entry.");
    if (entry.length() == 0)
        return entryFinding(entry, "zero-length", {},
                            QStringLiteral("its \"addressLength\" is 0 or missing, so it covers no cells."),
                            remedy);
    return entryFinding(
        entry, "negative-length", {},
        QStringLiteral(
            "its \"addressLength\" is %1: it covers no cells and shifts the blocks after it in the file.")
            .arg(entry.length()),
        remedy);
}

Finding outsideArea(const ProjectEntry& entry, const CellRanges& outside)
{
    const qint64 lastCell = cellCount(*entry.area) - 1;
    const CellRanges inside = entry.cells().within({0, lastCell});
    QString remedy =
        QStringLiteral("Valid addresses are 0 to %1: move the entry into this range, or remove it.")
            .arg(lastCell);
    if (!inside.isEmpty())
        remedy = QStringLiteral("Set its \"index\" to %1 and its \"addressLength\" to %2; how a panel "
                                "handles the part of a block beyond the end of the area is not defined.")
                     .arg(inside.ranges().front().first)
                     .arg(inside.count());
    return entryFinding(entry, "outside-area", outside,
                        QStringLiteral("the area ends at %1, so these cells do not exist.").arg(lastCell),
                        remedy);
}

/// Finds why cells of one entry are lost; those lost in a folded block are collected in `folds`.
void explainLoss(const Layout& layout, const EntryVerdict& verdict, std::vector<Finding>& findings,
                 std::map<const LayoutBlock*, Fold>& folds)
{
    const ProjectEntry& entry = *verdict.entry;
    const CellRange area = {0, cellCount(*entry.area) - 1};
    CellRanges lost = verdict.lost.within(area);
    const CellRanges outside = verdict.lost.minus(CellRanges({area}));
    if (!outside.isEmpty())
        findings.push_back(outsideArea(entry, outside));

    const QString& areaProblem = layout.of(*entry.area).problem;
    if (!areaProblem.isEmpty()) {
        if (!lost.isEmpty())
            findings.push_back(entryFinding(
                entry, "unsound-block", lost,
                QStringLiteral("not retained: %1; no value in %2 can be trusted.")
                    .arg(areaProblem, entry.areaName()),
                QStringLiteral("Correct the %1 entries whose \"addressLength\" is negative or too large.")
                    .arg(entry.areaName())));
        return;
    }
    const CellRanges ignored = ignoredCells(*entry.area);
    const CellRanges unwritten = lost.minus(lost.minus(ignored));
    if (!unwritten.isEmpty()) {
        findings.push_back(entryFinding(entry, "unwritten-bit", unwritten,
                                        QStringLiteral("the module never writes changes of this bit."),
                                        QStringLiteral("Use another bit for this value.")));
        lost = lost.minus(unwritten);
    }
    if (!verdict.block)
        return;
    Fold& fold = folds[verdict.block];
    fold.block = verdict.block;
    fold.entries.push_back(&entry);
    fold.lost.insert(fold.lost.end(), lost.begin(), lost.end());
}

Finding foldFinding(const Fold& fold, const CellRanges& lost)
{
    const ProjectEntry& any = *fold.entries.front();
    qint64 last = fold.block->last();
    for (const ProjectEntry* entry : fold.entries)
        last = std::max(last, entry->last());
    last = std::min(last, cellCount(*any.area) - 1);
    const qint64 first = std::max<qint64>(0, fold.block->first());
    Finding finding = entryFinding(
        any, "lost-in-fold", lost,
        QStringLiteral("the entries overlap and are folded into block %1, which ends one cell too early.")
            .arg(fold.block->number),
        QStringLiteral("Replace them with a single entry (\"index\" %1, \"addressLength\" %2), or start each "
                       "entry right after the last cell of the one before it.")
            .arg(first)
            .arg(last - first + 1));
    finding.place = entriesText(fold.entries) + QLatin1String(", ") + cellsText(any, lost);
    return finding;
}

/// Finds entries that could be removed without a loss.
void findSuperfluous(const Layout& layout, const std::vector<EntryVerdict>& verdicts,
                     std::vector<Finding>& findings)
{
    std::map<std::pair<const AreaFacts*, int>, const ProjectEntry*> longest; // by area and first cell
    for (const ProjectEntry& entry : layout.settings.entries) {
        const ProjectEntry*& known = longest[{entry.area, entry.configured.address.index}];
        if (!known || known->length() < entry.length())
            known = &entry;
    }
    for (const EntryVerdict& verdict : verdicts) {
        const ProjectEntry& entry = *verdict.entry;
        if (!entry.area || entry.length() <= 0)
            continue;
        const ProjectEntry& sameStart = *longest[{entry.area, entry.configured.address.index}];
        QString problem;
        const char* kind = "same-start";
        if (&sameStart != &entry) {
            problem = QStringLiteral(
                          "%1 starts at the same cell and is at least as long, so this entry has no effect.")
                          .arg(sameStart.text());
        } else if (verdict.lost.isEmpty() && verdict.block && verdict.block->maker != entry.number) {
            const ProjectEntry& maker =
                layout.settings.entries[static_cast<std::size_t>(verdict.block->maker - 1)];
            kind = "inside-another";
            if (entry.last() <= maker.last())
                problem = QStringLiteral("it lies inside %1, so it has no effect.").arg(maker.text());
        }
        if (!problem.isEmpty())
            findings.push_back(entryFinding(entry, kind, entry.cells(), problem, QStringLiteral("Remove it."),
                                            Finding::Severity::Warning));
    }
}

/// Finds double-word entries with an odd length: lengths count words, and a double word has two.
void checkDoubleWords(const ProjectEntry& entry, std::vector<Finding>& findings)
{
    if (entry.area->bits || entry.length() <= 0 || entry.length() % 2 == 0 ||
        addressType2Int(entry.configured.addressType) != 4)
        return;
    findings.push_back(entryFinding(
        entry, "half-double-word", CellRanges({{entry.last(), entry.last()}}),
        QStringLiteral("its \"addressType\" is \"Double Word\", but its \"addressLength\", which always "
                       "counts words, is odd: only half of the last double word is retained."),
        QStringLiteral("Set \"addressLength\" to twice the number of double words."),
        Finding::Severity::Warning));
}

} // namespace

std::vector<EntryVerdict> entryVerdicts(const Layout& layout)
{
    std::vector<EntryVerdict> verdicts;
    if (layout.images())
        return verdicts;
    for (const ProjectEntry& entry : layout.settings.entries) {
        EntryVerdict verdict;
        verdict.entry = &entry;
        if (entry.area) {
            const AreaLayout& area = layout.of(*entry.area);
            verdict.lost = entry.cells().minus(area.kept);
            if (entry.length() > 0)
                verdict.block = area.blockOf(entry);
        }
        verdict.kind = kindOf(verdict);
        verdicts.push_back(verdict);
    }
    return verdicts;
}

Words EntryVerdict::words() const
{
    switch (kind) {
    case Kind::Whole:
        return {"whole", QStringLiteral("fully retained")};
    case Kind::Folded:
        return {"folded", QStringLiteral("folded into block %1").arg(block->number)};
    case Kind::Partial:
        return {"partial", QStringLiteral("partly retained")};
    case Kind::None:
        break;
    }
    return {"none", QStringLiteral("not retained")};
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

std::vector<Finding> entryFindings(const Layout& layout)
{
    std::vector<Finding> findings;
    const std::vector<EntryVerdict> verdicts = entryVerdicts(layout);
    std::map<const LayoutBlock*, Fold> folds;
    for (const EntryVerdict& verdict : verdicts) {
        if (!verdict.entry->area) {
            findings.push_back(unknownArea(*verdict.entry));
            continue;
        }
        if (verdict.entry->length() <= 0)
            findings.push_back(badLength(*verdict.entry));
        else
            explainLoss(layout, verdict, findings, folds);
        checkDoubleWords(*verdict.entry, findings);
    }
    for (const AreaLayout& area : layout.areas) {
        for (const LayoutBlock& block : area.blocks) {
            const CellRanges lost(folds[&block].lost);
            if (!lost.isEmpty())
                findings.push_back(foldFinding(folds[&block], lost));
        }
    }
    findSuperfluous(layout, verdicts, findings);
    return findings;
}
