// Verdicts: an entry's cells less the kept cells of its area.
// SPDX-License-Identifier: MIT
#include "tools/retention_core/entry_verdict.h"

namespace {

EntryVerdict::Kind kindOf(const EntryVerdict& verdict)
{
    const ProjectEntry& entry = *verdict.entry;
    const qint64 lost = verdict.lost.count();
    if (!verdict.knownArea() || entry.length <= 0 || lost == entry.length)
        return EntryVerdict::Kind::None;
    if (verdict.block && verdict.block->entries.size() > 1)
        return EntryVerdict::Kind::Folded;
    return lost == 0 ? EntryVerdict::Kind::Whole : EntryVerdict::Kind::Partial;
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
            verdict.lost = CellRanges({{entry.first(), entry.last()}}).minus(area.kept);
            if (entry.length > 0)
                verdict.block = area.blockOf(entry);
        }
        verdict.kind = kindOf(verdict);
        verdicts.push_back(verdict);
    }
    return verdicts;
}

QString verdictText(const EntryVerdict& verdict)
{
    switch (verdict.kind) {
    case EntryVerdict::Kind::Whole:
        return QStringLiteral("retained whole");
    case EntryVerdict::Kind::Folded:
        return QStringLiteral("folded into block %1").arg(verdict.block->number);
    case EntryVerdict::Kind::Partial:
        return QStringLiteral("retained in part");
    case EntryVerdict::Kind::None:
        break;
    }
    return QStringLiteral("not retained");
}

QString verdictKey(const EntryVerdict& verdict)
{
    switch (verdict.kind) {
    case EntryVerdict::Kind::Whole:
        return QStringLiteral("whole");
    case EntryVerdict::Kind::Folded:
        return QStringLiteral("folded");
    case EntryVerdict::Kind::Partial:
        return QStringLiteral("partial");
    case EntryVerdict::Kind::None:
        break;
    }
    return QStringLiteral("none");
}
