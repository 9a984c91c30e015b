// States the rules by which entries become blocks and blocks get their places in a file, with records of its
// own. The module's results are compared with them.
// SPDX-License-Identifier: MIT
#pragma once

#include <QtCore/QString>

#include <cstdint>
#include <vector>

/// The parts of an entry that the rules use.
struct RuleEntry
{
    std::int32_t index;
    std::int32_t addressLength;
    std::int32_t length; ///< the address's own length value, not the range's
    int origin;          ///< identifies the entry; copied with the address
};

struct RuleBlock
{
    std::int32_t index;
    std::int32_t count;
    int origin; ///< of the entry whose address the block keeps
    QString area = QString();
    std::int32_t fileOffset = 0;
    std::int32_t bitOffset = 0;
};

/// 32-bit sums and differences that wrap.
std::int32_t sum32(std::int32_t a, std::int32_t b);
std::int32_t difference32(std::int32_t a, std::int32_t b);

/// The blocks of one area's entries.
std::vector<RuleBlock> partitionByRules(std::vector<RuleEntry> entries);

/// Sets fileOffset and bitOffset of one area's blocks.
void mapByRules(std::vector<RuleBlock>& blocks);
