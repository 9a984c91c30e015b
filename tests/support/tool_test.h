// Runs a compiled tool in a scratch folder, with its arguments as a user would type them.
// SPDX-License-Identifier: MIT
#pragma once

#include "tests/support/module_test.h"
#include "tests/support/run_tool.h"

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtCore/QTemporaryDir>

/// Every test starts in a folder that only holds links to the examples: "examples/", "ranges.xml" and
/// "areas.xml".
class ToolTest : public ModuleTest
{
protected:
    explicit ToolTest(const char* tool) : tool(QString::fromLatin1(tool))
    {
        const QString examples = QStringLiteral(EXAMPLES_DIR);
        QDir::setCurrent(scratch.path());
        QFile::link(examples, QStringLiteral("examples"));
        QFile::link(examples + QLatin1String("/address_ranges.xml"), QStringLiteral("ranges.xml"));
        QFile::link(examples + QLatin1String("/whole_areas.xml"), QStringLiteral("areas.xml"));
    }
    ~ToolTest() override { QDir::setCurrent(QStringLiteral("/")); }

    /// Runs the tool with these arguments, separated by single spaces.
    ToolRun run(const QString& words, const QByteArray& input = {}) const
    {
        return runTool(tool, words.split(QLatin1Char(' ')), input);
    }

    /// The standard output of such a run, which must end with `status`.
    std::string output(const QString& words, int status = 0) const
    {
        const ToolRun made = run(words);
        EXPECT_EQ(made.status, status) << made.err.constData();
        return {made.out.begin(), made.out.end()};
    }

    /// The standard error of such a run, which must end with `status`.
    std::string errors(const QString& words, int status = 2) const
    {
        const ToolRun made = run(words);
        EXPECT_EQ(made.status, status) << made.out.constData();
        return {made.err.begin(), made.err.end()};
    }

    /// Creates or replaces the file, and creates its folder where there is none.
    static void write(const QString& name, const QByteArray& bytes)
    {
        QDir().mkpath(QFileInfo(name).path());
        QFile file(name);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size());
    }

    static QByteArray read(const QString& name)
    {
        QFile file(name);
        EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << name.toStdString();
        return file.readAll();
    }

    /// Writes the three files of a folder; the one of RWI is empty unless given.
    static void writeFiles(const QString& folder, const QByteArray& words, const QByteArray& bits,
                           const QByteArray& rwis = {})
    {
        write(folder + QLatin1Char('/') + QLatin1String(wordFileName), words);
        write(folder + QLatin1Char('/') + QLatin1String(bitFileName), bits);
        write(folder + QLatin1Char('/') + QLatin1String(rwiFileName), rwis);
    }

    const QString tool;
    const QTemporaryDir scratch;
};
