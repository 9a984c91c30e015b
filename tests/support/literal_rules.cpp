// Applies each rule in one statement, without any attempt at elegance.
// SPDX-License-Identifier: MIT
#include "tests/support/literal_rules.h"

#include <cstddef>

std::int32_t sum32(std::int32_t a, std::int32_t b)
{
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(a) + static_cast<std::uint32_t>(b));
}

std::int32_t difference32(std::int32_t a, std::int32_t b)
{
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(a) - static_cast<std::uint32_t>(b));
}

namespace {

/// The first cell after the entry.
std::int32_t end(const RuleEntry& entry)
{
    return sum32(entry.index, entry.addressLength);
}

RuleBlock blockFrom(const RuleEntry& entry)
{
    return {entry.index, entry.addressLength, entry.origin};
}

/// The step for entries k and k + 1.
void step(RuleEntry& cur, RuleEntry& next, std::vector<RuleBlock>& blocks)
{
    if (cur.index < next.index && end(cur) <= next.index) { // apart or adjacent
        blocks.push_back(blockFrom(cur));
        return;
    }
    if (cur.index < next.index && end(cur) > next.index && end(next) < end(cur)) { // strictly inside
        next = cur;
        return;
    }
    if (cur.index < next.index && end(cur) > next.index && end(next) >= end(cur)) { // to the end or past it
        cur.addressLength = difference32(difference32(end(next), 1), cur.index);
        next = cur;
        return;
    }
    if (cur.index == next.index && cur.addressLength < next.addressLength) // the longer one comes later
        return;
    if (cur.index == next.index && cur.addressLength >= next.addressLength) { // the longer one came first
        next = cur;
        return;
    }
    // cur.index > next.index: out of order
    if (end(next) <= cur.index) {
        blocks.push_back(blockFrom(cur));
        return;
    }
    if (sum32(next.index, next.length) > end(cur)) // the address's own length, not the range's
        return;
    cur.addressLength = difference32(difference32(end(cur), 1), next.index);
    next = cur;
}

} // namespace

std::vector<RuleBlock> partitionByRules(std::vector<RuleEntry> entries)
{
    std::vector<RuleBlock> blocks;
    if (entries.empty())
        return blocks;
    for (std::size_t k = 0; k + 1 < entries.size(); ++k)
        step(entries[k], entries[k + 1], blocks);
    blocks.push_back(blockFrom(entries.back()));
    return blocks;
}

void mapByRules(std::vector<RuleBlock>& blocks)
{
    std::int32_t byte = 0;
    std::int32_t bit = 0;
    for (RuleBlock& block : blocks) {
        block.fileOffset = byte;
        block.bitOffset = bit;
        if (block.area == QLatin1String("LB")) {
            byte = sum32(byte, block.count / 8);
            bit = sum32(bit, block.count % 8);
            if (bit > 7) {
                bit = difference32(bit, 8);
                byte = sum32(byte, 1);
            }
        } else if (block.area == QLatin1String("LW") || block.area == QLatin1String("RWI")) {
            byte = sum32(byte, sum32(block.count, block.count));
        }
    }
}
