// retention_inspector as its user sees it: output, exit status and error texts.
// SPDX-License-Identifier: MIT
#include "tests/support/module_test.h"
#include "tests/support/run_tool.h"
#include "tools/retention_inspector/command.h"

#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
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
              "Mode   per-address entries\n\n"
              "Files\n"
              "  File                   Area   Blocks   Cells   Bytes\n"
              "  maintenance-bit.dat    LB          1      12       2\n"
              "  maintenance-word.dat   LW          2      15      30\n"
              "  maintenance-RWI.dat    RWI         0       0       0\n\n"
              "Blocks\n"
              "  Area   Block   Addresses    Cells   At byte   Bit   From entry\n"
              "  LB         1   20 to 31        12         0     0   3\n"
              "  LW         1   100 to 109      10         0     0   1\n"
              "  LW         2   200 to 204       5        20     0   2\n\n"
              "Entries\n"
              "  Entry   Name       Area   Addresses    Cells   Verdict          Cells not retained\n"
              "      1   recipe     LW     100 to 109      10   retained whole\n"
              "      2   counters   LW     200 to 204       5   retained whole\n"
              "      3   switches   LB     20 to 31        12   retained whole\n\n"
              "No findings.\n");
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
    EXPECT_EQ(root.value(QStringLiteral("version")).toInt(), 1);
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
    EXPECT_EQ(run.out.toStdString(),
              "record,key,value\nfact,mode,per-address\n"
              "record,area,address,value,state\ncell,LW,203,7,kept\ncell,LW,204,0,kept\n"
              "record,severity,kind,entry,area,cells,place,problem,remedy\n");
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
    EXPECT_THAT(errorOf({show, example("whole_areas"), scratch.path(), QStringLiteral("--area=lb")}),
                HasSubstr("--area \"lb\": expected LB, LW or RWI"));
    EXPECT_THAT(errorOf({show, example("whole_areas"), scratch.path(), QStringLiteral("--address=9-5")}),
                HasSubstr("--address \"9-5\": expected an address"));
}

TEST_F(Inspector, ExplainsEveryCommandWithExamples)
{
    const std::string general = Inspector::run({QStringLiteral("--help")}).out.toStdString();
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
