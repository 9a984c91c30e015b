// Tests panel_simulator as its user sees it: commands, answers, exit status, and values across a power cut.
// SPDX-License-Identifier: MIT
#include "tests/support/storage.h"
#include "tests/support/tool_test.h"
#include "tools/panel_simulator/command.h"
#include "tools/panel_simulator/line_source.h"
#include "tools/panel_simulator/live_content.h"

#include <csignal>
#include <optional>
#include <sstream>
#include <unistd.h>

namespace {

using testing::ContainsRegex;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

std::string errorOf(const char* line)
{
    return parseCommand(QString::fromLatin1(line)).error.toStdString();
}

TEST(Command, UnderstandsCellsAndValues)
{
    const Command get = parseCommand("  get  LW 0x10 3 ");
    EXPECT_EQ(get.kind, Command::Kind::Get);
    EXPECT_EQ(get.area, "LW");
    EXPECT_EQ(get.address, 16);
    EXPECT_EQ(get.count, 3);
    EXPECT_EQ(parseCommand("get LB 65535").count, 1);
    EXPECT_THAT(parseCommand("set RWI 5 1 -1 0xffff -32768").values,
                testing::ElementsAre(1, 65535, 65535, 32768));
    EXPECT_EQ(parseCommand(QString()).kind, Command::Kind::Nothing);
    EXPECT_EQ(parseCommand("# set").kind, Command::Kind::Nothing);
    EXPECT_EQ(parseCommand("power-cut").kind, Command::Kind::PowerCut);
    EXPECT_EQ(parseCommand("restart # after the change").kind, Command::Kind::Restart);
    EXPECT_THAT(parseCommand("expect LW 5 7 # speed").values, testing::ElementsAre(7));
}

TEST(Command, CompletesCommandsAndAreas)
{
    const auto completed = [](const char* beginning) {
        return completionsOf(QString::fromLatin1(beginning)).join(QLatin1String(" ")).toStdString();
    };
    EXPECT_EQ(completed("se"), "set");
    EXPECT_EQ(completed("st"), "status stop");
    EXPECT_EQ(completed("get "), "LB LW RWI");
    EXPECT_EQ(completed("  expect L"), "LB LW");
    EXPECT_EQ(completed("cycle "), "");
    EXPECT_EQ(completed("get LW "), "");
    EXPECT_EQ(completed("x"), "");
}

TEST(Command, SaysWhatItExpected)
{
    EXPECT_EQ(errorOf("get"), "expected: get AREA ADDRESS [COUNT]");
    EXPECT_EQ(errorOf("get LW 1 2 3"), "expected: get AREA ADDRESS [COUNT]");
    EXPECT_EQ(errorOf("set LW 1"), "expected: set AREA ADDRESS VALUE...");
    EXPECT_EQ(errorOf("cycle now"), "expected: cycle");
    EXPECT_EQ(errorOf("get lw 1"), "area \"lw\": expected LB, LW or RWI");
    EXPECT_EQ(errorOf("get LW 65536"), "address \"65536\": expected a number from 0 to 65535");
    EXPECT_EQ(errorOf("get LW 65535 2"), "count \"2\": expected a number from 1 to 1");
    EXPECT_EQ(errorOf("set LW 65535 1 2"), "too many values: expected at most 1 starting at address 65535");
    EXPECT_EQ(errorOf("set LW 1 65536"), "value \"65536\": expected a number from -32768 to 65535");
    EXPECT_EQ(errorOf("set LB 1 2"), "value \"2\": expected a number from 0 to 1");
    EXPECT_EQ(errorOf("set LW 1 0x"), "value \"0x\": expected a number from -32768 to 65535");
    EXPECT_THAT(errorOf("halt"),
                StartsWith("unknown command \"halt\": expected one of get, set, expect, cycle"));
}

class PanelSimulator : public ToolTest
{
protected:
    PanelSimulator() : ToolTest(PANEL_SIMULATOR_PATH) {}

    /// Removes the line about mapped paths, which is only printed where they are mapped.
    ToolRun run(const QString& project, const QByteArray& commands, const QString& more = {})
    {
        ToolRun result = ToolTest::run(project + " --project-dir data" + more, commands);
        saidNotice = result.err.startsWith(notice());
        result.err.remove(0, saidNotice ? notice().size() : 0);
        return result;
    }

    static QByteArray notice()
    {
        return pathMappingNotice().isEmpty() ? QByteArray()
                                             : "panel_simulator: " + pathMappingNotice().toUtf8() + '\n';
    }
    bool saidNotice = false;
};

TEST_F(PanelSimulator, KeepsAddressRangesOverAPowerCut)
{
    const ToolRun first =
        run("ranges.xml", "set LW 203 7 8\nset LB 20 1 0 1\nset LW 300 9\npower-cut\nget LW 0\n");
    EXPECT_EQ(first.status, -SIGKILL);
    EXPECT_EQ(first.out, "started: per-address entries (mode 2)\n"
                         "set 2 cells, 2 reported to the module\n"
                         "set 3 cells, 3 reported to the module\n"
                         "set 1 cell, 0 reported to the module\n"
                         "power cut\n");
    const ToolRun second = run("ranges.xml", "get LW 200 5\nget LB 20 4\nget LW 300\nstop\n");
    EXPECT_EQ(second.status, 0);
    EXPECT_EQ(
        second.out,
        "started: per-address entries (mode 2)\nLW 200: 0 0 0 7 8\nLB 20: 1 0 1 0\nLW 300: 0\nstopped\n");
}

TEST_F(PanelSimulator, KeepsTheLastSaveOfWholeAreas)
{
    EXPECT_EQ(run("areas.xml", "set RWI 1 5\ncycle\nset RWI 1 6\npower-cut\n").status, -SIGKILL);
    EXPECT_THAT(run("areas.xml", "get RWI 1\n").out.constData(), HasSubstr("RWI 1: 5\n"));
}

TEST_F(PanelSimulator, ShowsWhatIsWatched)
{
    EXPECT_THAT(run("ranges.xml", "watch\n").out.constData(),
                HasSubstr("LB 20 to 31\nLW 100 to 109\nLW 200 to 204\n"));
    EXPECT_THAT(run("areas.xml", "watch\n").out.constData(), HasSubstr("no cells are watched\n"));
}

TEST_F(PanelSimulator, ShowsModePeriodSyncsAndFiles)
{
    const std::string out = run("areas.xml", "cycle\ncycle\nstatus\n").out.constData();
    EXPECT_THAT(out, HasSubstr("mode       whole areas (mode 1)\n"));
    EXPECT_THAT(out, HasSubstr("period     cyclic call every 300000 ms, next in "));
    EXPECT_THAT(out, HasSubstr("ready      yes\nsyncs run  2\n"));
    EXPECT_THAT(out, HasSubstr("maintenance-bit.dat  65536 bytes\n"));
    EXPECT_THAT(out, HasSubstr("maintenance-RWI.dat  131072 bytes\n"));
}

TEST_F(PanelSimulator, EndsAPipeAtItsFirstBadCommandWithTheLineNumber)
{
    const ToolRun result = run("ranges.xml", "get LW 101\nget LW\nget LW 100\n");
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.err, "standard input:2: expected: get AREA ADDRESS [COUNT]\n");
    EXPECT_THAT(result.out.constData(), HasSubstr("LW 101: 0\nstopped\n"));
}

TEST_F(PanelSimulator, ComparesCellsForTesters)
{
    const ToolRun good = run("ranges.xml", "set LW 100 7 8\nexpect LW 100 7 0x8\n");
    EXPECT_EQ(good.status, 0);
    EXPECT_THAT(good.out.constData(), HasSubstr("LW 100: 7 8 as expected\n"));
    const ToolRun bad = run("ranges.xml", "expect LW 100 7 9\nexpect LW 100 7\n");
    EXPECT_EQ(bad.status, 1);
    EXPECT_EQ(bad.err, "standard input:1: LW 100: expected 7 9, found 7 8\n");
    EXPECT_THAT(bad.out.constData(), HasSubstr("LW 100: 7 as expected\n")) << "it goes on";
}

TEST_F(PanelSimulator, StartsAgainWithWhatIsKept)
{
    EXPECT_EQ(run("ranges.xml", "set LW 100 7\nset LW 0 8\nrestart\nget LW 100\nget LW 0\nset LW 101 9\n"
                                "restart\nexpect LW 100 7 9\n")
                  .out,
              "started: per-address entries (mode 2)\n"
              "set 1 cell, 1 reported to the module\nset 1 cell, 0 reported to the module\n"
              "stopped\nstarted: per-address entries (mode 2)\nLW 100: 7\nLW 0: 0\n"
              "set 1 cell, 1 reported to the module\n"
              "stopped\nstarted: per-address entries (mode 2)\nLW 100: 7 9 as expected\nstopped\n");
}

TEST_F(PanelSimulator, SaysWhatAnEndLosesOfWholeAreas)
{
    const ToolRun result =
        run("areas.xml", "set LW 5 1\ncycle\nset LW 5 2\nset RWI 7 1\nrestart\nset LB 1 1\n");
    EXPECT_THAT(result.out.constData(),
                HasSubstr("stopped, unsaved changes lost in 2 cells: LW 5, RWI 7\nstarted"));
    EXPECT_THAT(result.out.constData(), HasSubstr("stopped, unsaved changes lost in 1 cell: LB 1\n"));
    EXPECT_THAT(run("areas.xml", "set LW 5 3\ncycle\n").out.constData(), HasSubstr("areas saved\nstopped\n"));
}

TEST_F(PanelSimulator, SaysSavedOnlyWhenItWasWritten)
{
    QDir().mkpath("data/maintenance-word.dat");
    const ToolRun result = run("areas.xml", "cycle\nset RWI 1 2\nset LW 1 2\ncycle\nstatus\n");
    EXPECT_EQ(result.err, "maintenance-word.dat is not a regular file; LW is not retained\n");
    EXPECT_THAT(result.out.constData(),
                HasSubstr("cyclic call: not saved: LW (maintenance-word.dat is not a regular file)\nset"))
        << "nothing differs yet, but nothing was written either";
    EXPECT_THAT(result.out.constData(), HasSubstr("unsaved    1 cell: LW 1\n"));
    EXPECT_THAT(result.out.constData(), testing::Not(HasSubstr("areas saved")));
}

TEST_F(PanelSimulator, NamesTheCellsThatWereNotWrittenAndSaysWhy)
{
    const ToolRun alarms = run("examples/overlapping_ranges.xml", "set LB 60096 1 1 1 1 1 1 1 1\n");
    EXPECT_THAT(
        alarms.out.constData(),
        HasSubstr("set 8 cells, 8 reported to the module, but only 7 written: not LB 60100, because the "
                  "module never writes changes of this bit\n"));
    QFile::remove("data/maintenance-word.dat");
    QDir().mkpath("data/maintenance-word.dat");
    EXPECT_THAT(run("ranges.xml", "set LW 99 1 2 3\n").out.constData(),
                HasSubstr("set 3 cells, 2 reported to the module (not LW 99), but only 0 written: not LW "
                          "100, LW 101, because "
                          "maintenance-word.dat is not a regular file\n"));
    EXPECT_THAT(run("ranges.xml", "set LW 200 1 2 3 4 5\n").out.constData(),
                HasSubstr("not LW 200, LW 201, LW 202, LW 203 and 1 more, because "));
    QFile::remove("data/maintenance-bit.dat");
    QDir().mkpath("data/maintenance-bit.dat");
    EXPECT_THAT(
        run("examples/overlapping_ranges.xml", "set LB 60099 1 1\n").out.constData(),
        HasSubstr("not LB 60100, because the module never writes changes of this bit; and not LB 60099, "
                  "because maintenance-bit.dat is not a regular file\n"));
}

/// Tries an ordinary user's panel as such a user, if root runs the tests.
class PanelSimulatorOfAnOrdinaryUser : public PanelSimulator
{
protected:
    PanelSimulatorOfAnOrdinaryUser() { QFile::setPermissions(scratch.path(), everything); }

    ToolRun runAsNobody(const QString& project, const QByteArray& commands)
    {
        if (geteuid() != 0 || !qEnvironmentVariableIsEmpty("TEST_EMULATOR"))
            return {127, {}, {}};
        return runTool(
            "setpriv",
            {"--reuid=65534", "--regid=65534", "--clear-groups", tool, project, "--project-dir", "data"},
            commands);
    }

    static bool couldNotRun(const ToolRun& run) { return run.status == 126 || run.status == 127; }
    static constexpr const char* needed =
        "needs root that can become somebody else, and a build folder that they reach";

    static constexpr auto everything = QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner |
                                       QFile::ReadGroup | QFile::WriteGroup | QFile::ExeGroup |
                                       QFile::ReadOther | QFile::WriteOther | QFile::ExeOther;
};

TEST_F(PanelSimulatorOfAnOrdinaryUser, HeedsTheModesOfFilesAndTellsOfThem)
{
    const ToolRun first = runAsNobody("ranges.xml", "set LW 100 7\nexpect LW 100 7\n");
    if (couldNotRun(first))
        GTEST_SKIP() << needed;
    ASSERT_EQ(first.status, 0) << first.err.constData();
    QFile::setPermissions("data/maintenance-word.dat", QFile::ReadOwner);
    const ToolRun second = runAsNobody("ranges.xml", "set LW 100 8\n");
    EXPECT_THAT(second.err.constData(),
                HasSubstr("maintenance-word.dat cannot be written: Permission denied; LW is not retained\n"));
    EXPECT_THAT(second.out.constData(),
                HasSubstr("set 1 cell, 1 reported to the module, but only 0 written: not LW 100, because "
                          "maintenance-word.dat cannot be written: Permission denied\n"));
    EXPECT_THAT(second.out.constData(), HasSubstr("stopped, 1 of 1 reported changes were not written\n"));
    EXPECT_EQ(read("data/maintenance-word.dat").left(2), QByteArray("\7\0", 2));
    EXPECT_THAT(
        run("ranges.xml", "set LW 100 8\n").err.constData(),
        HasSubstr("maintenance-word.dat is read-only but written anyway, because root ignores file modes\n"));
}

TEST_F(PanelSimulatorOfAnOrdinaryUser, TellsOfAFolderWhereNothingCanBeMade)
{
    QDir().mkdir("data");
    const ToolRun tool = runAsNobody("areas.xml", "set LW 1 2\ncycle\n");
    if (couldNotRun(tool))
        GTEST_SKIP() << needed;
    EXPECT_THAT(tool.err.constData(),
                HasSubstr("maintenance-word.dat cannot be created: Permission denied; LW is not retained\n"));
    EXPECT_THAT(tool.out.constData(),
                HasSubstr("LW (maintenance-word.dat cannot be created: Permission denied)"));
    EXPECT_THAT(tool.out.constData(), HasSubstr("lost in 1 cell: LW 1\n"));
}

TEST_F(PanelSimulator, EndsAScriptAtItsFirstBadCommandWithTheLineNumber)
{
    write("script", "# comment\n\nget LW 100\nget LW\nget LW 101\n");
    const ToolRun result = run("ranges.xml", "", " --script script");
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.err, "script:4: expected: get AREA ADDRESS [COUNT]\n");
    EXPECT_THAT(result.out.constData(), testing::Not(HasSubstr("LW 101")));
}

TEST_F(PanelSimulator, RunsAScriptToItsEndAlsoWithoutAFinalLineFeed)
{
    write("script", "set LW 100 3\nget LW 100");
    const ToolRun result = run("ranges.xml", "", " --script script");
    EXPECT_EQ(result.status, 0);
    EXPECT_THAT(result.out.constData(), HasSubstr("LW 100: 3\nstopped\n"));
}

TEST_F(PanelSimulator, NamesWhatIsWrongWithItsArguments)
{
    EXPECT_EQ(runTool(tool, {}).status, 2);
    EXPECT_THAT(runTool(tool, {}).err.constData(), HasSubstr("expected one project file"));
    EXPECT_THAT(errors("/nowhere.xml"), HasSubstr("/nowhere.xml: cannot be read"));
    errors("--wrong", 2);
    const ToolRun noModule = run("ranges.xml", "", " --module /nowhere.so");
    EXPECT_EQ(noModule.status, 2);
    EXPECT_EQ(noModule.err,
              "panel_simulator: /nowhere.so: no such module library; build it, or name another one\n");
    const ToolRun noScript = run("ranges.xml", "", " --script /nowhere");
    EXPECT_EQ(noScript.status, 2);
    EXPECT_THAT(noScript.err.constData(), HasSubstr("/nowhere: cannot be read"));
    EXPECT_THAT(output("--version"), StartsWith("panel_simulator "));
}

TEST_F(PanelSimulator, ExplainsItselfOnRequest)
{
    const ToolRun help = ToolTest::run("--help");
    EXPECT_EQ(help.status, 0);
    EXPECT_THAT(help.out.constData(), HasSubstr("power-cut"));
    const QString text = QString::fromUtf8(help.out).replace(QLatin1Char(','), QLatin1Char(' '));
    for (const QString& word : text.simplified().split(QLatin1Char(' ')))
        if (word.startsWith(QLatin1String("--help"))) {
            EXPECT_EQ(ToolTest::run(word).status, 0) << word.toStdString();
        }
    EXPECT_THAT(run("ranges.xml", "help\n").out.constData(), HasSubstr("get AREA ADDRESS [COUNT]"));
}

TEST_F(PanelSimulator, IsDescribedWholeByItsManPage)
{
    const QString manual = QString::fromUtf8(read(EXAMPLES_DIR "/../docs/man/panel_simulator.1"));
    const std::string page = QString(manual).remove(QLatin1Char('\\')).toStdString();
    for (const QString& line : commandHelp().trimmed().split(QLatin1Char('\n'))) {
        const std::string word = line.simplified().section(QLatin1Char(' '), 0, 0).toStdString();
        EXPECT_THAT(page,
                    testing::AnyOf(HasSubstr("\n.B " + word + "\n"), HasSubstr("\n.BI \"" + word + " ")));
    }
    const ToolRun help = ToolTest::run("--help");
    const QString words = QString::fromUtf8(help.out).replace(QLatin1Char(','), QLatin1Char(' '));
    for (const QString& word : words.simplified().split(QLatin1Char(' ')))
        if (word.startsWith(QLatin1String("--"))) {
            EXPECT_THAT(page, HasSubstr(word.toStdString()));
        }
}

TEST_F(PanelSimulator, SaysThatAZeroPeriodMeansNoCyclicCalls)
{
    write("zero.xml",
          "<object name='p'><object name='DataRetention'><property name='open Save all' type='uint32'>1"
          "</property><property name='Save Time' type='uint32'>0</property></object></object>");
    const ToolRun result = run("zero.xml", "");
    EXPECT_THAT(result.out.constData(), HasSubstr("no cyclic calls: the period is 0 ms\n"));
}

class PanelSimulatorOnATerminal : public PanelSimulator
{
protected:
    PanelSimulatorOnATerminal() { qputenv("XDG_STATE_HOME", QFile::encodeName(scratch.path())); }

    ToolRun type(const QString& project, const QByteArray& keys, const std::vector<Typing>& later = {})
    {
        return runToolOnTerminal(tool, {project, "--project-dir", "data"}, keys, later);
    }
};

TEST_F(PanelSimulatorOnATerminal, EditsLinesAndRecallsThem)
{
    // A wrong digit deleted, then the line again from the history with another last digit.
    const ToolRun run = type("ranges.xml", "set LW 203 8\b7\r\x1b[A\b9\rget LW 203\rstop\r");
    EXPECT_EQ(run.status, 0);
    EXPECT_THAT(run.out.constData(), HasSubstr("panel> "));
    EXPECT_THAT(run.out.constData(), HasSubstr("LW 203: 9\r\n"));
}

TEST_F(PanelSimulatorOnATerminal, RecallsLinesOfEarlierStarts)
{
    type("ranges.xml", "set LW 203 8\rpower-cut\r");
    const ToolRun run = type("ranges.xml", "\x1b[A\x1b[A\rget LW 203\rstop\r");
    EXPECT_THAT(run.out.constData(), HasSubstr("set 1 cell, 1 reported to the module\r\n"));
}

TEST_F(PanelSimulatorOnATerminal, CompletesWithTab)
{
    const ToolRun run = type("ranges.xml", "exp\tRW\t5 0\rsto\t\r");
    EXPECT_EQ(run.status, 0);
    EXPECT_THAT(run.out.constData(), HasSubstr("RWI 5: 0 as expected\r\n"));
    EXPECT_THAT(run.out.constData(), HasSubstr("stopped\r\n"));
}

TEST_F(PanelSimulatorOnATerminal, GoesOnAfterABadCommand)
{
    const ToolRun run = type("ranges.xml", "get LW\rget LW 100\rstop\r");
    EXPECT_EQ(run.status, 0);
    EXPECT_THAT(run.out.constData(), HasSubstr("expected: get AREA ADDRESS [COUNT]\r\n"));
    EXPECT_THAT(run.out.constData(), HasSubstr("LW 100: 0\r\n"));
}

TEST_F(PanelSimulatorOnATerminal, ShowsTheRunningPanelLive)
{
    // What was typed in the view stays readable. Type more only then, or the terminal would show it in
    // between.
    const QByteArray left =
        "\x1b>panel> set RWI 7 1234\r\nset 1 cell, 0 reported to the module\r\npanel> cycle\r\n"
        "cyclic call: areas saved\r\npanel> set LW 5 1\r\nset 1 cell";
    const std::string out = type("areas.xml", "live\rset RWI 7 1234\rcyc\t\rset LW 5 1\r",
                                 {{"set 1 cell", "\x03"}, {left, "get RWI 7\rcycle\rstop\r"}})
                                .out.constData();
    EXPECT_THAT(out, HasSubstr("\x1b[?1049h")) << "a screen of its own";
    EXPECT_THAT(out, HasSubstr("whole areas (mode 1)  cyclic call in "));
    EXPECT_THAT(out, HasSubstr("\x1b[?1049l")) << "which is given back";
    const std::string after = out.substr(out.find("\x1b[?1049l"));
    EXPECT_THAT(after, HasSubstr("RWI 7: 1234\r\n")) << "Ctrl-C leaves the view and nothing else";
    EXPECT_THAT(after, HasSubstr("stopped\r\n"));
}

TEST_F(PanelSimulatorOnATerminal, GivesTheTerminalBackBeforeAPowerCut)
{
    const std::string out =
        type("ranges.xml", "live\rset LW 203 8\r", {{"set 1 cell", "power-cut\r"}}).out.constData();
    const std::size_t left = out.find("\x1b[?1049l");
    ASSERT_NE(left, std::string::npos) << "the view is still there";
    EXPECT_THAT(out.substr(left), HasSubstr("set 1 cell, 1 reported to the module\r\npower cut\r\n"));
    EXPECT_THAT(type("ranges.xml", "\x1b[A\x1b[A\rget LW 203\rstop\r").out.constData(),
                HasSubstr("LW 203: 8\r\n"))
        << "what was typed in the view is in the history";
}

TEST_F(PanelSimulatorOnATerminal, DrawsNothingWhereTheCursorCannotBeMoved)
{
    if (!qEnvironmentVariableIsEmpty("TEST_EMULATOR"))
        GTEST_SKIP() << "needs a program of this machine, to set TERM";
    const ToolRun run = runToolOnTerminal("env", {"TERM=dumb", tool, "areas.xml", "--project-dir", "data"},
                                          "live\r", {{"cannot position the cursor\r\n", "get LW 5\rstop\r"}});
    EXPECT_THAT(run.out.constData(), HasSubstr("live: this terminal (TERM) cannot position the cursor\r\n"));
    EXPECT_THAT(run.out.constData(), HasSubstr("LW 5: 0\r\n"));
    EXPECT_THAT(run.out.constData(), Not(HasSubstr("watched")));
}

TEST_F(PanelSimulatorOnATerminal, StopsALongScriptAtCtrlC)
{
    write("large.xml",
          "<object name='p'><object name='DataRetention'><object name='all'>"
          "<property name='addressLength' type='int32'>65536</property><object name='sourceAddress'>"
          "<property name='Block' type='string'>LW</property>"
          "<property name='index' type='int32'>0</property></object></object></object></object>");
    write("script", "set LW 0" + QByteArray(" 1").repeated(65536) + '\n');
    const ToolRun run = runToolOnTerminal(tool, {"large.xml", "--project-dir", "data", "--script", "script"},
                                          "", {{"cells reported", "\x03"}});
    EXPECT_EQ(run.status, -SIGINT) << "it goes on, because a \"sync\" runs nearly always";
}

TEST_F(PanelSimulatorOnATerminal, SaysAlsoAfterCtrlCWhatIsLost)
{
    const ToolRun run = type("areas.xml", "set LW 5 1\r", {{"set 1 cell", "\x03"}});
    EXPECT_EQ(run.status, 0);
    EXPECT_THAT(run.out.constData(), HasSubstr("stopped, unsaved changes lost in 1 cell: LW 5\r\n"));
}

/// The live view's text about a panel, without a terminal.
class LiveContentTest : public ModuleTest
{
protected:
    void start(std::unique_ptr<object> configured)
    {
        project = std::move(configured);
        session.emplace(moduleLibrary(), project.get(), "/data");
        session->start(out, out);
        content.emplace(*session);
    }

    void run(const char* command) { session->run(parseCommand(command), out, out); }

    std::string shown(int width = 80) { return lines(content->lines(width)); }

    std::unique_ptr<object> project;
    std::ostringstream out;
    std::optional<Session> session;
    std::optional<LiveContent> content;
};

TEST_F(LiveContentTest, FitsIntoEveryWidth)
{
    start(wholeAreaProject(1, 5));
    run("set LW 60000 65535 65535 65535 65535 65535 65535 65535 65535");
    for (const int width : {20, 40, 60, 80, 120, 200})
        for (const QString& line : content->lines(width))
            EXPECT_LE(line.size(), width) << line.toStdString();
    EXPECT_THAT(
        shown(),
        HasSubstr("changed since the last save:  LW 60000  LW 60001  LW 60002  LW 60003  and 4 more"));
    EXPECT_THAT(shown(40), HasSubstr("unsaved:  LW 60000  LW 60001  and 6 more"));
}

TEST_F(LiveContentTest, IsToldHowFarALongCommandIs)
{
    start(perAddressProject({{LW, 101, 2}}));
    std::vector<std::pair<int, int>> told;
    session->progress = [&told](int done, int all) { told.emplace_back(done, all); };
    run("set LW 100 1 2 3 4");
    EXPECT_THAT(told, testing::ElementsAre(std::pair(1, 4), std::pair(2, 4))) << "before each watched cell";
}

TEST_F(LiveContentTest, FollowsThePanel)
{
    start(wholeAreaProject(1, 5));
    run("set RWI 7 1234");
    EXPECT_THAT(shown(), ContainsRegex("changed:  RWI 7 = 1234 \\([0-9] s ago\\)"));
    EXPECT_THAT(shown(), HasSubstr("changed since the last save:  RWI 7"));
    EXPECT_THAT(shown(), ContainsRegex("maintenance-RWI.dat   131072  [0-9] s ago"));
    run("cycle");
    EXPECT_THAT(shown(), HasSubstr("changed since the last save: nothing"));
    EXPECT_THAT(shown(), HasSubstr("syncs " + std::to_string(commandsRun("sync"))));
    session->advance(60000);
    EXPECT_THAT(shown(), HasSubstr("cyclic call in 4:00 of 5:00"));
}

TEST_F(LiveContentTest, LeavesOutWholeWordsOnANarrowTerminal)
{
    start(perAddressProject({{LW, 100, 9}}));
    EXPECT_EQ(content->lines(45).front(), "per-address entries (mode 2)  no cyclic calls");
    run("set LW 9 1");
    content->lines(45);
    run("set LW 60000 60000 60001");
    EXPECT_THAT(shown(55), ContainsRegex("changed:  LW 60001 = 60001 \\([0-9] s ago\\)"));
    EXPECT_THAT(shown(55), Not(HasSubstr("LW 9 = 1"))) << "an older one, without one in between";
}

TEST_F(LiveContentTest, IsToldWhatATimedSaveCouldNotSave)
{
    start(wholeAreaProject(1, 5));
    const QString word = retentionPath(wordFileName);
    run("set LW 5 1");
    EXPECT_EQ(session->advance(299999), "") << "not yet";
    ASSERT_TRUE(QFile::rename(word, word + "x"));
    EXPECT_EQ(session->advance(1), "timed save: not saved: LW (maintenance-word.dat is missing)");
    EXPECT_EQ(session->advance(300000), "") << "known already";
    ASSERT_TRUE(QFile::rename(word + "x", word));
    EXPECT_EQ(session->advance(300000), "timed save: areas saved again");
    EXPECT_EQ(session->advance(300000), "");
}

TEST_F(LiveContentTest, IsToldOfATimedSaveWhileItWaitsForALine)
{
    start(wholeAreaProject(1, 5));
    run("set RWI 5 1");
    ASSERT_TRUE(QFile::remove(retentionPath(rwiFileName)));
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    ASSERT_EQ(write(ends[1], "stop\n", 5), 5);
    LineSource source(ends[0], *session);
    session->panel().model->cycleRemainingMs = 0;
    testing::internal::CaptureStderr();
    QString line;
    EXPECT_TRUE(source.next(line));
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "timed save: not saved: RWI (maintenance-RWI.dat is missing)\n");
    EXPECT_EQ(line, "stop");
    close(ends[0]);
    close(ends[1]);
}

TEST_F(PanelSimulator, SaysInOneLineWhenPathsAreMapped)
{
    const ToolRun tool = run("areas.xml", "stop\n");
    EXPECT_TRUE(saidNotice) << "expected: " << notice().constData();
    EXPECT_EQ(tool.err, "");
}

/// Runs the panel where it cannot mount anything, with this directory for temporary files. An error of
/// "unshare" or of the shell says that mounts cannot be forbidden here; in podman, /proc/sys is read-only.
ToolRun runWithoutMounts(const QString& tool, const QByteArray& temporary)
{
    const QByteArray emulator = qgetenv("TEST_EMULATOR");
    const QByteArray panel =
        "export TMPDIR=" + temporary + "; exec " + emulator + " \"$0\" ranges.xml --project-dir data";
    qunsetenv("TEST_EMULATOR"); // the shell runs natively
    const ToolRun run =
        pathMappingNotice().isEmpty()
            ? runTool("unshare", {"--map-root-user", "sh", "-c",
                                  "echo 0 >/proc/sys/user/max_mnt_namespaces || exit 77; " + panel, tool})
            : runTool("sh", {"-c", panel, tool});
    qputenv("TEST_EMULATOR", emulator);
    return run;
}

TEST_F(PanelSimulator, SaysWhyPathsAreMappedAndThatNothingNeedsToBeDone)
{
    const ToolRun mapped = runWithoutMounts(tool, "/tmp");
    if (mapped.err.startsWith("unshare: ") || mapped.status == 77)
        GTEST_SKIP() << "needs root or a user who can make a user namespace, to forbid mounts in it";
    EXPECT_EQ(mapped.status, 0);
    EXPECT_THAT(
        mapped.err.constData(),
        ContainsRegex("^panel_simulator: mapping paths to /usr/tavrin inside this process, because "
                      "nothing can be mounted here \\([^()]+\\); this changes no result, and nothing needs "
                      "to be done\n$"));
    const ToolRun refused = runWithoutMounts(tool, "/proc");
    EXPECT_EQ(refused.status, 2);
    EXPECT_THAT(
        refused.err.constData(),
        ContainsRegex("cannot be created in /proc; set TMPDIR to a directory that you may write to\n$"));
}

TEST_F(PanelSimulator, ShowsNothingLiveWithoutATerminal)
{
    const ToolRun tool = run("areas.xml", "live\nstop\n");
    EXPECT_EQ(tool.status, 2);
    EXPECT_EQ(tool.err, "standard input:1: live needs a terminal\n");
}

} // namespace
