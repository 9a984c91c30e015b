// Runs the panel inside the emulator: starts the module, reports on the serial line what was restored, then
// changes values endlessly and reports which changes the module has handled.
// SPDX-License-Identifier: MIT
//
// Lines, each beginning with "panel", in this order:
//   length FILE BYTES                               a retention file before the start; -1 when it is missing
//   cells AREA ADDRESS VALUE...                     cells that the project retains, as the start left them
//                                                   (hexadecimal), only in per-address mode
//   others AREA COUNT                               so many other cells are not 0, only in per-address mode
//   sectors AREA SECTOR DIGEST...                   sectors as the start left them, only in whole-area mode
//   restored                                        nothing more was restored
//   change NUMBER AREA ADDRESS COUNT START STEP     is about to be made; cell i gets the low bits of
//                                                   START + i * STEP: one, or 16 of a word
//   synced NUMBER BYTES BYTES BYTES                 the module has returned from all changes up to NUMBER;
//                                                   the lengths of the retention files
// A change is made only after its line has been sent, so the reader knows everything that the files can hold.
// If a device for marks is named, the number of lines sent so far is written to its last sector, past every
// cache of this machine, before each change and after each return. So a log of all writes to the device tells
// between which lines each write happened.
#include "project_tree/project_reader.h"
#include "simulated_host/panel.h"
#include "tests/power_cut/support/retained_cells.h"
#include "tests/support/random_source.h"

#include <QtCore/QCryptographicHash>
#include <QtCore/QFile>

#include <fcntl.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <vector>

namespace {

constexpr int sectorBytes = 512;

/// The serial line, and the marks.
class Story
{
public:
    /// `device` may be null: then there are no marks.
    explicit Story(const char* device) : device(device ? open(device, O_WRONLY | O_DIRECT) : -1)
    {
        if (device && this->device < 0)
            fail(device);
    }

    /// Prints a part of a line; end() ends the line.
    [[gnu::format(printf, 2, 3)]] void say(const char* format, ...)
    {
        std::va_list words;
        va_start(words, format);
        std::vprintf(format, words);
        va_end(words);
    }
    void end()
    {
        std::printf("\n");
        ++lines;
    }

    /// Returns when everything has been sent over the serial line and marked.
    void publish()
    {
        std::fflush(stdout);
        tcdrain(STDOUT_FILENO);
        if (device < 0)
            return;
        alignas(sectorBytes) std::array<char, sectorBytes> mark = {};
        std::snprintf(mark.data(), mark.size(), "%d", lines);
        const off_t last = lseek(device, 0, SEEK_END) - sectorBytes;
        if (pwrite(device, mark.data(), mark.size(), last) != sectorBytes)
            fail("mark");
    }

private:
    [[noreturn]] static void fail(const char* what)
    {
        std::perror(what);
        std::exit(2);
    }

    int device;
    int lines = 0;
};

/// Consecutive cells of one area.
struct Cells
{
    std::size_t area;
    int first;
    int count;
};

/// Cells that get an ascending or descending series of values.
struct Change
{
    int number;
    Cells cells;
    ushort start;
    ushort step;
};

std::vector<Cells> cellsOf(const RetainedCells& retained)
{
    std::vector<Cells> cells;
    for (std::size_t area = 0; area < 3; ++area)
        for (const Block& block : retained.blocks[area])
            cells.push_back({area, block.first, block.count});
    return cells;
}

long long retentionFileLength(const char* name)
{
    const QFile file(QLatin1String("/usr/tavrin/project/") + QLatin1String(name));
    return file.exists() ? file.size() : -1;
}

void sayLengths(Story& story)
{
    for (const char* const name : retentionFileNames) {
        story.say("panel length %s %lld", name, retentionFileLength(name));
        story.end();
    }
}

void sayCells(Story& story, const Panel& panel, const RetainedCells& retained)
{
    constexpr int cellsInLine = 64;
    for (const Cells& cells : cellsOf(retained)) {
        const MemoryArea& area = panel.areas.all()[cells.area];
        for (int i = 0; i < cells.count; ++i) {
            if (i % cellsInLine == 0)
                story.say("panel cells %s %d", areaNames[cells.area], cells.first + i);
            story.say(" %x", *area.cell(cells.first + i));
            if (i % cellsInLine == cellsInLine - 1 || i == cells.count - 1)
                story.end();
        }
    }
    for (std::size_t area = 0; area < 3; ++area) {
        int others = 0;
        for (int address = 0; address < MemoryArea::cellCount; ++address)
            others += *panel.areas.all()[area].cell(address) != 0 && !retained.blockOf(area, address);
        story.say("panel others %s %d", areaNames[area], others);
        story.end();
    }
}

void saySectors(Story& story, const Panel& panel)
{
    constexpr int sectorsInLine = 16;
    for (const MemoryArea& area : panel.areas.all()) {
        const auto* const bytes = reinterpret_cast<const char*>(area.memory().data());
        const int sectors = static_cast<int>(area.memory().size()) / sectorBytes;
        for (int sector = 0; sector < sectors; ++sector) {
            if (sector % sectorsInLine == 0)
                story.say("panel sectors %s %d", area.name().toLatin1().constData(), sector);
            const QByteArray content = QByteArray::fromRawData(bytes + sector * sectorBytes, sectorBytes);
            story.say(" %s", QCryptographicHash::hash(content, QCryptographicHash::Md5).toHex().constData());
            if (sector % sectorsInLine == sectorsInLine - 1)
                story.end();
        }
    }
}

void saySynced(Story& story, int number)
{
    story.say("panel synced %d %lld %lld %lld", number, retentionFileLength(retentionFileNames[0]),
              retentionFileLength(retentionFileNames[1]), retentionFileLength(retentionFileNames[2]));
    story.end();
    story.publish();
}

/// Random changes, the same ones for the same seed.
class Load
{
public:
    explicit Load(unsigned seed) : random(seed) {}

    int below(int end) { return random.below(end); }

    /// A series of 1 to `mostCells` cells within the given ones.
    Change changeWithin(const Cells& cells, int mostCells)
    {
        const int skipped = below(cells.count);
        const int count = std::min(1 + below(mostCells), cells.count - skipped);
        return {++number,
                {cells.area, cells.first + skipped, count},
                static_cast<ushort>(below(65536)),
                static_cast<ushort>(below(65536))};
    }

private:
    RandomSource random;
    int number = 0;
};

/// Announces the changes, then makes them in the areas.
void makeChanges(Story& story, Panel& panel, const std::vector<Change>& changes)
{
    for (const Change& change : changes) {
        story.say("panel change %d %s %d %d %u %u", change.number, areaNames[change.cells.area],
                  change.cells.first, change.cells.count, change.start, change.step);
        story.end();
    }
    story.publish();
    for (const Change& change : changes) {
        MemoryArea& area = panel.areas.all()[change.cells.area];
        const int valueBits = area.isBits() ? 0x1 : 0xffff;
        for (int i = 0; i < change.cells.count; ++i)
            area.setCell(change.cells.first + i,
                         static_cast<ushort>((change.start + i * change.step) & valueBits));
    }
}

/// One to four changes of single retained cells. After making all of them, the panel sets each cell to its
/// present value and so reports it, if the module watches it.
void changeCells(Story& story, Panel& panel, Load& load, const std::vector<Cells>& retained)
{
    std::vector<Change> changes;
    for (int left = 1 + load.below(4); left > 0; --left) {
        const auto range = static_cast<std::size_t>(load.below(static_cast<int>(retained.size())));
        changes.push_back(load.changeWithin(retained[range], 1));
    }
    makeChanges(story, panel, changes);
    for (const Change& change : changes) {
        const MemoryArea& area = panel.areas.all()[change.cells.area];
        panel.setCells(area.name(), change.cells.first, {*area.cell(change.cells.first)});
        saySynced(story, change.number);
    }
}

/// One to eight changes of anything from a cell to a fifth of an area, followed by the periodic save.
void changeAreas(Story& story, Panel& panel, Load& load)
{
    std::vector<Change> changes;
    for (int left = 1 + load.below(8); left > 0; --left) {
        const auto area = static_cast<std::size_t>(load.below(3));
        const int mostCells = load.below(2) ? 1 : MemoryArea::cellCount / 5;
        changes.push_back(load.changeWithin({area, 0, MemoryArea::cellCount}, mostCells));
    }
    makeChanges(story, panel, changes);
    panel.advance(panel.model->cyclePeriodMs);
    saySynced(story, changes.back().number);
}

int run(const char* libraryPath, const char* projectPath, unsigned seed, const char* markDevice)
{
    const ModuleLibrary library(QLatin1String{libraryPath});
    const ProjectReading reading = readProjectFile(QLatin1String(projectPath));
    if (!library.isLoaded() || !reading.project) {
        const QString reason = library.isLoaded() ? reading.error : library.error();
        std::fprintf(stderr, "%s\n", reason.toLocal8Bit().constData());
        return 2;
    }
    const RetainedCells retained = retainedCellsOf(*reading.project);
    const std::vector<Cells> retainedCells = cellsOf(retained);
    if (!retained.wholeAreas && retainedCells.empty()) {
        std::fprintf(stderr, "%s: nothing is retained\n", projectPath);
        return 2;
    }

    Story story(markDevice);
    sayLengths(story);
    Panel panel(library, reading.project.get());
    panel.start();
    if (retained.wholeAreas)
        saySectors(story, panel);
    else
        sayCells(story, panel, retained);
    story.say("panel restored");
    story.end();

    Load load(seed);
    while (true) {
        if (retained.wholeAreas)
            changeAreas(story, panel, load);
        else
            changeCells(story, panel, load, retainedCells);
    }
}

} // namespace

int main(int argc, char** argv)
{
    char* end = nullptr;
    const unsigned long seed = argc < 4 ? 0 : std::strtoul(argv[3], &end, 10);
    if (argc < 4 || argc > 5 || end == argv[3] || *end != '\0') {
        std::fprintf(stderr, "usage: guest_panel MODULE PROJECT SEED [DEVICE-FOR-MARKS]\n");
        return 2;
    }
    return run(argv[1], argv[2], static_cast<unsigned>(seed), argc == 5 ? argv[4] : nullptr);
}
