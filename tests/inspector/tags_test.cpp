// Tests tags: what their file may contain, and the findings about the values that they name.
// SPDX-License-Identifier: MIT
#include "tests/inspector/layout_of.h"
#include "tests/support/tool_test.h"
#include "tools/retention_core/refusal.h"
#include "tools/retention_core/tags.h"

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

const char* const header = "area,address,type,name,unit\n";

class TagsFile : public ToolTest
{
protected:
    TagsFile() : ToolTest(RETENTION_INSPECTOR_PATH) {}

    static Tags tags(const QByteArray& text)
    {
        write("tags.csv", text);
        return readTags("tags.csv");
    }

    std::string refusal(const QByteArray& text)
    {
        try {
            tags(text);
        } catch (const Refusal& refusal) {
            return refusal.message().toStdString();
        }
        return "none";
    }

    /// Such as "crosses-sector LW 255 to 256".
    std::vector<std::string> findings(const std::vector<Entry>& entries, const QByteArray& lines)
    {
        const auto project = entries.empty() ? wholeAreaProject(1, 5) : perAddressProject(entries);
        std::vector<std::string> texts;
        for (const Finding& finding : tagFindings(layoutOf(*project), tags(header + lines)))
            texts.push_back(std::string(finding.kind) + ' ' + finding.area.toStdString() + ' ' +
                            finding.cells.text().toStdString());
        return texts;
    }
};

TEST_F(TagsFile, NamesValuesInAnyOrderAndWithFurtherColumns)
{
    const Tags read = tags("Name,comment,type,AREA,address,unit\n"
                           "count,x,int16,RWI,7,pcs\n"
                           "\"a, b\",,string:5,LW,9,\n"
                           "lamp,,bit,LB,60100,\n"
                           "level,,float:high-first,LW,3,mm\n");
    ASSERT_EQ(read.tags.size(), 4U);
    EXPECT_EQ(read.tags[1].name, "level");
    EXPECT_EQ(read.tags[1].type.text(), "float:high-first");
    EXPECT_EQ(valueTypeOf("int32:low-first").text(), "int32") << "the usual order";
    EXPECT_THROW(valueTypeOf("int32:low-first:high-first"), Refusal);
    EXPECT_THROW(valueTypeOf("int32:middle-first"), Refusal);
    EXPECT_EQ(read.tags[1].line, 5);
    EXPECT_EQ(read.of(areaFacts[1], 4), &read.tags[1]);
    EXPECT_EQ(read.of(areaFacts[1], 5), nullptr);
    EXPECT_EQ(read.of(areaFacts[1], 11), &read.tags[2]);
    EXPECT_EQ(read.of(areaFacts[1], 12), nullptr);
    EXPECT_EQ(read.of(areaFacts[2], 7)->unit, "pcs");
    EXPECT_EQ(read.of(areaFacts[0], 60100)->name, "lamp");
}

TEST_F(TagsFile, ErrorsNameTheLineAndWhatToDo)
{
    const std::string all = refusal(QByteArray(header) + "LX,1,int16,a,\n"
                                                         "LW,-1,int16,a,\n"
                                                         "LW,1,int17,a,\n"
                                                         "LW,2,string,a,\n"
                                                         "LW,3,int16:high-first,a,\n"
                                                         "LW,4,int32:swapped,a,\n"
                                                         "LB,5,int16,a,\n"
                                                         "LW,65535,int32,a,\n"
                                                         "LW,6,int16,,\n"
                                                         "LW,100,string:8,text,\n"
                                                         "LW,103,int16,inside,\n");
    for (const char* message :
         {"tags.csv:2: area \"LX\": expected LB, LW or RWI",
          "tags.csv:3: address \"-1\": expected a number from 0",
          "tags.csv:4: type \"int17\": expected bit, int16",
          "tags.csv:5: type \"string\": expected a length in bytes",
          "tags.csv:6: type \"int16:high-first\": a single word",
          "tags.csv:7: type \"int32:swapped\": expected",
          "tags.csv:8: the type int16 does not fit LB, whose cells are bits; change the type or the area",
          "tags.csv:9: int32 at address 65535 extends beyond the end of the area",
          "tags.csv:10: the tag has no name; add one",
          "tags.csv:12: LW 103 already belongs to \"text\" of line 11; correct one of the two"})
        EXPECT_THAT(all, HasSubstr(message));
    EXPECT_THAT(refusal("area,address,name\n"), HasSubstr("tags.csv:1: there is no column \"type\""));
    EXPECT_THROW(readTags("/nowhere.csv"), Refusal);
}

TEST_F(TagsFile, FindsValuesAcrossTheSectorsOfTheirFile)
{
    // Word 256 of a file begins at byte 512.
    const QByteArray pairs = "LW,254,int32,below,\nLW,256,int32,above,\nLW,511,float,across,\n";
    EXPECT_THAT(findings({}, pairs), ElementsAre("crosses-sector LW 511 to 512"));
    EXPECT_THAT(findings({{LW, 1, 600}}, pairs), ElementsAre("crosses-sector LW 256 to 257"));
    EXPECT_THAT(findings({{LW, 0, 10}, {LW, 100, 600}}, pairs), IsEmpty());
    EXPECT_THAT(findings({}, "RWI,0,string:512,fits,\nRWI,256,string:513,long,\n"),
                ElementsAre("crosses-sector RWI 256 to 512"));
    EXPECT_THAT(findings({}, "LB,511,bit,a,\nLB,512,bit,b,\n"), IsEmpty());
}

TEST_F(TagsFile, FindsValuesThatAreRetainedByHalf)
{
    const std::vector<Entry> entries = {{LW, 100, 10}, {LW, 110, 5}};
    EXPECT_THAT(
        findings(entries, "LW,99,int32,head,\nLW,114,float,tail,\nLW,103,int32,whole,\nLW,300,int32,none,\n"),
        ElementsAre("half-retained LW 99 to 100", "half-retained LW 114 to 115"));
}

TEST_F(TagsFile, FindsValuesInTwoBlocks)
{
    const std::vector<Entry> entries = {{LW, 100, 10}, {LW, 110, 5}};
    EXPECT_THAT(findings(entries, "LW,109,int32,seam,\nLW,111,int32,next,\n"),
                ElementsAre("split-over-blocks LW 109 to 110"));
}

} // namespace
