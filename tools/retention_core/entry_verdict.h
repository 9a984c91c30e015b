// What becomes of each configured entry.
// SPDX-License-Identifier: MIT
#ifndef TOOLS_RETENTION_CORE_ENTRY_VERDICT_H
#define TOOLS_RETENTION_CORE_ENTRY_VERDICT_H

#include "tools/retention_core/layout.h"

#include <vector>

struct EntryVerdict
{
    enum class Kind
    {
        Whole,   ///< every cell comes back; the block is its own
        Folded,  ///< shares its block with entries that overlap it
        Partial, ///< some cells come back
        None     ///< nothing comes back
    };

    const ProjectEntry* entry = nullptr;
    Kind kind = Kind::None;
    const LayoutBlock* block = nullptr; ///< the block that it went into; null for none
    CellRanges lost;                    ///< its cells that do not come back

    bool knownArea() const { return entry->area != nullptr; }
};

/// One verdict an entry, in the project's order: the entry's cells compared with the cells that are kept. In
/// whole-area mode, where entries have no effect, there are none. Points into `layout`.
std::vector<EntryVerdict> entryVerdicts(const Layout& layout);

/// Such as "folded into block 2".
QString verdictText(const EntryVerdict& verdict);
/// "whole", "folded", "partial" or "none".
QString verdictKey(const EntryVerdict& verdict);

#endif
