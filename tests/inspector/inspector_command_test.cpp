// Tests retention_inspector as its user sees it: output, exit status and error texts.
// SPDX-License-Identifier: MIT
#include "tests/support/tool_test.h"
#include "tools/retention_inspector/command.h"

#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <QtCore/QProcess>

namespace {

using testing::HasSubstr;
using testing::Not;

class Inspector : public ToolTest
{
protected:
    Inspector() : ToolTest(RETENTION_INSPECTOR_PATH) { QDir().mkdir("dir"); }

    /// Writes the files of "ranges.xml": LW 203 is `value`, LB 25 is 1, all else 0.
    static void writeExampleFiles(char value = 7)
    {
        writeFiles("dir", QByteArray(26, '\0') + value + QByteArray(3, '\0'), QByteArray("\x20\0", 2));
    }
};

TEST_F(Inspector, ShowsTheLayoutOfAProject)
{
    const ToolRun tool = run("layout ranges.xml");
    EXPECT_EQ(tool.status, 0);
    EXPECT_EQ(tool.err, "");
    EXPECT_EQ(tool.out.toStdString(),
              "Mode   per-address entries\n"
              "\n"
              "Files\n"
              "  File                   Area   Blocks   Cells   Bytes\n"
              "  maintenance-bit.dat    LB          1      12       2\n"
              "  maintenance-word.dat   LW          2      15      30\n"
              "  maintenance-RWI.dat    RWI         0       0       0\n"
              "\n"
              "Blocks\n"
              "  Area   Block   Addresses    Cells   At byte   Bit   Entries\n"
              "  LB         1   20 to 31        12         0     0   3\n"
              "  LW         1   100 to 109      10         0     0   1\n"
              "  LW         2   200 to 204       5        20     0   2\n"
              "\n"
              "Entries\n"
              "  Entry   Name       Area   Addresses    Cells   Verdict          Cells not retained\n"
              "      1   recipe     LW     100 to 109      10   fully retained\n"
              "      2   counters   LW     200 to 204       5   fully retained\n"
              "      3   switches   LB     20 to 31        12   fully retained\n"
              "\n"
              "No findings.\n"
              "\n"
              "Notes\n"
              "  - Some entries do not set \"Link\", \"No\", \"station\", \"length\", \"Bit_or_Word\". The "
              "module then uses\n"
              "    an empty string or 0; what is retained does not depend on it.\n");
}

TEST_F(Inspector, ShowsTheSavePeriodOfWholeAreas)
{
    const std::string layout = output("layout areas.xml");
    EXPECT_THAT(layout, HasSubstr("Mode     whole areas\nPeriod   5 minutes (300000 ms)\n"));
    EXPECT_THAT(layout, Not(HasSubstr("Entries")));
}

TEST_F(Inspector, EndsWithStatusOneForFindings)
{
    write("odd.xml", "<object name='p'><object name='DataRetention'><object name='e'/></object></object>");
    EXPECT_THAT(output("layout odd.xml", 1),
                HasSubstr("1. error: entry 1 \"e\": it has no \"sourceAddress\""));
}

TEST_F(Inspector, GivesScriptsJson)
{
    const auto root = QJsonDocument::fromJson(run("layout ranges.xml --format json").out).object();
    EXPECT_EQ(root.value("version").toInt(), 2);
    EXPECT_EQ(root.value("mode").toString(), "per-address");
    const QJsonObject block = root.value("blocks").toArray().at(2).toObject();
    EXPECT_EQ(block.value("first").toInt(), 200);
    EXPECT_EQ(block.value("byte").toInt(), 20);
    EXPECT_TRUE(root.value("findings").toArray().isEmpty());
}

TEST_F(Inspector, GivesScriptsCsv)
{
    writeExampleFiles();
    const ToolRun tool = run("show ranges.xml dir --address 203-204 --format=csv");
    EXPECT_EQ(tool.out, "area,address,value,state\nLW,203,7,kept\nLW,204,0,kept\n");
    EXPECT_EQ(tool.err, "");
}

TEST_F(Inspector, GivesFindingsBesideATable)
{
    const ToolRun files = run("check ranges.xml dir --format=csv");
    EXPECT_EQ(files.status, 1);
    EXPECT_EQ(files.out.count('\n'), 4) << "a line of names and three files: " << files.out.toStdString();
    EXPECT_THAT(files.err.toStdString(), HasSubstr("the file does not exist."));
    const ToolRun findings = run("check ranges.xml dir --format=csv --table=findings");
    EXPECT_THAT(findings.out.toStdString(),
                HasSubstr("severity,kind,entry,area,cells,place,problem,remedy\nerror,missing,,LB,"));
    EXPECT_EQ(findings.err, "");
    const std::string all = output("check ranges.xml dir --format=csv --table=all", 1);
    EXPECT_THAT(all, HasSubstr("record,file,bytes,"));
    EXPECT_THAT(all, HasSubstr("\nfact,mode,per-address\n"));
    EXPECT_THAT(errors("check ranges.xml dir --format=csv --table=blocks"),
                HasSubstr("--table \"blocks\": expected one of files, findings, facts, or all"));
}

TEST_F(Inspector, SaysNothingWhenQuiet)
{
    EXPECT_EQ(output("check ranges.xml dir --quiet", 1) + errors("check ranges.xml dir --quiet", 1), "");
}

TEST_F(Inspector, ColoursSeveritiesOnATerminalOnly)
{
    const auto onTerminal = [this] {
        return runToolOnTerminal(tool, {"layout", "examples/overlapping_ranges.xml"}, "").out.toStdString();
    };
    qunsetenv("NO_COLOR");
    EXPECT_THAT(onTerminal(), HasSubstr("1. \x1b[1;31merror\x1b[0m: "));
    EXPECT_THAT(output("layout examples/overlapping_ranges.xml", 1), Not(HasSubstr("\x1b")));
    qputenv("NO_COLOR", "1");
    EXPECT_THAT(onTerminal(), Not(HasSubstr("\x1b")));
    qunsetenv("NO_COLOR");
}

TEST_F(Inspector, ShowsTheValuesThatAreAskedFor)
{
    writeExampleFiles();
    const QString show = "show ranges.xml dir --format=csv ";
    const std::string names = "area,address,value,state\n";
    EXPECT_EQ(output(show + "--nonzero"), names + "LB,25,1,kept\nLW,203,7,kept\n");
    EXPECT_EQ(output(show + "--nonzero --hex --entry counters"), names + "LW,203,0x0007,kept\n");
    EXPECT_EQ(output(show + "--address=0xcb"), names + "LW,203,7,kept\n");
    EXPECT_THAT(errors(show + "--entry=nobody"),
                HasSubstr("--entry \"nobody\": expected one of recipe, counters, switches"));
}

TEST_F(Inspector, SaysWhyCellsThatAreAskedForAreNotRetained)
{
    writeFiles("dir", QByteArray(40, '\0'), QByteArray(3, '\0'), QByteArray(20, '\0'));
    const struct
    {
        const char* cells;
        const char* finding;
    } lost[] = {
        {"--address 60100", "entry 5 \"alarms\", LB 60100: the module never writes changes of this bit."},
        {"--area LW --address 115", "LW 115: the entries overlap and are folded into block 1"},
        {"--area LW --address 110-120", "LW 115: the entries overlap and are folded into block 1"},
        {"--entry batch", "RWI 65536 to 65539: the area ends at 65535"},
        {"--entry operator", "entry 7 \"operator\": the area name \"lw\" is not exactly \"LW\""},
        {"--area LW --address 50", "error: LW 50: no entry contains this cell, so it is not retained."},
        {"--address 50-51", "error: LB, LW, RWI 50 to 51: no entry contains these cells, so they are not"}};
    for (const auto& [cells, finding] : lost) {
        const QString show =
            QStringLiteral("show examples/overlapping_ranges.xml dir %1").arg(QLatin1String(cells));
        const std::string shown = output(show, 1);
        EXPECT_THAT(QByteArray::fromStdString(shown).simplified().toStdString(), HasSubstr(finding)) << cells;
        EXPECT_THAT(shown, Not(HasSubstr("\n  2. "))) << "one cause, one finding: " << cells;
        EXPECT_THAT(shown, Not(HasSubstr("No findings."))) << cells;
    }
    for (const char* const cells : {"", " --address 100", " --area LB --address 25", " --entry counters",
                                    " --area LW --address 200-300", " --area RWI"})
        EXPECT_THAT(
            output(QStringLiteral("show examples/overlapping_ranges.xml dir%1").arg(QLatin1String(cells))),
            HasSubstr("No findings."))
            << cells;
    EXPECT_THAT(output("show examples/address_ranges.xml dir --area LB --address 60100", 1),
                HasSubstr("-> Use another bit: the module never writes changes of this one.\n"));
    write("none.xml", "<object name='p'/>");
    EXPECT_THAT(output("show none.xml dir --area LB --address 5", 1),
                HasSubstr("error: LB 5: the project retains nothing.\n"));
}

TEST_F(Inspector, SaysOnceWhatToDoAboutSeveralFindings)
{
    writeFiles("dir", QByteArray(32, '\0'), QByteArray("\x20\xff\0", 3), QByteArray(2, '\0'));
    const std::string checked = output("check ranges.xml dir", 1);
    EXPECT_THAT(checked, HasSubstr("  1. warning: dir/maintenance-bit.dat: it has 3 bytes instead of 2"));
    EXPECT_THAT(checked, HasSubstr("     -> If it was written for another project, carry its values over"));
    for (const char* const later : {"\n  2. error: ", "\n  3. warning: ", "\n  4. warning: "})
        EXPECT_THAT(checked.substr(std::min(checked.find(later), checked.size())),
                    testing::ContainsRegex("\n     -> As for 1\\.\n"))
            << later;
    EXPECT_EQ(checked.find("If it was written"), checked.rfind("If it was written"));
    for (const auto finding : QJsonDocument::fromJson(run("check ranges.xml dir --format=json").out)
                                  .object()
                                  .value("findings")
                                  .toArray())
        EXPECT_THAT(finding.toObject().value("remedy").toString().toStdString(),
                    testing::StartsWith("If it was written for another project"))
            << "a script sees each finding alone";
}

TEST_F(Inspector, WatchesTheFiles)
{
    writeExampleFiles();
    QProcess watching;
    const QStringList call =
        qEnvironmentVariable("TEST_EMULATOR").split(QLatin1Char(' '), Qt::SkipEmptyParts) +
        QStringList{tool, "show", "ranges.xml", "dir", "--watch"};
    watching.start(call.first(), call.mid(1));
    const auto waitFor = [&](const QByteArray& text) {
        QByteArray out;
        while (!out.contains(text) && watching.waitForReadyRead(20000))
            out += watching.readAllStandardOutput();
        return out.toStdString();
    };
    EXPECT_THAT(waitFor("No findings"), HasSubstr("0     0     0     7     0"));
    writeExampleFiles(9);
    EXPECT_THAT(waitFor("->"), HasSubstr("  LW 203: 7 -> 9\n"));
    QFile::remove("dir/maintenance-word.dat");
    const std::string out = waitFor("204: no value");
    EXPECT_THAT(out, HasSubstr("maintenance-word.dat: the file does not exist.\n"));
    EXPECT_THAT(out, HasSubstr("  LW 100 to 109: no value\n"));
    EXPECT_THAT(out, HasSubstr("  LW 200 to 204: no value\n"));
    watching.kill();
    watching.waitForFinished();
}

TEST_F(Inspector, ShowsKeptValuesByAddress)
{
    writeExampleFiles();
    const std::string all = output("show ranges.xml dir");
    EXPECT_THAT(all, HasSubstr("  LB     20 to 29     0 0 0 0 0 1 0 0 0 0\n  LB     30 to 31     0 0\n"));
    EXPECT_THAT(all, HasSubstr("  LW     200 to 204       0     0     0     7     0\n"));
    const std::string narrow = output("show ranges.xml dir --area LB --address 25");
    EXPECT_THAT(narrow, HasSubstr("  LB     25          1\n"));
    EXPECT_THAT(narrow, Not(HasSubstr("LW")));
}

TEST_F(Inspector, SaysBeforeItShowsValuesThatTheFilesDoNotFit)
{
    writeExampleFiles();
    write("dir/maintenance-word.dat", QByteArray(131072, '\1'));
    const std::string shown = output("show ranges.xml dir", 1);
    EXPECT_THAT(QByteArray::fromStdString(shown).simplified().toStdString(),
                HasSubstr("length of a whole-area image, but the project retains address ranges"));
    EXPECT_LT(shown.find("Findings"), shown.find("Retained values"));
    EXPECT_THAT(shown, HasSubstr("  Area   Addresses    Values"));
    EXPECT_THAT(shown, HasSubstr("  257   257   257   257   257   doubtful\n"));
    EXPECT_THAT(shown, HasSubstr("  LB     30 to 31     0 0\n")) << "in a file that fits";
    EXPECT_THAT(shown, Not(HasSubstr("No findings.")));
    const QJsonArray cells = QJsonDocument::fromJson(run("show ranges.xml dir --format=json").out)
                                 .object()
                                 .value("cells")
                                 .toArray();
    EXPECT_EQ(cells.at(0).toObject().value("state").toString(), "kept") << "LB 20, in a file that fits";
    EXPECT_EQ(cells.at(12).toObject().value("state").toString(), "doubtful")
        << "LW 100, in one that does not";
}

TEST_F(Inspector, DoesNotTakeAFolderThatItMayNotSearchForAnEmptyOne)
{
    if (!qEnvironmentVariableIsEmpty("TEST_EMULATOR"))
        GTEST_SKIP() << "needs root of this machine, to become somebody else";
    const bool isRoot = geteuid() == 0;
    const auto own = QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner;
    QFile::setPermissions(scratch.path(), own | QFile::ReadOther | QFile::ExeOther);
    QFile::setPermissions("dir", isRoot ? own : QFile::Permissions());
    QStringList call = {"setpriv", "--reuid=65534", "--regid=65534", "--clear-groups",
                        tool,      "check",         "ranges.xml",    "dir"};
    call = isRoot ? call : call.mid(4);
    const ToolRun refused = runTool(call.first(), call.mid(1));
    QFile::setPermissions("dir", own);
    if (refused.status == 126 || refused.status == 127)
        GTEST_SKIP() << "needs root that can become somebody else, and a build folder that they reach";
    EXPECT_EQ(refused.status, 2);
    EXPECT_THAT(refused.err.toStdString(), HasSubstr("dir: Permission denied"));
}

TEST_F(Inspector, SaysThatTheProjectHasFindings)
{
    writeExampleFiles();
    EXPECT_THAT(output("show examples/overlapping_ranges.xml dir", 1),
                HasSubstr("The project itself has 4 findings; run \"layout\" to see them."));
}

TEST_F(Inspector, TakesNoByteForABitThatIsNeither0Nor1)
{
    const QByteArray words(131072, '\0');
    writeFiles("dir", words, QByteArray(65536, '\3'), words);
    for (const char* const command : {"show areas.xml dir", "diff areas.xml dir dir"})
        EXPECT_THAT(QByteArray::fromStdString(output(command, 1)).simplified().toStdString(),
                    HasSubstr("65536 bytes are neither 0 nor 1"));
    EXPECT_THAT(output("show areas.xml dir", 1), HasSubstr("1 1 1 1 1 1 1 1 1 1   doubtful\n"));
}

TEST_F(Inspector, SaysBeforeItShowsThatThereAreNoFiles)
{
    const std::string shown = output("show ranges.xml dir", 1);
    EXPECT_THAT(shown, HasSubstr("maintenance-word.dat: the file does not exist."));
    EXPECT_LT(shown.find("Findings"), shown.find("Retained values"));
}

TEST_F(Inspector, CollapsesCellsWithoutValue)
{
    const std::string shown = output("show areas.xml dir", 1);
    EXPECT_THAT(shown, HasSubstr("  LW     0 to 65535   no value\n"));
    EXPECT_LT(std::count(shown.begin(), shown.end(), '\n'), 40);
}

TEST_F(Inspector, ChecksFiles)
{
    writeExampleFiles();
    output("check ranges.xml dir", 0);
    EXPECT_THAT(output("check areas.xml dir", 1), HasSubstr("emptied and filled with zeros"));
}

TEST_F(Inspector, NamesWhatIsWrongWithItsInput)
{
    write("bad.xml", "<object name='p'>\n<object/></object>");
    EXPECT_THAT(runTool(tool, {}).err.toStdString(), HasSubstr("expected one of layout, show, check"));
    const char* const errorsOf[][2] = {
        {"lay", "unknown command \"lay\""},
        {"layout", "expected: layout PROJECT.xml (see retention_inspector layout --help)"},
        {"layout /nowhere.xml", "/nowhere.xml: cannot be read"},
        {"layout dir", "is not a file"},
        {"layout bad.xml", "bad.xml:2:"},
        {"layout areas.xml --format=xml", "--format \"xml\": expected text, json or csv"},
        {"layout areas.xml --wrong", "wrong"},
        {"show areas.xml /nowhere", "/nowhere: no such directory"},
        {"show areas.xml areas.xml", "areas.xml: is not a directory"},
        {"show areas.xml dir --area=lb", "--area \"lb\": expected LB, LW or RWI"},
        {"show areas.xml dir --address=9-5", "--address \"9-5\": expected an address"}};
    for (const auto& [words, error] : errorsOf) {
        EXPECT_THAT(errors(words), HasSubstr(error));
        EXPECT_EQ(output(words, 2), "");
    }
}

TEST_F(Inspector, ExplainsEveryCommandWithExamples)
{
    const std::string general = output("--help");
    EXPECT_EQ(output("help check"), output("check --help"));
    errors("help chek");
    for (const Command* form : commands()) {
        const std::string name = form->name;
        EXPECT_THAT(general, HasSubstr("  " + name + ' '));
        const std::string help = output(QString::fromStdString(name + " --help"));
        EXPECT_THAT(help, HasSubstr("Examples:\n  retention_inspector " + name));
        for (const Option& option : form->options)
            EXPECT_THAT(help, HasSubstr(std::string("--") + option.name));
    }
}

} // namespace
