// Tests the enumeration of disk states: it has every state that a cut can leave, and no other.
// SPDX-License-Identifier: MIT
#include "tests/power_cut/disk_states/cut_states.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>

namespace {

using Kind = DiskOp::Kind;
using testing::UnorderedElementsAre;

const QString name = QStringLiteral("maintenance-word.dat");

/// A directory with one file, number 1.
Disk diskWith(const QByteArray& bytes)
{
    Disk disk;
    disk.directory = true;
    disk.names[name] = 1;
    disk.files[1] = {bytes, bytes.size()};
    return disk;
}

DiskOp data(qint64 offset, const QByteArray& bytes)
{
    return {Kind::Data, 1, {}, {}, 0, offset, bytes};
}

struct States
{
    std::set<QByteArray> contents; ///< of the file; "missing" and "no directory" without it
    bool complete = false;
};

States statesOf(const Disk& disk, const std::vector<DiskOp>& ops, int samples = 50)
{
    States states;
    RandomSource random(1);
    states.complete = forEachCutState(disk, ops, random, samples, [&](const DiskImage& image) {
        const auto file = image.files.find(name);
        if (!image.directory)
            states.contents.insert("no directory");
        else if (file == image.files.end())
            states.contents.insert("missing");
        else
            states.contents.insert(file->second);
    });
    return states;
}

/// The contents, of which none is missing.
std::set<QByteArray> allStatesOf(const Disk& disk, const std::vector<DiskOp>& ops)
{
    const States states = statesOf(disk, ops);
    EXPECT_TRUE(states.complete) << "some were left to chance";
    return states.contents;
}

TEST(CutStates, WithNothingPendingThereIsTheSyncedStateAlone)
{
    EXPECT_THAT(allStatesOf(diskWith("old"), {}), UnorderedElementsAre("old"));
}

TEST(CutStates, AWriteInOneSectorIsThereOrNot)
{
    EXPECT_THAT(allStatesOf(diskWith("old!"), {data(0, "new")}), UnorderedElementsAre("old!", "new!"));
}

TEST(CutStates, AWriteOverTwoSectorsIsTornBetweenThem)
{
    const QByteArray old(1024, 'o');
    const auto with = [&](const QByteArray& first, const QByteArray& second) {
        return old.left(510) + first + second + old.left(510);
    };
    EXPECT_THAT(allStatesOf(diskWith(old), {data(510, "abcd")}),
                UnorderedElementsAre(with("oo", "oo"), with("ab", "oo"), with("oo", "cd"), with("ab", "cd")));
}

TEST(CutStates, TwoWritesOfOneSectorArriveInAnyOrder)
{
    EXPECT_THAT(allStatesOf(diskWith("ooo"), {data(0, "aa"), data(1, "bb")}),
                UnorderedElementsAre("ooo", "aao", "obb", "abb", "aab"));
}

TEST(CutStates, AWriteOfTheBytesThatAreThereMattersOnlyBesideAnother)
{
    EXPECT_THAT(allStatesOf(diskWith("ooo"), {data(0, "o")}), UnorderedElementsAre("ooo"));
    EXPECT_THAT(allStatesOf(diskWith("ooo"), {data(0, "ab"), data(0, "o")}),
                UnorderedElementsAre("ooo", "abo", "obo"));
}

TEST(CutStates, ANewFileMayBeMissingEmptyOrOfItsLength)
{
    Disk disk;
    disk.directory = true;
    EXPECT_THAT(allStatesOf(disk, {{Kind::Make, 1, name}, {Kind::SetLength, 1, {}, {}, 3}}),
                UnorderedElementsAre("missing", "", QByteArray(3, '\0')));
}

TEST(CutStates, WithoutItsNewDirectoryThereIsNoFile)
{
    EXPECT_THAT(allStatesOf({}, {{Kind::MakeDirectory}, {Kind::Make, 1, name}}),
                UnorderedElementsAre("no directory", "missing", ""));
}

/// The record of writing these bytes past the end of a file.
std::vector<DiskOp> growingWrite(FileId file, qint64 offset, const QByteArray& bytes)
{
    return {{Kind::GrowTo, file, {}, {}, offset + bytes.size(), offset},
            {Kind::Data, file, {}, {}, 0, offset, bytes}};
}

/// Bytes that the medium had before, from that place of a file on.
QByteArray staleBytes(qint64 offset, qint64 count)
{
    return withStaleBytes({Kind::GrowTo, 1, {}, {}, offset + count, offset}).bytes;
}

TEST(CutStates, AWritePastTheEndMayLoseItsLengthItsBytesOrBoth)
{
    EXPECT_THAT(allStatesOf(diskWith("ab"), growingWrite(1, 2, "cd")),
                UnorderedElementsAre("ab", QByteArray("ab\0\0", 4), "ab" + staleBytes(2, 2), "abcd"));
}

TEST(CutStates, WhatTheFileHadAndWhatLiesBeforeAWriteIsNeverStale)
{
    EXPECT_THAT(allStatesOf(diskWith("ab"), growingWrite(1, 1, "cde")),
                UnorderedElementsAre("ab", "ac", QByteArray("ab\0\0", 4), "ab" + staleBytes(2, 2), "acde"));
    EXPECT_THAT(allStatesOf(diskWith("ab"), growingWrite(1, 4, "c")),
                UnorderedElementsAre("ab", QByteArray("ab\0\0\0", 5),
                                     QByteArray("ab\0\0", 4) + staleBytes(4, 1), QByteArray("ab\0\0c", 5)));
}

TEST(CutStates, PagesAreSpoiledAroundWritesAlone)
{
    const QByteArray old(3 * 4096, 'o');
    RandomSource random(1);
    EXPECT_FALSE(withSpoiledPages(diskWith(old), {}, random));
    const auto spoiled = withSpoiledPages(diskWith(old), {data(5000, "new")}, random);
    ASSERT_TRUE(spoiled);
    const QByteArray content = spoiled->files.at(name);
    EXPECT_EQ(content.left(4096), old.left(4096));
    EXPECT_LT(content.mid(4096, 4096).count('o'), 100);
    EXPECT_EQ(content.mid(2 * 4096), old.left(4096));
}

TEST(CutStates, AnEmptiedFileMayBeFoundEmpty)
{
    EXPECT_THAT(
        allStatesOf(diskWith("old"),
                    {{Kind::SetLength, 1, {}, {}, 0}, {Kind::GrowTo, 1, {}, {}, 3}, data(0, "new")}),
        testing::IsSupersetOf({QByteArray("old"), QByteArray(), QByteArray(3, '\0'), QByteArray("new")}));
}

TEST(CutStates, AFileRenamedOverAnotherMayLackItsBytes)
{
    Disk disk = diskWith("old");
    std::vector<DiskOp> ops = growingWrite(2, 0, "new");
    ops.insert(ops.begin(), {Kind::Make, 2, QStringLiteral("new")});
    ops.push_back({Kind::Rename, 0, QStringLiteral("new"), name});
    EXPECT_THAT(allStatesOf(disk, ops),
                UnorderedElementsAre("old", "", QByteArray(3, '\0'), staleBytes(0, 3), "new"));
}

TEST(CutStates, ManySectorsAreSampledWithBothEndsAmongThem)
{
    const QByteArray old(20 * 512, 'o');
    const QByteArray fresh(20 * 512, 'f');
    const States states = statesOf(diskWith(old), {data(0, fresh)}, 200);
    EXPECT_FALSE(states.complete);
    EXPECT_THAT(states.contents, testing::IsSupersetOf({old, fresh}));
    EXPECT_GT(states.contents.size(), 100U);
    for (const QByteArray& content : states.contents)
        for (int sector = 0; sector < 20; ++sector)
            EXPECT_THAT(content.mid(sector * 512, 512), testing::AnyOf(old.left(512), fresh.left(512)));
}

TEST(CutStates, SectorsThatKeepTheirBytesDoNotCount)
{
    const QByteArray old(20 * 512, 'o');
    QByteArray fresh = old;
    fresh[5000] = 'f';
    const States states = statesOf(diskWith(old), {data(0, fresh)});
    EXPECT_TRUE(states.complete);
    EXPECT_THAT(states.contents, UnorderedElementsAre(old, fresh));
}

} // namespace
