// Plants one fault after another in the plain module: the disk states must report exactly that fault, or
// cannot see it.
// SPDX-License-Identifier: MIT
#include "simulated_host/shell.h"
#include "tests/power_cut/disk_states/history.h"

#include <QtCore/QFile>
#include <QtCore/QRegularExpression>

#include <gtest/gtest.h>

#include <cstdlib>

namespace {

struct PlantedFault
{
    const char* name;
    const char* message; ///< what the first finding says, as a regular expression
};

void PrintTo(const PlantedFault& fault, std::ostream* out)
{
    *out << fault.name;
}

const PlantedFault faults[] = {
    {"no sync", "without a sync"},
    {"no sync for RWI", "RWI \\d+: the module returned without a sync"},
    {"no sync for the first cell of a block", "without a sync"},
    {"no sync when a block changes twice in a row", "without a sync"},
    {"no sync after 255 changes", "change 2[56]\\d of this life, .* without a sync"},
    {"no sync after 65535 changes", "change 655[34]\\d of this life, .* without a sync"},
    {"no sync after 255 saves", "change 25\\d of this life, save: .* without a sync"},
    {"sync runs before the write", "without a sync"},
    {"sync runs before the last area is saved", "save: the module returned without a sync"},
    {"a write waits for the next change", "was to be written as"},

    {"the watch list is empty", "for which the module has not asked.*was to be written as"},
    {"the watch list lacks RWI", "RWI \\d+ \\(for which the module has not asked.*was to be written as"},
    {"the watch list lacks the last cell of a block",
     "for which the module has not asked.*was to be written as"},
    {"zeros are left out", "(LW|RWI) \\d+ was to be written as"},
    {"a value with the same low byte is left out", "was to be written as"},
    {"cleared bits are left out", "LB \\d+ was to be written as 0, its file has 1"},
    {"bit 7 is left out", "LB \\d+ was to be written as"},
    {"bits past the first sector are left out", "LB \\d+ was to be written as"},
    {"the last cell of a block is left out", "was to be written as"},
    {"a long block ends at 4096 words", "was to be written as"},
    {"only the changed word is written", "was to be written as"},
    {"every third save leaves out RWI", "RWI was to be saved"},
    {"the last byte of an area is left out", "was to be saved"},
    {"every fiftieth change writes the values before",
     "change \\d*[05]0 of this life, .* was to be written as"},

    {"a bit clears its byte", "LB \\d+ (comes back as 0, promised was 1|is \\d after the start)"},
    {"change 1000 clears a word of another block", "after change 1000 of this life: .* comes back as 0"},
    {"a write is one cell too long", "comes back as 0, promised was|is not what the start must leave"},
    {"the restore is one cell too long",
     "after the start and must be \\d+, (as before: it is not retained|as its file says)"},
    {"the restore clears the bits of an empty byte", "LB \\d+ is 0 after the start and must be 1"},
    {"a missing file restores zeros", "is 0 after the start and must be"},
    {"LB 60100 is written", "LB 60100 comes back as"},

    {"a byte is changed in a stale copy",
     "LB \\d+ comes back as \\d, promised was \\d: that is its value before"},
    {"another sector comes from a stale copy", "was to be written as"},
    {"values as they were at the start are left out", "was to be written as"},
    {"sectors as they were at the start are not saved", "was to be saved"},

    {"the file is emptied and filled again for every change", "is \\d+ bytes long, it had"},
    {"a new file is renamed before it is synchronised", "is \\d+ bytes long, it had|comes back as"},
    {"a save removes the file and makes it again", "is gone"},
    {"a start empties files and fills them again",
     "is \\d+ bytes long, it had|neither that of the last save"},
    {"a start shortens longer files", "is not what the start must leave|bytes long, it had"},
    {"a start clears shorter files", "is 0 bytes long, it had|must be|is not what the start must leave"},
    {"a new file has no length", "is not what the start must leave|first start: .* must be 0"},

    {"the watch list is empty before the start has finished",
     "for which the module has not asked.*was to be written as"},
    {"the entries of a whole-area project are written into its images", "neither that of the last save"},
    {"zeros at the end of an area are not saved", "was to be saved"},
    {"a block's zero bits in a byte of two blocks are not restored",
     "LB \\d+ is 1 after the start and must be 0, as its file says"},
    {"a start writes a file that has become too short anew", "is \\d+ bytes long, it had|must leave"},
    {"the odd word of a double-word entry is left out",
     "has not asked.*was to be written as|(LW|RWI) .* as its file says"},
    {"a repeat of the last change is left out in another area too", "was to be written as"},
    {"an image with the same sum as the one before is not saved", "was to be saved"},
};

/// Correct ways to keep values, and faults that the disk states cannot see.
const PlantedFault unseen[] = {
    {"", "nothing is wrong"},
    {"a new file is synchronised and renamed", "nothing is wrong"},
    {"the file and its directory are synchronised", "nothing is wrong"},
    {"no sync after 100000 changes", "the longest life has some 70000"},
};

class Catalogue : public testing::TestWithParam<PlantedFault>
{
protected:
    /// The first finding in that many states.
    static QStringList firstFinding(qint64 states, quint64 seed)
    {
        static const ModuleLibrary library(QStringLiteral(PLAIN_MODULE_PATH));
        if (!library.isLoaded())
            return {library.error()};
        QFile source(QStringLiteral(PLAIN_MODULE_SOURCE));
        const QByteArray asked = QByteArray("(\"") + GetParam().name + "\")";
        if (!source.open(QIODevice::ReadOnly) || (*GetParam().name && !source.readAll().contains(asked)))
            return {QStringLiteral("the plain module does not know this fault")};
        setenv("PLANTED_FAULT", GetParam().name, 1);
        setCommandRunner({});
        Findings findings({});
        RunPlan plan = {states, seed, true};
        if (!QLatin1String(GetParam().name).startsWith(QLatin1String("no sync after ")))
            plan.changesOfLongLife = 2000, plan.savesOfLongLife = 60;
        runHistories(library, plan, findings, [](qint64) {});
        return findings.first();
    }
};

using FoundByDiskStates = Catalogue;

TEST_P(FoundByDiskStates, WithTheMessageOfThatFault)
{
    const QRegularExpression message(QString::fromLatin1(GetParam().message));
    for (const quint64 seed : {1U, 2U}) {
        const QString first = firstFinding(6000, seed).value(0);
        EXPECT_TRUE(message.match(first).hasMatch())
            << "seed " << seed << ": expected \"" << GetParam().message << "\", found \"" << qPrintable(first)
            << '"';
    }
}

INSTANTIATE_TEST_SUITE_P(Faults, FoundByDiskStates, testing::ValuesIn(faults));

using NotSeenByDiskStates = Catalogue;

TEST_P(NotSeenByDiskStates, InAFewThousandStates)
{
    EXPECT_EQ(firstFinding(2000, 1).value(0).toStdString(), "") << GetParam().message;
}

INSTANTIATE_TEST_SUITE_P(Unseen, NotSeenByDiskStates, testing::ValuesIn(unseen));

} // namespace
