// The rules by which entries become blocks and blocks get their places in a file, one rule a statement, in
// records of their own: what the module's results are compared with.
// SPDX-License-Identifier: MIT
#pragma once

#include <QtCore/QString>

#include <cstdint>
#include <vector>

/// An entry as far as the rules look at it.
struct RuleEntry
{
    std::int32_t index;
    std::int32_t addressLength;
    std::int32_t length; ///< the address's own length value, not the range's
    int origin;          ///< tells entries apart; travels with the address
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

/// 32-bit sums that wrap around.
std::int32_t sum32(std::int32_t a, std::int32_t b);
std::int32_t difference32(std::int32_t a, std::int32_t b);

/// The blocks of one area's entries; `entries` is overwritten entry by entry on the way.
std::vector<RuleBlock> partitionByRules(std::vector<RuleEntry> entries);

/// Sets fileOffset and bitOffset of one area's blocks.
void mapByRules(std::vector<RuleBlock>& blocks);
