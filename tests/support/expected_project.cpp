// Applies the rules to a project.
// SPDX-License-Identifier: MIT
#include "tests/support/expected_project.h"

#include "tests/support/areas.h"
#include "tests/support/literal_rules.h"

#include <algorithm>
#include <tuple>
#include <utility>

namespace {

const object* child(const object* node, const char* name)
{
    if (node)
        for (const auto& candidate : node->children)
            if (candidate->name == QLatin1String(name))
                return candidate.get();
    return nullptr;
}

const property* propertyOf(const object* node, const char* name, bool text)
{
    if (node)
        for (const auto& candidate : node->properties)
            if (candidate->name == QLatin1String(name))
                return candidate->isText == text ? candidate.get() : nullptr;
    return nullptr;
}

quint32 number(const object* node, const char* name, quint32 absent)
{
    const property* const found = propertyOf(node, name, false);
    return found ? found->number : absent;
}

QString text(const object* node, const char* name)
{
    const property* const found = propertyOf(node, name, true);
    return found ? found->text : QString();
}

ExpectedEntry entryOf(const object& node)
{
    const object* const source = child(&node, "sourceAddress");
    ExpectedEntry entry;
    entry.type = text(&node, "addressType");
    entry.addressLength = static_cast<std::int32_t>(number(&node, "addressLength", 0));
    entry.link = text(source, "Link");
    entry.block = text(source, "Block");
    entry.number = text(source, "No");
    entry.index = static_cast<std::int32_t>(number(source, "index", 0));
    entry.station = static_cast<std::int32_t>(number(source, "station", 0));
    entry.length = static_cast<std::int32_t>(number(source, "length", 0));
    entry.bitOrWord = static_cast<std::int32_t>(number(source, "Bit_or_Word", 0));
    return entry;
}

bool onlyIndexIsSame(const ExpectedEntry& one, const ExpectedEntry& other)
{
    const auto rest = [](const ExpectedEntry& entry) {
        return std::tie(entry.link, entry.block, entry.number, entry.type, entry.station, entry.length,
                        entry.bitOrWord, entry.addressLength);
    };
    return one.index == other.index && rest(one) != rest(other);
}

/// The blocks of one area's entries, taken in the given order, each with its place in the file.
std::vector<ExpectedBlock> expectedBlocks(const std::vector<ExpectedEntry>& entries, const QString& area)
{
    std::vector<RuleEntry> ruleEntries;
    for (const ExpectedEntry& entry : entries)
        ruleEntries.push_back(
            {entry.index, entry.addressLength, entry.length, static_cast<int>(ruleEntries.size())});
    std::vector<RuleBlock> ruleBlocks = partitionByRules(std::move(ruleEntries));
    for (RuleBlock& block : ruleBlocks)
        block.area = area;
    mapByRules(ruleBlocks);
    std::vector<ExpectedBlock> blocks;
    for (const RuleBlock& block : ruleBlocks)
        blocks.push_back({entries[static_cast<std::size_t>(block.origin)], block.count, block.fileOffset,
                          block.bitOffset});
    return blocks;
}

} // namespace

ExpectedProject expectedOf(const object& project)
{
    ExpectedProject model;
    const object* const retention = child(&project, "DataRetention");
    if (!retention)
        return model;
    model.saveAll = number(retention, "open Save all", 0) != 0;
    if (model.saveAll) {
        model.mode = 1;
        const auto minutes = static_cast<std::int16_t>(number(retention, "Save Time", 5) & 0xffff);
        model.periodMs = std::int64_t(60000) * minutes;
        return model;
    }
    if (retention->children.empty())
        return model;
    model.mode = 2;
    for (const auto& node : retention->children) {
        const ExpectedEntry entry = entryOf(*node);
        for (std::size_t a = 0; a < 3; ++a)
            if (entry.block == QLatin1String(testAreas[a].name))
                model.entries[a].push_back(entry);
    }
    for (std::size_t a = 0; a < 3; ++a) {
        std::stable_sort(
            model.entries[a].begin(), model.entries[a].end(),
            [](const ExpectedEntry& one, const ExpectedEntry& other) { return one.index < other.index; });
        for (std::size_t k = 1; k < model.entries[a].size(); ++k)
            model.isAmbiguous =
                model.isAmbiguous || onlyIndexIsSame(model.entries[a][k - 1], model.entries[a][k]);
        model.blocks[a] = expectedBlocks(model.entries[a], QLatin1String(testAreas[a].name));
    }
    return model;
}
