// The commands that write or compare, as their user sees them.
// SPDX-License-Identifier: MIT
#include "tests/support/module_test.h"
#include "tests/support/run_tool.h"

#include <QtCore/QDir>
#include <QtCore/QTemporaryDir>

namespace {

using testing::HasSubstr;
using testing::Not;

class WritingCommands : public testing::Test
{
protected:
    WritingCommands()
    {
        QDir(scratch.path()).mkdir(QStringLiteral("old"));
        write("old/maintenance-word.dat", QByteArray(26, '\0') + QByteArray("\7\0\x8\0", 4));
        write("old/maintenance-bit.dat", QByteArray("\x20\0", 2));
        write("old/maintenance-RWI.dat", QByteArray());
    }

    static ToolRun run(const QStringList& words)
    {
        return runTool(QStringLiteral(RETENTION_INSPECTOR_PATH), words);
    }

    ToolRun migrate(const QString& output) const
    {
        return run(
            {QStringLiteral("migrate"), ranges, areas, path("old"), QStringLiteral("--output"), output});
    }

    QString path(const char* name) const { return scratch.filePath(QString::fromLatin1(name)); }

    void write(const char* name, const QByteArray& bytes) const
    {
        QFile file(path(name));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(bytes);
    }

    QByteArray read(const char* name) const
    {
        QFile file(path(name));
        EXPECT_TRUE(file.open(QIODevice::ReadOnly));
        return file.readAll();
    }

    const QString ranges = QStringLiteral(EXAMPLES_DIR "/address_ranges.xml");
    const QString areas = QStringLiteral(EXAMPLES_DIR "/whole_areas.xml");
    QTemporaryDir scratch;
};

TEST_F(WritingCommands, MigrateMakesTheFilesOfTheNewProject)
{
    const ToolRun run = migrate(path("new"));
    EXPECT_EQ(run.status, 0) << run.err.toStdString();
    EXPECT_THAT(run.out.toStdString(),
                HasSubstr("LW     carried over             15   100 to 109, 200 to 204"));
    EXPECT_THAT(run.out.toStdString(), HasSubstr("one byte a bit was assumed"));
    const QByteArray words = read("new/maintenance-word.dat");
    EXPECT_EQ(words.size(), 131072);
    EXPECT_EQ(words.mid(2 * 203, 4), QByteArray("\7\0\x8\0", 4));
    EXPECT_EQ(read("new/maintenance-bit.dat").indexOf('\1'), 25);
    EXPECT_EQ(read("new/maintenance-RWI.dat"), QByteArray(131072, '\0'));
}

TEST_F(WritingCommands, MigrateRefusesToOverwrite)
{
    ASSERT_EQ(migrate(path("new")).status, 0);
    const QByteArray before = read("new/maintenance-word.dat");
    const ToolRun again = migrate(path("new"));
    EXPECT_EQ(again.status, 2);
    EXPECT_EQ(again.out, "");
    EXPECT_THAT(again.err.toStdString(), HasSubstr("/new: exists already and nothing is overwritten"));
    EXPECT_EQ(migrate(path("old")).status, 2);
    EXPECT_EQ(read("new/maintenance-word.dat"), before);
    const ToolRun without = run({QStringLiteral("migrate"), ranges, areas, path("old")});
    EXPECT_EQ(without.status, 2);
    EXPECT_THAT(without.err.toStdString(), HasSubstr("expected --output DIR"));
}

TEST_F(WritingCommands, MigrateWarnsOfFilesThatDoNotFitTheOldProject)
{
    write("old/maintenance-bit.dat", QByteArray("\x20\xff", 2));
    const ToolRun run = migrate(path("new"));
    EXPECT_EQ(run.status, 1);
    EXPECT_THAT(run.out.toStdString(), HasSubstr("bits are set after the last cell"));
    EXPECT_TRUE(QFile::exists(path("new/maintenance-bit.dat")));
}

TEST_F(WritingCommands, DiffListsTheCellsThatDiffer)
{
    QDir(scratch.path()).mkdir(QStringLiteral("later"));
    write("later/maintenance-word.dat", QByteArray(26, '\0') + QByteArray("\7\0\x9\0", 4));
    write("later/maintenance-bit.dat", QByteArray("\x20\0", 2));
    const QString diff = QStringLiteral("diff");
    const ToolRun run =
        WritingCommands::run({diff, ranges, path("old"), path("later"), QStringLiteral("--format=csv")});
    EXPECT_EQ(run.status, 1);
    EXPECT_THAT(run.out.toStdString(),
                HasSubstr("record,area,address,first,second\ndifference,LW,204,8,9\nrecord,severity"));
    const ToolRun same = WritingCommands::run({diff, ranges, path("old"), path("old")});
    EXPECT_EQ(same.status, 0);
    EXPECT_THAT(same.out.toStdString(), HasSubstr("Different        0\n"));
}

TEST_F(WritingCommands, WearNeedsTheChangesOfAProjectWithEntries)
{
    const QString wear = QStringLiteral("wear");
    EXPECT_EQ(run({wear, ranges}).status, 2);
    EXPECT_EQ(run({wear, ranges, QStringLiteral("--changes-per-hour=60")}).status, 0);
    EXPECT_EQ(run({wear, areas}).status, 0);
    const ToolRun worn = run({wear, areas, QStringLiteral("--endurance-cycles=3000")});
    EXPECT_EQ(worn.status, 1);
    EXPECT_THAT(worn.out.toStdString(), HasSubstr("the flash lasts 10 days without wear levelling"));
    const ToolRun bad = run({wear, areas, QStringLiteral("--erase-block=0")});
    EXPECT_EQ(bad.status, 2);
    EXPECT_THAT(bad.err.toStdString(), HasSubstr("--erase-block \"0\": expected a number from 1"));
}

TEST_F(WritingCommands, MapMakesAPictureAndReplacesItOnlyOnRequest)
{
    const QStringList map = {QStringLiteral("map"), ranges, QStringLiteral("-o"), path("map.svg")};
    EXPECT_EQ(run(map).status, 0);
    EXPECT_THAT(read("map.svg").toStdString(), HasSubstr("address_ranges.xml: per-address entries"));
    const ToolRun again = run(map);
    EXPECT_EQ(again.status, 2);
    EXPECT_THAT(again.err.toStdString(),
                HasSubstr("exists already; name a new file, or replace it with --force"));
    EXPECT_EQ(run(map + QStringList(QStringLiteral("--force"))).status, 0);
    EXPECT_EQ(run({QStringLiteral("map"), ranges, QStringLiteral("-o"), path("no/where.svg")}).status, 2);
}

} // namespace
