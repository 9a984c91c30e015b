// Demonstrates what the bare files cannot promise, case by case, so that the list in docs/reliability.md
// stays true.
// SPDX-License-Identifier: MIT
#include "tests/support/module_test.h"

namespace {

using Values = std::vector<ushort>;

class Limits : public ModuleTest
{
protected:
    /// Starts a panel whose cells have these start values.
    std::unique_ptr<Panel> startWith(object* project, const QString& area, int address, const Values& values)
    {
        auto panel = makePanel(project);
        panel->setCells(area, address, values);
        panel->start();
        return panel;
    }

    static Values cells(const Panel& panel, const QString& area, int address, int count)
    {
        Values values;
        for (int j = 0; j < count; ++j)
            values.push_back(*panel.areas.named(area)->cell(address + j));
        return values;
    }
};

TEST_F(Limits, BitsThatShareAnAllZeroByteKeepThePanelsStartValues)
{
    const auto project = perAddressProject({{LB, 100, 9}});
    startPanel(project.get())->setCells(LB, 108, {1});
    startPanel(project.get())->setCells(LB, 100, {0});
    const auto panel = startWith(project.get(), LB, 100, Values(9, 1));
    EXPECT_EQ(cells(*panel, LB, 100, 9), Values(9, 1));
}

TEST_F(Limits, ABitThatWasNeverChangedComesBackAsZeroBesideAOne)
{
    const auto project = perAddressProject({{LB, 100, 3}});
    startPanel(project.get())->setCells(LB, 101, {1});
    const auto panel = startWith(project.get(), LB, 100, {1, 0, 1});
    EXPECT_EQ(cells(*panel, LB, 100, 3), Values({0, 1, 0}));
}

TEST_F(Limits, TheBitAt60100ComesBackAsIfItHadNeverChanged)
{
    const auto project = perAddressProject({{LB, 60099, 3}});
    startPanel(project.get())->setCells(LB, 60099, {1, 1, 1});
    EXPECT_EQ(cells(*startPanel(project.get()), LB, 60099, 3), Values({1, 0, 1}));
}

TEST_F(Limits, TheLastCellOfTwoOverlappingEntriesIsNotKept)
{
    const auto project = perAddressProject({{LW, 100, 4}, {LW, 102, 4}});
    startPanel(project.get())->setCells(LW, 100, {1, 2, 3, 4, 5, 6});
    EXPECT_EQ(cells(*startPanel(project.get()), LW, 100, 6), Values({1, 2, 3, 4, 5, 0}));
}

TEST_F(Limits, EntriesThatTouchEachOtherLoseNothing)
{
    const auto project = perAddressProject({{LW, 100, 3}, {LW, 103, 3}});
    startPanel(project.get())->setCells(LW, 100, {1, 2, 3, 4, 5, 6});
    EXPECT_EQ(cells(*startPanel(project.get()), LW, 100, 6), Values({1, 2, 3, 4, 5, 6}));
}

TEST_F(Limits, WordsOfAnUnchangedBlockComeBackAsZeroFromTheSecondStartOn)
{
    const auto project = perAddressProject({{LW, 100, 2}});
    EXPECT_EQ(cells(*startWith(project.get(), LW, 100, {7, 8}), LW, 100, 2), Values({7, 8}));
    EXPECT_EQ(cells(*startWith(project.get(), LW, 100, {7, 8}), LW, 100, 2), Values({0, 0}));
}

TEST_F(Limits, TheFirstChangeOfABlockKeepsAllOfItsWordsAsTheyAre)
{
    const auto project = perAddressProject({{LW, 100, 2}});
    startWith(project.get(), LW, 100, {7, 8})->setCells(LW, 101, {9});
    EXPECT_EQ(cells(*startPanel(project.get()), LW, 100, 2), Values({7, 9}));
}

TEST_F(Limits, ABlockOverASectorBoundaryCanComeBackHalfNew)
{
    const auto project = perAddressProject({{LW, 100, 300}});
    const auto panel = startPanel(project.get());
    panel->setCells(LW, 355, {1, 1}); // the last word of the first sector and the first of the next one
    const QByteArray old = *retentionFile(wordFileName);
    panel->setCells(LW, 355, {2, 2});
    const QByteArray torn = retentionFile(wordFileName)->left(512) + old.mid(512);
    writeRetentionFile(wordFileName, torn);
    EXPECT_EQ(cells(*startPanel(project.get()), LW, 355, 2), Values({2, 1}));
}

TEST_F(Limits, DecayedBytesComeBackAsTheyAre)
{
    const auto project = perAddressProject({{LW, 100, 2}});
    startPanel(project.get())->setCells(LW, 100, {1, 2});
    writeRetentionFile(wordFileName, QByteArray("\x55\xaa\x02\x00", 4));
    EXPECT_EQ(cells(*startPanel(project.get()), LW, 100, 2), Values({0xaa55, 2}));
}

TEST_F(Limits, AnotherProjectReadsTheValuesAtItsOwnAddresses)
{
    const auto before = perAddressProject({{LW, 100, 2}, {LW, 200, 2}});
    const auto after = perAddressProject({{LW, 50, 1}, {LW, 100, 2}, {LW, 200, 2}});
    const auto first = startPanel(before.get());
    first->setCells(LW, 100, {1, 2});
    first->setCells(LW, 200, {3, 4});
    const auto panel = startPanel(after.get());
    EXPECT_EQ(cells(*panel, LW, 50, 1), Values({1}));
    EXPECT_EQ(cells(*panel, LW, 100, 2), Values({2, 3}));
    EXPECT_EQ(cells(*panel, LW, 200, 2), Values({4, 0}));
}

TEST_F(Limits, TheChangeToWholeAreasEmptiesTheFilesOfRanges)
{
    const auto ranges = perAddressProject({{LW, 100, 2}});
    startPanel(ranges.get())->setCells(LW, 100, {1, 2});
    const auto whole = wholeAreaProject(1, 5);
    EXPECT_EQ(cells(*startPanel(whole.get()), LW, 100, 2), Values({0, 0}));
    EXPECT_EQ(retentionFile(wordFileName), QByteArray(131072, '\0'));
}

TEST_F(Limits, TheChangeToRangesReadsTheBeginningOfTheImages)
{
    const auto whole = wholeAreaProject(1, 5);
    const auto first = startPanel(whole.get());
    first->setCells(LW, 0, {11, 12});
    first->setCells(LW, 100, {1, 2});
    first->model->cyclicRun();
    const auto ranges = perAddressProject({{LW, 100, 2}});
    EXPECT_EQ(cells(*startPanel(ranges.get()), LW, 100, 2), Values({11, 12}));
}

TEST_F(Limits, AShortenedImageIsLostAsAWhole)
{
    const auto whole = wholeAreaProject(1, 5);
    const auto first = startPanel(whole.get());
    first->setCells(LW, 0, {11, 12});
    first->model->cyclicRun();
    writeRetentionFile(wordFileName, retentionFile(wordFileName)->left(131071));
    EXPECT_EQ(cells(*startPanel(whole.get()), LW, 0, 2), Values({0, 0}));
}

TEST_F(Limits, WholeAreasComeBackAsTheyWereAtTheLastSave)
{
    const auto whole = wholeAreaProject(1, 5);
    const auto first = startPanel(whole.get());
    first->setCells(LW, 0, {11});
    first->model->cyclicRun();
    first->setCells(LW, 0, {12});
    EXPECT_EQ(cells(*startPanel(whole.get()), LW, 0, 1), Values({11}));
}

} // namespace
