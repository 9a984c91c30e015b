// Tests what becomes of each entry: verdicts, lost cells, and findings with their remedies.
// SPDX-License-Identifier: MIT
#include "tests/inspector/layout_of.h"
#include "tools/retention_core/findings.h"

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

Entry lw(int index, int length)
{
    return {LW, index, length};
}

/// Each as "verdict" or "verdict less CELLS".
std::vector<std::string> verdictsOf(const std::vector<Entry>& entries)
{
    const Layout layout = layoutOf(entries);
    std::vector<std::string> texts;
    for (const EntryVerdict& verdict : entryVerdicts(layout)) {
        std::string text = verdict.words().text.toStdString();
        if (!verdict.lost.isEmpty())
            text += " less " + verdict.lost.text().toStdString();
        texts.push_back(text);
    }
    return texts;
}

std::vector<Finding> findingsOf(const std::vector<Entry>& entries)
{
    return entryFindings(layoutOf(entries));
}

/// Each as "KIND PLACE -> REMEDY".
std::vector<std::string> findingTexts(const std::vector<Entry>& entries)
{
    std::vector<std::string> texts;
    for (const Finding& finding : findingsOf(entries))
        texts.push_back(finding.kind + (" " + finding.place + " -> " + finding.remedy).toStdString());
    return texts;
}

TEST(EntryVerdict, OfSeparateAndAdjacentEntriesIsRetainedWhole)
{
    EXPECT_THAT(verdictsOf({lw(10, 5), lw(0, 10), lw(20, 1)}),
                ElementsAre("fully retained", "fully retained", "fully retained"));
    EXPECT_THAT(findingsOf({lw(10, 5), lw(0, 10)}), IsEmpty());
}

TEST(EntryVerdict, NamesTheCellLostInAFold)
{
    EXPECT_THAT(verdictsOf({lw(0, 4), lw(2, 4), lw(10, 2), lw(12, 3), lw(12, 5), lw(20, 10), lw(22, 3)}),
                ElementsAre("folded into block 1", "folded into block 1 less 5", "fully retained",
                            "folded into block 3", "folded into block 3", "folded into block 4",
                            "folded into block 4"));
    EXPECT_THAT(verdictsOf({lw(0, 10), lw(4, 6)}),
                ElementsAre("folded into block 1 less 9", "folded into block 1 less 9"));
    EXPECT_THAT(verdictsOf({lw(0, 10), lw(5, 10), lw(12, 10)}),
                ElementsAre("folded into block 1", "folded into block 1", "folded into block 1 less 21"));
}

TEST(EntryVerdict, NamesAnEntryThatAFoldLosesAltogether)
{
    EXPECT_THAT(verdictsOf({lw(0, 8), lw(7, 1)}),
                ElementsAre("folded into block 1 less 7", "not retained less 7"));
    EXPECT_THAT(findingTexts({lw(0, 8), lw(7, 1)}),
                ElementsAre(HasSubstr("lost-in-fold entries 1 \"Entry\" and 2 \"Entry\", LW 7 -> Replace "
                                      "them with a single entry (\"index\" 0, \"addressLength\" 8)")));
}

TEST(EntryVerdict, CountsACellLostInAFoldAsKeptWhenAnotherBlockHoldsIt)
{
    EXPECT_THAT(verdictsOf({lw(0, 10), lw(5, 10), lw(14, 1)}),
                ElementsAre("folded into block 1", "folded into block 1", "fully retained"));
    EXPECT_THAT(findingsOf({lw(0, 10), lw(5, 10), lw(14, 1)}), IsEmpty());
}

TEST(EntryVerdict, NamesCellsOutsideTheArea)
{
    EXPECT_THAT(verdictsOf({lw(65530, 10), lw(70000, 2), lw(-2, 5)}),
                ElementsAre("partly retained less 65536 to 65539", "not retained less 70000 to 70001",
                            "partly retained less -2 to -1"));
}

TEST(EntryVerdict, NamesTheBitThatIsNeverWritten)
{
    EXPECT_THAT(verdictsOf({{LB, 60098, 5}, {RWI, 60098, 5}}),
                ElementsAre("partly retained less 60100", "fully retained"));
    EXPECT_THAT(verdictsOf({{LB, 60100, 1}}), ElementsAre("not retained less 60100"));
}

TEST(EntryVerdict, OfBadAreasAndLengthsIsNotRetained)
{
    EXPECT_THAT(verdictsOf({{"lw", 0, 4}, {QString(), 0, 4}, lw(0, 0), lw(5, -2)}),
                ElementsAre("not retained", "not retained", "not retained", "not retained"));
}

TEST(EntryVerdict, OfEntriesNextToANegativeLengthIsNotRetained)
{
    EXPECT_THAT(verdictsOf({lw(5, -2), lw(6, 3)}), ElementsAre("not retained", "not retained less 6 to 8"));
    EXPECT_THAT(verdictsOf({lw(0, 4), lw(5, -2), {RWI, 0, 4}}),
                ElementsAre("not retained less 0 to 3", "not retained", "fully retained"));
}

TEST(EntryFinding, OfAFoldTellsTheOneEntryThatKeepsEverything)
{
    const std::vector<Entry> folded = {lw(2, 4), lw(0, 4)};
    EXPECT_THAT(findingTexts(folded),
                ElementsAre("lost-in-fold entries 1 \"Entry\" and 2 \"Entry\", LW 5 -> Replace them with a "
                            "single entry (\"index\" 0, \"addressLength\" 6), or start each entry right "
                            "after the last cell of the one before it."));
    EXPECT_THAT(findingsOf({lw(0, 6)}), IsEmpty()) << "the remedy helps";
    EXPECT_THAT(findingsOf({lw(0, 4), lw(4, 2)}), IsEmpty()) << "the other remedy helps";
}

TEST(EntryFinding, OfAnEntryThatLeavesTheAreaTellsTheLengthThatFits)
{
    EXPECT_THAT(findingTexts({lw(65530, 10)}),
                ElementsAre(HasSubstr("outside-area entry 1 \"Entry\", LW 65536 to 65539 -> Set its "
                                      "\"index\" to 65530 and its \"addressLength\" to 6")));
    EXPECT_THAT(findingsOf({lw(65530, 6)}), IsEmpty()) << "the remedy helps";
}

TEST(EntryFinding, TellsHowAnAreaNameIsWritten)
{
    EXPECT_THAT(findingTexts({{" lb ", 0, 1}}),
                ElementsAre(HasSubstr("to LB, in upper case and without spaces")));
    EXPECT_THAT(findingTexts({{"XY", 0, 1}}), ElementsAre(HasSubstr("to LB, LW or RWI")));
}

TEST(EntryFinding, NamesEntriesWithoutEffect)
{
    EXPECT_THAT(findingTexts({lw(12, 3), lw(12, 5)}),
                ElementsAre("same-start entry 1 \"Entry\", LW 12 to 14 -> Remove it."));
    EXPECT_THAT(findingTexts({lw(12, 3), lw(12, 3)}),
                ElementsAre("same-start entry 2 \"Entry\", LW 12 to 14 -> Remove it."));
    EXPECT_THAT(findingTexts({lw(20, 10), lw(22, 3)}),
                ElementsAre("inside-another entry 2 \"Entry\", LW 22 to 24 -> Remove it."));
}

TEST(EntryFinding, NamesZeroAndNegativeLengthsAndWhatTheyBreak)
{
    EXPECT_THAT(findingTexts({lw(5, 0)}), ElementsAre(HasSubstr("zero-length")));
    EXPECT_THAT(
        findingTexts({lw(5, -2), lw(6, 1)}),
        ElementsAre(HasSubstr("negative-length"), HasSubstr("unsound-block entry 2 \"Entry\", LW 6")));
}

TEST(EntryFinding, NamesDoubleWordsKeptByHalf)
{
    const auto project = perAddressProject({lw(5, 3)});
    project->children.front()->children.front()->setText("addressType", "Double Word");
    const std::vector<Finding> findings = entryFindings(layoutOf(*project));
    ASSERT_EQ(findings.size(), 1U);
    EXPECT_STREQ(findings.front().kind, "half-double-word");
}

std::vector<std::string> settingsKinds(const object& project)
{
    std::vector<std::string> kinds;
    for (const Finding& finding : settingsFindings(readSettings(const_cast<object*>(&project))))
        kinds.emplace_back(finding.kind);
    return kinds;
}

TEST(SettingsFinding, ExplainsOddSavePeriods)
{
    EXPECT_THAT(settingsKinds(*wholeAreaProject(1, 5)), IsEmpty());
    EXPECT_THAT(settingsKinds(*wholeAreaProject(1, {})), IsEmpty());
    EXPECT_THAT(settingsKinds(*wholeAreaProject(1, 0)), ElementsAre("save-time-zero"));
    EXPECT_THAT(settingsKinds(*wholeAreaProject(1, 40000)), ElementsAre("save-time-negative"));
    EXPECT_THAT(settingsKinds(*wholeAreaProject(1, 70000)), ElementsAre("save-time-wrapped"));
    const auto project = wholeAreaProject(1, 70000);
    EXPECT_THAT(settingsFindings(readSettings(project.get())).front().problem.toStdString(),
                HasSubstr("70000 gives 4464 minutes"));
}

TEST(SettingsFinding, NamesWhatIsWithoutEffect)
{
    EXPECT_THAT(settingsKinds(object()), ElementsAre("nothing-retained"));
    EXPECT_THAT(settingsKinds(*wholeAreaProject(0, 5)), ElementsAre("nothing-retained"));
    const auto both = perAddressProject({lw(0, 1)});
    both->children.front()->properties.clear();
    both->children.front()->setNumber("open Save all", 1);
    both->addChild("DataRetention");
    EXPECT_THAT(settingsKinds(*both), ElementsAre("second-retention-object", "entries-without-effect"));
}

} // namespace
