// The panel inside the emulator: starts the module, says on the serial line what was restored, then changes
// values for ever and says which changes are through.
// SPDX-License-Identifier: MIT
//
// Lines, each beginning with "panel", in this order:
//   length FILE BYTES                               a retention file before the start; -1 when it is missing
//   cells AREA ADDRESS VALUE...                     restored cells (hexadecimal), only in per-address mode
//   sectors AREA SECTOR DIGEST...                   restored sectors, only in whole-area mode
//   restored                                        nothing more was restored
//   change NUMBER AREA ADDRESS COUNT START STEP     is about to be made; cell i gets the low bits of
//                                                   START + i * STEP: one, or 16 of a word
//   synced NUMBER BYTES BYTES BYTES                 "sync" has returned for all changes up to NUMBER; the
//                                                   lengths of the retention files
// A change is made only after its line has left through the serial line, so whoever reads it knows everything
// that the files can hold.
#include "project_tree/project_reader.h"
#include "simulated_host/panel.h"
#include "simulated_host/shell.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QCryptographicHash>
#include <QtCore/QFileInfo>

#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <random>
#include <vector>

namespace {

constexpr int sectorBytes = 512;
constexpr std::array<const char*, 3> retentionFiles = {"maintenance-bit.dat", "maintenance-word.dat",
                                                       "maintenance-RWI.dat"};

/// Consecutive cells that get a rising or falling series of values.
struct Change
{
    int number;
    QString area;
    int address;
    int count;
    ushort start;
    ushort step;
};

long long retentionFileLength(const char* name)
{
    const QFileInfo file(QStringLiteral("/usr/tavrin/project/") + QLatin1String(name));
    return file.exists() ? file.size() : -1;
}

/// Returns when everything that was printed has left through the serial line.
void drain()
{
    std::fflush(stdout);
    tcdrain(STDOUT_FILENO);
}

void printLengths()
{
    for (const char* const name : retentionFiles)
        std::printf("panel length %s %lld\n", name, retentionFileLength(name));
}

void printCells(const Panel& panel)
{
    constexpr int cellsInLine = 64;
    for (const WatchedRange& range : panel.watched.ranges()) {
        const MemoryArea& area = *panel.areas.named(range.area);
        for (int first = range.first; first <= range.last; first += cellsInLine) {
            std::printf("panel cells %s %d", qPrintable(range.area), first);
            for (int address = first; address <= std::min(range.last, first + cellsInLine - 1); ++address)
                std::printf(" %x", *area.cell(address));
            std::printf("\n");
        }
    }
}

void printSectors(const Panel& panel)
{
    constexpr int sectorsInLine = 16;
    for (const MemoryArea& area : panel.areas.all()) {
        const auto* const bytes = reinterpret_cast<const char*>(area.memory().data());
        const int sectors = static_cast<int>(area.memory().size()) / sectorBytes;
        for (int sector = 0; sector < sectors; ++sector) {
            if (sector % sectorsInLine == 0)
                std::printf("panel sectors %s %d", qPrintable(area.name()), sector);
            const QByteArray content = QByteArray::fromRawData(bytes + sector * sectorBytes, sectorBytes);
            const QByteArray digest = QCryptographicHash::hash(content, QCryptographicHash::Md5).toHex();
            std::printf(" %s%s", digest.constData(), sector % sectorsInLine == sectorsInLine - 1 ? "\n" : "");
        }
    }
}

void printSynced(int number)
{
    std::printf("panel synced %d %lld %lld %lld\n", number, retentionFileLength(retentionFiles[0]),
                retentionFileLength(retentionFiles[1]), retentionFileLength(retentionFiles[2]));
}

/// Random changes, the same ones for the same seed.
class Load
{
public:
    explicit Load(unsigned seed) : random(seed) {}

    int below(int limit) { return static_cast<int>(random() % static_cast<unsigned>(limit)); }

    /// A series of 1 to `mostCells` cells inside the given ones.
    Change changeWithin(const WatchedRange& cells, int mostCells)
    {
        const int first = cells.first + below(cells.last - cells.first + 1);
        const int count = std::min(1 + below(mostCells), cells.last - first + 1);
        return {
            ++number, cells.area, first, count, static_cast<ushort>(random()), static_cast<ushort>(random())};
    }

private:
    std::mt19937 random;
    int number = 0;
};

/// Announces the changes, waits until they are announced, then makes them in the areas.
void makeChanges(Panel& panel, const std::vector<Change>& changes)
{
    for (const Change& change : changes)
        std::printf("panel change %d %s %d %d %u %u\n", change.number, qPrintable(change.area),
                    change.address, change.count, change.start, change.step);
    drain();
    for (const Change& change : changes) {
        MemoryArea& area = *panel.areas.named(change.area);
        const int valueBits = area.isBits() ? 0x1 : 0xffff;
        for (int i = 0; i < change.count; ++i)
            area.setCell(change.address + i,
                         static_cast<ushort>((change.start + i * change.step) & valueBits));
    }
}

/// One to four changes of single retained cells, reported one by one when all of them are made.
void changeCells(Panel& panel, Load& load, const std::vector<WatchedRange>& retained)
{
    std::vector<Change> changes;
    for (int left = 1 + load.below(4); left > 0; --left) {
        const auto range = static_cast<std::size_t>(load.below(static_cast<int>(retained.size())));
        changes.push_back(load.changeWithin(retained[range], 1));
    }
    makeChanges(panel, changes);
    for (const Change& change : changes) {
        panel.reportChange(change.area, change.address);
        printSynced(change.number);
    }
}

/// One to eight changes of anything from a cell to a fifth of an area, followed by the periodic save.
void changeAreas(Panel& panel, Load& load)
{
    std::vector<Change> changes;
    for (int left = 1 + load.below(8); left > 0; --left) {
        const MemoryArea& area = panel.areas.all()[static_cast<std::size_t>(load.below(3))];
        const int mostCells = load.below(2) ? 1 : MemoryArea::cellCount / 5;
        changes.push_back(load.changeWithin({area.name(), 0, MemoryArea::cellCount - 1}, mostCells));
    }
    makeChanges(panel, changes);
    panel.advance(panel.model->cyclePeriodMs);
    printSynced(changes.back().number);
}

int run(const QString& libraryPath, const QString& projectPath, unsigned seed)
{
    const ModuleLibrary library(libraryPath);
    const ProjectReading reading = readProjectFile(projectPath);
    if (!library.isLoaded() || !reading.project) {
        std::fprintf(stderr, "%s\n", qPrintable(library.isLoaded() ? reading.error : library.error()));
        return 2;
    }
    printLengths();
    Panel panel(library, reading.project.get());
    panel.start();
    const std::vector<WatchedRange> retained = panel.watched.ranges();
    const bool wholeAreas = panel.model->retentionMode == 1;
    if (!wholeAreas && retained.empty()) {
        std::fprintf(stderr, "%s: nothing is retained\n", qPrintable(projectPath));
        return 2;
    }
    if (wholeAreas)
        printSectors(panel);
    else
        printCells(panel);
    std::printf("panel restored\n");

    Load load(seed);
    while (true) {
        const int syncsBefore = commandsRun(QStringLiteral("sync"));
        if (wholeAreas)
            changeAreas(panel, load);
        else
            changeCells(panel, load, retained);
        if (commandsRun(QStringLiteral("sync")) == syncsBefore) {
            std::fprintf(stderr, "the module ran no \"sync\" for a change\n");
            return 1;
        }
    }
}

} // namespace

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments().mid(1);
    bool seedIsNumber = false;
    const unsigned seed = arguments.value(2).toUInt(&seedIsNumber);
    if (arguments.size() != 3 || !seedIsNumber) {
        std::fprintf(stderr, "usage: guest_panel MODULE PROJECT SEED\n");
        return 2;
    }
    return run(arguments[0], arguments[1], seed);
}
