// Tests the wear model: what a write touches, and what a day of writes adds up to.
// SPDX-License-Identifier: MIT
#include "tests/inspector/layout_of.h"
#include "tests/inspector/report_of.h"
#include "tools/retention_core/device_writes.h"
#include "tools/retention_core/refusal.h"

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QTemporaryDir>

#include <fstream>
#include <string>
#include <sys/stat.h>
#include <sys/sysmacros.h>

namespace {

using testing::DoubleEq;
using testing::DoubleNear;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

using Options = std::initializer_list<std::pair<const char*, QString>>;

Report wear(const object& project, Options options)
{
    return reportOf("wear", {layoutOf(project)}, {}, options);
}

/// The wear of a project of ten words.
Report wear(Options options)
{
    return wear(*perAddressProject({{LW, 0, 10}}), options);
}

std::pair<const char*, QString> changesPerHour(int changes)
{
    return {"changes-per-hour", QString::number(changes)};
}

/// One field of the row of a case in one of the tables, as scripts get it; -1 for null.
double valueIn(const Report& report, const char* tableKey, const char* of, const char* key)
{
    for (const Table& table : report.tables) {
        if (qstrcmp(table.key, tableKey) != 0)
            continue;
        for (const auto& row : table.rows)
            for (std::size_t i = 0; i < table.columns.size(); ++i)
                if (row.front().data.toString() == QLatin1String(of) &&
                    qstrcmp(table.columns[i].key, key) == 0)
                    return row[i].data.toDouble(-1);
    }
    ADD_FAILURE() << "no " << key << " of " << of << " in " << tableKey;
    return -1;
}

double dayValue(const Report& report, const char* of, const char* key)
{
    return valueIn(report, "days", of, key);
}

std::string factText(const Report& report, const char* key)
{
    return factOf(report, key).text.toStdString();
}

TEST(Wear, CountsPagesThatAWriteTouches)
{
    // The second block, two words, crosses byte 4096 of its file; the first one lies before it.
    const auto project = perAddressProject({{LW, 0, 2047}, {LW, 2047, 2}});
    const Report report = wear(*project, {changesPerHour(1), {"file-system-pages", "0"}});
    const double each = (2047.0 * 1 + 2 * 2) / 2049; // of the cells, each with its block
    EXPECT_THAT(dayValue(report, "even", "flash_bytes"), DoubleNear(24 * 4096 * each, 1e-6));
}

TEST(Wear, FindsTheWorstCaseInASmallBlockThatCrossesIntoAnotherPage)
{
    const auto project = perAddressProject({{LW, 0, 2047}, {LW, 2047, 2}});
    const Report report = wear(*project, {changesPerHour(1)});
    EXPECT_THAT(dayValue(report, "worst", "file_bytes"), DoubleEq(24 * 4));
    EXPECT_THAT(dayValue(report, "worst", "flash_bytes"), DoubleEq(24 * 6 * 4096))
        << "two pages and the file system's four";
    EXPECT_THAT(reportText(report).toStdString(),
                HasSubstr("all changes in the most expensive block, LW 2047 to 2048"));
}

TEST(Wear, OfABitIsOneByteAndOfAWordItsBlock)
{
    const auto project = perAddressProject({{LB, 0, 10}, {LW, 0, 10}});
    const Report report = wear(*project, {changesPerHour(100)});
    EXPECT_THAT(dayValue(report, "even", "writes"), DoubleEq(2400));
    EXPECT_THAT(dayValue(report, "even", "file_bytes"), DoubleEq(2400 * (1.0 + 20.0) / 2));
    EXPECT_THAT(dayValue(report, "worst", "file_bytes"), DoubleEq(2400 * 20));
    EXPECT_THAT(dayValue(report, "worst", "flash_bytes"), DoubleEq(2400 * 5 * 4096))
        << "its page and the file system's four";
}

TEST(Wear, LeavesOutTheBitThatIsNeverWritten)
{
    const Report beside = wear(*perAddressProject({{LB, 60099, 3}, {LW, 0, 2}}), {changesPerHour(1)});
    EXPECT_THAT(dayValue(beside, "even", "file_bytes"), DoubleEq(24 * (2 * 1 + 2 * 4) / 4.0))
        << "two bits, two words";
    EXPECT_THAT(reportText(beside).toStdString(), HasSubstr("60099, 60101 "));
    const Report alone = wear(*perAddressProject({{LB, 60100, 1}}), {changesPerHour(1)});
    for (const Table& table : alone.tables)
        EXPECT_THAT(table.rows, IsEmpty()) << table.key;
}

TEST(Wear, OfWholeAreasIsTheThreeImagesEachPeriod)
{
    const Report report = wear(*wholeAreaProject(1, 5), {});
    EXPECT_THAT(report.tables.front().rows, SizeIs(1));
    EXPECT_THAT(dayValue(report, "saves", "writes"), DoubleEq(288));
    EXPECT_THAT(dayValue(report, "saves", "file_bytes"), DoubleEq(288 * 327680.0));
    EXPECT_THAT(dayValue(report, "saves", "flash_bytes"), DoubleEq(288 * 84 * 4096.0));
}

TEST(Wear, IsNotCountedWithoutAPeriodOrWithoutCells)
{
    const auto withoutCells = perAddressProject({{LW, 0, 0}});
    EXPECT_THAT(wear(*wholeAreaProject(1, 0), {}).tables.front().rows, IsEmpty());
    EXPECT_THAT(wear(*wholeAreaProject(0, 5), {}).tables.front().rows, IsEmpty());
    EXPECT_THAT(wear(*withoutCells, {changesPerHour(1)}).tables.front().rows, IsEmpty());
}

TEST(Wear, ComesToYearsLevelledAndInPlace)
{
    const std::pair<const char*, QString> endurance = {"endurance-cycles", "1000"};
    const Report unknown = wear({changesPerHour(10), endurance});
    EXPECT_THAT(dayValue(unknown, "even", "levelled_years"), DoubleEq(-1)) << "the capacity is not known";
    EXPECT_THAT(dayValue(unknown, "even", "in_place_years"), DoubleNear(1000 / 240.0 / 365.25, 1e-9));
    const Report known = wear({changesPerHour(10), endurance, {"capacity", "1G"}});
    EXPECT_THAT(dayValue(known, "even", "levelled_years"),
                DoubleNear(1000.0 * (1 << 30) / (240 * 5 * 4096.0) / 365.25, 1e-6));
}

TEST(Wear, ShowsOnlyTheLifeThatTheMediumCanHave)
{
    const std::pair<const char*, QString> endurance = {"endurance-cycles", "1000"};
    for (const char* const medium : {"sd", "emmc", "nor", "nand"}) {
        const Report levelled = wear({changesPerHour(10), {"medium", QString::fromLatin1(medium)}});
        const std::string text = reportText(levelled).toStdString();
        EXPECT_THAT(text, HasSubstr("Life, levelled")) << medium;
        EXPECT_THAT(text, testing::Not(testing::ContainsRegex("[Ii]n place"))) << medium;
        EXPECT_GT(dayValue(levelled, "even", "in_place_years"), 0) << "scripts get both";
    }
    const std::string given =
        reportText(wear({changesPerHour(10), endurance, {"capacity", "1G"}})).toStdString();
    EXPECT_THAT(given, testing::Not(testing::ContainsRegex("[Ii]n place")));
    const std::string text = reportText(wear({changesPerHour(10), endurance})).toStdString();
    EXPECT_THAT(text, HasSubstr("Life, in place"));
    EXPECT_THAT(text, testing::Not(HasSubstr("Life, levelled")));
    EXPECT_THAT(
        QString::fromStdString(text).simplified().toStdString(),
        HasSubstr("\"In place\" assumes that nothing levels the wear, so that each write erases the same "
                  "block, as on NOR flash or EEPROM that FAT or ext4 writes directly."));
}

TEST(Wear, AnswersHowOftenCellsMayChange)
{
    const Report emmc = wear({{"medium", "emmc"}});
    const double writes =
        3000.0 * 4 * (1 << 30) / (4 * 16384.0); // pages of 16 KiB: its own and three of the file system
    EXPECT_THAT(valueIn(emmc, "limits", "worst", "levelled_limit"),
                DoubleNear(writes / (10 * 365.25 * 24), 1e-6));
    EXPECT_EQ(factText(emmc, "answer"), "for 10 years: at most 2,242 changes per hour");
    // That number of changes wears it out in exactly those years.
    const Report at = wear({{"medium", "emmc"}, changesPerHour(2242)});
    EXPECT_THAT(at.findings, IsEmpty());
    EXPECT_THAT(dayValue(at, "worst", "levelled_years"), DoubleNear(10, 0.01));
    EXPECT_THAT(wear({{"medium", "emmc"}, changesPerHour(2250)}).findings, SizeIs(1));
    const Report direct = wear({{"endurance-cycles", "10000"}});
    EXPECT_EQ(factText(direct, "answer"), "for 10 years: at most 1 change every 8.8 hours");
    const Report images = wear(*wholeAreaProject(1, 5), {{"medium", "sd"}});
    EXPECT_EQ(factText(images, "answer"), "for 10 years: Save Time at least 1 min");
}

TEST(Wear, SaysWhatItAssumesOfAMedium)
{
    const Report report = wear({{"medium", "nor"}, {"capacity", "32 MiB"}});
    EXPECT_EQ(factText(report, "medium"),
              "serial NOR flash with UBIFS; the \"levelled\" figures apply, because UBI levels the wear");
    EXPECT_EQ(factText(report, "page"), "256 bytes");
    EXPECT_EQ(factText(report, "erase_block"), "64 KiB");
    EXPECT_EQ(factText(report, "capacity"), "32 MiB") << "the user knows better";
    EXPECT_EQ(factText(report, "endurance_cycles"), "100,000");
    EXPECT_THAT(reportText(report).toStdString(), HasSubstr("\"Levelled\" assumes that"));
}

TEST(Wear, CountsTheErasuresOfSync)
{
    const Report report = wear({{"medium", "nor"}, changesPerHour(10)});
    const double each = 1 + 7 * 256 / 65536.0; // of the log's erase block, and the pages' share
    EXPECT_THAT(dayValue(report, "worst", "erasures_levelled"), DoubleNear(240 * each, 1e-6));
    EXPECT_THAT(dayValue(report, "worst", "levelled_years"),
                DoubleNear(100000 * 256 / (240 * each) / 365.25, 1e-6));
}

TEST(Wear, OnUbifsWritesTheWholeBlockOfTheFile)
{
    // Ten words at the head of a file of 6000 bytes, and ten at its end.
    const auto project = perAddressProject({{LW, 0, 10}, {LW, 20, 2980}, {LW, 5000, 10}});
    const Report report = wear(*project, {{"medium", "nor"}});
    for (const Table& table : report.tables)
        if (qstrcmp(table.key, "blocks") == 0) {
            ASSERT_THAT(table.rows, SizeIs(3));
            EXPECT_EQ(table.rows[0].back().data.toInt(), 16) << "4096 bytes";
            EXPECT_EQ(table.rows[2].back().data.toInt(), 8) << "from 4096 to 6000";
        }
}

/// What a change of one of 10 cells sent to the medium, as counted by benchmarks/medium/measure.py.
double measuredBytes(const char* storage)
{
    std::ifstream record(SOURCE_DIR "/benchmarks/medium/expected_costs.txt");
    for (std::string line; std::getline(record, line);)
        if (line.compare(0, 20, QByteArray(storage).leftJustified(20).constData()) == 0)
            return std::stod(line.substr(20));
    ADD_FAILURE() << "not measured: " << storage;
    return 0;
}

TEST(Wear, AgreesWithWhatWasMeasured)
{
    const auto project = perAddressProject({{LW, 100, 10}});
    const std::pair<const char*, const char*> media[] = {{"emmc", "ext4"}, {"sd", "ext4"}, {"nor", "ubifs"}};
    for (const auto& [medium, storage] : media) {
        const Report report = wear(*project, {{"medium", QString::fromLatin1(medium)}});
        const double measured = measuredBytes(storage);
        EXPECT_THAT(valueIn(report, "writes", "worst", "sent_bytes"), DoubleNear(measured, measured / 4))
            << medium;
    }
}

TEST(Wear, MeasuresTheDeviceThatHoldsADirectory)
{
    const QTemporaryDir folder;
    struct stat status;
    ASSERT_EQ(stat(folder.path().toLocal8Bit().constData(), &status), 0);
    const QString device = QStringLiteral("%1/dev/block/%2:%3")
                               .arg(folder.path())
                               .arg(major(status.st_dev))
                               .arg(minor(status.st_dev));
    EXPECT_THROW(deviceWrites(folder.path(), folder.path()), Refusal) << "nothing counts for it";
    EXPECT_THROW(deviceWrites(folder.filePath("missing")), Refusal);
    ASSERT_TRUE(QDir().mkpath(device));
    QFile counts(device + "/stat");
    ASSERT_TRUE(counts.open(QIODevice::WriteOnly | QIODevice::Unbuffered));
    counts.write("   12    3   400   5   60   7   8000  9 0 1 2\n");
    const DeviceWrites writes = deviceWrites(folder.path(), folder.path());
    EXPECT_EQ(writes.requests, 60);
    EXPECT_EQ(writes.bytes, 8000 * 512);
    counts.resize(0);
    EXPECT_THROW(deviceWrites(folder.path(), folder.path()), Refusal) << "nothing is counted";
}

TEST(Wear, UnderstandsSizesAndRatesAsPeopleWriteThem)
{
    const auto capacity = [&](const char* text) {
        const Report report = wear({changesPerHour(1), {"capacity", QString::fromLatin1(text)}});
        return factOf(report, "capacity").data.toDouble();
    };
    EXPECT_EQ(capacity("4G"), 4.0 * (1 << 30));
    EXPECT_EQ(capacity("4 GiB"), 4.0 * (1 << 30));
    EXPECT_EQ(capacity("4GB"), 4e9);
    EXPECT_EQ(capacity("512k"), 512 * 1024);
    EXPECT_EQ(capacity("0x1000"), 4096);
    EXPECT_EQ(capacity("4,096"), 4096);
    EXPECT_EQ(capacity("1.5M"), 1.5 * (1 << 20));
    for (const char* bad : {"", "G", "4X", "-4K", "4 G i B", "1e30"})
        EXPECT_THROW(capacity(bad), Refusal) << bad;
    const auto rate = [&](const char* text) {
        return dayValue(wear({{"changes-per-hour", QString::fromLatin1(text)}}), "even", "writes");
    };
    EXPECT_EQ(rate("60"), 1440);
    EXPECT_EQ(rate("0.5"), 12);
    EXPECT_EQ(rate("2/s"), 172800);
    EXPECT_EQ(rate("10 /min"), 14400);
    EXPECT_EQ(rate("5/day"), 5);
    EXPECT_THROW(rate("5/week"), Refusal);
}

TEST(Wear, RoundsNoFractionAway)
{
    const std::string text = reportText(wear({{"changes-per-hour", "0.25"}})).toStdString();
    EXPECT_THAT(text, HasSubstr("Changes per hour    0.25\n"));
    EXPECT_THAT(text, HasSubstr("0.9375")) << "6 x 20 KiB / 128 KiB";
}

TEST(Wear, ThatIsTooMuchIsAFinding)
{
    const std::pair<const char*, QString> endurance = {"endurance-cycles", "3000"};
    EXPECT_THAT(wear({changesPerHour(3600)}).findings, IsEmpty()) << "no endurance is given";
    EXPECT_THAT(wear({changesPerHour(3600), endurance}).findings, SizeIs(1));
    EXPECT_THAT(wear({changesPerHour(3600), endurance, {"capacity", "8G"}}).findings, IsEmpty());
}

} // namespace
