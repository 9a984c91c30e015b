// Tests other things in place of a retention file: the module must neither wait for them nor stop, and must
// retain the other areas.
// SPDX-License-Identifier: MIT
#include "tests/support/module_test.h"
#include "tests/support/storage.h"

#include <QtCore/QDir>
#include <QtCore/QFile>

#include <climits>
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

QByteArray linkTarget(const QByteArray& path)
{
    char target[PATH_MAX] = {};
    return {target, static_cast<int>(qMax<ssize_t>(0, readlink(path.constData(), target, sizeof target)))};
}

/// Everything that identifies the thing: inode, kind, mode, link target, contents.
std::string identityOf(const char* fileName)
{
    const QByteArray path = retentionPath(QLatin1String(fileName)).toLatin1();
    struct stat status = {};
    if (lstat(path.constData(), &status) != 0)
        return "it is gone";
    QStringList held;
    if (S_ISDIR(status.st_mode))
        held =
            QDir(QString::fromLatin1(path)).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
    return "inode " + std::to_string(status.st_ino) + ", mode " + std::to_string(status.st_mode) + ", " +
           std::to_string(status.st_nlink) + " names, " + std::to_string(status.st_size) + " bytes, to " +
           linkTarget(path).constData() + ", holding " + lines(held);
}

/// The targets of the links in these tests.
std::string identityOfTargets()
{
    struct stat full = {};
    stat("/dev/full", &full);
    return "device " + std::to_string(full.st_rdev) + ", mode " + std::to_string(full.st_mode) +
           (QFile::exists(QStringLiteral("/usr/tavrin/missing")) ? ", and a file nowhere" : "");
}

class HostileFiles : public ModuleTest, public testing::WithParamInterface<Place>
{
protected:
    HostileFiles() { alarm(30); } // instead of hanging
    ~HostileFiles() override { alarm(0); }

    void SetUp() override
    {
        ASSERT_NO_FATAL_FAILURE(putThing(GetParam()));
        before = identityOf(GetParam().fileName);
        targetsBefore = identityOfTargets();
    }

    void TearDown() override
    {
        EXPECT_EQ(identityOf(GetParam().fileName), before);
        EXPECT_EQ(identityOfTargets(), targetsBefore);
    }

    static bool isHostile(std::size_t area)
    {
        return qstrcmp(testAreas[area].fileName, GetParam().fileName) == 0;
    }

    /// Checks that the cell is `value` in every area with a regular file.
    static void expectCells(Panel& panel, int address, ushort value)
    {
        for (std::size_t a = 0; a < testAreas.size(); ++a)
            if (!isHostile(a)) {
                EXPECT_EQ(panel.areas.all()[a].cell(address), value) << testAreas[a].name;
            }
    }

    static void expectFiles(const std::array<QByteArray, 3>& expected)
    {
        for (std::size_t a = 0; a < testAreas.size(); ++a)
            if (!isHostile(a)) {
                EXPECT_EQ(retentionFile(QLatin1String(testAreas[a].fileName)), expected[a])
                    << testAreas[a].name;
            }
    }

private:
    std::string before, targetsBefore;
};

TEST_P(HostileFiles, StopNoPerAddressLifeAndCostNoOtherArea)
{
    const auto project = perAddressProject({{LB, 0, 8}, {LW, 0, 2}, {RWI, 0, 2}});
    ushort last = 0;
    for (const ushort value : {1, 0, 1}) {
        auto panel = startPanel(project.get());
        expectCells(*panel, 1, last);
        calls.clear();
        for (const TestArea& area : testAreas)
            panel->setCells(QLatin1String(area.name), 1, {value});
        EXPECT_EQ(syncs(), 3);
        panel.reset();
        const auto word = QByteArray(2, '\0') + static_cast<char>(value) + '\0';
        expectFiles({QByteArray(1, static_cast<char>(value << 1)) + '\0', word, word});
        last = value;
    }
}

TEST_P(HostileFiles, StopNoWholeAreaLifeAndCostNoOtherArea)
{
    const auto project = wholeAreaProject(1, 5);
    ushort last = 0;
    for (const ushort value : {1, 0, 1}) {
        auto panel = startPanel(project.get());
        expectCells(*panel, 100, last);
        calls.clear();
        for (MemoryArea& area : panel->areas.all())
            area.setCell(100, value);
        panel->model->cyclicRun();
        EXPECT_EQ(syncs(), 1);
        panel.reset();
        const auto one = QByteArray(1, static_cast<char>(value));
        const auto words = QByteArray(131072, '\0').replace(200, 1, one);
        expectFiles({QByteArray(65536, '\0').replace(100, 1, one), words, words});
        last = value;
    }
}

std::vector<Place> everyPlace()
{
    std::vector<Place> places;
    for (const Thing thing : {Thing::Fifo, Thing::Directory, Thing::LinkToFullDevice, Thing::LinkToItself,
                              Thing::LinkToNowhere, Thing::Socket})
        for (const TestArea& area : testAreas)
            places.push_back({thing, area.fileName});
    return places;
}

INSTANTIATE_TEST_SUITE_P(InEveryPlace, HostileFiles, testing::ValuesIn(everyPlace()));

} // namespace
