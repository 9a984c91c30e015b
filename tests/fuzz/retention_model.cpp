// The rules from project to blocks, one by one.
#include "tests/fuzz/retention_model.h"

#include <algorithm>
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

ModelEntry entryOf(const object& node)
{
    const object* const source = child(&node, "sourceAddress");
    ModelEntry entry;
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

std::int32_t end(const ModelEntry& entry)
{
    return plus(entry.index, entry.addressLength);
}

ModelBlock blockFrom(const ModelEntry& entry)
{
    return {entry, entry.addressLength, 0, 0};
}

/// Compares each entry with the next one; a block in the making is carried on in the next one's place.
std::vector<ModelBlock> partition(std::vector<ModelEntry> entries)
{
    std::vector<ModelBlock> blocks;
    if (entries.empty())
        return blocks;
    for (std::size_t k = 0; k + 1 < entries.size(); ++k) {
        ModelEntry& cur = entries[k];
        ModelEntry& next = entries[k + 1];
        if (cur.index < next.index && end(cur) <= next.index) { // apart or adjacent
            blocks.push_back(blockFrom(cur));
        } else if (cur.index < next.index && end(next) < end(cur)) { // next lies strictly inside
            next = cur;
        } else if (cur.index < next.index) { // next reaches to or past the end
            cur.addressLength = minus(minus(end(next), 1), cur.index);
            next = cur;
        } else if (cur.index == next.index) { // the longer one stays
            if (cur.addressLength >= next.addressLength)
                next = cur;
        } else if (end(next) <= cur.index) { // out of order and apart
            blocks.push_back(blockFrom(cur));
        } else if (plus(next.index, next.length) <= end(cur)) { // out of order, by the address's own length
            cur.addressLength = minus(minus(end(cur), 1), next.index);
            next = cur;
        }
    }
    blocks.push_back(blockFrom(entries.back()));
    return blocks;
}

void placeBits(std::vector<ModelBlock>& blocks)
{
    std::int32_t byte = 0;
    std::int32_t bit = 0;
    for (ModelBlock& block : blocks) {
        block.fileOffset = byte;
        block.bitOffset = bit;
        byte = plus(byte, block.count / 8);
        bit = plus(bit, block.count % 8);
        if (bit > 7) {
            bit -= 8;
            byte = plus(byte, 1);
        }
    }
}

void placeWords(std::vector<ModelBlock>& blocks)
{
    std::int32_t byte = 0;
    for (ModelBlock& block : blocks) {
        block.fileOffset = byte;
        byte = plus(byte, plus(block.count, block.count));
    }
}

} // namespace

std::vector<ModelBlock> modelBlocks(std::vector<ModelEntry> entries, bool bits)
{
    std::vector<ModelBlock> blocks = partition(std::move(entries));
    if (bits)
        placeBits(blocks);
    else
        placeWords(blocks);
    return blocks;
}

RetentionModel modelOf(const object& project)
{
    RetentionModel model;
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
        const ModelEntry entry = entryOf(*node);
        for (std::size_t a = 0; a < 3; ++a)
            if (entry.block == QLatin1String(modelAreas[a]))
                model.entries[a].push_back(entry);
    }
    for (std::size_t a = 0; a < 3; ++a) {
        // Equal starts end up in whatever order this sort gives them; the outcome can depend on it.
        std::sort(model.entries[a].begin(), model.entries[a].end(),
                  [](const ModelEntry& one, const ModelEntry& other) { return one.index < other.index; });
        model.blocks[a] = modelBlocks(model.entries[a], a == 0);
    }
    return model;
}
