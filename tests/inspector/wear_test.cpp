// The wear model: what a write touches, and what a day of writes comes to.
// SPDX-License-Identifier: MIT
#include "tests/inspector/report_of.h"
#include "tests/support/module_test.h"

namespace {

using testing::DoubleEq;
using testing::DoubleNear;
using testing::IsEmpty;
using testing::SizeIs;

using Options = std::initializer_list<std::pair<const char*, QString>>;

Report wear(const object& project, Options options)
{
    return reportOf("wear", {makeLayout(readSettings(const_cast<object*>(&project)))}, {}, options);
}

std::pair<const char*, QString> changesPerHour(int changes)
{
    return {"changes-per-hour", QString::number(changes)};
}

/// One field of the row of a day, as scripts get it; -1 for null.
double dayValue(const Report& report, const char* day, const char* key)
{
    const Table& table = report.tables.front();
    for (const auto& row : table.rows)
        for (std::size_t i = 0; i < table.columns.size(); ++i)
            if (row.front().data.toString() == QLatin1String(day) && qstrcmp(table.columns[i].key, key) == 0)
                return row[i].data.toDouble(-1);
    ADD_FAILURE() << "no " << key << " of " << day;
    return -1;
}

TEST(Wear, CountsPagesAndEraseBlocksThatAWriteTouches)
{
    // The second block, two words, lies across a border at byte 4096 of its file; the first one before it.
    const auto project =
        perAddressProject({{QStringLiteral("LW"), 0, 2047}, {QStringLiteral("LW"), 2047, 2}});
    const Report report = wear(*project, {changesPerHour(1),
                                          {"file-system-pages", QStringLiteral("0")},
                                          {"erase-block", QStringLiteral("4K")}});
    const double each = (2047.0 * 1 + 2 * 2) / 2049; // of the cells, each with its block
    EXPECT_THAT(dayValue(report, "even", "flash_bytes"), DoubleNear(24 * 4096 * each, 1e-6));
    EXPECT_THAT(dayValue(report, "even", "erasures_in_place"), DoubleNear(24 * each, 1e-9));
    EXPECT_THAT(dayValue(report, "worst", "flash_bytes"), DoubleEq(24 * 4096));
}

TEST(Wear, OfABitIsOneByteAndOfAWordItsBlock)
{
    const auto project = perAddressProject({{QStringLiteral("LB"), 0, 10}, {QStringLiteral("LW"), 0, 10}});
    const Report report = wear(*project, {changesPerHour(100)});
    EXPECT_THAT(report.tables.front().rows, SizeIs(2));
    EXPECT_THAT(dayValue(report, "even", "writes"), DoubleEq(2400));
    EXPECT_THAT(dayValue(report, "even", "file_bytes"), DoubleEq(2400 * (1.0 + 20.0) / 2));
    EXPECT_THAT(dayValue(report, "worst", "file_bytes"), DoubleEq(2400 * 20));
    EXPECT_THAT(dayValue(report, "worst", "flash_bytes"), DoubleEq(2400 * 2 * 4096))
        << "its page and the file system's";
}

TEST(Wear, OfWholeAreasIsTheThreeImagesEachPeriod)
{
    const Report report = wear(*wholeAreaProject(1, 5), {});
    EXPECT_THAT(report.tables.front().rows, SizeIs(1));
    EXPECT_THAT(dayValue(report, "saves", "writes"), DoubleEq(288));
    EXPECT_THAT(dayValue(report, "saves", "file_bytes"), DoubleEq(288 * 327680.0));
    EXPECT_THAT(dayValue(report, "saves", "flash_bytes"), DoubleEq(288 * 81 * 4096.0));
}

TEST(Wear, IsNotCountedWithoutAPeriodOrWithoutCells)
{
    const auto withoutCells = perAddressProject({{QStringLiteral("LW"), 0, 0}});
    EXPECT_THAT(wear(*wholeAreaProject(1, 0), {}).tables.front().rows, IsEmpty());
    EXPECT_THAT(wear(*wholeAreaProject(0, 5), {}).tables.front().rows, IsEmpty());
    EXPECT_THAT(wear(*withoutCells, {changesPerHour(1)}).tables.front().rows, IsEmpty());
}

TEST(Wear, ComesToYearsLevelledAndInPlace)
{
    const auto project = perAddressProject({{QStringLiteral("LW"), 0, 10}});
    const std::pair<const char*, QString> endurance = {"endurance-cycles", QStringLiteral("1000")};
    const Report unknown = wear(*project, {changesPerHour(10), endurance});
    EXPECT_THAT(dayValue(unknown, "even", "levelled_years"), DoubleEq(-1)) << "the capacity is not known";
    EXPECT_THAT(dayValue(unknown, "even", "in_place_years"), DoubleNear(1000 / 240.0 / 365.25, 1e-9));
    const Report known = wear(*project, {changesPerHour(10), endurance, {"capacity", QStringLiteral("1G")}});
    EXPECT_THAT(dayValue(known, "even", "levelled_years"),
                DoubleNear(1000.0 * (1 << 30) / (240 * 8192.0) / 365.25, 1e-6));
}

TEST(Wear, ThatIsTooMuchIsAFinding)
{
    const auto project = perAddressProject({{QStringLiteral("LW"), 0, 10}});
    const std::pair<const char*, QString> endurance = {"endurance-cycles", QStringLiteral("3000")};
    EXPECT_THAT(wear(*project, {changesPerHour(3600)}).findings, IsEmpty()) << "no endurance is given";
    EXPECT_THAT(wear(*project, {changesPerHour(3600), endurance}).findings, SizeIs(1));
    EXPECT_THAT(
        wear(*project, {changesPerHour(3600), endurance, {"capacity", QStringLiteral("8G")}}).findings,
        IsEmpty());
}

} // namespace
