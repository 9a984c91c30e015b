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

struct Thing
{
    const char* name;
    int (*put)(const char* path); ///< 0 when it succeeds
};

const Thing things[] = {
    {"a FIFO", [](const char* path) { return mkfifo(path, 0600); }},
    {"a directory", [](const char* path) { return mkdir(path, 0700); }},
    {"a link to a full device", [](const char* path) { return symlink("/dev/full", path); }},
    {"a link to itself", [](const char* path) { return symlink(path, path); }},
    {"a link to nowhere", [](const char* path) { return symlink("/usr/tavrin/missing/file", path); }},
    {"a socket", [](const char* path) { return mknod(path, S_IFSOCK | 0600, 0); }},
};

struct Place
{
    Thing thing;
    const char* fileName;
};

void PrintTo(const Place& place, std::ostream* out)
{
    *out << place.thing.name << " as " << place.fileName;
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
        QDir().mkpath(QLatin1String(fixedProjectDirectory));
        const QByteArray path = retentionPath(QLatin1String(GetParam().fileName)).toLatin1();
        ASSERT_EQ(GetParam().thing.put(path.constData()), 0);
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
    for (const Thing& thing : things)
        for (const TestArea& area : testAreas)
            places.push_back({thing, area.fileName});
    return places;
}

INSTANTIATE_TEST_SUITE_P(InEveryPlace, HostileFiles, testing::ValuesIn(everyPlace()));

} // namespace
