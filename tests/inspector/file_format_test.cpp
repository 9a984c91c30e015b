// Runs the worked examples of docs/file_format.md through the module and compares the files byte by byte.
// SPDX-License-Identifier: MIT
#include "tests/inspector/layout_of.h"
#include "tests/support/memory_file.h"
#include "tools/retention_core/kept_values.h"

#include "project_tree/project_reader.h"

#include <QtCore/QBuffer>
#include <QtCore/QFile>

#include <map>

namespace {

struct CellValues
{
    QString area;
    int first;
    std::vector<ushort> values;
};

/// One example: a project, what the panel writes, and the files.
struct Example
{
    QByteArray project;
    std::vector<CellValues> written;
    std::map<QString, QByteArray> files;
};

/// The fenced blocks of the page: first line and contents of each.
std::vector<std::pair<QString, QStringList>> fencedBlocks()
{
    QFile page(QStringLiteral(SOURCE_DIR "/docs/file_format.md"));
    EXPECT_TRUE(page.open(QIODevice::ReadOnly));
    std::vector<std::pair<QString, QStringList>> blocks;
    bool inside = false;
    for (const QString& line : QString::fromUtf8(page.readAll()).split(QLatin1Char('\n'))) {
        if (line.startsWith(QLatin1String("```"))) {
            inside = !inside;
            if (inside)
                blocks.push_back({line.mid(3), {}});
        } else if (inside) {
            blocks.back().second.append(line);
        }
    }
    return blocks;
}

/// Such as "LW 10: 1 256".
CellValues readValues(const QString& line)
{
    CellValues cells{line.section(QLatin1Char(' '), 0, 0),
                     line.section(QLatin1Char(':'), 0, 0).section(QLatin1Char(' '), 1).toInt(),
                     {}};
    for (const QString& value : line.section(QLatin1String(": "), 1).split(QLatin1Char(' ')))
        cells.values.push_back(value.toUShort());
    return cells;
}

/// The bytes of a dump, zeros where it has no line. `heading` is "hex NAME LENGTH".
QByteArray readDump(const QString& heading, const QStringList& lines)
{
    QByteArray bytes(heading.section(QLatin1Char(' '), 2).toInt(), '\0');
    for (const QString& line : lines) {
        const QByteArray part =
            QByteArray::fromHex(line.section(QLatin1String("  "), 1).remove(QLatin1Char(' ')).toLatin1());
        const int offset = line.section(QLatin1Char(' '), 0, 0).toInt(nullptr, 16);
        EXPECT_LE(offset + part.size(), bytes.size());
        bytes.replace(offset, part.size(), part);
    }
    return bytes;
}

std::vector<Example> examplesOfThePage()
{
    std::vector<Example> examples;
    for (const auto& [heading, lines] : fencedBlocks()) {
        if (heading == QLatin1String("xml")) {
            examples.emplace_back();
            examples.back().project = lines.join(QLatin1Char('\n')).toUtf8();
        } else if (heading == QLatin1String("values")) {
            for (const QString& line : lines)
                examples.back().written.push_back(readValues(line));
        } else if (heading.startsWith(QLatin1String("hex "))) {
            examples.back().files[heading.section(QLatin1Char(' '), 1, 1)] = readDump(heading, lines);
        }
    }
    return examples;
}

class FileFormat : public ModuleTest
{
protected:
    static std::unique_ptr<object> projectOf(const Example& example)
    {
        QBuffer buffer;
        buffer.setData(example.project);
        buffer.open(QIODevice::ReadOnly);
        ProjectReading reading = readProject(buffer, "file_format.md");
        EXPECT_EQ(reading.error, QString());
        return std::move(reading.project);
    }
};

TEST_F(FileFormat, ExamplesAreWhatTheModuleWrites)
{
    const std::vector<Example> examples = examplesOfThePage();
    ASSERT_EQ(examples.size(), 2U);
    for (const Example& example : examples) {
        ASSERT_EQ(example.files.size(), 3U);
        ASSERT_GE(example.written.size(), 3U);
        for (const auto& file : example.files)
            QFile::remove(retentionPath(file.first));
        const auto project = projectOf(example);
        const auto panel = startPanel(project.get());
        for (const CellValues& cells : example.written)
            EXPECT_TRUE(panel->setCells(cells.area, cells.first, cells.values));
        panel->model->cyclicRun();
        for (const auto& [name, bytes] : example.files)
            EXPECT_EQ(*retentionFile(name), bytes) << name.toStdString();
    }
}

TEST_F(FileFormat, ExamplesAreReadBackAsTheyWereWritten)
{
    for (const Example& example : examplesOfThePage()) {
        const auto project = projectOf(example);
        const Layout layout = layoutOf(*project);
        for (const CellValues& cells : example.written) {
            const AreaFacts& area = *areaNamed(cells.area);
            const AreaValues values =
                areaValues(layout, memoryFile(area, example.files.at(QString::fromLatin1(area.fileName))));
            for (std::size_t i = 0; i < cells.values.size(); ++i) {
                const auto cell = static_cast<std::size_t>(cells.first) + i;
                if (layout.of(area).kept.contains(static_cast<qint64>(cell))) {
                    EXPECT_EQ(values.values[cell], cells.values[i]) << cell;
                }
            }
        }
    }
}

} // namespace
