// Tests "compare" on many panels against a count that keeps all values.
// SPDX-License-Identifier: MIT
#include "tests/inspector/layout_of.h"
#include "tests/inspector/report_of.h"
#include "tests/support/random_source.h"
#include "tests/support/tool_test.h"

#include <map>

namespace {

using testing::HasSubstr;
using testing::Not;

class Fleet : public ToolTest
{
protected:
    Fleet() : ToolTest(RETENTION_INSPECTOR_PATH) {}

    /// A panel with these words; LB and RWI keep nothing.
    void panel(const QString& name, const std::vector<ushort>& words)
    {
        QByteArray bytes;
        for (const ushort word : words)
            bytes.append(static_cast<char>(word)).append(static_cast<char>(word >> 8));
        writeFiles(name, bytes, QByteArray(1, '\0'));
        panels.append(name);
    }

    Report compare(int cells) const
    {
        return reportOf("compare", {layoutOf({{LW, 100, cells}})}, {}, {}, panels);
    }

    /// Such as "2 105 7": number of the panel, address and value.
    std::vector<std::string> differences(const Report& report) const
    {
        std::vector<std::string> texts;
        for (const auto& row : report.tables.at(2).rows)
            texts.push_back(std::to_string(panels.indexOf(row[0].text)) + ' ' + row[2].text.toStdString() +
                            ' ' + row[4].text.toStdString());
        return texts;
    }

    QStringList panels;
};

TEST_F(Fleet, HasTheValuesOfMoreThanHalfOfItsPanels)
{
    panel("a", {1, 2, 3});
    panel("b", {1, 2, 4});
    panel("c", {7, 2, 5});
    panel("d", {1, 9, 6});
    const Report report = compare(3);
    EXPECT_THAT(differences(report), testing::ElementsAre("2 100 7", "3 101 9"));
    EXPECT_EQ(factOf(report, "undecided").text, "1");
    EXPECT_EQ(factOf(report, "deviating").text, "2");
    EXPECT_FALSE(report.isClean());
    EXPECT_THAT(reportText(report).toStdString(),
                HasSubstr("  c       yes           0           1   LW 100\n"));
    EXPECT_THAT(reportText(report).toStdString(),
                HasSubstr("  LW         101      2                    1   9\n"));
}

TEST_F(Fleet, IsCleanWhenAllPanelsAreAlike)
{
    for (const char* name : {"a", "b", "c"})
        panel(QLatin1String(name), {1, 2, 3});
    EXPECT_TRUE(compare(3).isClean());
}

TEST_F(Fleet, OfTwoPanelsThatDifferLeavesTheCellsToDiff)
{
    panel("a", {1, 2, 3});
    panel("b", {1, 5, 4});
    const Report two = compare(3);
    EXPECT_FALSE(two.isClean()) << "values differ";
    ASSERT_EQ(two.notes.size(), 1) << two.notes.join(QLatin1Char('\n')).toStdString();
    EXPECT_THAT(
        two.notes.front().toStdString(),
        HasSubstr("2 cells differ between two panels, of which neither is the majority; \"diff\" with"));
    panel("c", {1, 6, 5});
    const Report three = compare(3);
    EXPECT_TRUE(three.isClean()) << "such as counters";
    EXPECT_THAT(three.notes.join(QLatin1Char('\n')).toStdString(), Not(HasSubstr("diff\"")));
}

TEST_F(Fleet, LeavesPanelsOutWhoseFilesDoNotFit)
{
    panel("a", {1, 2, 3});
    panel("b", {1, 2, 3});
    panel("longer", {5, 5, 5, 5});
    panel("shorter", {5, 5});
    panel("none", {});
    QFile::remove("none/maintenance-word.dat");
    panels.append("nowhere");
    panel("z", {1, 2, 4});
    const Report report = compare(3);
    EXPECT_THAT(differences(report), testing::ElementsAre("6 102 4"));
    EXPECT_EQ(factOf(report, "fitting").text, "3");
    ASSERT_EQ(report.findings.size(), 4U);
    EXPECT_STREQ(report.findings[3].kind, "no-directory");
    const std::string text = reportText(report).toStdString();
    for (const char* name : {"longer", "shorter", "none", "nowhere"})
        EXPECT_THAT(text, testing::ContainsRegex(std::string(name) + " +no +1 +0\n"));
}

TEST_F(Fleet, IsComparedAsByCountingAllValues)
{
    RandomSource random(printedSeed());
    int differing = 0;
    for (int round = 0; round < 40; ++round) {
        panels.clear();
        const int cells = random.between(1, 12);
        std::vector<std::vector<ushort>> values(static_cast<std::size_t>(random.between(1, 9)));
        for (auto& words : values) {
            for (int cell = 0; cell < cells; ++cell)
                words.push_back(static_cast<ushort>(random.between(0, 2) * random.between(0, 1)));
            panel(QStringLiteral("r%1p%2").arg(round).arg(panels.size()), words);
        }
        std::vector<std::string> expected;
        int undecided = 0;
        for (std::size_t cell = 0; cell < static_cast<std::size_t>(cells); ++cell) {
            std::map<ushort, std::size_t> counts;
            for (const auto& words : values)
                ++counts[words[cell]];
            const auto most = std::find_if(counts.begin(), counts.end(), [&](const auto& count) {
                return 2 * count.second > values.size();
            });
            undecided += most == counts.end();
            for (std::size_t i = 0; i < values.size(); ++i)
                if (most != counts.end() && values[i][cell] != most->first)
                    expected.push_back(std::to_string(i) + ' ' + std::to_string(100 + cell) + ' ' +
                                       std::to_string(values[i][cell]));
        }
        const Report report = compare(cells);
        ASSERT_THAT(differences(report), testing::UnorderedElementsAreArray(expected)) << "round " << round;
        ASSERT_EQ(factOf(report, "undecided").text, QString::number(undecided));
        differing += static_cast<int>(expected.size());
    }
    EXPECT_GT(differing, 200);
}

TEST_F(Fleet, NamesCellsByTags)
{
    write("tags.csv", "area,address,type,name\nLW,101,int32,pressure\n");
    panel("a", {1, 2, 3});
    panel("b", {1, 2, 3});
    panel("c", {1, 2, 9});
    const Report report = reportOf("compare", {layoutOf({{LW, 100, 3}})}, {}, {{"tags", "tags.csv"}}, panels);
    EXPECT_THAT(reportText(report).toStdString(),
                HasSubstr("  LW         102   pressure      3                    1   9\n"));
    EXPECT_THAT(reportCsv(report).toStdString(), HasSubstr("\nc,yes,0,1,,102,\n"));
}

} // namespace
