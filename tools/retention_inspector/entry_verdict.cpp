// Verdicts: an entry's cells less the kept cells of its area.
#include "tools/retention_inspector/entry_verdict.h"

#include <algorithm>

namespace {

/// The blocks that hold cells, ascending.
std::vector<const LayoutBlock*> filledBlocks(const AreaLayout& area)
{
    std::vector<const LayoutBlock*> filled;
    for (const LayoutBlock& block : area.blocks)
        if (block.count > 0)
            filled.push_back(&block);
    return filled;
}

/// The block with the cell; null for none.
const LayoutBlock* blockWith(const std::vector<const LayoutBlock*>& blocks, qint64 cell)
{
    const auto after =
        std::upper_bound(blocks.begin(), blocks.end(), cell,
                         [](qint64 wanted, const LayoutBlock* block) { return wanted < block->first; });
    if (after == blocks.begin())
        return nullptr;
    const LayoutBlock* const block = *(after - 1);
    return cell <= block->last() ? block : nullptr;
}

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
    std::array<std::vector<const LayoutBlock*>, 3> filled;
    std::transform(layout.areas.begin(), layout.areas.end(), filled.begin(), filledBlocks);
    for (const ProjectEntry& entry : layout.settings.entries) {
        EntryVerdict verdict;
        verdict.entry = &entry;
        if (entry.area) {
            const AreaLayout& area = layout.of(*entry.area);
            verdict.lost = CellRanges({{entry.first(), entry.last()}}).minus(area.kept);
            if (entry.length > 0)
                verdict.block = blockWith(filled[entry.area - RetentionArea::all], entry.first());
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
