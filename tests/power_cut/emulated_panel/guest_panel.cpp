// Runs the panel inside the emulator: starts the module, reports on the serial line what was restored, then
// changes values endlessly and reports which changes the module has handled.
// SPDX-License-Identifier: MIT
//
// Lines, each beginning with "panel", in this order:
//   lengths BYTES BYTES BYTES                       of the retention files before the start; -1: missing
//   cell AREA ADDRESS VALUE                         a cell that is not 0 after the start, per address
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
#include "tests/support/areas.h"
#include "tests/support/expected_project.h"
#include "tests/support/random_source.h"
#include "tests/support/retention_files.h"

#include <QtCore/QCryptographicHash>
#include <QtCore/QFile>

#include <fcntl.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
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

    void say(const QByteArray& line)
    {
        std::printf("panel %s\n", line.constData());
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

/// Each number after a blank.
QByteArray numbers(const std::vector<long long>& values)
{
    QByteArray text;
    for (const long long value : values)
        text += ' ' + QByteArray::number(value);
    return text;
}

/// -1 for a missing file.
QByteArray fileLengths()
{
    std::vector<long long> lengths;
    for (std::size_t area = 0; area < 3; ++area) {
        const QFile file(pathOfFile(area));
        lengths.push_back(file.exists() ? file.size() : -1);
    }
    return numbers(lengths);
}

void sayCells(Story& story, const Panel& panel)
{
    for (std::size_t area = 0; area < 3; ++area)
        for (int address = 0; address < MemoryArea::cellCount; ++address)
            if (const int value = *panel.areas.all()[area].cell(address))
                story.say(QByteArray("cell ") + testAreas[area].name + numbers({address, value}));
}

void saySectors(Story& story, const Panel& panel)
{
    constexpr int sectorsInLine = 16;
    for (std::size_t area = 0; area < 3; ++area) {
        const auto& memory = panel.areas.all()[area].memory();
        const auto* const bytes = reinterpret_cast<const char*>(memory.data());
        const int sectors = static_cast<int>(memory.size()) / sectorBytes;
        for (int first = 0; first < sectors; first += sectorsInLine) {
            QByteArray line = QByteArray("sectors ") + testAreas[area].name + numbers({first});
            for (int sector = first; sector < first + sectorsInLine; ++sector)
                line += ' ' + QCryptographicHash::hash(
                                  QByteArray::fromRawData(bytes + sector * sectorBytes, sectorBytes),
                                  QCryptographicHash::Md5)
                                  .toHex();
            story.say(line);
        }
    }
}

void saySynced(Story& story, int number)
{
    story.say("synced" + numbers({number}) + fileLengths());
    story.publish();
}

/// Consecutive cells of one area.
struct Cells
{
    std::size_t area;
    int first;
    int count;
};

std::vector<Cells> retainedCells(const ExpectedProject& project)
{
    std::vector<Cells> cells;
    for (std::size_t area = 0; area < 3; ++area)
        for (const ExpectedBlock& block : project.blocks[area])
            cells.push_back({area, block.entry.index, block.count});
    return cells;
}

/// Cells that get an ascending or descending series of values.
struct Change
{
    int number;
    Cells cells;
    ushort start;
    ushort step;
};

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
    for (const Change& change : changes)
        story.say("change" + numbers({change.number}) + " " + testAreas[change.cells.area].name +
                  numbers({change.cells.first, change.cells.count, change.start, change.step}));
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
    const ExpectedProject project = expectedOf(*reading.project);
    const std::vector<Cells> retained = retainedCells(project);

    Story story(markDevice);
    story.say("lengths" + fileLengths());
    Panel panel(library, reading.project.get());
    panel.start();
    if (project.saveAll)
        saySectors(story, panel);
    else
        sayCells(story, panel);
    story.say("restored");

    Load load(seed);
    while (true) {
        if (project.saveAll)
            changeAreas(story, panel, load);
        else
            changeCells(story, panel, load, retained);
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
