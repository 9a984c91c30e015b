// Tests values as a table: from the files, into new files, and back to the panel.
// SPDX-License-Identifier: MIT
#include "tests/inspector/layout_of.h"
#include "tests/inspector/report_of.h"
#include "tests/support/random_source.h"
#include "tests/support/tool_test.h"

namespace {

using testing::HasSubstr;
using testing::Not;

const std::array<const char*, 3> fileNames = {bitFileName, wordFileName, rwiFileName};

class ValueTable : public ToolTest
{
protected:
    ValueTable() : ToolTest(RETENTION_INSPECTOR_PATH) {}

    /// A running panel with random values in the first cells of each area, written to the fixed directory.
    std::unique_ptr<Panel> usedPanel(object& project, std::size_t cells = 200)
    {
        for (const char* name : fileNames)
            QFile::remove(retentionPath(name));
        auto panel = startPanel(&project);
        for (MemoryArea& area : panel->areas.all()) {
            std::vector<ushort> values(cells);
            for (ushort& value : values)
                value =
                    static_cast<ushort>(random.oneIn(3) ? 0 : random.between(0, area.isBits() ? 1 : 65535));
            panel->setCells(area.name(), 0, values);
        }
        panel->model->cyclicRun();
        return panel;
    }

    /// A tags file that covers everything used here.
    void writeRandomTags()
    {
        QByteArray tags = "area,address,type,name,unit\n";
        const std::array<const char*, 10> types = {
            "int16", "uint16", "int32",    "uint32:high-first",  "float", "float:high-first",
            "bcd",   "bcd32",  "string:7", "string:4:high-first"};
        const std::array<int, 10> cells = {1, 1, 2, 2, 2, 2, 1, 2, 4, 2};
        for (const char* area : {"LW", "RWI"}) {
            for (int address = random.between(0, 5); address < 200; address += random.between(0, 3)) {
                const auto type = static_cast<std::size_t>(random.between(0, 9));
                tags += QByteArray(area) + ',' + QByteArray::number(address) + ',' + types[type] + ",v" +
                        QByteArray::number(address) + ",mm\n";
                address += cells[type];
            }
        }
        write("tags.csv", tags);
    }

    RandomSource random{printedSeed()};
};

TEST_F(ValueTable, RoundTripIsTheIdentity)
{
    const std::array<QString, 3> names = {LB, LW, RWI};
    qint64 values = 0;
    for (int round = 0; round < 60; ++round) {
        std::vector<Entry> entries(static_cast<std::size_t>(random.between(1, 15)));
        for (Entry& entry : entries)
            entry = {names[static_cast<std::size_t>(random.between(0, 2))], random.between(0, 150),
                     random.between(0, 40)};
        const auto project = round == 7 ? wholeAreaProject(1, 5) : perAddressProject(entries);
        const auto before = usedPanel(*project, round == 7 ? 65536 : 200);
        const Layout layout = layoutOf(*project);
        const auto files = openRetentionFiles(fixedProjectDirectory);
        QFile::remove("values.csv");
        for (const char* const folder : {"made", "edited"})
            QDir(folder).removeRecursively();
        std::vector<std::pair<const char*, QString>> options = {{"output", "values.csv"}};
        if (round % 2 == 1) {
            writeRandomTags();
            options.emplace_back("tags", "tags.csv");
        }
        reportOf("export", {layout}, {files}, options);
        values += read("values.csv").count('\n') - 1;

        const Report in = reportOf("import", {layout}, {}, {{"output", "made"}}, {"values.csv"});
        EXPECT_TRUE(in.findings.empty());
        const Report again = reportOf("import", {layout}, {files}, {{"output", "edited"}}, {"values.csv"});
        EXPECT_TRUE(again.tables.front().rows.empty()) << "a change where nothing changed";
        for (const QString folder : {"made/", "edited/"})
            for (const QString name : fileNames)
                ASSERT_EQ(read(folder + name), *retentionFile(name))
                    << folder.toStdString() << name.toStdString() << ", round " << round;
    }
    EXPECT_GT(values, 200000) << "the projects keep too little to tell";
}

TEST_F(ValueTable, SetsWhatItSaysAndThePanelStartsWithIt)
{
    const auto project = perAddressProject({{LW, 100, 10}, {LB, 8, 16}});
    const auto before = usedPanel(*project);
    write("values.csv", "area,address,value,type\r\nLW,104,-1.5,float:high-first\r\nLW,100,0x1F,\r\n"
                        "LB,9,1,bit\r\nLW,107,'=b,string:4\r\n");
    const Report report =
        reportOf("import", {layoutOf(*project)}, {openRetentionFiles(fixedProjectDirectory)},
                 {{"output", "new"}}, {"values.csv"});
    EXPECT_THAT(reportText(report).toStdString(), HasSubstr("31\n"));
    for (const QString name : fileNames)
        writeRetentionFile(name, read("new/" + name));
    const auto after = startPanel(project.get());
    const MemoryArea& words = *after->areas.named(LW);
    const std::pair<int, int> set[] = {{100, 31}, {104, 0xbfc0}, {105, 0}, {107, '=' + 256 * 'b'}, {108, 0}};
    for (const auto& [cell, value] : set)
        EXPECT_EQ(words.cell(cell), value) << cell;
    for (const int cell : {101, 102, 103, 106, 109})
        EXPECT_EQ(words.cell(cell), before->areas.named(LW)->cell(cell)) << cell;
    EXPECT_EQ(after->areas.named(LB)->cell(9), 1);
}

TEST_F(ValueTable, ReportsEachChangeOldToNew)
{
    const auto project = perAddressProject({{LW, 100, 4}});
    startPanel(project.get())->setCells(LW, 100, {1, 2, 3, 4});
    write("values.csv", "area;address;name;value\nLW;101;speed;7\nLW;102;same;3\n");
    const Report report =
        reportOf("import", {layoutOf(*project)}, {openRetentionFiles(fixedProjectDirectory)},
                 {{"output", "new"}}, {"values.csv"});
    ASSERT_EQ(report.tables.front().rows.size(), 1U);
    EXPECT_THAT(reportText(report).toStdString(), HasSubstr("LW         101   speed   uint16   2     7\n"));
}

const QByteArray bits("\x20\0", 2);

class ValueTableCommands : public ValueTable
{
protected:
    ValueTableCommands() { writeFiles("dir", QByteArray(26, '\0') + QByteArray("\7\0\0\0", 4), bits); }

    std::string refusal(const QByteArray& table, const QString& more = {}) const
    {
        write("bad.csv", table);
        const std::string said = errors("import ranges.xml bad.csv" + more + " -o refused");
        EXPECT_FALSE(QFile::exists("refused"));
        return said;
    }

    ToolRun exported(const QString& more = {}) const { return run("export ranges.xml dir -o -" + more); }
};

TEST_F(ValueTableCommands, StandsOnStandardOutput)
{
    const ToolRun all = exported();
    EXPECT_EQ(all.status, 0) << all.err.toStdString();
    const std::string table = all.out.toStdString();
    EXPECT_EQ(
        table.substr(0, table.find("LB,22")),
        "area,address,name,type,value,state\nLB,20,switches[0],bit,0,kept\nLB,21,switches[1],bit,0,kept\n");
    EXPECT_THAT(table, HasSubstr("LB,28,switches[8],bit,0,start-value\n"));
    EXPECT_THAT(table, HasSubstr("\nLW,203,counters[3],uint16,7,kept\n"));
    EXPECT_THAT(all.err.toStdString(), HasSubstr("Values       27\n"));
    EXPECT_EQ(exported(" --nonzero").out.toStdString(),
              "area,address,name,type,value,state\nLB,25,switches[5],bit,1,kept\nLW,203,counters[3],uint16,7,"
              "kept\n");
}

TEST_F(ValueTableCommands, GoesThroughAPipe)
{
    const ToolRun tool = run("import ranges.xml - -o new", exported(" --nonzero").out);
    EXPECT_EQ(tool.status, 0) << tool.err.toStdString();
    for (const char* const name : {wordFileName, bitFileName})
        EXPECT_EQ(read(QLatin1String("new/") + name), read(QLatin1String("dir/") + name));
}

TEST_F(ValueTableCommands, IsNotWrittenOverAnotherUnlessAsked)
{
    write("values.csv", "mine");
    errors("export ranges.xml dir -o values.csv", 2);
    EXPECT_EQ(read("values.csv"), "mine");
    output("export ranges.xml dir -o values.csv --force", 0);
    EXPECT_THAT(read("values.csv").toStdString(), HasSubstr("LW,203"));
    errors("import ranges.xml values.csv -o dir", 2); // the directory has files
    errors("import ranges.xml values.csv", 2);
    errors("export ranges.xml dir", 2);
}

TEST_F(ValueTableCommands, NamesEveryLineThatCannotBeKept)
{
    const std::string all = refusal("area,address,type,value,state\n"
                                    "LW,300,uint16,1,kept\n"
                                    "LW,101,uint16,65536,kept\n"
                                    "LW,102,int16,-32768,kept\n"
                                    "\n"
                                    "lw,103,uint16,1,kept\n"
                                    "LW,109,float,1,kept\n"
                                    "LW,102,uint16,1,kept\n"
                                    "LW,104,float,\"1,5\",kept\n"
                                    "LW,106,bit,1,kept\n"
                                    "LW,107,uint16,,kept\n"
                                    "LW,108,uint16,5,doubtful\n"
                                    "LB,20,bit,2,kept\n"
                                    "LW,x,uint16,5,kept\n"
                                    "LW,200,string:4,fünfe,kept\n"
                                    "LW,200,bcd,12345,kept\n"
                                    "LW,200,int64,1,kept\n"
                                    "LW,200,uint16,1,sure\n");
    for (const char* message :
         {"bad.csv:2: the project does not retain LW 300",
          "bad.csv:3: value \"65536\": expected a whole number from 0 to 65535",
          "bad.csv:6: area \"lw\": expected", "bad.csv:7: the project does not retain LW 110;",
          "bad.csv:8: LW 102 already has a value in line 4",
          "bad.csv:9: value \"1,5\": expected a decimal point", "bad.csv:10: the type bit does not fit LW",
          "bad.csv:11: the value is missing", "bad.csv:12: the value is doubtful",
          "bad.csv:13: value \"2\": expected a whole number from 0 to 1", "bad.csv:14: address \"x\"",
          "bad.csv:15: the text has 6 bytes, but the type holds 4", "bad.csv:16: value \"12345\"",
          "bad.csv:17: type \"int64\": expected", "bad.csv:18: state \"sure\""})
        EXPECT_THAT(all, HasSubstr(message));
    EXPECT_THAT(all, Not(HasSubstr("bad.csv:4:")));
    EXPECT_THAT(all, Not(HasSubstr("bad.csv:5:")));
    QByteArray many = "area,address,value\n";
    for (int i = 0; i < 50; ++i)
        many += "LW,300,1\n";
    EXPECT_THAT(refusal(many), HasSubstr("and 30 more lines like these"));
}

TEST_F(ValueTableCommands, NamesWhatIsNoTable)
{
    const std::pair<QByteArray, const char*> tables[] = {
        {"", "bad.csv:1: the table is empty"},
        {"area,address\nLW,100\n", "bad.csv:1: there is no column \"value\""},
        {"area,address,value,VALUE\n", "bad.csv:1: there are two columns \"value\""},
        {"area,address,value\nLW,100,1,5\n", "bad.csv:2: the line has 4 fields"},
        {"area,address,value\nLW,10\"0,1\n", "bad.csv:2: there is a quotation mark"},
        {"area,address,value\nLW,100,\"1\n", "the file ends inside a quoted field"},
        {"area,address,value\nLW,100,\xff\n", "bad.csv:2: not UTF-8"},
        {QByteArray("area,address,value\nLW,100,\0\n", 28), "bad.csv:2: not UTF-8"}};
    for (const auto& [table, message] : tables)
        EXPECT_THAT(refusal(table), HasSubstr(message));
}

TEST_F(ValueTableCommands, NeverShowsADoubtfulValueAsAGoodOne)
{
    // Bits after the last cell, and one word too short.
    writeFiles("dir", QByteArray(28, '\5'), QByteArray("\x20\xff", 2));
    const ToolRun tool = exported();
    EXPECT_EQ(tool.status, 1);
    const std::string table = tool.out.toStdString();
    EXPECT_THAT(table, HasSubstr("LB,25,switches[5],bit,1,doubtful\n"));
    EXPECT_THAT(table,
                HasSubstr("LW,203,counters[3],uint16,1285,doubtful\nLW,204,counters[4],uint16,,no-value\n"));
    EXPECT_THAT(table, Not(HasSubstr("kept")));
    EXPECT_THAT(tool.err.toStdString(), HasSubstr("bits are set after the last cell"));
    EXPECT_THAT(refusal(tool.out), HasSubstr("bad.csv:2: the value is doubtful"));
    EXPECT_THAT(refusal("area,address,value\nLW,100,1\n", " dir"),
                HasSubstr("dir/maintenance-bit.dat: 4 bits are set after the last cell"));
}

TEST_F(ValueTableCommands, TakesTheHalfOfAWordForDoubtful)
{
    write("dir/maintenance-word.dat", QByteArray(29, '\5'));
    const ToolRun tool = exported();
    EXPECT_THAT(tool.out.toStdString(), HasSubstr("LW,204,counters[4],uint16,5,doubtful\n"));
    EXPECT_THAT(tool.err.simplified().toStdString(),
                HasSubstr("only the low byte of LW 204, which therefore starts at 5."));
}

TEST_F(ValueTableCommands, SpeaksOfDoubtfulValuesOnlyWhenThereAreAny)
{
    write("dir/maintenance-word.dat", QByteArray());
    const ToolRun tool = exported();
    EXPECT_EQ(tool.status, 1);
    EXPECT_THAT(tool.out.toStdString(), HasSubstr("LW,204,counters[4],uint16,,no-value\n"));
    EXPECT_THAT(tool.err.toStdString(), Not(HasSubstr("doubtful")));
}

TEST_F(ValueTableCommands, DoesNotGuessWhichByteOfAForeignImageIsABit)
{
    const QByteArray words(131072, '\1');
    writeFiles("image", words, QByteArray(65536, '\x5a'), words);
    const std::string table = output("export areas.xml image -o-", 1);
    EXPECT_THAT(table, HasSubstr("\nLB,0,,bit,1,doubtful\n"));
    EXPECT_THAT(table, HasSubstr("\nLW,0,,uint16,257,kept\n"));
    write("word.csv", "area,address,value\nLW,5,9\n");
    output("import areas.xml word.csv image -o new", 0);
    EXPECT_EQ(read("new/maintenance-bit.dat"), QByteArray(65536, '\x5a'));
    EXPECT_EQ(read("new/maintenance-word.dat").mid(8, 4), QByteArray("\1\1\t\0", 4));
    write("bit.csv", "area,address,value\nLB,5,0\n");
    EXPECT_THAT(errors("import areas.xml bit.csv image -o refused"),
                HasSubstr("bit.csv:2: the LB image contains bytes other than 0 and 1"));
}

TEST_F(ValueTableCommands, SimulatorStartsWithTheImportedValues)
{
    write("values.csv", "area,address,value,type\nLW,200,-7,int32\nLB,31,1,bit\n");
    output("import ranges.xml values.csv dir -o new", 0);
    const ToolRun simulator =
        runTool(PANEL_SIMULATOR_PATH, {"ranges.xml", "--project-dir", "new"}, "get LW 200 5\nget LB 31\n");
    EXPECT_THAT(simulator.out.toStdString(), HasSubstr("65529 65535 0 7 0"));
    EXPECT_THAT(simulator.out.toStdString(), HasSubstr("LB 31: 1"));
}

TEST_F(ValueTableCommands, TagsMakeOneLineOfAValue)
{
    QByteArray words(30, '\0');
    words.replace(0, 2, "\xd2\x04");                    // LW 100: 1234
    words.replace(2, 4, QByteArray("\0\0\xac\x41", 4)); // LW 101: 21.5
    words.replace(6, 4, "=A1 ");                        // LW 103
    words.replace(10, 2, "\x34\x1a");                   // LW 105: no decimal digits
    write("dir/maintenance-word.dat", words);
    write("tags.csv", "area,address,type,name,unit\n"
                      "LW,100,int16,count,pcs\n"
                      "LW,101,float,\"temperature, set\",C\n"
                      "LW,103,string:4,recipe,\n"
                      "LW,105,bcd,broken,\n"
                      "LW,109,int32,half,\n"
                      "LW,1000,int32,elsewhere,\n");
    const ToolRun tool = exported(" --tags tags.csv");
    EXPECT_EQ(tool.status, 1);
    EXPECT_THAT(tool.out.toStdString(), HasSubstr("\nLW,100,count,int16,1234,kept\n"
                                                  "LW,101,\"temperature, set\",float,21.5,kept\n"
                                                  "LW,103,recipe,string:4,\"'=A1 \",kept\n"
                                                  "LW,105,broken,uint16,6708,kept\n"
                                                  "LW,106,recipe[6],uint16,0,kept\n"));
    EXPECT_THAT(tool.out.toStdString(), HasSubstr("\nLW,109,half[0],uint16,0,kept\nLW,200,"));
    EXPECT_THAT(tool.err.toStdString(),
                HasSubstr("tags.csv:6: \"half\", LW 109 to 110: only LW 109 is retained"));
    EXPECT_THAT(tool.err.toStdString(),
                HasSubstr("tags.csv:5: \"broken\", LW 105: its cells do not hold a valid bcd"));
    EXPECT_THAT(tool.err.simplified().toStdString(),
                HasSubstr("tags.csv: the project retains no cell of \"elsewhere\" (LW 1000 to 1001)."));
}

TEST_F(ValueTableCommands, ShowAndDiffKnowTags)
{
    QByteArray words(30, '\0');
    words.replace(0, 2, "\x2e\xfb");                    // LW 100: -1234
    words.replace(2, 4, QByteArray("\0\0\xac\x41", 4)); // LW 101: 21.5
    writeFiles("dir", words, bits);
    words.replace(2, 4, QByteArray("\0\0\xad\x41", 4)); // 21.625
    words[28] = 9;                                      // LW 204
    writeFiles("later", words, bits);
    write("tags.csv", "area,address,type,name,unit\nLW,100,int16,count,pcs\nLW,101,float,temperature,C\n");
    const std::string show = output("show ranges.xml dir --tags tags.csv");
    EXPECT_THAT(show, HasSubstr("  LW         100   count         -1234   pcs    int16   kept\n"
                                "  LW         101   temperature    21.5   C      float   kept\n"));
    EXPECT_THAT(show, Not(HasSubstr("204")));
    const std::string diff = output("diff ranges.xml dir later --tags tags.csv", 1);
    EXPECT_THAT(diff, HasSubstr("  LW         101    21.5   21.625   temperature   C\n"
                                "  LW         204       0        9\n"));
    EXPECT_THAT(diff, HasSubstr("Different        2\n"));
}

} // namespace
