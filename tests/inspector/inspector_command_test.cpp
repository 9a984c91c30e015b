// Tests retention_inspector as its user sees it: output, exit status and error texts.
// SPDX-License-Identifier: MIT
#include "tests/support/module_test.h"
#include "tests/support/run_tool.h"
#include "tools/retention_inspector/command.h"

#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <QtCore/QProcess>
#include <QtCore/QTemporaryDir>

namespace {

using testing::HasSubstr;
using testing::Not;

class Inspector : public testing::Test
{
protected:
    static ToolRun run(const QStringList& words)
    {
        return runTool(QStringLiteral(RETENTION_INSPECTOR_PATH), words);
    }

    static QString example(const char* name)
    {
        return QStringLiteral(EXAMPLES_DIR "/%1.xml").arg(QLatin1String(name));
    }

    QString write(const char* name, const QByteArray& bytes)
    {
        QFile file(scratch.filePath(QString::fromLatin1(name)));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(bytes);
        return file.fileName();
    }

    /// The files of the example of address ranges: LW 203 is 7, LB 25 is 1, all else 0.
    void writeExampleFiles()
    {
        QByteArray words(30, '\0');
        words[26] = 7;
        write(wordFileName, words);
        write(bitFileName, QByteArray("\x20\0", 2));
        write(rwiFileName, QByteArray());
    }

    QTemporaryDir scratch;
};

TEST_F(Inspector, ShowsTheLayoutOfAProject)
{
    const ToolRun run = Inspector::run({QStringLiteral("layout"), example("address_ranges")});
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(run.out.toStdString(),
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
    const ToolRun run = Inspector::run({QStringLiteral("layout"), example("whole_areas")});
    EXPECT_EQ(run.status, 0);
    EXPECT_THAT(run.out.toStdString(), HasSubstr("Mode     whole areas\nPeriod   5 minutes (300000 ms)\n"));
    EXPECT_THAT(run.out.toStdString(), Not(HasSubstr("Entries")));
}

TEST_F(Inspector, EndsWithStatusOneForFindings)
{
    const QString project =
        write("odd.xml", "<object name='p'><object name='DataRetention'><object name='e'/>"
                         "</object></object>");
    const ToolRun run = Inspector::run({QStringLiteral("layout"), project});
    EXPECT_EQ(run.status, 1);
    EXPECT_THAT(run.out.toStdString(), HasSubstr("1. error: entry 1 \"e\": it has no \"sourceAddress\""));
}

TEST_F(Inspector, GivesScriptsJson)
{
    const ToolRun run = Inspector::run({QStringLiteral("layout"), example("address_ranges"),
                                        QStringLiteral("--format"), QStringLiteral("json")});
    const QJsonObject root = QJsonDocument::fromJson(run.out).object();
    EXPECT_EQ(root.value(QStringLiteral("version")).toInt(), 2);
    EXPECT_EQ(root.value(QStringLiteral("mode")).toString(), QStringLiteral("per-address"));
    const QJsonObject block = root.value(QStringLiteral("blocks")).toArray().at(2).toObject();
    EXPECT_EQ(block.value(QStringLiteral("first")).toInt(), 200);
    EXPECT_EQ(block.value(QStringLiteral("byte")).toInt(), 20);
    EXPECT_TRUE(root.value(QStringLiteral("findings")).toArray().isEmpty());
}

TEST_F(Inspector, GivesScriptsCsv)
{
    writeExampleFiles();
    const ToolRun run = Inspector::run({QStringLiteral("show"), example("address_ranges"), scratch.path(),
                                        QStringLiteral("--address"), QStringLiteral("203-204"),
                                        QStringLiteral("--format=csv")});
    EXPECT_EQ(run.out.toStdString(), "area,address,value,state\nLW,203,7,kept\nLW,204,0,kept\n");
    EXPECT_EQ(run.err, "");
}

TEST_F(Inspector, GivesFindingsBesideATable)
{
    const QStringList check = {QStringLiteral("check"), example("address_ranges"), scratch.path(),
                               QStringLiteral("--format=csv")};
    const ToolRun files = run(check);
    EXPECT_EQ(files.status, 1);
    EXPECT_EQ(files.out.count('\n'), 4) << "a line of names and three files: " << files.out.toStdString();
    EXPECT_THAT(files.err.toStdString(), HasSubstr("the file does not exist."));
    const ToolRun findings = run(check + QStringList(QStringLiteral("--table=findings")));
    EXPECT_THAT(findings.out.toStdString(),
                HasSubstr("severity,kind,entry,area,cells,place,problem,remedy\nerror,missing,,LB,"));
    EXPECT_EQ(findings.err, "");
    const ToolRun all = run(check + QStringList(QStringLiteral("--table=all")));
    EXPECT_THAT(all.out.toStdString(), HasSubstr("record,file,bytes,"));
    EXPECT_THAT(all.out.toStdString(), HasSubstr("\nfact,mode,per-address\n"));
    const ToolRun none = run(check + QStringList(QStringLiteral("--table=blocks")));
    EXPECT_EQ(none.status, 2);
    EXPECT_THAT(none.err.toStdString(),
                HasSubstr("--table \"blocks\": expected one of files, findings, facts, or all"));
}

TEST_F(Inspector, SaysNothingWhenQuiet)
{
    const ToolRun run = Inspector::run(
        {QStringLiteral("check"), example("address_ranges"), scratch.path(), QStringLiteral("--quiet")});
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(run.err, "");
}

TEST_F(Inspector, ColoursSeveritiesOnATerminalOnly)
{
    const QStringList layout = {QStringLiteral("layout"), example("overlapping_ranges")};
    const QString tool = QStringLiteral(RETENTION_INSPECTOR_PATH);
    qunsetenv("NO_COLOR");
    EXPECT_THAT(runToolOnTerminal(tool, layout, "").out.toStdString(),
                HasSubstr("1. \x1b[1;31merror\x1b[0m: "));
    EXPECT_FALSE(run(layout).out.contains('\x1b'));
    qputenv("NO_COLOR", "1");
    EXPECT_FALSE(runToolOnTerminal(tool, layout, "").out.contains('\x1b'));
    qunsetenv("NO_COLOR");
}

TEST_F(Inspector, ShowsTheValuesThatAreAskedFor)
{
    writeExampleFiles();
    const auto cells = [this](const QStringList& more) {
        return run(QStringList{QStringLiteral("show"), example("address_ranges"), scratch.path(),
                               QStringLiteral("--format=csv")} +
                   more)
            .out.toStdString();
    };
    const std::string names = "area,address,value,state\n";
    EXPECT_EQ(cells({QStringLiteral("--nonzero")}), names + "LB,25,1,kept\nLW,203,7,kept\n");
    EXPECT_EQ(cells({QStringLiteral("--nonzero"), QStringLiteral("--hex"), QStringLiteral("--entry"),
                     QStringLiteral("counters")}),
              names + "LW,203,0x0007,kept\n");
    EXPECT_EQ(cells({QStringLiteral("--address=0xcb")}), names + "LW,203,7,kept\n");
    const ToolRun unknown = run({QStringLiteral("show"), example("address_ranges"), scratch.path(),
                                 QStringLiteral("--entry=nobody")});
    EXPECT_EQ(unknown.status, 2);
    EXPECT_THAT(unknown.err.toStdString(),
                HasSubstr("--entry \"nobody\": expected one of recipe, counters, switches"));
}

TEST_F(Inspector, WatchesTheFiles)
{
    writeExampleFiles();
    QProcess tool;
    const QStringList call =
        qEnvironmentVariable("TEST_EMULATOR").split(QLatin1Char(' '), Qt::SkipEmptyParts) +
        QStringList{QStringLiteral(RETENTION_INSPECTOR_PATH), QStringLiteral("show"),
                    example("address_ranges"), scratch.path(), QStringLiteral("--watch")};
    tool.start(call.first(), call.mid(1));
    const auto waitFor = [&tool](const QByteArray& text) {
        QByteArray out;
        while (!out.contains(text) && tool.waitForReadyRead(20000))
            out += tool.readAllStandardOutput();
        return out;
    };
    EXPECT_THAT(waitFor("No findings").toStdString(), HasSubstr("0     0     0     7     0"));
    QByteArray words(30, '\0');
    words[26] = 9;
    write(wordFileName, words);
    EXPECT_THAT(waitFor("->").toStdString(), HasSubstr("  LW 203: 7 -> 9\n"));
    QFile::remove(scratch.filePath(QString::fromLatin1(wordFileName)));
    const std::string out = waitFor("204: no value").toStdString();
    EXPECT_THAT(out, HasSubstr("maintenance-word.dat: the file does not exist.\n"));
    EXPECT_THAT(out, HasSubstr("  LW 100 to 109: no value\n"));
    EXPECT_THAT(out, HasSubstr("  LW 200 to 204: no value\n"));
    tool.kill();
    tool.waitForFinished();
}

TEST_F(Inspector, ShowsKeptValuesByAddress)
{
    writeExampleFiles();
    const ToolRun run = Inspector::run({QStringLiteral("show"), example("address_ranges"), scratch.path()});
    EXPECT_EQ(run.status, 0);
    EXPECT_THAT(run.out.toStdString(), HasSubstr("  LB     20 to 29     0 0 0 0 0 1 0 0 0 0\n"
                                                 "  LB     30 to 31     0 0\n"));
    EXPECT_THAT(run.out.toStdString(), HasSubstr("  LW     200 to 204       0     0     0     7     0\n"));
    const ToolRun narrow = Inspector::run({QStringLiteral("show"), example("address_ranges"), scratch.path(),
                                           QStringLiteral("--area"), QStringLiteral("LB"),
                                           QStringLiteral("--address"), QStringLiteral("25")});
    EXPECT_THAT(narrow.out.toStdString(), HasSubstr("  LB     25          1\n"));
    EXPECT_THAT(narrow.out.toStdString(), Not(HasSubstr("LW")));
}

TEST_F(Inspector, SaysBeforeItShowsValuesThatTheFilesDoNotFit)
{
    writeExampleFiles();
    write(wordFileName, QByteArray(131072, '\1'));
    const ToolRun run = Inspector::run({QStringLiteral("show"), example("address_ranges"), scratch.path()});
    EXPECT_EQ(run.status, 1);
    const QByteArray finding = "length of a whole-area image, but the project retains address ranges";
    EXPECT_GE(run.out.simplified().indexOf(finding), 0) << run.out.toStdString();
    EXPECT_LT(run.out.indexOf("Findings"), run.out.indexOf("Retained values"));
    EXPECT_THAT(run.out.toStdString(), HasSubstr("  Area   Addresses    Values"));
    EXPECT_THAT(run.out.toStdString(), HasSubstr("  257   257   257   257   257   doubtful\n"));
    EXPECT_THAT(run.out.toStdString(), HasSubstr("  LB     30 to 31     0 0\n")) << "in a file that fits";
    EXPECT_EQ(run.out.count("No findings."), 0);
    const QByteArray json = Inspector::run({QStringLiteral("show"), example("address_ranges"), scratch.path(),
                                            QStringLiteral("--format=json")})
                                .out;
    const QJsonArray cells = QJsonDocument::fromJson(json).object().value(QStringLiteral("cells")).toArray();
    EXPECT_EQ(cells.at(0).toObject().value(QStringLiteral("state")).toString(), QStringLiteral("kept"))
        << "LB 20, in a file that fits";
    EXPECT_EQ(cells.at(12).toObject().value(QStringLiteral("state")).toString(), QStringLiteral("doubtful"))
        << "LW 100, in one that does not";
}

TEST_F(Inspector, DoesNotTakeAFolderThatItMayNotSearchForAnEmptyOne)
{
    if (!qEnvironmentVariableIsEmpty("TEST_EMULATOR"))
        GTEST_SKIP() << "needs root of this machine, to become somebody else";
    writeExampleFiles();
    const bool isRoot = geteuid() == 0;
    QFile::setPermissions(scratch.path(), isRoot ? QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner
                                                 : QFile::Permissions());
    QStringList call = {QStringLiteral("setpriv"),
                        QStringLiteral("--reuid=65534"),
                        QStringLiteral("--regid=65534"),
                        QStringLiteral("--clear-groups"),
                        QStringLiteral(RETENTION_INSPECTOR_PATH),
                        QStringLiteral("check"),
                        example("address_ranges"),
                        scratch.path()};
    call = isRoot ? call : call.mid(4);
    const ToolRun run = runTool(call.first(), call.mid(1));
    QFile::setPermissions(scratch.path(), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    if (run.status == 126 || run.status == 127)
        GTEST_SKIP() << "needs root that can become somebody else, and a build folder that they reach";
    EXPECT_EQ(run.status, 2);
    EXPECT_THAT(run.err.toStdString(), HasSubstr(scratch.path().toStdString() + ": Permission denied"));
}

TEST_F(Inspector, SaysThatTheProjectHasFindings)
{
    writeExampleFiles();
    const ToolRun run =
        Inspector::run({QStringLiteral("show"), example("overlapping_ranges"), scratch.path()});
    EXPECT_THAT(run.out.toStdString(),
                HasSubstr("The project itself has 4 findings; run \"layout\" to see them."));
}

TEST_F(Inspector, TakesNoByteForABitThatIsNeither0Nor1)
{
    write(bitFileName, QByteArray(65536, '\3'));
    write(wordFileName, QByteArray(131072, '\0'));
    write(rwiFileName, QByteArray(131072, '\0'));
    const ToolRun shown = Inspector::run({QStringLiteral("show"), example("whole_areas"), scratch.path()});
    EXPECT_EQ(shown.status, 1);
    EXPECT_THAT(shown.out.simplified().toStdString(), HasSubstr("65536 bytes are neither 0 nor 1"));
    EXPECT_THAT(shown.out.toStdString(), HasSubstr("1 1 1 1 1 1 1 1 1 1   doubtful\n"));
    const ToolRun differing =
        Inspector::run({QStringLiteral("diff"), example("whole_areas"), scratch.path(), scratch.path()});
    EXPECT_EQ(differing.status, 1);
    EXPECT_THAT(differing.out.simplified().toStdString(), HasSubstr("65536 bytes are neither 0 nor 1"));
}

TEST_F(Inspector, SaysBeforeItShowsThatThereAreNoFiles)
{
    const ToolRun run = Inspector::run({QStringLiteral("show"), example("address_ranges"), scratch.path()});
    EXPECT_EQ(run.status, 1);
    EXPECT_THAT(run.out.toStdString(), HasSubstr("maintenance-word.dat: the file does not exist."));
    EXPECT_LT(run.out.indexOf("Findings"), run.out.indexOf("Retained values"));
}

TEST_F(Inspector, CollapsesCellsWithoutValue)
{
    const ToolRun run = Inspector::run({QStringLiteral("show"), example("whole_areas"), scratch.path()});
    EXPECT_THAT(run.out.toStdString(), HasSubstr("  LW     0 to 65535   no value\n"));
    EXPECT_LT(run.out.count('\n'), 40);
}

TEST_F(Inspector, ChecksFiles)
{
    writeExampleFiles();
    EXPECT_EQ(Inspector::run({QStringLiteral("check"), example("address_ranges"), scratch.path()}).status, 0);
    const ToolRun run = Inspector::run({QStringLiteral("check"), example("whole_areas"), scratch.path()});
    EXPECT_EQ(run.status, 1);
    EXPECT_THAT(run.out.toStdString(), HasSubstr("emptied and filled with zeros"));
}

TEST_F(Inspector, NamesWhatIsWrongWithItsInput)
{
    const auto errorOf = [](const QStringList& words) {
        const ToolRun run = Inspector::run(words);
        EXPECT_EQ(run.status, 2);
        EXPECT_EQ(run.out, "");
        return run.err.toStdString();
    };
    const QString layout = QStringLiteral("layout");
    EXPECT_THAT(errorOf({}), HasSubstr("expected one of layout, show, check"));
    EXPECT_THAT(errorOf({QStringLiteral("lay")}), HasSubstr("unknown command \"lay\""));
    EXPECT_THAT(errorOf({layout}),
                HasSubstr("expected: layout PROJECT.xml (see retention_inspector layout --help)"));
    EXPECT_THAT(errorOf({layout, QStringLiteral("/nowhere.xml")}), HasSubstr("/nowhere.xml: cannot be read"));
    EXPECT_THAT(errorOf({layout, scratch.path()}), HasSubstr("is not a file"));
    EXPECT_THAT(errorOf({layout, write("bad.xml", "<object name='p'>\n<object/></object>")}),
                HasSubstr("bad.xml:2:"));
    EXPECT_THAT(errorOf({layout, example("whole_areas"), QStringLiteral("--format=xml")}),
                HasSubstr("--format \"xml\": expected text, json or csv"));
    EXPECT_THAT(errorOf({layout, example("whole_areas"), QStringLiteral("--wrong")}), HasSubstr("wrong"));
    const QString show = QStringLiteral("show");
    EXPECT_THAT(errorOf({show, example("whole_areas"), QStringLiteral("/nowhere")}),
                HasSubstr("/nowhere: no such directory"));
    EXPECT_THAT(errorOf({show, example("whole_areas"), example("whole_areas")}),
                HasSubstr("whole_areas.xml: is not a directory"));
    EXPECT_THAT(errorOf({show, example("whole_areas"), scratch.path(), QStringLiteral("--area=lb")}),
                HasSubstr("--area \"lb\": expected LB, LW or RWI"));
    EXPECT_THAT(errorOf({show, example("whole_areas"), scratch.path(), QStringLiteral("--address=9-5")}),
                HasSubstr("--address \"9-5\": expected an address"));
}

TEST_F(Inspector, ExplainsEveryCommandWithExamples)
{
    const std::string general = Inspector::run({QStringLiteral("--help")}).out.toStdString();
    EXPECT_EQ(Inspector::run({QStringLiteral("help"), QStringLiteral("check")}).out,
              Inspector::run({QStringLiteral("check"), QStringLiteral("--help")}).out);
    EXPECT_EQ(Inspector::run({QStringLiteral("help"), QStringLiteral("chek")}).status, 2);
    for (const Command* form : commands()) {
        EXPECT_THAT(general, HasSubstr(std::string("  ") + form->name + ' '));
        const ToolRun run = Inspector::run({QString::fromLatin1(form->name), QStringLiteral("--help")});
        EXPECT_EQ(run.status, 0);
        EXPECT_THAT(run.out.toStdString(),
                    HasSubstr("Examples:\n  retention_inspector " + std::string(form->name)));
        for (const Option& option : form->options)
            EXPECT_THAT(run.out.toStdString(), HasSubstr(std::string("--") + option.name));
    }
}

} // namespace
