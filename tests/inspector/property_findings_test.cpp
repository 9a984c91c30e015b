// Tests findings about properties that the module does not read, or reads as their defaults.
// SPDX-License-Identifier: MIT
#include "project_tree/project_reader.h"
#include "tests/support/module_test.h"
#include "tools/retention_core/findings.h"

#include <QtCore/QBuffer>

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

/// Each as "SEVERITY KIND: PLACE: PROBLEM -> REMEDY".
std::vector<std::string> findingsOf(const QByteArray& insideDataRetention, const char* name = "DataRetention")
{
    QByteArray xml = "<object name='project'><object name='" + QByteArray(name) + "'>" + insideDataRetention +
                     "</object></object>";
    QBuffer device(&xml);
    device.open(QIODevice::ReadOnly);
    const ProjectReading reading = readProject(device, "project.xml");
    EXPECT_TRUE(reading.project) << reading.error.toStdString();
    std::vector<std::string> texts;
    for (const Finding& finding : propertyFindings(readSettings(reading.project.get())))
        texts.push_back((finding.severity == Finding::Severity::Error ? "error " : "warning ") +
                        std::string(finding.kind) + ": " +
                        (finding.place + ": " + finding.problem + " -> " + finding.remedy).toStdString());
    return texts;
}

QByteArray number(const char* name, int value)
{
    return "<property name='" + QByteArray(name) + "' type='int32'>" + QByteArray::number(value) +
           "</property>";
}

QByteArray text(const char* name, const char* value)
{
    return "<property name='" + QByteArray(name) + "' type='string'>" + value + "</property>";
}

const QByteArray saveAllOff = number("open Save all", 0);

QByteArray entry(const QByteArray& own, const QByteArray& source, const char* sourceName = "sourceAddress")
{
    return "<object name='recipe'>" + own + "<object name='" + sourceName + "'>" + source +
           "</object></object>";
}

TEST(PropertyFindings, LeaveDefaultsThatNoFileDependsOnToANote)
{
    const auto noteOf = [](const QByteArray& source) {
        QByteArray xml =
            "<object name='p'><object name='DataRetention'>" + saveAllOff +
            entry(number("addressLength", 2), text("Block", "LW") + number("index", 1) + source) +
            "</object></object>";
        QBuffer device(&xml);
        device.open(QIODevice::ReadOnly);
        return defaultsNote(readSettings(readProject(device, QString()).project.get())).toStdString();
    };
    EXPECT_THAT(noteOf(text("No", "") + number("length", 0)),
                HasSubstr("do not set \"addressType\", \"Link\", \"station\", \"Bit_or_Word\"."));
    EXPECT_THAT(noteOf(text("Linc", "")), testing::Not(HasSubstr("\"Link\""))) << "that is a finding";
}

TEST(PropertyFindings, AreNoneWhereEverythingIsRead)
{
    const QByteArray whole = number("open Save all", 1) + number("Save Time", 5);
    EXPECT_THAT(findingsOf(whole), IsEmpty());
    const QByteArray all = text("Link", "") + text("Block", "LW") + text("No", "") + number("index", 1) +
                           number("station", 0) + number("length", 0) + number("Bit_or_Word", 0);
    EXPECT_THAT(findingsOf(saveAllOff + entry(number("addressLength", 2) + text("addressType", "Word"), all)),
                IsEmpty());
    EXPECT_THAT(
        findingsOf(saveAllOff + entry(number("addressLength", 2), text("Block", "LW") + number("index", 1))),
        IsEmpty())
        << "what the files do not depend on may be left out";
}

TEST(PropertyFindings, NameWhatIsMissing)
{
    EXPECT_THAT(findingsOf(entry(number("addressLength", 2), text("Block", "LW"))),
                ElementsAre(HasSubstr("warning property-missing: \"DataRetention\": it has no \"open Save "
                                      "all\", so the module uses 0. -> Add"),
                            HasSubstr("error property-missing: entry 1 \"recipe\": its \"sourceAddress\" has "
                                      "no \"index\", so the module uses 0.")));
    EXPECT_THAT(
        findingsOf(number("open Save all", 1)),
        ElementsAre(HasSubstr(
            "warning property-missing: \"DataRetention\": it has no \"Save Time\", so the module uses 5.")));
}

TEST(PropertyFindings, NameWhatIsMisspelt)
{
    EXPECT_THAT(
        findingsOf(number("open save all", 1) +
                   entry(number("addressLength", 2), text("Block", "LW") + number("Index", 7))),
        ElementsAre(
            HasSubstr("error property-misspelt: \"DataRetention\": the module does not read \"open save "
                      "all\"; it reads \"open Save all\", which is missing, so it uses 0. -> Rename it"),
            HasSubstr("error property-misspelt: entry 1 \"recipe\": the module does not read \"Index\" in "
                      "its \"sourceAddress\"; it reads \"index\", which is missing, so it uses 0.")));
    EXPECT_THAT(
        findingsOf(saveAllOff + entry(number("adressLength", 2), text("Block", "LW") + number("index", 7))),
        ElementsAre(HasSubstr("the module does not read \"adressLength\"; it reads \"addressLength\", which "
                              "is missing, so it uses 0.")));
}

TEST(PropertyFindings, NameWhatHasTheWrongType)
{
    EXPECT_THAT(
        findingsOf(text("open Save all", "1") +
                   entry(number("addressLength", 2), number("Block", 3) + text("index", "7"))),
        ElementsAre(
            HasSubstr("error property-wrong-type: \"DataRetention\": \"open Save all\" is a string, not a "
                      "number, so the module uses 0."),
            HasSubstr("error property-wrong-type: entry 1 \"recipe\": \"Block\" in its \"sourceAddress\" is "
                      "a number, not a string, so the module uses an empty string."),
            HasSubstr("error property-wrong-type: entry 1 \"recipe\": \"index\" in its")));
}

TEST(PropertyFindings, NameWhatIsNotReadOnceForAllEntries)
{
    const QByteArray one =
        entry(number("addressLength", 1) + text("comment", "x"), text("Block", "LW") + number("index", 7));
    EXPECT_THAT(
        findingsOf(saveAllOff + number("version", 2) + one + one + one),
        ElementsAre(
            HasSubstr("warning property-not-read: \"DataRetention\": the module does not read \"version\"."),
            HasSubstr("warning property-not-read: entries 1 \"recipe\", 2 \"recipe\" and 3 \"recipe\": the "
                      "module does not read \"comment\".")));
}

TEST(PropertyFindings, NameObjectsThatAreNotRead)
{
    EXPECT_THAT(
        findingsOf(saveAllOff + entry(number("addressLength", 1), text("Block", "LW"), "SourceAddress")),
        ElementsAre(HasSubstr("error object-misspelt: entry 1 \"recipe\": the module does not read the "
                              "object \"SourceAddress\"; it looks for \"sourceAddress\". -> Rename it")));
    EXPECT_THAT(findingsOf(saveAllOff, "dataRetention"),
                ElementsAre(HasSubstr("error object-misspelt: project: the module does not read the object "
                                      "\"dataRetention\"; it looks for \"DataRetention\".")));
    EXPECT_THAT(findingsOf("<object name='DataRetention'/>", "settings"),
                ElementsAre(HasSubstr("error object-misplaced: project: the object \"DataRetention\" is "
                                      "inside \"settings\", where the module does not look for it.")));
    EXPECT_THAT(findingsOf(saveAllOff + "<object name='e'>" + number("addressLength", 1) +
                           "<object name='sourceAddress'>" + text("Block", "LW") + number("index", 1) +
                           "</object><object name='sourceAddress'/></object>"),
                ElementsAre(HasSubstr("warning object-not-read: entry 1 \"e\": the module does not read the "
                                      "object \"sourceAddress\"")));
}

TEST(PropertyFindings, LeaveEntriesAloneThatHaveNoEffect)
{
    EXPECT_THAT(findingsOf(number("open Save all", 1) + number("Save Time", 5) + "<object name='e'/>"),
                IsEmpty());
}

} // namespace
