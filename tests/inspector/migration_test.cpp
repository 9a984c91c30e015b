// Tests migration: from the new files, the module restores what the old project kept.
// SPDX-License-Identifier: MIT
#include "tests/inspector/layout_of.h"
#include "tests/inspector/report_of.h"
#include "tests/support/random_source.h"
#include "tools/retention_core/refusal.h"

#include <QtCore/QTemporaryDir>

namespace {

using testing::HasSubstr;

using ProjectPointer = std::unique_ptr<object>;

class MigrationTest : public ModuleTest
{
protected:
    /// Fills the areas of a panel at random, and saves what is kept.
    std::unique_ptr<Panel> usedPanel(object& project)
    {
        auto panel = startPanel(&project);
        for (MemoryArea& area : panel->areas.all()) {
            std::vector<ushort> values(MemoryArea::cellCount);
            for (ushort& value : values)
                value = static_cast<ushort>(random.below(area.isBits() ? 2 : 65536));
            panel->setCells(area.name(), 0, values);
        }
        panel->model->cyclicRun();
        return panel;
    }

    /// Carries over the files of the fixed directory and replaces them with the new ones.
    Report migrate(const object& from, const object& to,
                   std::initializer_list<std::pair<const char*, QString>> more = {})
    {
        QTemporaryDir scratch;
        const QString target = scratch.filePath("new");
        std::vector<std::pair<const char*, QString>> options = more;
        options.emplace_back("output", target);
        const Report report = reportOf("migrate", {layoutOf(from), layoutOf(to)},
                                       {openRetentionFiles(fixedProjectDirectory)}, options);
        for (const char* name : {bitFileName, wordFileName, rwiFileName}) {
            QFile made(target + QLatin1Char('/') + QLatin1String(name));
            EXPECT_TRUE(made.open(QIODevice::ReadOnly));
            writeRetentionFile(QString::fromLatin1(name), made.readAll());
        }
        return report;
    }

    /// The cells of an area that share a fate, as in the JSON report; such as "9, 12 to 14".
    static QString cellsOf(const Report& report, std::size_t area, const char* fate)
    {
        for (const auto& row : report.tables.at(2).rows)
            if (row[0].text == QLatin1String(areaFacts[area].name) &&
                row[1].data.toString() == QLatin1String(fate))
                return row[3].text;
        return QString::fromLatin1("");
    }

    void expectValuesComeBack(object& oldProject, object& newProject)
    {
        const auto before = usedPanel(oldProject);
        const Layout from = layoutOf(oldProject);
        const Layout to = layoutOf(newProject);
        const Report report = migrate(oldProject, newProject);
        const auto after = startPanel(&newProject);
        for (std::size_t i = 0; i < 3; ++i) {
            EXPECT_EQ(to.areas[i].fileLength,
                      retentionFile(QString::fromLatin1(to.areas[i].area->fileName))->size());
            const CellRanges common = from.areas[i].kept.minus(from.areas[i].kept.minus(to.areas[i].kept));
            EXPECT_EQ(cellsOf(report, i, "carried"), common.text());
            carried += common.count();
            for (int cell = 0; cell < MemoryArea::cellCount; ++cell) {
                const ushort expected =
                    common.contains(cell) ? *before->areas.all()[i].cell(cell) : ushort(0);
                ASSERT_EQ(*after->areas.all()[i].cell(cell), expected)
                    << after->areas.all()[i].name().toStdString() << ' ' << cell;
            }
        }
    }

    RandomSource random{printedSeed()};
    qint64 carried = 0;
};

const std::vector<Entry> oldEntries = {
    {LB, 3, 21},   {LB, 30, 9},  {LB, 60095, 10}, {LW, 100, 10},
    {LW, 104, 12}, {LW, 200, 5}, {RWI, 0, 50},    {RWI, 65530, 10},
};
const std::vector<Entry> newEntries = {
    {LB, 0, 10},  {LB, 12, 40}, {LB, 60090, 20}, {LW, 90, 20},     {LW, 110, 3},
    {LW, 199, 4}, {LW, 203, 9}, {RWI, 25, 50},   {RWI, 65500, 33},
};

TEST_F(MigrationTest, CarriesValuesFromEntriesToOtherEntries)
{
    expectValuesComeBack(*perAddressProject(oldEntries), *perAddressProject(newEntries));
    EXPECT_GT(carried, 60);
}

TEST_F(MigrationTest, CarriesValuesFromWholeAreasToEntries)
{
    expectValuesComeBack(*wholeAreaProject(1, 5), *perAddressProject(newEntries));
    EXPECT_GT(carried, 100);
}

TEST_F(MigrationTest, CarriesValuesFromEntriesToWholeAreas)
{
    expectValuesComeBack(*perAddressProject(oldEntries), *wholeAreaProject(1, 5));
    EXPECT_GT(carried, 60);
}

TEST_F(MigrationTest, CarriesWholeAreasUnchanged)
{
    const ProjectPointer project = wholeAreaProject(1, 5);
    const auto before = usedPanel(*project);
    // A layout other than one bit per byte stays as it is.
    writeRetentionFile(bitFileName, QByteArray(65536, '\x5a'));
    const auto words = retentionFile(wordFileName);
    migrate(*project, *project);
    EXPECT_EQ(retentionFile(bitFileName), QByteArray(65536, '\x5a'));
    EXPECT_EQ(retentionFile(wordFileName), words);
}

TEST_F(MigrationTest, CarriesRandomProjects)
{
    const auto randomProject = [this] {
        std::vector<Entry> entries(static_cast<std::size_t>(random.between(1, 20)));
        for (Entry& entry : entries)
            entry = {random.oneOf<QString>({LB, LW, RWI}), random.below(120), random.below(30)};
        return perAddressProject(entries);
    };
    for (int round = 0; round < 8; ++round) {
        for (const char* name : {bitFileName, wordFileName, rwiFileName})
            QFile::remove(retentionPath(QString::fromLatin1(name)));
        expectValuesComeBack(*randomProject(), *randomProject());
    }
    EXPECT_GT(carried, 200);
}

TEST_F(MigrationTest, CarriesNoBitsOutOfAnImageThatIsNotOneBitAByte)
{
    const ProjectPointer images = wholeAreaProject(1, 5);
    const ProjectPointer entries = perAddressProject(newEntries);
    usedPanel(*images);
    writeRetentionFile(bitFileName, QByteArray(65536, '\x5a'));
    const Report report = migrate(*images, *entries);
    EXPECT_EQ(cellsOf(report, 0, "carried"), QString());
    EXPECT_NE(cellsOf(report, 1, "carried"), QString());
    EXPECT_STREQ(report.findings.front().kind, "foreign-bit-image");
    EXPECT_EQ(retentionFile(bitFileName)->count('\0'), 9) << "70 cells: 9 bytes of zeros";
}

TEST_F(MigrationTest, SaysWhatHadNoValue)
{
    const ProjectPointer oldProject = perAddressProject({{LW, 0, 4}});
    const ProjectPointer newProject = perAddressProject({{LW, 1, 2}, {RWI, 5, 1}});
    writeRetentionFile(wordFileName, QByteArray("\1\0\2\0", 4));
    const Report report = migrate(*oldProject, *newProject, {{"force", QString()}});
    EXPECT_EQ(cellsOf(report, 1, "carried"), "1");
    EXPECT_EQ(cellsOf(report, 1, "without-value"), "2");
    EXPECT_EQ(cellsOf(report, 1, "dropped"), "0, 3");
    EXPECT_EQ(cellsOf(report, 2, "new"), "5");
    ASSERT_EQ(report.findings.size(), 1U) << "the old file is too short for the old project";
    EXPECT_STREQ(report.findings.front().kind, "shorter");
}

TEST_F(MigrationTest, MovesCellsAwayFromTheirAddresses)
{
    const ProjectPointer oldProject = perAddressProject({{LW, 100, 10}, {LB, 5, 2}});
    const ProjectPointer newProject = perAddressProject({{LW, 105, 5}, {RWI, 300, 6}, {LB, 20, 2}});
    const auto before = usedPanel(*oldProject);
    const Report report = migrate(*oldProject, *newProject, {{"move", "LW:100-105=RWI:300,LB:5-6=20-21"}});
    const auto after = startPanel(newProject.get());
    const auto& words = before->areas.all()[1];
    for (int i = 0; i < 6; ++i)
        EXPECT_EQ(after->areas.all()[2].cell(300 + i), words.cell(100 + i)) << i;
    EXPECT_EQ(after->areas.all()[1].cell(105), ushort(0)) << "its value moved away";
    EXPECT_EQ(after->areas.all()[1].cell(106), words.cell(106));
    EXPECT_EQ(after->areas.all()[0].cell(21), before->areas.all()[0].cell(6));
    EXPECT_EQ(cellsOf(report, 1, "carried"), "106 to 109");
    EXPECT_EQ(cellsOf(report, 1, "new"), "105");
    EXPECT_EQ(cellsOf(report, 1, "dropped"), QString::fromLatin1(""));
    EXPECT_EQ(cellsOf(report, 2, "carried"), "300 to 305");
}

TEST_F(MigrationTest, SwapsCellsThatMoveToEachOther)
{
    const ProjectPointer project = perAddressProject({{LW, 0, 20}});
    const auto before = usedPanel(*project);
    migrate(*project, *project, {{"move", "LW:0-4=10,LW:10-14=0"}});
    const auto after = startPanel(project.get());
    for (int i = 0; i < 5; ++i) {
        EXPECT_EQ(after->areas.all()[1].cell(10 + i), before->areas.all()[1].cell(i));
        EXPECT_EQ(after->areas.all()[1].cell(i), before->areas.all()[1].cell(10 + i));
    }
}

TEST_F(MigrationTest, ListsAsDroppedWhatAMoveOverwrites)
{
    const ProjectPointer project = perAddressProject({{LW, 0, 4}});
    const auto panel = startPanel(project.get());
    panel->setCells(LW, 0, {1, 2, 3, 4});
    const Report report = migrate(*project, *project, {{"move", "LW:0=LW:2"}});
    EXPECT_EQ(cellsOf(report, 1, "dropped"), "2");
    ASSERT_EQ(report.tables.at(3).rows.size(), 1U);
    EXPECT_EQ(report.tables.at(3).rows[0][4].text, "3");
    EXPECT_EQ(retentionFile(wordFileName), QByteArray("\0\0\2\0\1\0\4\0", 8));
}

/// A project of these entries with these names.
ProjectPointer namedEntries(const std::vector<std::pair<const char*, Entry>>& entries)
{
    std::vector<Entry> plain;
    for (const auto& [name, entry] : entries)
        plain.push_back(entry);
    ProjectPointer project = perAddressProject(plain);
    std::size_t number = 0;
    for (const auto& entry : project->findChild("DataRetention")->children)
        entry->name = QString::fromLatin1(entries[number++].first);
    return project;
}

TEST_F(MigrationTest, FindsMovedRangesByTheNamesOfTheirEntries)
{
    const ProjectPointer oldProject = namedEntries({{"recipe", {LW, 100, 10}}, {"counters", {LW, 200, 5}}});
    const ProjectPointer newProject = namedEntries({{"recipe", {LW, 400, 8}}, {"counters", {LW, 200, 5}}});
    const auto before = usedPanel(*oldProject);
    const Report report = migrate(*oldProject, *newProject, {{"by-name", QString()}});
    const auto after = startPanel(newProject.get());
    for (int i = 0; i < 8; ++i)
        EXPECT_EQ(after->areas.all()[1].cell(400 + i), before->areas.all()[1].cell(100 + i));
    EXPECT_EQ(cellsOf(report, 1, "carried"), "200 to 204, 400 to 407");
    EXPECT_EQ(cellsOf(report, 1, "dropped"), "108 to 109");
}

TEST_F(MigrationTest, SaysWhyNothingMovesByName)
{
    const ProjectPointer oldProject = namedEntries({{"recipe", {LW, 0, 4}},
                                                    {"twice", {LW, 10, 2}},
                                                    {"twice", {LW, 20, 2}},
                                                    {"lamp", {LB, 0, 2}},
                                                    {"nowhere", {"lw", 40, 2}}});
    const auto notesOf = [&](const ProjectPointer& newProject) {
        for (const char* name : {bitFileName, wordFileName, rwiFileName})
            QFile::remove(retentionPath(QString::fromLatin1(name)));
        usedPanel(*oldProject);
        const QStringList notes = migrate(*oldProject, *newProject, {{"by-name", QString()}}).notes;
        return notes.join(QLatin1Char('\n')).toStdString();
    };
    const std::string other = notesOf(namedEntries({{"Recipe", {LW, 100, 4}},
                                                    {"mix", {LW, 110, 2}},
                                                    {"twice", {LW, 120, 2}},
                                                    {"lamp", {LW, 130, 2}},
                                                    {"nowhere", {LW, 140, 2}}}));
    for (const char* const note :
         {"--by-name moved nothing. Names must be equal, in upper and lower case, too: rename the entries, "
          "or name "
          "the cells, such as --move LW:100-109=LW:300.",
          "Nothing moved by name to entries 1 \"Recipe\" and 2 \"mix\": OLD.xml has no entry with the same "
          "name.",
          "Nothing moved by name to entry 3 \"twice\": OLD.xml has several entries with the same name.",
          "Nothing moved by name to entry 4 \"lamp\": bits in one project, words in the other.",
          "Nothing moved by name to entry 5 \"nowhere\": none of the cells is retained in both projects."})
        EXPECT_THAT(other, HasSubstr(note));
    const std::string same = notesOf(namedEntries({{"recipe", {LW, 0, 4}}, {"lamp", {LB, 0, 2}}}));
    EXPECT_THAT(
        same, HasSubstr("--by-name moved nothing: entries with the same name begin at the same cell in both "
                        "projects, so their values stay where they are."));
    EXPECT_THAT(same, testing::Not(HasSubstr("Names must be equal")));
    const std::string moved = notesOf(namedEntries(
        {{"recipe", {LW, 100, 4}}, {"mix", {LW, 110, 2}}, {"lamp", {LB, 10, 2}}, {"lamp", {LB, 20, 2}}}));
    EXPECT_THAT(moved, testing::Not(HasSubstr("--by-name moved nothing")));
    EXPECT_THAT(moved, HasSubstr("entry 2 \"mix\": OLD.xml has no entry with the same name."));
    EXPECT_THAT(
        moved,
        HasSubstr("entries 3 \"lamp\" and 4 \"lamp\": NEW.xml has several entries with the same name."));
}

TEST_F(MigrationTest, RefusesMovesThatCannotBe)
{
    const ProjectPointer project = perAddressProject({{LW, 0, 20}, {LB, 0, 8}});
    usedPanel(*project);
    const struct
    {
        const char* move;
        const char* problem;
    } moves[] = {{"LW:5", "expected the old cells"},
                 {"XX:5=LW:6", "expected the old cells"},
                 {"LW:5=LB:6", "between bits and words"},
                 {"LW:0-4=LW:6-9", "differ in length"},
                 {"LW:0-4=LW:65533", "beyond the end of the area, 65535"},
                 {"LW:30=LW:3", "OLD.xml does not retain LW 30"},
                 {"LW:3=LW:30", "NEW.xml does not retain LW 30"},
                 {"LW:0-4=LW:6,LW:5=LW:10", "overlap"}};
    for (const auto& [move, problem] : moves) {
        try {
            migrate(*project, *project, {{"move", QString::fromLatin1(move)}});
            ADD_FAILURE() << move;
        } catch (const Refusal& refusal) {
            EXPECT_THAT(refusal.message().toStdString(), HasSubstr(problem)) << move;
        }
    }
}

TEST_F(MigrationTest, MovesNoBitsOutOfAnImageThatIsNotOneBitAByte)
{
    const ProjectPointer images = wholeAreaProject(1, 5);
    usedPanel(*images);
    writeRetentionFile(bitFileName, QByteArray(65536, '\x5a'));
    EXPECT_THROW(migrate(*images, *images, {{"move", "LB:1=LB:2"}}), Refusal);
    migrate(*images, *images, {{"move", "LW:1=LW:2"}});
    EXPECT_EQ(retentionFile(bitFileName), QByteArray(65536, '\x5a'));
}

class OutputPlace : public MigrationTest
{
protected:
    /// Why nothing was written; empty when everything was.
    QString write(const QString& target)
    {
        const ProjectPointer project = wholeAreaProject(1, 5);
        const Layout layout = layoutOf(*project);
        try {
            reportOf("migrate", {layout, layout}, {openRetentionFiles(scratch.path())},
                     {{"output", target}, {"force", QString()}});
        } catch (const Refusal& refusal) {
            return refusal.message();
        }
        return {};
    }

    QStringList leftOver() const
    {
        return QDir(scratch.path())
            .entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
    }

    QTemporaryDir scratch;
};

TEST_F(OutputPlace, MayBeNewOrAnEmptyDirectory)
{
    EXPECT_EQ(write(scratch.filePath("a")), QString());
    QDir(scratch.path()).mkdir("b");
    EXPECT_EQ(write(scratch.filePath("b/")), QString());
    EXPECT_EQ(leftOver(), QStringList({"a", "b"}));
    EXPECT_EQ(QDir(scratch.filePath("b")).entryList(QDir::Files).size(), 3);
}

TEST_F(OutputPlace, IsNeverOverwritten)
{
    ASSERT_EQ(write(scratch.filePath("a")), QString());
    EXPECT_THAT(write(scratch.filePath("a")).toStdString(), HasSubstr("nothing is overwritten"));
    ASSERT_TRUE(QFile(scratch.filePath("file")).open(QIODevice::WriteOnly));
    EXPECT_THAT(write(scratch.filePath("file")).toStdString(), HasSubstr("already exists"));
    QFile::link("nowhere", scratch.filePath("link"));
    EXPECT_THAT(write(scratch.filePath("link")).toStdString(), HasSubstr("already exists"));
    EXPECT_THAT(write(scratch.filePath("no/where")).toStdString(), HasSubstr("there is no directory"));
    EXPECT_EQ(leftOver().size(), 3) << leftOver().join(QLatin1Char(' ')).toStdString();
}

} // namespace
