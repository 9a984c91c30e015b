// Checks that guide, man page and completion match the tool.
// SPDX-License-Identifier: MIT
#include "tests/support/tool_test.h"
#include "tools/retention_inspector/command.h"

#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <QtCore/QRegularExpression>

namespace {

class InspectorGuide : public ToolTest
{
protected:
    InspectorGuide() : ToolTest(RETENTION_INSPECTOR_PATH) {}

    static QString contents(const QString& path) { return QString::fromUtf8(read(SOURCE_DIR "/" + path)); }

    /// Puts the tools on the PATH of the guide's commands.
    static void makeDesk()
    {
        for (const char* const tool : {RETENTION_INSPECTOR_PATH, PANEL_SIMULATOR_PATH}) {
            const QString wrapper = "bin/" + QFileInfo(tool).fileName();
            write(wrapper,
                  "#!/bin/sh\nexec " + qgetenv("TEST_EMULATOR") + " '" + QByteArray(tool) + "' \"$@\"\n");
            QFile::setPermissions(wrapper, QFile::permissions(wrapper) | QFile::ExeOwner);
        }
        qunsetenv("TEST_EMULATOR"); // the shell runs natively
    }

    /// What a terminal would show after the command, without the simulator's notice about mapped paths.
    static QString type(const QString& command)
    {
        const QByteArray all = runTool("/bin/bash", {"-c", "PATH=$PWD/bin:$PATH; exec 2>&1; " + command}).out;
        QString out;
        for (const QString& shown : QString::fromUtf8(all).split(QLatin1Char('\n')))
            if (!shown.startsWith(QLatin1String("panel_simulator: mapping paths ")))
                out += shown + QLatin1Char('\n');
        out.chop(1);
        return out;
    }
};

TEST_F(InspectorGuide, ShowsWhatTheToolsPrint)
{
    makeDesk();
    int commands = 0;
    const QStringList parts = contents("docs/retention_inspector.md").split(QLatin1String("```console\n"));
    for (const QString& part : parts.mid(1)) {
        const QString block = part.section(QLatin1String("```"), 0, 0);
        ASSERT_TRUE(block.startsWith(QLatin1String("$ ")));
        QString shown;
        for (const QString& line : block.split(QLatin1Char('\n'))) {
            if (!line.startsWith(QLatin1String("$ ")))
                continue;
            shown += line + QLatin1Char('\n') + type(line.mid(2));
            ++commands;
        }
        EXPECT_EQ(shown.toStdString(), block.toStdString());
    }
    EXPECT_EQ(commands, 41);
}

TEST_F(InspectorGuide, ShowsThePictureThatTheToolDraws)
{
    output("map examples/overlapping_ranges.xml --output map.svg", 1);
    EXPECT_EQ(read("map.svg").toStdString(), contents("docs/images/retention_map.svg").toStdString())
        << "redraw both: retention_inspector map examples/overlapping_ranges.xml --force "
           "-o docs/images/retention_map.svg; rsvg-convert docs/images/retention_map.svg -o "
           "docs/images/retention_map.png";
}

/// All keys of an object and of the objects in its lists.
QStringList keysOf(const QJsonObject& object)
{
    QStringList keys = object.keys();
    for (const auto value : object)
        for (const auto item : value.toArray())
            keys += keysOf(item.toObject());
    return keys;
}

TEST_F(InspectorGuide, NamesEveryKey)
{
    write("files/maintenance-word.dat", "\1\2\3");
    write("edited.csv", "area,address,value\nLW,100,1\n");
    QFile::link("examples/overlapping_ranges.xml", "overlapping.xml");
    QFile::link("examples/address_ranges_tags.csv", "tags.csv");
    const QStringList calls = {
        "layout overlapping.xml",
        "layout areas.xml",
        "show overlapping.xml files",
        "check overlapping.xml files",
        "migrate overlapping.xml areas.xml files --move=LW:200=LW:7 --force -o new",
        "diff overlapping.xml files new",
        "wear overlapping.xml --changes-per-hour=60 --medium=emmc --endurance-cycles=3000",
        "wear areas.xml --endurance-cycles=3000",
        "wear overlapping.xml --medium=nor",
        "map overlapping.xml -o map.svg",
        "show overlapping.xml files --tags tags.csv",
        "diff overlapping.xml files new --tags tags.csv",
        "export overlapping.xml files -o values.csv --nonzero",
        "report overlapping.xml files -o panel.html",
        "compare areas.xml new new files",
        "import overlapping.xml edited.csv -o imported"};
    for (const Command* command : commands())
        EXPECT_FALSE(calls.filter(QRegularExpression("^" + QString(command->name) + " ")).isEmpty())
            << "call it here: " << command->name;
    const std::string guide = contents("docs/retention_inspector.md").toStdString();
    for (const QString& call : calls) {
        const ToolRun made = run(call + " --format=json");
        const QJsonObject root = QJsonDocument::fromJson(made.out).object();
        EXPECT_EQ(root.value("command").toString(), call.section(QLatin1Char(' '), 0, 0))
            << made.err.toStdString();
        for (const QString& key : keysOf(root))
            EXPECT_NE(guide.find('`' + key.toStdString() + '`'), std::string::npos)
                << "docs/retention_inspector.md lacks the key " << key.toStdString() << " of "
                << call.toStdString();
    }
}

TEST_F(InspectorGuide, ManPageNamesEveryCommandAndOption)
{
    const QString page = contents("docs/man/retention_inspector.1").remove(QLatin1Char('\\'));
    const auto expectOn = [&page](const QString& text) {
        EXPECT_TRUE(page.contains(text))
            << "docs/man/retention_inspector.1 lacks \"" << text.trimmed().toStdString() << '"';
    };
    for (const Command* form : commands()) {
        const QString name = QString::fromLatin1(form->name);
        expectOn(".B " + name + "\n");
        expectOn(".B retention_inspector " + name + "\n");
        for (const Option& option : form->options) {
            expectOn("--" + QString(option.name));
            if (option.usual)
                expectOn(" (default: " + QString(option.usual) + ").");
        }
    }
}

TEST_F(InspectorGuide, CompletionOffersEveryCommandAndOption)
{
    qunsetenv("TEST_EMULATOR"); // the shell runs natively
    const auto offered = [](const QStringList& words) {
        const ToolRun run =
            runTool("/bin/bash",
                    QStringList({"-c",
                                 "source " SOURCE_DIR
                                 "/tools/retention_inspector/completion.bash; COMP_WORDS=(\"$0\" \"$@\"); "
                                 "COMP_CWORD=$#; _retention_inspector; echo \"${COMPREPLY[@]}\"",
                                 "retention_inspector"}) +
                        words);
        return QString::fromUtf8(run.out).simplified().split(QLatin1Char(' '));
    };
    for (const Command* form : commands()) {
        const QString name = QString::fromLatin1(form->name);
        EXPECT_TRUE(offered({QString()}).contains(name))
            << "tools/retention_inspector/completion.bash lacks the command " << form->name;
        const QStringList options = offered({name, "--"});
        for (const Option& option : form->options)
            EXPECT_TRUE(options.contains(QLatin1String("--") + QLatin1String(option.name)))
                << "tools/retention_inspector/completion.bash lacks --" << option.name << " of "
                << form->name;
        EXPECT_EQ(options.size(), static_cast<int>(form->options.size()) + 4)
            << "tools/retention_inspector/completion.bash offers " << options.join(' ').toStdString()
            << " for " << form->name;
    }
    EXPECT_THAT(offered({"layout", "examples/over"}),
                testing::ElementsAre("examples/overlapping_ranges.xml"));
}

} // namespace
