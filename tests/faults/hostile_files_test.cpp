// Things that are no retention files in the place of one: the module must neither wait for them nor stop, and
// the other areas are retained as ever.
// SPDX-License-Identifier: MIT
#include "tests/support/module_test.h"

#include <QtCore/QDir>
#include <QtCore/QFile>

#include <sys/stat.h>
#include <unistd.h>

namespace {

enum class Thing
{
    Fifo,
    Directory,
    LinkToFullDevice,
    LinkToItself,
    LinkToNowhere,
    Socket
};

struct Place
{
    Thing thing;
    const char* fileName;
};

void PrintTo(const Place& place, std::ostream* out)
{
    *out << "thing " << static_cast<int>(place.thing) << " as " << place.fileName;
}

void putThing(const Place& place)
{
    QDir().mkpath(QLatin1String(fixedProjectDirectory));
    const QByteArray path = retentionPath(QLatin1String(place.fileName)).toLatin1();
    switch (place.thing) {
    case Thing::Fifo:
        ASSERT_EQ(mkfifo(path.constData(), 0600), 0);
        break;
    case Thing::Directory:
        ASSERT_TRUE(QDir().mkpath(QString::fromLatin1(path)));
        break;
    case Thing::LinkToFullDevice:
        ASSERT_EQ(symlink("/dev/full", path.constData()), 0);
        break;
    case Thing::LinkToItself:
        ASSERT_EQ(symlink(path.constData(), path.constData()), 0);
        break;
    case Thing::LinkToNowhere:
        ASSERT_EQ(symlink("/usr/tavrin/missing/file", path.constData()), 0);
        break;
    case Thing::Socket:
        ASSERT_EQ(mknod(path.constData(), S_IFSOCK | 0600, 0), 0);
        break;
    }
}

struct stat statusOf(const char* fileName)
{
    struct stat status = {};
    EXPECT_EQ(lstat(retentionPath(QLatin1String(fileName)).toLatin1().constData(), &status), 0);
    return status;
}

class HostileFiles : public ModuleTest, public testing::WithParamInterface<Place>
{
protected:
    HostileFiles() { alarm(30); } // instead of waiting for ever
    ~HostileFiles() override { alarm(0); }

    bool isHostile(const char* fileName) const { return qstrcmp(fileName, GetParam().fileName) == 0; }
};

TEST_P(HostileFiles, StopNoPerAddressLifeAndCostNoOtherArea)
{
    putThing(GetParam());
    const struct stat before = statusOf(GetParam().fileName);
    const auto project = perAddressProject(
        {{QStringLiteral("LB"), 0, 8}, {QStringLiteral("LW"), 0, 2}, {QStringLiteral("RWI"), 0, 2}});
    for (const ushort value : {1, 0, 1}) {
        auto panel = startPanel(project.get());
        calls.clear();
        panel->setCells(QStringLiteral("LB"), 3, {value});
        panel->setCells(QStringLiteral("LW"), 1, {value});
        panel->setCells(QStringLiteral("RWI"), 1, {value});
        EXPECT_EQ(syncs(), 3);
        panel.reset();
        const auto word = QByteArray(2, '\0') + static_cast<char>(value) + '\0';
        if (!isHostile(bitFileName)) {
            EXPECT_EQ(retentionFile(bitFileName)->at(0), value << 3);
        }
        if (!isHostile(wordFileName)) {
            EXPECT_EQ(retentionFile(wordFileName), word);
        }
        if (!isHostile(rwiFileName)) {
            EXPECT_EQ(retentionFile(rwiFileName), word);
        }
    }
    EXPECT_EQ(statusOf(GetParam().fileName).st_ino, before.st_ino) << "it was replaced";
    EXPECT_EQ(statusOf(GetParam().fileName).st_mode, before.st_mode);
}

TEST_P(HostileFiles, StopNoWholeAreaLifeAndCostNoOtherArea)
{
    putThing(GetParam());
    const auto project = wholeAreaProject(1, 5);
    for (const ushort value : {1, 0, 1}) {
        auto panel = startPanel(project.get());
        calls.clear();
        for (MemoryArea& area : panel->areas.all())
            area.setCell(100, value);
        panel->model->cyclicRun();
        EXPECT_EQ(syncs(), 1);
        panel.reset();
        if (!isHostile(bitFileName)) {
            EXPECT_EQ(retentionFile(bitFileName)->at(100), value);
        }
        if (!isHostile(wordFileName)) {
            EXPECT_EQ(retentionFile(wordFileName)->at(200), value);
        }
        if (!isHostile(rwiFileName)) {
            EXPECT_EQ(retentionFile(rwiFileName)->at(200), value);
        }
    }
    statusOf(GetParam().fileName);
}

std::vector<Place> everyPlace()
{
    std::vector<Place> places;
    for (const Thing thing : {Thing::Fifo, Thing::Directory, Thing::LinkToFullDevice, Thing::LinkToItself,
                              Thing::LinkToNowhere, Thing::Socket})
        for (const char* const fileName : {bitFileName, wordFileName, rwiFileName})
            places.push_back({thing, fileName});
    return places;
}

INSTANTIATE_TEST_SUITE_P(InEveryPlace, HostileFiles, testing::ValuesIn(everyPlace()));

} // namespace
