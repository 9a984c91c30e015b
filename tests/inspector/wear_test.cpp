// The wear model: what a write touches, and what a day of writes comes to.
// SPDX-License-Identifier: MIT
#include "tests/support/module_test.h"
#include "tools/retention_inspector/wear.h"

namespace {

using testing::DoubleEq;
using testing::DoubleNear;
using testing::IsEmpty;

Layout layoutOf(const object& project)
{
    return makeLayout(readSettings(const_cast<object*>(&project)));
}

WearQuestion perHour(double changes)
{
    WearQuestion question;
    question.changesPerHour = changes;
    return question;
}

TEST(Wear, CountsPagesAndEraseBlocksThatAWriteTouches)
{
    const WearQuestion question;
    EXPECT_THAT(costOfWrite(question, 0, 4096).flashPages, DoubleEq(1));
    EXPECT_THAT(costOfWrite(question, 4095, 2).flashPages, DoubleEq(2));
    EXPECT_THAT(costOfWrite(question, 131071, 2).eraseBlocks, DoubleEq(2));
    EXPECT_THAT(costOfWrite(question, 5, 0).flashPages, DoubleEq(0));
}

TEST(Wear, OfABitIsOneByteAndOfAWordItsBlock)
{
    const auto project = perAddressProject({{QStringLiteral("LB"), 0, 10}, {QStringLiteral("LW"), 0, 10}});
    const auto days = daysOfWrites(layoutOf(*project), perHour(100));
    ASSERT_EQ(days.size(), 2U);
    EXPECT_STREQ(days[0].key, "even");
    EXPECT_THAT(days[0].writes, DoubleEq(2400));
    EXPECT_THAT(days[0].each.fileBytes, DoubleEq((1.0 + 20.0) / 2));
    EXPECT_STREQ(days[1].key, "worst");
    EXPECT_THAT(days[1].each.fileBytes, DoubleEq(20));
    EXPECT_THAT(days[1].each.flashPages, DoubleEq(2)) << "its page and the file system's";
}

TEST(Wear, OfWholeAreasIsTheThreeImagesEachPeriod)
{
    const auto days = daysOfWrites(layoutOf(*wholeAreaProject(1, 5)), perHour(0));
    ASSERT_EQ(days.size(), 1U);
    EXPECT_THAT(days[0].writes, DoubleEq(288));
    EXPECT_THAT(days[0].each.fileBytes, DoubleEq(327680));
    EXPECT_THAT(days[0].each.flashPages, DoubleEq(81));
}

TEST(Wear, IsNotCountedWithoutAPeriodOrWithoutCells)
{
    EXPECT_THAT(daysOfWrites(layoutOf(*wholeAreaProject(1, 0)), perHour(1)), IsEmpty());
    EXPECT_THAT(daysOfWrites(layoutOf(*wholeAreaProject(0, 5)), perHour(1)), IsEmpty());
    EXPECT_THAT(daysOfWrites(layoutOf(*perAddressProject({{QStringLiteral("LW"), 0, 0}})), perHour(1)),
                IsEmpty());
}

TEST(Wear, ComesToYearsLevelledAndInPlace)
{
    WearQuestion question = perHour(10);
    question.enduranceCycles = 1000;
    const DayOfWrites day = {"even", "", 240, {20, 2, 2}};
    EXPECT_THAT(levelledYears(question, day), DoubleEq(0)) << "the capacity is not known";
    EXPECT_THAT(inPlaceYears(question, day), DoubleNear(1000 / 240.0 / 365.25, 1e-9));
    question.capacity = 1 << 30;
    EXPECT_THAT(levelledYears(question, day), DoubleNear(1000.0 * (1 << 30) / (240 * 8192.0) / 365.25, 1e-6));
}

TEST(Wear, ThatIsTooMuchIsAFinding)
{
    const auto project = perAddressProject({{QStringLiteral("LW"), 0, 10}});
    WearQuestion question = perHour(3600);
    EXPECT_THAT(wearReport(layoutOf(*project), question).findings, IsEmpty()) << "no endurance is given";
    question.enduranceCycles = 3000;
    EXPECT_EQ(wearReport(layoutOf(*project), question).findings.size(), 1U);
    question.capacity = 8LL << 30;
    EXPECT_THAT(wearReport(layoutOf(*project), question).findings, IsEmpty());
}

} // namespace
