// Tests configuration and choice of the mode.
// SPDX-License-Identifier: MIT
#include "tests/support/module_test.h"

namespace {

class Configuration : public ModuleTest
{
protected:
    /// The result of extModelOpen() for a "Save Time" in whole-area mode.
    long long periodFor(std::optional<qint64> saveTime)
    {
        const auto project = wholeAreaProject(1, saveTime);
        const auto panel = makePanel(project.get());
        panel->open();
        EXPECT_EQ(panel->model->cycleRemainingMs, panel->model->cyclePeriodMs);
        return panel->model->cyclePeriodMs;
    }

    static void markBase(ExtendFuncModelBase& model)
    {
        model.cyclePeriodMs = 123;
        model.cycleRemainingMs = 456;
        model.retentionMode = 77;
    }
};

TEST_F(Configuration, TurnsSaveTimeIntoMillisecondsWithItsOddValues)
{
    EXPECT_EQ(periodFor(std::nullopt), 300000);
    EXPECT_EQ(periodFor(0), 0);
    EXPECT_EQ(periodFor(1), 60000);
    EXPECT_EQ(periodFor(32767), 1966020000);
    EXPECT_EQ(periodFor(40000), -1532160000);
    EXPECT_EQ(periodFor(70000), 267840000);
}

TEST_F(Configuration, WithoutDataRetentionNothingIsRetained)
{
    object project;
    const auto panel = makePanel(&project);
    markBase(*panel->model);
    panel->open();
    EXPECT_EQ(panel->model->retentionMode, 0);
    EXPECT_EQ(panel->model->extModelParam, 10);
    EXPECT_EQ(panel->model->extModelString, QStringLiteral("poweroff_protect"));
    EXPECT_EQ(panel->model->cyclePeriodMs, 123);
    EXPECT_EQ(panel->model->cycleRemainingMs, 456);
    EXPECT_EQ(retentionFile(bitFileName), std::nullopt);
}

TEST_F(Configuration, WithoutDataRetentionASecondOpenLeavesTheSavingAsItIs)
{
    const auto project = wholeAreaProject(1, 5);
    const auto panel = startPanel(project.get());
    object empty;
    panel->model->extModelOpen(&empty, QString(), &panel->comm);
    EXPECT_EQ(panel->model->retentionMode, 0);
    panel->areas.named(LW)->setCell(0, 7);
    panel->model->cyclicRun();
    EXPECT_EQ(retentionFile(wordFileName).value_or(QByteArray()).left(2), QByteArray("\7\0", 2));
    EXPECT_EQ(syncs(), 1);
}

TEST_F(Configuration, WithoutDataRetentionTheInitialisationStillMakesEmptyPerAddressFiles)
{
    const auto panel = startPanel(nullptr);
    EXPECT_EQ(retentionFile(bitFileName), QByteArray(1, '\0'));
    EXPECT_EQ(retentionFile(wordFileName), QByteArray(""));
    EXPECT_EQ(retentionFile(rwiFileName), QByteArray(""));
}

TEST_F(Configuration, WithoutEntriesTheModeIsNoneAndTheFilesAreMadeForEmptyLists)
{
    const auto project = wholeAreaProject(0, 3);
    const auto panel = makePanel(project.get());
    markBase(*panel->model);
    panel->start();
    EXPECT_EQ(panel->model->retentionMode, 0);
    EXPECT_EQ(panel->model->cyclePeriodMs, 123);
    EXPECT_EQ(retentionFile(bitFileName), QByteArray(1, '\0'));
    EXPECT_EQ(retentionFile(wordFileName), QByteArray(""));
    panel->reportChange(LW, 0);
    EXPECT_EQ(syncs(), 1) << "the module is ready";
}

TEST_F(Configuration, EntriesSelectThePerAddressMode)
{
    const auto project = perAddressProject({{LW, 5, 2}});
    const auto panel = makePanel(project.get());
    markBase(*panel->model);
    panel->start();
    EXPECT_EQ(panel->model->retentionMode, 2);
    EXPECT_EQ(panel->model->cyclePeriodMs, 123);
    EXPECT_EQ(panel->model->cycleRemainingMs, 456);
    EXPECT_EQ(panel->model->cyclicRun(), 0);
    EXPECT_EQ(syncs(), 0) << "no periodic save in this mode";
}

TEST_F(Configuration, AMissingSaveAllIsZero)
{
    const auto project = wholeAreaProject(std::nullopt, 3);
    const auto withoutEntries = startPanel(project.get());
    EXPECT_EQ(withoutEntries->model->retentionMode, 0);
    addEntry(*project->findChild(QStringLiteral("DataRetention")), {LW, 5, 2});
    const auto withEntries = startPanel(project.get());
    EXPECT_EQ(withEntries->model->retentionMode, 2);
    EXPECT_EQ(withEntries->watched.ranges().size(), 1U);
}

TEST_F(Configuration, SaveAllWinsOverEntriesWhichAreThenNotRead)
{
    const auto project = perAddressProject({{LW, 5, 2}});
    project->findChild(QStringLiteral("DataRetention"))
        ->setNumber(QStringLiteral("open Save all"), 4000000000);
    const auto panel = startPanel(project.get());
    EXPECT_EQ(panel->model->retentionMode, 1);
    EXPECT_TRUE(panel->watched.ranges().empty());
    EXPECT_FALSE(calls.contains(QStringLiteral("object_first_child")));
    EXPECT_FALSE(calls.contains(QStringLiteral("object_get_child sourceAddress")));
    EXPECT_TRUE(calls.contains(QStringLiteral("object_get_child DataRetention"))) << "reading is recorded";
    panel->model->cyclicRun();
    EXPECT_EQ(syncs(), 1);
}

TEST_F(Configuration, ReadsSaveTimeInEveryModeInOrder)
{
    const auto project = perAddressProject({});
    const auto panel = makePanel(project.get());
    panel->open();
    EXPECT_EQ(calls, QStringList({QStringLiteral("object_get_child DataRetention"),
                                  QStringLiteral("object_get_property open Save all"),
                                  QStringLiteral("object_get_property Save Time"),
                                  QStringLiteral("object_first_child")}));
}

} // namespace
