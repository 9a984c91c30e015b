// Tests the commands that write or compare, as their user sees them.
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
    EXPECT_THAT(run.out.toStdString(), HasSubstr("LW     carried over      15   100 to 109, 200 to 204"));
    EXPECT_THAT(run.out.toStdString(), HasSubstr("one byte per bit was assumed"));
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
    EXPECT_THAT(again.err.toStdString(), HasSubstr("/new: already exists, and nothing is overwritten"));
    EXPECT_EQ(migrate(path("old")).status, 2);
    EXPECT_EQ(read("new/maintenance-word.dat"), before);
    const ToolRun without = run({QStringLiteral("migrate"), ranges, areas, path("old")});
    EXPECT_EQ(without.status, 2);
    EXPECT_THAT(without.err.toStdString(),
                HasSubstr("expected: migrate OLD.xml NEW.xml DIR --output DIR2 (see"));
}

TEST_F(WritingCommands, MigrateRefusesFilesThatWereNotWrittenUnderTheOldProject)
{
    const struct
    {
        const char* file;
        QByteArray bytes;
        const char* reason;
    } foreign[] = {{"old/maintenance-bit.dat", QByteArray("\x20\xff", 2), "bits are set after the last cell"},
                   {"old/maintenance-word.dat", QByteArray(131072, '\1'), "length of a whole-area image"},
                   {"old/maintenance-word.dat", QByteArray(29, '\1'), "29 bytes instead of 30"},
                   {"old/maintenance-word.dat", QByteArray(32, '\1'), "32 bytes instead of 30"}};
    for (const auto& [file, bytes, reason] : foreign) {
        const QByteArray sound = read(file);
        write(file, bytes);
        const ToolRun run = migrate(path("new"));
        EXPECT_EQ(run.status, 2) << reason;
        EXPECT_EQ(run.out, "");
        EXPECT_THAT(run.err.toStdString(), HasSubstr(reason));
        EXPECT_THAT(run.err.toStdString(), HasSubstr("nothing was created"));
        EXPECT_THAT(run.err.toStdString(), HasSubstr("--force"));
        EXPECT_THAT(run.err.toStdString(), Not(HasSubstr("\"migrate\""))) << "no remedy that is circular";
        EXPECT_FALSE(QFile::exists(path("new")));
        write(file, sound);
    }
    EXPECT_EQ(migrate(path("new")).status, 0);
}

TEST_F(WritingCommands, MigrateRefusesADirectoryWithoutFiles)
{
    QDir(scratch.path()).mkdir(QStringLiteral("none"));
    const ToolRun run = WritingCommands::run(
        {QStringLiteral("migrate"), ranges, areas, path("none"), QStringLiteral("--output"), path("new")});
    EXPECT_EQ(run.status, 2);
    EXPECT_THAT(run.err.toStdString(), HasSubstr("has none of the three files"));
    EXPECT_FALSE(QFile::exists(path("new")));
}

TEST_F(WritingCommands, MigrateCarriesWhatIsThereWhenForced)
{
    write("old/maintenance-bit.dat", QByteArray("\x20\xff", 2));
    const ToolRun run = WritingCommands::run({QStringLiteral("migrate"), ranges, areas, path("old"),
                                              QStringLiteral("--force"), QStringLiteral("-o"), path("new")});
    EXPECT_EQ(run.status, 1);
    EXPECT_THAT(run.out.toStdString(), HasSubstr("bits are set after the last cell"));
    EXPECT_THAT(run.out.toStdString(), Not(HasSubstr("\"migrate\"")));
    EXPECT_TRUE(QFile::exists(path("new/maintenance-bit.dat")));
}

TEST_F(WritingCommands, MigrateListsDroppedValues)
{
    write("old/maintenance-word.dat",
          QByteArray("\5\0\5\0", 4) + QByteArray(22, '\0') + QByteArray("\7\0\x8\0", 4));
    write("narrow.xml",
          "<object name='p'><object name='DataRetention'>"
          "<property name='open Save all' type='uint32'>0</property><object name='counters'>"
          "<property name='addressLength' type='int32'>4</property>"
          "<object name='sourceAddress'><property name='Block' type='string'>LW</property>"
          "<property name='index' type='int32'>200</property></object></object></object></object>");
    const ToolRun run = WritingCommands::run({QStringLiteral("migrate"), ranges, path("narrow.xml"),
                                              path("old"), QStringLiteral("-o"), path("new")});
    EXPECT_EQ(run.status, 0) << run.err.toStdString();
    EXPECT_THAT(run.out.toStdString(), HasSubstr("Dropped values other than 0\n"
                                                 "  Area   Addresses    Value\n"
                                                 "  LB     25               1\n"
                                                 "  LW     100 to 101       5\n"
                                                 "  LW     204              8\n"));
}

TEST_F(WritingCommands, NameTheirOutputInTheUsageLine)
{
    const ToolRun migrateHelp = WritingCommands::run({QStringLiteral("migrate"), QStringLiteral("--help")});
    EXPECT_THAT(migrateHelp.out.toStdString(),
                HasSubstr("migrate OLD.xml NEW.xml DIR --output DIR2 [options]"));
    const ToolRun mapHelp = WritingCommands::run({QStringLiteral("map"), QStringLiteral("--help")});
    EXPECT_THAT(mapHelp.out.toStdString(), HasSubstr("map PROJECT.xml --output FILE.svg [options]"));
    const ToolRun without = WritingCommands::run({QStringLiteral("map"), ranges});
    EXPECT_EQ(without.status, 2);
    EXPECT_THAT(without.err.toStdString(), HasSubstr("expected: map PROJECT.xml --output FILE.svg (see"));
}

TEST_F(WritingCommands, MakeNoDirectoryWithTheNameOfStandardOutput)
{
    write("values.csv", "area,address,value\n");
    for (const QString& output : {QString(), QStringLiteral("-")}) {
        const ToolRun imported = run({QStringLiteral("import"), ranges, path("values.csv"), path("old"),
                                      QStringLiteral("-o"), output});
        const ToolRun migrated = migrate(output);
        for (const ToolRun& tool : {imported, migrated}) {
            EXPECT_EQ(tool.status, 2);
            EXPECT_THAT(tool.err.toStdString(), HasSubstr("expected a new directory for the three files"));
        }
    }
    EXPECT_FALSE(QFileInfo::exists(QStringLiteral("-")));
    EXPECT_THAT(run({QStringLiteral("export"), ranges, path("old"), QStringLiteral("-o"), QString()})
                    .err.toStdString(),
                HasSubstr("expected a new file, or - for standard output"));
}

TEST_F(WritingCommands, DiffPutsCellsThatDifferAlikeInOneRow)
{
    QDir(scratch.path()).mkdir(QStringLiteral("none"));
    const ToolRun tool = run({QStringLiteral("diff"), ranges, path("old"), path("none")});
    EXPECT_THAT(tool.out.toStdString(), HasSubstr("  LB     20 to 24         0   -\n"
                                                  "  LB     25               1   -\n"
                                                  "  LB     26 to 31         0   -\n"
                                                  "  LW     100 to 109       0   -\n"
                                                  "  LW     200 to 202       0   -\n"
                                                  "  LW     203              7   -\n"));
    const ToolRun csv = run({QStringLiteral("diff"), ranges, path("old"), path("none"),
                             QStringLiteral("--format"), QStringLiteral("csv")});
    EXPECT_THAT(csv.out.toStdString(), HasSubstr("LB,20,0,\nLB,21,0,\n"));
}

TEST_F(WritingCommands, DiffSaysFirstThatFilesDoNotFit)
{
    QDir(scratch.path()).mkdir(QStringLiteral("later"));
    write("later/maintenance-word.dat", QByteArray(131072, '\1'));
    write("later/maintenance-bit.dat", QByteArray("\x20\0", 2));
    const ToolRun run = WritingCommands::run({QStringLiteral("diff"), ranges, path("old"), path("later")});
    EXPECT_EQ(run.status, 1);
    EXPECT_THAT(run.out.toStdString(), HasSubstr("length of a whole-area image"));
    EXPECT_LT(run.out.indexOf("Findings"), run.out.indexOf("Different cells"));
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
    EXPECT_THAT(run.out.toStdString(), testing::StrEq("area,address,first,second\nLW,204,8,9\n"));
    const ToolRun same = WritingCommands::run({diff, ranges, path("old"), path("old")});
    EXPECT_EQ(same.status, 0);
    EXPECT_THAT(same.out.toStdString(), HasSubstr("Different        0\n"));
}

TEST_F(WritingCommands, WearNeedsTheChangesOfAProjectWithEntries)
{
    const QString wear = QStringLiteral("wear");
    EXPECT_EQ(run({wear, ranges}).status, 2);
    EXPECT_EQ(run({wear, ranges, QStringLiteral("--changes-per-hour=60")}).status, 0);
    EXPECT_EQ(run({wear, ranges, QStringLiteral("--medium=sd")}).status, 0);
    EXPECT_EQ(run({wear, areas}).status, 0);
    const ToolRun worn = run({wear, areas, QStringLiteral("--endurance-cycles=3000")});
    EXPECT_EQ(worn.status, 1);
    EXPECT_THAT(worn.out.toStdString(), HasSubstr("the flash lasts 10 days without wear levelling"));
    const ToolRun bad = run({wear, areas, QStringLiteral("--erase-block=0")});
    EXPECT_EQ(bad.status, 2);
    EXPECT_THAT(bad.err.toStdString(), HasSubstr("--erase-block \"0\": expected a size from 1"));
}

TEST_F(WritingCommands, ShowTheFirstTableWithRowsAsCsv)
{
    const ToolRun limits = run({QStringLiteral("wear"), ranges, QStringLiteral("--medium"),
                                QStringLiteral("sd"), QStringLiteral("--format"), QStringLiteral("csv")});
    EXPECT_THAT(limits.out.toStdString(), testing::StartsWith("case,levelled_limit,in_place_limit\neven,"));
    const ToolRun same = run({QStringLiteral("diff"), ranges, path("old"), path("old"),
                              QStringLiteral("--format"), QStringLiteral("csv")});
    EXPECT_EQ(same.out, "area,address,first,second\n");
}

TEST_F(WritingCommands, MapMakesAPictureAndReplacesItOnlyOnRequest)
{
    const QStringList map = {QStringLiteral("map"), ranges, QStringLiteral("-o"), path("map.svg")};
    EXPECT_EQ(run(map).status, 0);
    EXPECT_THAT(read("map.svg").toStdString(), HasSubstr("address_ranges.xml: per-address entries"));
    const ToolRun again = run(map);
    EXPECT_EQ(again.status, 2);
    EXPECT_THAT(again.err.toStdString(),
                HasSubstr("already exists; name a new file, or replace it with --force"));
    EXPECT_EQ(run(map + QStringList(QStringLiteral("--force"))).status, 0);
    EXPECT_EQ(run({QStringLiteral("map"), ranges, QStringLiteral("-o"), path("no/where.svg")}).status, 2);
    const ToolRun piped = run({QStringLiteral("map"), ranges, QStringLiteral("-o"), QStringLiteral("-")});
    EXPECT_EQ(piped.out, read("map.svg"));
    EXPECT_THAT(piped.err.toStdString(), HasSubstr("No findings."));
}

} // namespace
