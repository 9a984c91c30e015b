// The guide, the man page and the completion hold what the tool does today.
// SPDX-License-Identifier: MIT
#include "tests/support/module_test.h"
#include "tests/support/run_tool.h"
#include "tools/retention_inspector/command.h"

#include <QtCore/QDir>
#include <QtCore/QFileInfo>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <QtCore/QTemporaryDir>

#include <algorithm>

namespace {

using testing::HasSubstr;

QString contents(const char* path)
{
    QFile file(QStringLiteral(SOURCE_DIR "/") + QLatin1String(path));
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << path;
    return QString::fromUtf8(file.readAll());
}

class InspectorGuide : public testing::Test
{
protected:
    InspectorGuide() { QDir::setCurrent(QStringLiteral(SOURCE_DIR)); }

    static ToolRun run(const QStringList& words)
    {
        return runTool(QStringLiteral(RETENTION_INSPECTOR_PATH), words);
    }
};

/// A folder in which the guide's commands are typed one after the other, with the tools on the PATH.
class Desk
{
public:
    Desk()
    {
        QDir(scratch.path()).mkdir("bin");
        QFile::link(QStringLiteral(SOURCE_DIR "/examples"), scratch.filePath("examples"));
        for (const char* tool : {RETENTION_INSPECTOR_PATH, PANEL_SIMULATOR_PATH}) {
            const QString path = QString::fromLatin1(tool);
            QFile wrapper(scratch.filePath("bin/" + QFileInfo(path).fileName()));
            EXPECT_TRUE(wrapper.open(QIODevice::WriteOnly));
            wrapper.write("#!/bin/sh\nexec " + qgetenv("TEST_EMULATOR") + " '" + QFile::encodeName(path) +
                          "' \"$@\"\n");
            wrapper.setPermissions(wrapper.permissions() | QFile::ExeOwner);
        }
        qunsetenv("TEST_EMULATOR"); // the shell is this machine's own
    }

    /// What a terminal would show after the command, but for the simulator's notice on paths that it maps.
    QString type(const QString& command) const
    {
        const QString line =
            QStringLiteral("cd '%1'; PATH=%1/bin:$PATH; exec 2>&1; ").arg(scratch.path()) + command;
        QString out;
        for (const QString& shown :
             QString::fromUtf8(runTool("/bin/bash", {"-c", line}).out).split(QLatin1Char('\n')))
            if (!shown.startsWith(QLatin1String("panel_simulator: mapping paths ")))
                out += shown + QLatin1Char('\n');
        out.chop(1);
        return out;
    }

private:
    QTemporaryDir scratch;
};

TEST_F(InspectorGuide, ShowsWhatTheToolsPrint)
{
    const Desk desk;
    int commands = 0;
    const QStringList parts = contents("docs/retention_inspector.md").split(QLatin1String("```console\n"));
    for (const QString& part : parts.mid(1)) {
        const QString block = part.section(QLatin1String("```"), 0, 0);
        ASSERT_TRUE(block.startsWith(QLatin1String("$ ")));
        QString shown;
        for (const QString& line : block.split(QLatin1Char('\n'))) {
            if (!line.startsWith(QLatin1String("$ ")))
                continue;
            shown += line + QLatin1Char('\n') + desk.type(line.mid(2));
            ++commands;
        }
        EXPECT_EQ(shown.toStdString(), block.toStdString());
    }
    EXPECT_EQ(commands, 38);
}

TEST_F(InspectorGuide, ShowsThePictureThatTheToolDraws)
{
    const QTemporaryDir scratch;
    const QString picture = scratch.filePath("map.svg");
    run({"map", "examples/overlapping_ranges.xml", "--output", picture});
    QFile drawn(picture);
    ASSERT_TRUE(drawn.open(QIODevice::ReadOnly));
    EXPECT_EQ(drawn.readAll(), contents("docs/images/retention_map.svg").toUtf8())
        << "draw both anew: retention_inspector map examples/overlapping_ranges.xml --force "
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
    QTemporaryDir scratch;
    const QString directory = scratch.filePath("files");
    QDir().mkdir(directory);
    QFile words(directory + "/maintenance-word.dat");
    ASSERT_TRUE(words.open(QIODevice::WriteOnly) && words.write("\1\2\3") == 3);
    words.close();
    const QString ranges = "examples/overlapping_ranges.xml";
    const QString areas = "examples/whole_areas.xml";
    const QString migrated = scratch.filePath("migrated");
    const QString picture = scratch.filePath("map.svg");
    const QString table = scratch.filePath("values.csv");
    const QString tags = "examples/address_ranges_tags.csv";
    const QString page = scratch.filePath("panel.html");
    const QString edited = scratch.filePath("edited.csv");
    QFile edit(edited);
    ASSERT_TRUE(edit.open(QIODevice::WriteOnly) && edit.write("area,address,value\nLW,100,1\n") > 0);
    edit.close();
    const QString endurance = "--endurance-cycles=3000";
    const QList<QStringList> calls = {
        {"layout", ranges},
        {"layout", areas},
        {"show", ranges, directory},
        {"check", ranges, directory},
        {"migrate", ranges, areas, directory, "--move=LW:200=LW:7", "--force", "-o", migrated},
        {"diff", ranges, directory, migrated},
        {"wear", ranges, "--changes-per-hour=60", "--medium=emmc", endurance},
        {"wear", areas, endurance},
        {"wear", ranges, "--medium=nor"},
        {"map", ranges, "-o", picture},
        {"show", ranges, directory, "--tags", tags},
        {"diff", ranges, directory, migrated, "--tags", tags},
        {"export", ranges, directory, "-o", table, "--nonzero"},
        {"report", ranges, directory, "-o", page},
        {"compare", areas, migrated, migrated, directory},
        {"import", ranges, edited, "-o", scratch.filePath("imported")}};
    for (const Command* command : commands())
        EXPECT_TRUE(std::any_of(
            calls.begin(), calls.end(),
            [command](const QStringList& call) { return call.first() == QLatin1String(command->name); }))
            << "call it here: " << command->name;
    const std::string guide = contents("docs/retention_inspector.md").toStdString();
    for (const QStringList& call : calls) {
        const ToolRun run = InspectorGuide::run(call + QStringList("--format=json"));
        const QJsonObject root = QJsonDocument::fromJson(run.out).object();
        EXPECT_EQ(root.value("command").toString(), call.first()) << run.err.toStdString();
        for (const QString& key : keysOf(root))
            EXPECT_NE(guide.find('`' + key.toStdString() + '`'), std::string::npos)
                << "docs/retention_inspector.md lacks the key " << key.toStdString() << " of "
                << call.join(QLatin1Char(' ')).toStdString();
    }
}

TEST_F(InspectorGuide, ManPageNamesEveryCommandAndOption)
{
    const std::string page =
        contents("docs/man/retention_inspector.1").remove(QLatin1Char('\\')).toStdString();
    for (const Command* form : commands()) {
        EXPECT_THAT(page, HasSubstr(".B " + std::string(form->name) + '\n'));
        EXPECT_THAT(page, HasSubstr(".B retention_inspector " + std::string(form->name) + '\n'));
        for (const Option& option : form->options) {
            EXPECT_THAT(page, HasSubstr("--" + std::string(option.name)));
            if (option.usual) {
                EXPECT_THAT(page, HasSubstr(std::string("; ") + option.usual + " unless given."))
                    << option.name;
            }
        }
    }
}

TEST_F(InspectorGuide, CompletionOffersEveryCommandAndOption)
{
    qunsetenv("TEST_EMULATOR"); // the shell is this machine's own
    const auto offered = [](const QStringList& words) {
        const ToolRun run = runTool(
            "/bin/bash",
            QStringList({"-c",

                         "source tools/retention_inspector/completion.bash; COMP_WORDS=(\"$0\" \"$@\"); "
                         "COMP_CWORD=$#; _retention_inspector; echo \"${COMPREPLY[@]}\"",
                         "retention_inspector"}) +
                words);
        return QString::fromUtf8(run.out).simplified().split(QLatin1Char(' '));
    };
    for (const Command* form : commands()) {
        const QString name = QString::fromLatin1(form->name);
        EXPECT_TRUE(offered({QString()}).contains(name)) << form->name;
        const QStringList options = offered({name, "--"});
        for (const Option& option : form->options)
            EXPECT_TRUE(options.contains(QLatin1String("--") + QLatin1String(option.name)))
                << form->name << ' ' << option.name;
        EXPECT_EQ(options.size(), static_cast<int>(form->options.size()) + 4) << form->name;
    }
    EXPECT_THAT(offered({"layout", "examples/over"}),
                testing::ElementsAre("examples/overlapping_ranges.xml"));
}

} // namespace
