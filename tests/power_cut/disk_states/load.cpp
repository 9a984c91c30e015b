// Makes random changes and saves.
// SPDX-License-Identifier: MIT
#include "tests/power_cut/disk_states/load.h"

#include "simulated_host/shell.h"

#include <algorithm>
#include <cstring>

namespace {

/// The bit whose changes are not written.
const int ignoredBit = 60100;

/// A step that takes a word through all its values, with changes in both bytes.
const int step16 = 0x9e37;

QByteArray randomBytes(int size, std::uint64_t seed)
{
    QByteArray bytes(size, '\0');
    RandomSource random(seed);
    for (int i = 0; i < size; i += 2) {
        const int fewSteps = -step16 * random.between(1, 5);
        const int word = random.oneIn(8) ? fewSteps : random.between(1, 255) | random.between(1, 255) << 8;
        bytes[i] = static_cast<char>(word);
        bytes[i + 1] = static_cast<char>(word >> 8);
    }
    return bytes;
}

} // namespace

void fillAtRandom(MemoryAreas& areas, RandomSource& random)
{
    // Taken from one pool, because every start of every disk state needs 320 KiB.
    static const QByteArray words = randomBytes(1 << 19, 1);
    for (MemoryArea& area : areas.all()) {
        auto& memory = area.memory();
        const auto from =
            words.begin() + 2 * random.below((words.size() - static_cast<int>(memory.size())) / 2);
        if (area.isBits()) // every second byte of 131072, as a bit that is 0 in about half the cells
            for (std::size_t i = 0; i < memory.size(); ++i)
                memory[i] = static_cast<unsigned char>(from[static_cast<int>(i)] & 0x81);
        else
            std::copy(from, from + static_cast<int>(memory.size()), memory.begin());
    }
}

Load::Load(Panel& panel, const RetainedCells& cells, RandomSource& random, LoadLog& log)
    : panel(panel), cells(cells), random(random), log(log)
{
    setCommandRunner([this](const char* command) { return runCommand(command); });
}

Load::~Load()
{
    setCommandRunner({});
}

void Load::step()
{
    if (cells.wholeAreas)
        changeAreas();
    else
        changeRange();
}

int Load::runCommand(const char* command)
{
    if (std::strcmp(command, "sync") != 0)
        qFatal("the module ran '%s'", command);
    log.sync();
    return 0;
}

/// The next values of consecutive cells. Sometimes they swap; otherwise each word advances by its step, and
/// bits advance as one number by an odd step.
void Load::changeGroup(std::size_t area, int first, int count)
{
    MemoryArea& memory = panel.areas.all()[area];
    takeGroup(area, first, count);
    const std::vector<ushort>& before = last.before;
    const bool changePlaces = count > 1 && random.oneIn(6);
    const int step = random.oneIn(4) ? random.oneOf<int>({0x0001, 0x0100}) : step16;
    int carry = 2 * random.below(1 << std::min(count - 1, 8)) + 1;
    for (int j = 0; j < count; ++j) {
        const int value = before[static_cast<std::size_t>(j)];
        const int sum = value + (carry & 1);
        carry = (carry >> 1) + (sum >> 1);
        const int next = memory.isBits() ? sum & 1 : value + step;
        const int neighbour = before[static_cast<std::size_t>((j + 1) % count)];
        memory.setCell(first + j, static_cast<ushort>(changePlaces ? neighbour : next));
    }
}

void Load::takeGroup(std::size_t area, int first, int count)
{
    last = {area, first, {}};
    for (int j = 0; j < count; ++j)
        last.before.push_back(*panel.areas.all()[area].cell(first + j));
}

/// Restores the last group's previous values.
void Load::undo()
{
    MemoryArea& memory = panel.areas.all()[last.area];
    int address = last.first;
    for (ushort& value : last.before) {
        const ushort now = *memory.cell(address);
        memory.setCell(address++, value);
        value = now;
    }
}

/// Moves the last group and its neighbours by one cell, so that only the order of the values changes.
void Load::shift()
{
    const int first = std::max(0, last.first - 1);
    const int end = std::min(MemoryArea::cellCount, last.first + static_cast<int>(last.before.size()) + 1);
    takeGroup(last.area, first, end - first);
    MemoryArea& memory = panel.areas.all()[last.area];
    for (int address = first; address < end; ++address)
        memory.setCell(address, last.before[static_cast<std::size_t>((address + 1 - first) % (end - first))]);
}

/// Clears the last cells of an area that are not 0.
void Load::clearEnd()
{
    const auto area = static_cast<std::size_t>(random.below(3));
    MemoryArea& memory = panel.areas.all()[area];
    int end = MemoryArea::cellCount;
    while (end > 1 && *memory.cell(end - 1) == 0)
        --end;
    const int count = std::min(end, random.between(1, 9));
    takeGroup(area, end - count, count);
    for (int address = end - count; address < end; ++address)
        memory.setCell(address, 0);
}

/// Gives the same value to all retained cells with one address, one after the other.
void Load::changeNamesakes(int address)
{
    const ushort value = static_cast<ushort>(random.below(random.oneIn(2) ? 2 : 0x10000));
    last = {};
    for (std::size_t area = 0; area < 3; ++area)
        if (cells.blockOf(area, address) && panel.areas.all()[area].setCell(address, value))
            reportChange(area, address);
}

void Load::changeRange()
{
    std::vector<std::size_t> areas;
    for (std::size_t area = 0; area < 3; ++area)
        if (!cells.blocks[area].empty())
            areas.push_back(area);
    const std::size_t area = random.oneOf(areas);
    const Block& block = random.oneOf(cells.blocks[area]);
    const int end = block.count - 1;
    // Ends of blocks more often than the rest, and sometimes cells around a block.
    const int offset = random.oneIn(4) ? random.oneOf<int>({-1, 0, end, end}) : random.below(block.count);
    const int first = std::max(0, block.first + offset);
    if (random.oneIn(8))
        return changeNamesakes(first);
    if (cells.blockOf(0, ignoredBit) && random.oneIn(8))
        changeGroup(0, ignoredBit, 1);
    else if (!last.before.empty() && random.oneIn(6))
        undo();
    else
        changeGroup(area, first,
                    std::min(random.oneIn(3) ? random.between(2, 9) : 1, MemoryArea::cellCount - first));

    const Group group = last;
    MemoryArea& memory = panel.areas.all()[group.area];
    int address = group.first;
    for (const ushort before : group.before) {
        if (*memory.cell(address) != before)
            reportChange(group.area, address);
        ++address;
    }
}

/// Makes the panel set the cell to its present value, so that cells which change together are all in memory
/// before the first one is reported.
void Load::reportChange(std::size_t area, int address)
{
    MemoryArea& memory = panel.areas.all()[area];
    const Block* const block = cells.blockOf(area, address);
    const bool isWritten = block && !(area == 0 && address == ignoredBit);
    if (isWritten) {
        Write write = {QStringLiteral("%1 %2").arg(memory.name()).arg(address), area, 0, {}, nullptr};
        const int first = area == 0 ? address : block->first;
        write.place = block->place + first - block->first;
        for (int j = 0; j < (area == 0 ? 1 : block->count); ++j)
            write.values.push_back(*memory.cell(first + j));
        if (!panel.watched.contains(memory.name(), address))
            write.text += QLatin1String(" (for which the module has not asked)");
        log.begin(write);
    }
    panel.setCells(memory.name(), address, {*memory.cell(address)});
    if (isWritten)
        log.end();
}

void Load::changeAreas()
{
    const std::vector<WatchedRange> watched = panel.watched.ranges();
    const MemoryAreas before = watched.empty() ? MemoryAreas() : panel.areas;
    const int kind = random.below(8);
    if (!watched.empty() && random.oneIn(2)) {
        const WatchedRange& range = random.oneOf(watched);
        for (std::size_t area = 0; area < 3; ++area)
            if (range.area == panel.areas.all()[area].name())
                changeGroup(area, range.first, 1);
    } else if (kind == 0) {
        clearEnd();
    } else if (!last.before.empty() && kind < 3) {
        kind == 1 ? undo() : shift();
    } else {
        for (int left = random.between(1, 6); left > 0; --left) {
            // Sometimes a long run of cells, so that many sectors differ, and sometimes the ends.
            const int count = random.oneIn(8) ? random.between(1000, 20000) : random.between(1, 9);
            const int end = MemoryArea::cellCount - count;
            changeGroup(static_cast<std::size_t>(random.below(3)),
                        random.oneIn(8) ? end * random.below(2) : random.below(end), count);
        }
    }
    // In this mode a module has no reason to watch cells; one that does gets the reports.
    for (const WatchedRange& range : watched)
        for (int address = range.first; address <= range.last; ++address)
            if (const MemoryArea* const area = panel.areas.named(range.area);
                area && area->cell(address) != before.named(range.area)->cell(address))
                panel.reportChange(range.area, address);
    if (random.oneIn(5)) // lost, unless a later step saves them
        return;
    std::array<QByteArray, 3> images;
    for (std::size_t i = 0; i < 3; ++i) {
        const auto& memory = panel.areas.all()[i].memory();
        images[i] = QByteArray(reinterpret_cast<const char*>(memory.data()), static_cast<int>(memory.size()));
    }
    log.begin({QStringLiteral("save"), 0, 0, {}, std::make_shared<const std::array<QByteArray, 3>>(images)});
    panel.advance(panel.model->cyclePeriodMs);
    log.end();
}
