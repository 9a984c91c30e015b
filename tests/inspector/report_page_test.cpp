// Tests the page for the commissioning folder: what it must contain, and that no name can inject HTML.
// SPDX-License-Identifier: MIT
#include "tests/support/tool_test.h"
#include "tools/retention_inspector/report/html.h"

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

TEST(ReportPage, SaysOnceWhatToDoAboutSeveralFindings)
{
    const Finding first = {Finding::Severity::Error, "kind", "here", "bad", "Repair it."};
    const Finding second = {Finding::Severity::Error, "kind", "there", "bad", "Repair it."};
    EXPECT_THAT(htmlFindings({first, second}).toStdString(),
                testing::ContainsRegex("Repair it\\.</span>.*\n.*there: bad .*As for 1\\.</span>"));
}

class ReportPageOfFiles : public ToolTest
{
protected:
    ReportPageOfFiles() : ToolTest(RETENTION_INSPECTOR_PATH)
    {
        output("import examples/address_ranges.xml examples/address_ranges_values.csv -o panel_7");
    }

    std::string page(const QString& more = {}, int status = 0) const
    {
        return output("report examples/address_ranges.xml panel_7 -o-" + more, status);
    }
};

TEST_F(ReportPageOfFiles, NamesTheFilesWithTheirHashes)
{
    const std::string text = page();
    for (const char* const file : {"examples/address_ranges.xml", "panel_7/maintenance-bit.dat",
                                   "panel_7/maintenance-word.dat", "panel_7/maintenance-RWI.dat"}) {
        const ToolRun sum = runTool("/usr/bin/sha256sum", {file});
        ASSERT_EQ(sum.status, 0);
        EXPECT_THAT(text, HasSubstr(">" + sum.out.left(64).toStdString() + "<"));
    }
}

TEST_F(ReportPageOfFiles, HasEveryPart)
{
    const std::string text =
        page(" --tags examples/address_ranges_tags.csv --medium emmc --title Line:3 --date Tuesday");
    for (const char* part :
         {"<h1>Line:3</h1>", "Tuesday", "No findings.", "<svg", ">fully retained<", ">temperature<", ">21.5<",
          ">rpm<", ">address_ranges_tags.csv<", "<dt>Panel's files</dt>", ">Mix 7<", "for 10 years: at most"})
        EXPECT_THAT(text, HasSubstr(part));
    EXPECT_THAT(page(),
                HasSubstr("Not calculated: the page was created without --medium and --changes-per-hour."));
}

TEST_F(ReportPageOfFiles, SaysThatFilesDoNotFit)
{
    write("panel_7/maintenance-bit.dat", QByteArray("\x20\xff", 2));
    QFile::remove("panel_7/maintenance-word.dat");
    const std::string text = page({}, 1);
    EXPECT_THAT(text, HasSubstr("bits are set after the last cell"));
    EXPECT_THAT(text, HasSubstr("the file does not exist"));
    EXPECT_THAT(text, HasSubstr(">doubtful<"));
    EXPECT_THAT(text, Not(HasSubstr(">kept<")));
}

TEST_F(ReportPageOfFiles, SampleInTheDocsIsCurrent)
{
    const ToolRun made = runTool(tool, {"report", "examples/address_ranges.xml", "panel_7", "--tags",
                                        "examples/address_ranges_tags.csv", "--medium", "emmc", "--title",
                                        "Panel 7", "--date", "2026-11-21", "-o-"});
    EXPECT_EQ(read(SOURCE_DIR "/docs/commissioning_report.html"), made.out)
        << "recreate it: retention_inspector import examples/address_ranges.xml "
           "examples/address_ranges_values.csv -o "
           "panel_7; retention_inspector report examples/address_ranges.xml panel_7 --tags "
           "examples/address_ranges_tags.csv --medium emmc --title 'Panel 7' --date 2026-11-21 --force -o "
           "docs/commissioning_report.html";
}

} // namespace
