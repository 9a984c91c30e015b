// Tests the page for the commissioning folder: what it must contain, and that no name can inject HTML.
// SPDX-License-Identifier: MIT
#include "tests/inspector/memory_file.h"
#include "tests/inspector/report_of.h"
#include "tests/support/module_test.h"
#include "tests/support/run_tool.h"
#include "tools/retention_inspector/report/html.h"

#include <QtCore/QTemporaryDir>

namespace {

using testing::HasSubstr;
using testing::Not;

const char* const hostile =
    "\"><img src=x onerror=alert(1)><script>alert(2)</script>&lt;'\x01\n</td></table>";

TEST(ReportPage, EscapesEveryText)
{
    const QString name = QString::fromLatin1(hostile);
    Finding finding = {Finding::Severity::Error, "kind", name, name, name};
    Table table{"t", "t", "Title", {{"a", "A"}}, {{name}}};
    const std::string page =
        htmlPage(name, htmlHeading(name) + htmlParagraph(name) + htmlFacts({{"k", "Key", name}}) +
                           htmlTable(table) + htmlFindings({finding}) + htmlNotes({name}))
            .toStdString();
    EXPECT_THAT(page, Not(HasSubstr("<img")));
    EXPECT_THAT(page, Not(HasSubstr("<script>alert")));
    EXPECT_THAT(page, Not(HasSubstr("\x01")));
    const std::string escaped =
        "&quot;&gt;&lt;img src=x onerror=alert(1)&gt;&lt;script&gt;alert(2)&lt;/script&gt;&amp;lt;'"
        "  &lt;/td&gt;";
    std::size_t found = 0;
    for (std::size_t at = page.find(escaped); at != std::string::npos; at = page.find(escaped, at + 1))
        ++found;
    EXPECT_EQ(found, 9U) << "title, heading, paragraph, fact, cell, three of the finding, note";
}

class ReportPageOfFiles : public testing::Test
{
protected:
    ReportPageOfFiles() { make(QStringLiteral("address_ranges_values.csv")); }

    void make(const QString& values)
    {
        const ToolRun run =
            runTool(QStringLiteral(RETENTION_INSPECTOR_PATH),
                    {QStringLiteral("import"), project, QStringLiteral(EXAMPLES_DIR "/") + values,
                     QStringLiteral("-o"), directory});
        EXPECT_EQ(run.status, 0) << run.err.toStdString();
    }

    std::string page(int status, const QStringList& more = {}) const
    {
        const ToolRun run =
            runTool(QStringLiteral(RETENTION_INSPECTOR_PATH),
                    QStringList{QStringLiteral("report"), project, directory, QStringLiteral("-o-")} + more);
        EXPECT_EQ(run.status, status) << run.err.toStdString();
        return run.out.toStdString();
    }

    QTemporaryDir scratch;
    const QString project = QStringLiteral(EXAMPLES_DIR "/address_ranges.xml");
    const QString directory = scratch.filePath(QStringLiteral("panel_7"));
};

TEST_F(ReportPageOfFiles, NamesTheFilesWithTheirHashes)
{
    const std::string text = page(0);
    for (const QString& file : {project, directory + QStringLiteral("/maintenance-bit.dat"),
                                directory + QStringLiteral("/maintenance-word.dat"),
                                directory + QStringLiteral("/maintenance-RWI.dat")}) {
        const ToolRun sum = runTool(QStringLiteral("/usr/bin/sha256sum"), {file});
        ASSERT_EQ(sum.status, 0);
        EXPECT_THAT(text, HasSubstr(">" + sum.out.left(64).toStdString() + "<"));
    }
}

TEST_F(ReportPageOfFiles, HasEveryPart)
{
    const std::string text =
        page(0, {QStringLiteral("--tags"), QStringLiteral(EXAMPLES_DIR "/address_ranges_tags.csv"),
                 QStringLiteral("--medium"), QStringLiteral("emmc"), QStringLiteral("--title"),
                 QStringLiteral("Line 3"), QStringLiteral("--date"), QStringLiteral("a Tuesday")});
    for (const char* part : {"<h1>Line 3</h1>", "a Tuesday", "No findings.", "<svg", ">fully retained<",
                             ">temperature<", ">21.5<", ">rpm<", ">address_ranges_tags.csv<",
                             "<dt>Panel's files</dt>", ">Mix 7<", "for 10 years: at most"})
        EXPECT_THAT(text, HasSubstr(part));
    EXPECT_THAT(page(0),
                HasSubstr("Not calculated: the page was created without --medium and --changes-per-hour."));
}

TEST_F(ReportPageOfFiles, SaysThatFilesDoNotFit)
{
    QFile bits(directory + QStringLiteral("/maintenance-bit.dat"));
    ASSERT_TRUE(bits.open(QIODevice::WriteOnly));
    bits.write("\x20\xff", 2);
    bits.close();
    QFile::remove(directory + QStringLiteral("/maintenance-word.dat"));
    const std::string text = page(1);
    EXPECT_THAT(text, HasSubstr("bits are set after the last cell"));
    EXPECT_THAT(text, HasSubstr("the file does not exist"));
    EXPECT_THAT(text, HasSubstr(">doubtful<"));
    EXPECT_THAT(text, Not(HasSubstr(">kept<")));
}

TEST_F(ReportPageOfFiles, SampleInTheDocsIsCurrent)
{
    QFile sample(QStringLiteral(SOURCE_DIR "/docs/commissioning_report.html"));
    QDir::setCurrent(scratch.path()); // because the page names its files as given
    QFile::link(QStringLiteral(SOURCE_DIR "/examples"), QStringLiteral("examples"));
    ASSERT_TRUE(sample.open(QIODevice::ReadOnly));
    const ToolRun run =
        runTool(QStringLiteral(RETENTION_INSPECTOR_PATH),
                {QStringLiteral("report"), QStringLiteral("examples/address_ranges.xml"),
                 QStringLiteral("panel_7"), QStringLiteral("--tags"),
                 QStringLiteral("examples/address_ranges_tags.csv"), QStringLiteral("--medium"),
                 QStringLiteral("emmc"), QStringLiteral("--title"), QStringLiteral("Panel 7"),
                 QStringLiteral("--date"), QStringLiteral("2026-11-21"), QStringLiteral("-o-")});
    EXPECT_EQ(sample.readAll(), run.out)
        << "recreate it: retention_inspector import examples/address_ranges.xml "
           "examples/address_ranges_values.csv -o "
           "panel_7; retention_inspector report examples/address_ranges.xml panel_7 --tags "
           "examples/address_ranges_tags.csv --medium emmc --title 'Panel 7' --date 2026-11-21 --force -o "
           "docs/commissioning_report.html";
}

} // namespace
