// Tests project files: their schema, and the project file that a running panel writes.
// SPDX-License-Identifier: MIT
#include "project_tree/project_reader.h"
#include "tests/support/module_test.h"
#include "tests/support/random_source.h"
#include "tests/support/run_tool.h"
#include "tools/retention_core/project_settings.h"

#include <QtCore/QDir>
#include <QtCore/QFileInfo>
#include <QtCore/QTemporaryDir>

namespace {

using testing::HasSubstr;

const QString xmllint = "/usr/bin/xmllint";

class ProjectFormat : public ModuleTest
{
protected:
    ToolRun validate(const QString& file) const
    {
        return runTool(xmllint,
                       {"--noout", "--schema", QStringLiteral(SOURCE_DIR "/project_tree/project.xsd"), file});
    }

    QString write(const QByteArray& text) const
    {
        QFile file(scratch.filePath("project.xml"));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(text);
        return file.fileName();
    }

    void SetUp() override
    {
        qunsetenv("TEST_EMULATOR"); // xmllint runs natively
        if (!QFileInfo::exists(xmllint))
            GTEST_SKIP() << "no xmllint here";
    }

    QTemporaryDir scratch;
};

TEST_F(ProjectFormat, SchemaTakesEveryExample)
{
    const QFileInfoList examples = QDir(QStringLiteral(EXAMPLES_DIR)).entryInfoList({"*.xml"});
    EXPECT_GE(examples.size(), 3);
    for (const QFileInfo& example : examples) {
        const ToolRun run = validate(example.filePath());
        EXPECT_EQ(run.status, 0) << run.err.toStdString();
    }
}

TEST_F(ProjectFormat, SchemaTakesEveryProjectInTheDocs)
{
    int projects = 0;
    for (const char* page : {"docs/file_format.md", "docs/project_format.md"}) {
        QFile file(QStringLiteral(SOURCE_DIR "/") + QLatin1String(page));
        ASSERT_TRUE(file.open(QIODevice::ReadOnly));
        for (const QString& part : QString::fromUtf8(file.readAll()).split("```xml\n").mid(1)) {
            const ToolRun run = validate(write(part.section("```", 0, 0).toUtf8()));
            EXPECT_EQ(run.status, 0) << page << ": " << run.err.toStdString();
            EXPECT_TRUE(readProjectFile(scratch.filePath("project.xml")).project) << page;
            ++projects;
        }
    }
    EXPECT_GE(projects, 3);
}

TEST_F(ProjectFormat, SchemaAndReaderRefuseTheSame)
{
    const char* const number = "<property name='n' type='int32'>1</property>";
    const std::vector<std::pair<std::string, bool>> texts = {
        {"<object name='p'/>", true},
        {std::string("<object name='p'>") + number + "<object name='a'>" + number +
             "</object><object name='a'/></object>",
         true},
        {"<object name='p'><property name='t' type='string'> any text </property></object>", true},
        {"<object/>", false},
        {"<object name='p'><object/></object>", false},
        {"<project name='p'/>", false},
        {"<object name='p'><value name='n' type='int32'>1</value></object>", false},
        {"<object name='p'><property name='n'>1</property></object>", false},
        {"<object name='p'><property type='int32'>1</property></object>", false},
        {"<object name='p'><property name='n' type='int16'>1</property></object>", false},
        {"<object name='p'><property name='n' type='string'><b/></property></object>", false},
        {std::string("<object name='p'>") + number + number + "</object>", false},
        {std::string("<object name='p'><object name='a'>") + number + number + "</object></object>", false}};
    for (const auto& [text, good] : texts) {
        const QString file = write(QByteArray::fromStdString(text));
        EXPECT_EQ(validate(file).status == 0, good) << text;
        EXPECT_EQ(readProjectFile(file).project != nullptr, good) << text;
    }
}

TEST_F(ProjectFormat, IsWrittenFromATableByTheCommandsOfThePage)
{
    QFile page(QStringLiteral(SOURCE_DIR "/docs/project_format.md"));
    ASSERT_TRUE(page.open(QIODevice::ReadOnly));
    const QString commands = QString::fromUtf8(page.readAll()).section("```sh\n", 1).section("```", 0, 0);
    QFile table(scratch.filePath("ranges.csv"));
    ASSERT_TRUE(table.open(QIODevice::WriteOnly));
    table.write("name,area,first,cells\r\nrecipe,LW,100,10\r\nlamps & \\ \"signs\" < 5,LB,20,12");
    table.close();
    const ToolRun run = runTool("/bin/sh", {"-c", "cd '" + scratch.path() + "'\n" + commands});
    EXPECT_EQ(run.status, 0) << run.err.toStdString();
    const QString file = scratch.filePath("my_project.xml");
    EXPECT_EQ(validate(file).status, 0);
    const ProjectSettings settings = readSettings(file);
    ASSERT_EQ(settings.entries.size(), 2U);
    EXPECT_EQ(settings.entries[1].name, "lamps & \\ \"signs\" < 5");
    EXPECT_EQ(settings.entries[1].areaName(), LB);
    EXPECT_EQ(settings.entries[1].first(), 20);
    EXPECT_EQ(settings.entries[1].length(), 12);
}

/// What the module would read, as one text.
std::string toldOf(const ProjectSettings& settings)
{
    std::string text = std::string(wordsOf(settings.mode).key) + ' ' +
                       std::to_string(settings.saveTimeMinutes) + ' ' +
                       std::to_string(settings.saveTime.value_or(4711)) + '\n';
    for (const ProjectEntry& entry : settings.entries) {
        const auto& one = entry.configured;
        const auto quoted = [](const QString& word) {
            return word.isNull() ? std::string("null") : '"' + word.toStdString() + '"';
        };
        text += std::to_string(one.addressLength) + ' ' + quoted(one.addressType) + ' ' +
                std::to_string(entry.hasSource) + ' ' + quoted(one.address.link) + quoted(one.address.block) +
                quoted(one.address.number) + ' ' + std::to_string(one.address.index) + ' ' +
                std::to_string(one.address.station) + ' ' + std::to_string(one.address.length) + ' ' +
                std::to_string(one.address.bitOrWord) + '\n';
    }
    return text;
}

class DumpedProject : public ProjectFormat
{
protected:
    /// Makes a panel with this project load the dumping model, and reads what that wrote.
    std::string toldByDump(object& project)
    {
        writeRetentionFile("dumped_project.xml", {});
        const ModuleLibrary library(QStringLiteral(DUMP_PROJECT_PATH));
        EXPECT_TRUE(library.isLoaded()) << library.error().toStdString();
        {
            Panel panel(library, &project);
            panel.start();
        }
        const QString file = retentionPath("dumped_project.xml");
        EXPECT_EQ(validate(write(*retentionFile("dumped_project.xml"))).status, 0);
        return toldOf(readSettings(file));
    }
};

TEST_F(DumpedProject, SaysOfEveryExampleWhatTheModuleIsTold)
{
    for (const QFileInfo& example : QDir(QStringLiteral(EXAMPLES_DIR)).entryInfoList({"*.xml"})) {
        const ProjectReading reading = readProjectFile(example.filePath());
        ASSERT_TRUE(reading.project);
        EXPECT_EQ(toldByDump(*reading.project), toldOf(readSettings(reading.project.get())))
            << example.filePath().toStdString();
    }
    object empty;
    EXPECT_EQ(toldByDump(empty), toldOf(ProjectSettings(readSettings(&empty))));
}

TEST_F(DumpedProject, SaysOfOddProjectsWhatTheModuleIsTold)
{
    RandomSource random(printedSeed());
    const auto setSome = [&random](object& node, std::initializer_list<const char*> names) {
        for (const char* name : names) {
            if (random.oneIn(3))
                node.setNumber(QLatin1String(name),
                               random.between(0, 2) == 0 ? random.extreme() : random.between(0, 2));
            else if (random.oneIn(2))
                node.setText(QLatin1String(name), random.oneIn(3) ? "<a> & \"b\" ä" : LW);
        }
    };
    std::string all;
    for (int round = 0; round < 100; ++round) {
        object project;
        object& retention = project.addChild("DataRetention");
        setSome(retention, {"open Save all", "Save Time"});
        for (int entries = random.between(0, 4); entries > 0; --entries) {
            object& entry = retention.addChild("any");
            setSome(entry, {"addressLength", "addressType"});
            if (!random.oneIn(4))
                setSome(entry.addChild("sourceAddress"),
                        {"Link", "Block", "No", "index", "station", "length", "Bit_or_Word"});
        }
        const std::string told = toldOf(readSettings(&project));
        ASSERT_EQ(toldByDump(project), told);
        all += told;
    }
    for (const char* word : {"whole-area", "per-address", "null", "\"<a> & \"b\" ä\"", "4711"})
        EXPECT_THAT(all, HasSubstr(word));
}

} // namespace
