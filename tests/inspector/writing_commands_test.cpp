// Tests the commands that write or compare, as their user sees them.
// SPDX-License-Identifier: MIT
#include "tests/support/tool_test.h"

namespace {

using testing::HasSubstr;
using testing::Not;

const QByteArray words = QByteArray(26, '\0') + QByteArray("\7\0\x8\0", 4); // LW 203 and 204
const QByteArray bits("\x20\0", 2);

class WritingCommands : public ToolTest
{
protected:
    WritingCommands() : ToolTest(RETENTION_INSPECTOR_PATH) { writeFiles("old", words, bits); }

    ToolRun migrate(const QString& output) const
    {
        return run("migrate ranges.xml areas.xml old --output=" + output);
    }
};

TEST_F(WritingCommands, MigrateMakesTheFilesOfTheNewProject)
{
    const ToolRun tool = migrate("new");
    EXPECT_EQ(tool.status, 0) << tool.err.toStdString();
    EXPECT_THAT(tool.out.toStdString(), HasSubstr("LW     carried over      15   100 to 109, 200 to 204"));
    EXPECT_THAT(tool.out.toStdString(), HasSubstr("one byte per bit was assumed"));
    const QByteArray image = read("new/maintenance-word.dat");
    EXPECT_EQ(image.size(), 131072);
    EXPECT_EQ(image.mid(2 * 203, 4), words.right(4));
    EXPECT_EQ(read("new/maintenance-bit.dat").indexOf('\1'), 25);
    EXPECT_EQ(read("new/maintenance-RWI.dat"), QByteArray(131072, '\0'));
}

TEST_F(WritingCommands, MigrateRefusesToOverwrite)
{
    ASSERT_EQ(migrate("new").status, 0);
    const QByteArray before = read("new/maintenance-word.dat");
    const ToolRun again = migrate("new");
    EXPECT_EQ(again.status, 2);
    EXPECT_EQ(again.out, "");
    EXPECT_THAT(again.err.toStdString(), HasSubstr("new: already exists, and nothing is overwritten"));
    EXPECT_EQ(migrate("old").status, 2);
    EXPECT_EQ(read("new/maintenance-word.dat"), before);
    EXPECT_THAT(errors("migrate ranges.xml areas.xml old"),
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
        const ToolRun tool = migrate("new");
        EXPECT_EQ(tool.status, 2) << reason;
        EXPECT_EQ(tool.out, "");
        for (const char* const said : {reason, "nothing was created", "--force"})
            EXPECT_THAT(tool.err.toStdString(), HasSubstr(said));
        for (const char* const unsaid : {"\"migrate\"", "swapped"})
            EXPECT_THAT(tool.err.toStdString(), Not(HasSubstr(unsaid)))
                << "a remedy that is circular, or a guess that cannot be right";
        EXPECT_FALSE(QFile::exists("new"));
        write(file, sound);
    }
    EXPECT_EQ(migrate("new").status, 0);
}

TEST_F(WritingCommands, MigrateSaysWhenTheProjectsSeemToBeSwapped)
{
    const char* const guess = "They fit NEW.xml: OLD.xml and NEW.xml may be swapped";
    EXPECT_THAT(errors("migrate areas.xml ranges.xml old --output new"), HasSubstr(guess));
    EXPECT_FALSE(QFile::exists("new"));
    const std::string forced = output("migrate areas.xml ranges.xml old --output new --force", 1);
    EXPECT_THAT(QByteArray::fromStdString(forced).simplified().toStdString(), HasSubstr(guess));
    EXPECT_THAT(output("migrate ranges.xml areas.xml old --output right"), Not(HasSubstr("swapped")));
}

TEST_F(WritingCommands, MigrateRefusesADirectoryWithoutFiles)
{
    QDir().mkdir("none");
    EXPECT_THAT(errors("migrate ranges.xml areas.xml none --output new"),
                HasSubstr("has none of the three files"));
    EXPECT_FALSE(QFile::exists("new"));
}

TEST_F(WritingCommands, MigrateCarriesWhatIsThereWhenForced)
{
    write("old/maintenance-bit.dat", QByteArray("\x20\xff", 2));
    const std::string said = output("migrate ranges.xml areas.xml old --force -o new", 1);
    EXPECT_THAT(said, HasSubstr("bits are set after the last cell"));
    EXPECT_THAT(said, Not(HasSubstr("\"migrate\"")));
    EXPECT_TRUE(QFile::exists("new/maintenance-bit.dat"));
}

TEST_F(WritingCommands, MigrateListsDroppedValues)
{
    write("old/maintenance-word.dat", QByteArray("\5\0\5\0", 4) + words.mid(4));
    write("narrow.xml",
          "<object name='p'><object name='DataRetention'>"
          "<property name='open Save all' type='uint32'>0</property><object name='counters'>"
          "<property name='addressLength' type='int32'>4</property>"
          "<object name='sourceAddress'><property name='Block' type='string'>LW</property>"
          "<property name='index' type='int32'>200</property></object></object></object></object>");
    EXPECT_THAT(output("migrate ranges.xml narrow.xml old -o new"),
                HasSubstr("Dropped values other than 0\n"
                          "  Area   Addresses    Value\n"
                          "  LB     25               1\n"
                          "  LW     100 to 101       5\n"
                          "  LW     204              8\n"));
}

TEST_F(WritingCommands, NameTheirOutputInTheUsageLine)
{
    EXPECT_THAT(output("migrate --help"), HasSubstr("migrate OLD.xml NEW.xml DIR --output DIR2 [options]"));
    EXPECT_THAT(output("map --help"), HasSubstr("map PROJECT.xml --output FILE.svg [options]"));
    EXPECT_THAT(errors("map ranges.xml"), HasSubstr("expected: map PROJECT.xml --output FILE.svg (see"));
}

TEST_F(WritingCommands, MakeNoDirectoryWithTheNameOfStandardOutput)
{
    write("values.csv", "area,address,value\n");
    for (const QString output : {"", "-"}) {
        const ToolRun imported = run("import ranges.xml values.csv old --output=" + output);
        for (const ToolRun& tool : {imported, migrate(output)}) {
            EXPECT_EQ(tool.status, 2);
            EXPECT_THAT(tool.err.toStdString(), HasSubstr("expected a new directory for the three files"));
        }
    }
    EXPECT_FALSE(QFileInfo::exists("-"));
    EXPECT_THAT(errors("export ranges.xml old --output="),
                HasSubstr("expected a new file, or - for standard output"));
}

TEST_F(WritingCommands, DiffPutsCellsThatDifferAlikeInOneRow)
{
    QDir().mkdir("none");
    EXPECT_THAT(output("diff ranges.xml old none", 1), HasSubstr("  LB     20 to 24         0   -\n"
                                                                 "  LB     25               1   -\n"
                                                                 "  LB     26 to 31         0   -\n"
                                                                 "  LW     100 to 109       0   -\n"
                                                                 "  LW     200 to 202       0   -\n"
                                                                 "  LW     203              7   -\n"));
    EXPECT_THAT(output("diff ranges.xml old none --format csv", 1), HasSubstr("LB,20,0,\nLB,21,0,\n"));
}

TEST_F(WritingCommands, DiffSaysFirstThatFilesDoNotFit)
{
    writeFiles("later", QByteArray(131072, '\1'), bits);
    const std::string said = output("diff ranges.xml old later", 1);
    EXPECT_THAT(said, HasSubstr("length of a whole-area image"));
    EXPECT_LT(said.find("Findings"), said.find("Different cells"));
}

TEST_F(WritingCommands, DiffListsTheCellsThatDiffer)
{
    writeFiles("later", words.left(28) + QByteArray("\x9\0", 2), bits);
    EXPECT_EQ(output("diff ranges.xml old later --format=csv", 1), "area,address,first,second\nLW,204,8,9\n");
    EXPECT_THAT(output("diff ranges.xml old old"), HasSubstr("Different        0\n"));
}

TEST_F(WritingCommands, WearNeedsTheChangesOfAProjectWithEntries)
{
    errors("wear ranges.xml", 2);
    output("wear ranges.xml --changes-per-hour=60", 0);
    output("wear ranges.xml --medium=sd", 0);
    output("wear areas.xml", 0);
    EXPECT_THAT(output("wear areas.xml --endurance-cycles=3000", 1),
                HasSubstr("the flash lasts 10 days without wear levelling"));
    EXPECT_THAT(errors("wear areas.xml --erase-block=0"),
                HasSubstr("--erase-block \"0\": expected a size from 1"));
}

TEST_F(WritingCommands, ShowTheFirstTableWithRowsAsCsv)
{
    EXPECT_THAT(output("wear ranges.xml --medium sd --format csv"),
                testing::StartsWith("case,levelled_limit,in_place_limit\neven,"));
    EXPECT_EQ(output("diff ranges.xml old old --format csv"), "area,address,first,second\n");
}

TEST_F(WritingCommands, MapMakesAPictureAndReplacesItOnlyOnRequest)
{
    EXPECT_EQ(run("map ranges.xml -o map.svg").status, 0);
    EXPECT_THAT(read("map.svg").toStdString(), HasSubstr("ranges.xml: per-address entries"));
    EXPECT_THAT(errors("map ranges.xml -o map.svg"),
                HasSubstr("already exists; name a new file, or replace it with --force"));
    EXPECT_EQ(run("map ranges.xml -o map.svg --force").status, 0);
    EXPECT_EQ(run("map ranges.xml -o no/where.svg").status, 2);
    const ToolRun piped = run("map ranges.xml -o -");
    EXPECT_EQ(piped.out, read("map.svg"));
    EXPECT_THAT(piped.err.toStdString(), HasSubstr("No findings."));
}

} // namespace
