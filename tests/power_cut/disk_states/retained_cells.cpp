// Derives cells and files from the model of a project.
// SPDX-License-Identifier: MIT
#include "tests/power_cut/disk_states/retained_cells.h"

#include "tests/support/kept_files_model.h"

#include <algorithm>

namespace {

int wordAt(const QByteArray& bytes, int at)
{
    const auto byte = [&](int offset) {
        return offset < bytes.size() ? static_cast<unsigned char>(bytes.at(offset)) : 0;
    };
    return byte(at) | byte(at + 1) << 8;
}

QByteArray fileOf(std::size_t area, const Files& files)
{
    const auto found = files.find(QLatin1String(testAreas[area].fileName));
    return found == files.end() ? QByteArray() : found->second;
}

} // namespace

int RetainedCells::count(std::size_t area) const
{
    return blocks[area].empty() ? 0 : blocks[area].back().place + blocks[area].back().count;
}

const Block* RetainedCells::blockOf(std::size_t area, int address) const
{
    const auto found = std::find_if(blocks[area].begin(), blocks[area].end(), [&](const Block& block) {
        return address >= block.first && address < block.first + block.count;
    });
    return found == blocks[area].end() ? nullptr : &*found;
}

int RetainedCells::addressAt(std::size_t area, int place) const
{
    for (const Block& block : blocks[area])
        if (place < block.place + block.count)
            return block.first + place - block.place;
    return -1;
}

RetainedCells retainedCellsOf(const object& project)
{
    RetainedCells cells;
    cells.project = expectedOf(project);
    cells.wholeAreas = cells.project.saveAll;
    for (std::size_t area = 0; area < 3; ++area) {
        int place = 0;
        for (const ExpectedBlock& block : cells.project.blocks[area]) {
            if (block.count > 0)
                cells.blocks[area].push_back({block.entry.index, block.count, place});
            place += block.count;
        }
    }
    return cells;
}

std::vector<int> storedCells(std::size_t area, const Files& files, int place, int count)
{
    const QByteArray file = fileOf(area, files);
    std::vector<int> values;
    values.reserve(static_cast<std::size_t>(count));
    for (int i = place; i < place + count; ++i) {
        if (area == 0)
            values.push_back(wordAt(file, i / 8) >> i % 8 & 1);
        else
            values.push_back(file.isEmpty() ? nothing : wordAt(file, 2 * i));
    }
    return values;
}

QByteArray storedImage(std::size_t area, const Files& files)
{
    const QByteArray file = fileOf(area, files);
    return file.size() < testAreas[area].imageBytes ? QByteArray(testAreas[area].imageBytes, '\0')
                                                    : file.left(testAreas[area].imageBytes);
}

Files filesAfterStart(const Files& files, const RetainedCells& cells, MemoryAreas& areas)
{
    std::array<std::optional<QByteArray>, 3> kept;
    for (std::size_t area = 0; area < 3; ++area)
        if (files.count(QLatin1String(testAreas[area].fileName)) != 0)
            kept[area] = fileOf(area, files);
    KeptFilesModel panel(cells.project, areas, kept);
    panel.open();
    panel.init();
    Files after = files;
    for (std::size_t area = 0; area < 3; ++area)
        after[QLatin1String(testAreas[area].fileName)] = *panel.file(area);
    return after;
}
