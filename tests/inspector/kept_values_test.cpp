// Tests that the tool reads by address what the module wrote.
// SPDX-License-Identifier: MIT
#include "tests/inspector/layout_of.h"
#include "tests/support/memory_file.h"
#include "tools/retention_core/kept_values.h"

namespace {

const std::vector<Entry> someEntries = {{LB, 3, 7}, {LB, 100, 12}, {LW, 0, 4}, {LW, 2, 8}, {RWI, 65530, 6}};

class KeptValuesOfModule : public ModuleTest
{
};

TEST_F(KeptValuesOfModule, AreReadFromPackedBlocks)
{
    const auto project = perAddressProject(someEntries);
    const auto panel = startPanel(project.get());
    panel->setCells(LB, 3, {1, 0, 1, 1, 0, 0, 1});
    panel->setCells(LB, 100, {0, 1, 1, 0, 1, 1, 1, 0, 0, 0, 1, 1});
    panel->setCells(LW, 0, {1, 0x1234, 0xffff, 4, 5, 6, 7, 8, 9, 10});
    panel->setCells(RWI, 65530, {0, 0, 3, 0, 0, 9});
    const Layout layout = layoutOf(someEntries);
    const RetentionFiles files = openRetentionFiles(fixedProjectDirectory);
    for (std::size_t i = 0; i < 3; ++i) {
        const AreaValues values = areaValues(layout, files[i]);
        const MemoryArea& memory = panel->areas.all()[i];
        for (const CellRange& range : layout.areas[i].kept)
            for (qint64 cell = range.first; cell <= range.last; ++cell)
                EXPECT_EQ(values.values[static_cast<std::size_t>(cell)], memory.cell(static_cast<int>(cell)))
                    << memory.name().toStdString() << ' ' << cell;
        EXPECT_EQ(values.cellsIn(CellState::Kept).text(), layout.areas[i].kept.text());
    }
}

TEST_F(KeptValuesOfModule, AreReadFromImages)
{
    const auto project = wholeAreaProject(1, 5);
    const auto panel = startPanel(project.get());
    panel->setCells(LB, 60100, {1});
    panel->setCells(LW, 65535, {0xabcd});
    panel->model->cyclicRun();
    const Layout layout = layoutOf(*project);
    const RetentionFiles files = openRetentionFiles(fixedProjectDirectory);
    const AreaValues bits = areaValues(layout, files[0]);
    const AreaValues words = areaValues(layout, files[1]);
    EXPECT_EQ(bits.values[60100], 1);
    EXPECT_EQ(bits.values[60099], 0);
    EXPECT_EQ(words.values[65535], 0xabcd);
    EXPECT_EQ(words.cellsIn(CellState::Kept).count(), 65536);
}

TEST(KeptValues, OfShortFilesEndWhereTheFileEnds)
{
    const Layout layout = layoutOf({{LW, 10, 4}, {LB, 0, 20}});
    const AreaValues words = areaValues(layout, memoryFile(areaFacts[1], QByteArray("\1\0\2\0\3", 5)));
    EXPECT_EQ(words.cellsIn(CellState::Kept).text(), "10 to 11");
    EXPECT_EQ(words.cellsIn(CellState::HalfWord).text(), "12");
    EXPECT_EQ(words.values[12], 3);
    EXPECT_EQ(words.cellsIn(CellState::NoValue).text(), "13");
    const AreaValues bits = areaValues(layout, memoryFile(areaFacts[0], QByteArray("\0\1", 2)));
    EXPECT_EQ(bits.cellsIn(CellState::StartValue).text(), "0 to 7");
    EXPECT_EQ(bits.cellsIn(CellState::Kept).text(), "8 to 15");
    EXPECT_EQ(bits.cellsIn(CellState::NoValue).text(), "16 to 19");
}

TEST(KeptValues, OfAnImageThatIsTooShortAreNone)
{
    const Layout layout = layoutOf(*wholeAreaProject(1, 5));
    const AreaValues words = areaValues(layout, memoryFile(areaFacts[1], QByteArray(131071, '\1')));
    EXPECT_EQ(words.cellsIn(CellState::NoValue).count(), 65536);
}

TEST(KeptValues, CountBytesOfABitImageThatAreNoBits)
{
    const Layout layout = layoutOf(*wholeAreaProject(1, 5));
    const AreaValues bits = areaValues(layout, memoryFile(areaFacts[0], QByteArray(65536, '\1') + '\7'));
    EXPECT_EQ(bits.oddBytes, 0);
    EXPECT_EQ(areaValues(layout, memoryFile(areaFacts[0], QByteArray(65536, '\3'))).oddBytes, 65536);
}

TEST(KeptValues, AreReadFromBlocksThatLeaveTheArea)
{
    const Layout layout = layoutOf({{LW, -2, 4}, {LW, 65535, 3}});
    const QByteArray bytes("\1\0\2\0\3\0\4\0\5\0\6\0\7\0", 14);
    const AreaValues words = areaValues(layout, memoryFile(areaFacts[1], bytes));
    EXPECT_EQ(words.values[0], 3);
    EXPECT_EQ(words.values[1], 4);
    EXPECT_EQ(words.values[65535], 5);
    EXPECT_EQ(words.cellsIn(CellState::Kept).text(), "0 to 1, 65535");
}

TEST(KeptValues, OfAProjectWithoutRetentionAreNone)
{
    const Layout layout = makeLayout(readSettings(nullptr));
    for (const AreaFacts& area : areaFacts)
        EXPECT_EQ(areaValues(layout, memoryFile(area, QByteArray(100, '\1')))
                      .cellsIn(CellState::NotRetained)
                      .count(),
                  65536);
}

TEST(StrayBits, AreCountedAfterTheLastCell)
{
    const Layout layout = layoutOf({{LB, 0, 12}});
    const AreaFacts& lb = areaFacts[0];
    EXPECT_EQ(strayBits(layout, memoryFile(lb, QByteArray("\xff\x0f", 2))), 0);
    EXPECT_EQ(strayBits(layout, memoryFile(lb, QByteArray("\xff\x9f", 2))), 2);
    EXPECT_EQ(strayBits(layout, memoryFile(lb, QByteArray("\xff\x0f\x01", 3))), 1);
    EXPECT_EQ(strayBits(layout, memoryFile(lb, QByteArray("\xff", 1))), 0);
}

} // namespace
