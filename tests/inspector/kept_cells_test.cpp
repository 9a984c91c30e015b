// Tests, for any project, that the cells which the tool calls kept are those that the module restores.
// SPDX-License-Identifier: MIT
#include "tests/inspector/layout_of.h"
#include "tests/support/random_source.h"

#include <QtCore/QFile>

namespace {

std::vector<Entry> randomEntries(RandomSource& random, int lowestLength)
{
    std::vector<Entry> entries(static_cast<std::size_t>(random.between(1, 12)));
    for (Entry& entry : entries)
        entry = {random.oneOf<QString>({LB, LW, RWI, "lw"}),
                 random.oneOf<int>({-5, 0, 60085, 65500}) + random.between(0, 40),
                 random.between(lowestLength, 20)};
    return entries;
}

class KeptCells : public ModuleTest
{
protected:
    /// Gives a value to every cell that an entry names, cuts the power, and returns the cells that come back.
    std::array<CellRanges, 3> cellsThatComeBack(object& project, const std::vector<Entry>& entries)
    {
        setCallLog(nullptr); // unused here, and it would grow
        for (const char* name : {bitFileName, wordFileName, rwiFileName})
            QFile::remove(retentionPath(QString::fromLatin1(name)));
        const auto before = startPanel(&project);
        for (const AreaFacts& area : areaFacts)
            lengths[&area - areaFacts] =
                retentionFile(QString::fromLatin1(area.fileName)).value_or(QByteArray()).size();
        for (const Entry& entry : entries)
            for (int cell = entry.index; cell < entry.index + entry.length; ++cell)
                before->setCells(entry.area, cell, {1});
        const auto after = startPanel(&project);
        std::array<CellRanges, 3> back;
        for (const AreaFacts& area : areaFacts) {
            std::vector<CellRange> cells;
            const MemoryArea& memory = *after->areas.named(QString::fromLatin1(area.name));
            const std::size_t step = memory.isBits() ? 1 : 2; // bytes per cell; every value is 0 or 1
            for (std::size_t cell = 0; cell < MemoryArea::cellCount; ++cell)
                if (memory.memory()[cell * step] == 1)
                    cells.push_back({qint64(cell), qint64(cell)});
            back[&area - areaFacts] = CellRanges(std::move(cells));
        }
        return back;
    }

    std::array<qint64, 3> lengths; ///< of the new files
};

std::string describe(const std::vector<Entry>& entries)
{
    std::string text;
    for (const Entry& entry : entries)
        text += entry.area.toStdString() + ' ' + std::to_string(entry.index) + '+' +
                std::to_string(entry.length) + "; ";
    return text;
}

TEST_F(KeptCells, AreThoseThatComeBackThroughTheModule)
{
    RandomSource random(printedSeed());
    qint64 kept = 0;
    qint64 lost = 0;
    for (int round = 0; round < 300; ++round) {
        const std::vector<Entry> entries = randomEntries(random, 0);
        const auto project = perAddressProject(entries);
        const Layout layout = layoutOf(*project);
        const auto back = cellsThatComeBack(*project, entries);
        for (std::size_t i = 0; i < 3; ++i) {
            ASSERT_EQ(layout.areas[i].kept.text(), back[i].text()) << describe(entries);
            ASSERT_EQ(layout.areas[i].fileLength, lengths[i]) << describe(entries);
            kept += back[i].count();
        }
        for (const Entry& entry : entries)
            if (const AreaFacts* const area = areaNamed(entry.area))
                lost += CellRanges({{entry.index, entry.index + entry.length - 1}})
                            .minus(back[static_cast<std::size_t>(area - areaFacts)])
                            .count();
    }
    EXPECT_GT(kept, 700) << "the projects keep too little to tell";
    EXPECT_GT(lost, 100) << "the projects lose too little to tell";
}

TEST_F(KeptCells, ComeBackAlsoWhenEntriesHaveNegativeLengths)
{
    RandomSource random(printedSeed());
    qint64 kept = 0;
    for (int round = 0; round < 300; ++round) {
        const std::vector<Entry> entries = randomEntries(random, -4);
        const auto project = perAddressProject(entries);
        const Layout layout = layoutOf(*project);
        const auto back = cellsThatComeBack(*project, entries);
        for (std::size_t i = 0; i < 3; ++i) {
            ASSERT_EQ(layout.areas[i].kept.minus(back[i]).text(), QString()) << describe(entries);
            ASSERT_EQ(layout.areas[i].fileLength, lengths[i]) << describe(entries);
            kept += layout.areas[i].kept.count();
        }
    }
    EXPECT_GT(kept, 300);
}

TEST_F(KeptCells, AreAllCellsInWholeAreaMode)
{
    const auto project = wholeAreaProject(1, 5);
    const Layout layout = layoutOf(*project);
    const auto before = startPanel(project.get());
    for (const AreaFacts& area : areaFacts) {
        const AreaLayout& areaLayout = layout.of(area);
        EXPECT_EQ(areaLayout.kept.text(), "0 to 65535");
        EXPECT_EQ(areaLayout.fileLength, retentionFile(QString::fromLatin1(area.fileName))->size());
        for (const int cell : {0, ignoredBitAddress, 65535})
            before->setCells(QString::fromLatin1(area.name), cell, {1});
    }
    before->model->cyclicRun();
    const auto after = startPanel(project.get());
    for (const AreaFacts& area : areaFacts)
        for (const int cell : {0, ignoredBitAddress, 65535})
            EXPECT_EQ(after->areas.named(QString::fromLatin1(area.name))->cell(cell), ushort(1));
}

TEST_F(KeptCells, StayInBoundsForHugeAndWrappingEntries)
{
    const int largest = std::numeric_limits<int>::max();
    const int lowest = std::numeric_limits<int>::min();
    for (const QString& area : {LB, LW, RWI}) {
        for (const int index : {lowest, -1, 0, 100, 65535, 65536, largest}) {
            for (const int length : {lowest, -1, 1, 65536, largest / 2, largest / 2 + 1, largest}) {
                const auto project = perAddressProject(
                    {{area, index, length}, {area, 100, 10}, {area, largest, 5}, {area, 3, 4}});
                const Layout layout = layoutOf(*project);
                for (const AreaLayout& of : layout.areas) {
                    EXPECT_TRUE(of.kept.minus(CellRanges({{0, 65535}})).isEmpty());
                    EXPECT_GE(of.fileLength, 0);
                }
            }
        }
    }
}

TEST_F(KeptCells, OfABlockTooLargeForTheModuleAreNone)
{
    const auto project = perAddressProject({{LW, 100, std::numeric_limits<int>::max()}, {RWI, 0, 4}});
    const Layout layout = layoutOf(*project);
    EXPECT_TRUE(layout.areas[1].kept.isEmpty());
    EXPECT_EQ(layout.areas[2].kept.text(), "0 to 3");
}

} // namespace
