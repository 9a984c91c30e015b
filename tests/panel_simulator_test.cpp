// panel_simulator as its user sees it: commands, answers, exit status, and values over a power cut.
// SPDX-License-Identifier: MIT
#include "tests/support/run_tool.h"
#include "tools/panel_simulator/command.h"

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QTemporaryDir>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>

namespace {

using testing::HasSubstr;
using testing::StartsWith;

std::string errorOf(const char* line)
{
    return parseCommand(QString::fromLatin1(line)).error.toStdString();
}

TEST(Command, UnderstandsCellsAndValues)
{
    const Command get = parseCommand(QStringLiteral("  get  LW 0x10 3 "));
    EXPECT_EQ(get.kind, Command::Kind::Get);
    EXPECT_EQ(get.area, QStringLiteral("LW"));
    EXPECT_EQ(get.address, 16);
    EXPECT_EQ(get.count, 3);
    EXPECT_EQ(parseCommand(QStringLiteral("get LB 65535")).count, 1);
    EXPECT_THAT(parseCommand(QStringLiteral("set RWI 5 1 -1 0xffff -32768")).values,
                testing::ElementsAre(1, 65535, 65535, 32768));
    EXPECT_EQ(parseCommand(QString()).kind, Command::Kind::Nothing);
    EXPECT_EQ(parseCommand(QStringLiteral("# set")).kind, Command::Kind::Nothing);
    EXPECT_EQ(parseCommand(QStringLiteral("power-cut")).kind, Command::Kind::PowerCut);
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
    EXPECT_EQ(errorOf("set LW 65535 1 2"), "too many values: expected at most 1 from address 65535 on");
    EXPECT_EQ(errorOf("set LW 1 65536"), "value \"65536\": expected a number from -32768 to 65535");
    EXPECT_EQ(errorOf("set LB 1 2"), "value \"2\": expected a number from 0 to 1");
    EXPECT_EQ(errorOf("set LW 1 0x"), "value \"0x\": expected a number from -32768 to 65535");
    EXPECT_THAT(errorOf("halt"), StartsWith("unknown command \"halt\": expected one of get, set, cycle"));
}

/// Runs the simulator in a scratch folder.
class PanelSimulator : public testing::Test
{
protected:
    /// Leaves out the line on mapped paths, which is only there where they are.
    ToolRun run(const char* example, const QByteArray& commands, const QStringList& more = QStringList())
    {
        const QString project = QStringLiteral(EXAMPLES_DIR "/%1.xml").arg(QLatin1String(example));
        ToolRun result = runTool(
            QStringLiteral(PANEL_SIMULATOR_PATH),
            QStringList{project, QStringLiteral("--project-dir"), scratch.filePath(QStringLiteral("data"))} +
                more,
            commands);
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

    QString writeScript(const QByteArray& text)
    {
        QFile file(scratch.filePath(QStringLiteral("script")));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(text);
        return file.fileName();
    }

    QTemporaryDir scratch;
};

TEST_F(PanelSimulator, KeepsAddressRangesOverAPowerCut)
{
    const ToolRun first =
        run("address_ranges", "set LW 203 7 8\nset LB 20 1 0 1\nset LW 300 9\npower-cut\nget LW 0\n");
    EXPECT_EQ(first.status, -SIGKILL);
    EXPECT_EQ(first.out, "started: per-address entries (2)\n"
                         "set 2 cells, 2 reported to the module\n"
                         "set 3 cells, 3 reported to the module\n"
                         "set 1 cell, 0 reported to the module\n"
                         "power cut\n");
    const ToolRun second = run("address_ranges", "get LW 200 5\nget LB 20 4\nget LW 300\nstop\n");
    EXPECT_EQ(second.status, 0);
    EXPECT_EQ(second.out,
              "started: per-address entries (2)\nLW 200: 0 0 0 7 8\nLB 20: 1 0 1 0\nLW 300: 0\nstopped\n");
}

TEST_F(PanelSimulator, KeepsTheLastSaveOfWholeAreas)
{
    EXPECT_EQ(run("whole_areas", "set RWI 1 5\ncycle\nset RWI 1 6\npower-cut\n").status, -SIGKILL);
    EXPECT_THAT(run("whole_areas", "get RWI 1\n").out.constData(), HasSubstr("RWI 1: 5\n"));
}

TEST_F(PanelSimulator, ShowsWhatIsWatched)
{
    EXPECT_THAT(run("address_ranges", "watch\n").out.constData(),
                HasSubstr("LB 20 to 31\nLW 100 to 109\nLW 200 to 204\n"));
    EXPECT_THAT(run("whole_areas", "watch\n").out.constData(), HasSubstr("nothing is watched\n"));
}

TEST_F(PanelSimulator, ShowsModePeriodSyncsAndFiles)
{
    const std::string out = run("whole_areas", "cycle\ncycle\nstatus\n").out.constData();
    EXPECT_THAT(out, HasSubstr("mode       whole areas (1)\n"));
    EXPECT_THAT(out, HasSubstr("period     a cyclic call every 300000 ms, the next in "));
    EXPECT_THAT(out, HasSubstr("ready      yes\nsyncs run  2\n"));
    EXPECT_THAT(out, HasSubstr("maintenance-bit.dat  65536 bytes\n"));
    EXPECT_THAT(out, HasSubstr("maintenance-RWI.dat  131072 bytes\n"));
}

TEST_F(PanelSimulator, GoesOnAfterABadCommandFromAPipe)
{
    const ToolRun result = run("address_ranges", "get LW\nget LW 100\n");
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.err, "expected: get AREA ADDRESS [COUNT]\n");
    EXPECT_THAT(result.out.constData(), HasSubstr("LW 100: 0\n"));
}

TEST_F(PanelSimulator, EndsAScriptAtItsFirstBadCommandWithTheLineNumber)
{
    const QString script = writeScript("# comment\n\nget LW 100\nget LW\nget LW 101\n");
    const ToolRun result = run("address_ranges", "", {QStringLiteral("--script"), script});
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.err.constData(), script.toStdString() + ":4: expected: get AREA ADDRESS [COUNT]\n");
    EXPECT_THAT(result.out.constData(), testing::Not(HasSubstr("LW 101")));
}

TEST_F(PanelSimulator, RunsAScriptToItsEndAlsoWithoutAFinalLineFeed)
{
    const ToolRun result =
        run("address_ranges", "", {QStringLiteral("--script"), writeScript("set LW 100 3\nget LW 100")});
    EXPECT_EQ(result.status, 0);
    EXPECT_THAT(result.out.constData(), HasSubstr("LW 100: 3\nstopped\n"));
}

TEST_F(PanelSimulator, NamesWhatIsWrongWithItsArguments)
{
    const QString tool = QStringLiteral(PANEL_SIMULATOR_PATH);
    EXPECT_EQ(runTool(tool, {}).status, 2);
    EXPECT_THAT(runTool(tool, {}).err.constData(), HasSubstr("expected one project file"));
    EXPECT_THAT(runTool(tool, {QStringLiteral("/nowhere.xml")}).err.constData(),
                HasSubstr("/nowhere.xml: cannot be read"));
    EXPECT_EQ(runTool(tool, {QStringLiteral("--wrong")}).status, 2);
    const ToolRun noModule =
        run("address_ranges", "", {QStringLiteral("--module"), QStringLiteral("/nowhere.so")});
    EXPECT_EQ(noModule.status, 2);
    EXPECT_EQ(noModule.err,
              "panel_simulator: /nowhere.so: no such module library; build it or name another one\n");
    const ToolRun noScript =
        run("address_ranges", "", {QStringLiteral("--script"), QStringLiteral("/nowhere")});
    EXPECT_EQ(noScript.status, 2);
    EXPECT_THAT(noScript.err.constData(), HasSubstr("/nowhere: cannot be read"));
}

TEST_F(PanelSimulator, ExplainsItselfOnRequest)
{
    const ToolRun help = runTool(QStringLiteral(PANEL_SIMULATOR_PATH), {QStringLiteral("--help")});
    EXPECT_EQ(help.status, 0);
    EXPECT_THAT(help.out.constData(), HasSubstr("power-cut"));
    const QString text = QString::fromUtf8(help.out).replace(QLatin1Char(','), QLatin1Char(' '));
    for (const QString& word : text.simplified().split(QLatin1Char(' ')))
        if (word.startsWith(QLatin1String("--help"))) {
            EXPECT_EQ(runTool(QStringLiteral(PANEL_SIMULATOR_PATH), {word}).status, 0) << word.toStdString();
        }
    EXPECT_THAT(run("address_ranges", "help\n").out.constData(), HasSubstr("get AREA ADDRESS [COUNT]"));
}

TEST_F(PanelSimulator, SaysThatAZeroPeriodMeansNoCyclicCalls)
{
    QFile project(scratch.filePath(QStringLiteral("zero.xml")));
    ASSERT_TRUE(project.open(QIODevice::WriteOnly));
    project.write(
        "<object name='p'><object name='DataRetention'><property name='open Save all' type='uint32'>1"
        "</property><property name='Save Time' type='uint32'>0</property></object></object>");
    project.close();
    const ToolRun result = runTool(QStringLiteral(PANEL_SIMULATOR_PATH),
                                   {project.fileName(), QStringLiteral("--project-dir"), scratch.path()});
    EXPECT_THAT(result.out.constData(), HasSubstr("no cyclic calls: the period is 0 ms\n"));
}

class PanelSimulatorOnATerminal : public PanelSimulator
{
protected:
    ToolRun type(const char* example, const QByteArray& keys)
    {
        return runToolOnTerminal(QStringLiteral(PANEL_SIMULATOR_PATH),
                                 {QStringLiteral(EXAMPLES_DIR "/%1.xml").arg(QLatin1String(example)),
                                  QStringLiteral("--project-dir"), scratch.filePath(QStringLiteral("data"))},
                                 keys);
    }
};

TEST_F(PanelSimulatorOnATerminal, EditsLinesAndRecallsThem)
{
    // A wrong digit taken back, then the line once more from the history with another last digit.
    const ToolRun run = type("address_ranges", "set LW 203 8\b7\r\x1b[A\b9\rget LW 203\rstop\r");
    EXPECT_EQ(run.status, 0);
    EXPECT_THAT(run.out.constData(), HasSubstr("panel> "));
    EXPECT_THAT(run.out.constData(), HasSubstr("LW 203: 9\r\n"));
}

TEST_F(PanelSimulatorOnATerminal, ShowsTheRunningPanelLive)
{
    const std::string out = type("whole_areas", "live\rset RWI 7 1234\rcycle\rlive\rstop\r").out.constData();
    EXPECT_THAT(out, HasSubstr("whole areas (1)   next cyclic call in 4:5"));
    EXPECT_THAT(out, HasSubstr("of 5:00   syncs run 0"));
    EXPECT_THAT(out, HasSubstr("of 5:00   syncs run 1"));
    EXPECT_THAT(out,
                HasSubstr("RWI     0 cells watched,     1 not zero   maintenance-RWI.dat  131072 bytes"));
    EXPECT_THAT(out, HasSubstr("changed   RWI 7 = 1234 (0 s)"));
    EXPECT_THAT(out, HasSubstr("\x1b[r")) << "the terminal gets its scrolling region back";
}

TEST_F(PanelSimulator, SaysInOneLineWhenPathsAreMapped)
{
    const ToolRun tool = run("whole_areas", "stop\n");
    EXPECT_TRUE(saidNotice) << "expected: " << notice().constData();
    EXPECT_EQ(tool.err, "");
}

TEST_F(PanelSimulator, ShowsNothingLiveWithoutATerminal)
{
    const ToolRun tool = run("whole_areas", "live\nstop\n");
    EXPECT_EQ(tool.status, 0);
    EXPECT_EQ(tool.err, "live: expected a terminal of at least 12 lines\n");
}

} // namespace
