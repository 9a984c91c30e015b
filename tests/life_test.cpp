// Runs lives of panels with random projects, starts, changes and restarts, and compares them with the model
// of the rules after every step, call by call.
// SPDX-License-Identifier: MIT
#include "tests/support/checked_life.h"
#include "tests/support/module_test.h"
#include "tests/support/random_source.h"

#include <algorithm>
#include <cstdlib>

namespace {

/// The number of lives: the environment variable TEST_LIVES, or enough for an ordinary build.
int livesToLive()
{
    const char* const asked = std::getenv("TEST_LIVES"); // NOLINT(concurrency-mt-unsafe): one thread
    return asked ? std::atoi(asked) : 300;
}

class Life : public ModuleTest
{
protected:
    Life() : random(printedSeed()) {}

    std::vector<Entry> randomEntries()
    {
        static const char* const names[] = {"LB", "LB", "LW", "LW", "RWI", "RWI", "lw", ""};
        static const int regions[] = {0, 0, 0, 40, 60090, 65520, -8};
        std::vector<Entry> made(static_cast<std::size_t>(random.between(1, 14)));
        for (Entry& entry : made) {
            entry.area = QString::fromLatin1(names[random.between(0, 7)]);
            entry.index = regions[random.between(0, 6)] + random.between(0, 60);
            entry.length = random.oneIn(12) ? random.between(-12, 0) : random.between(1, 25);
            for (const Entry& other : made)
                if (other.area == entry.area && other.index == entry.index)
                    entry.length = other.length; // so that the order of the two is specified
        }
        return made;
    }

    /// Something that a person, another program or a broken medium may have done to a file while the panel
    /// was off.
    void disturb(std::optional<QByteArray>& file)
    {
        const int what = random.between(0, 9);
        if (what == 0)
            file.reset();
        else if (what == 1)
            file = QByteArray();
        else if (what == 2)
            file = randomBytes(random.between(1, 60));
        else if (what == 3 && file)
            file->chop(random.between(1, 9));
        else if (what == 4 && file)
            file->append(randomBytes(random.between(1, 9)));
    }

    QByteArray randomBytes(int length)
    {
        QByteArray bytes(length, '\0');
        for (char& byte : bytes)
            byte = random.oneIn(3) ? '\0' : static_cast<char>(random.between(0, 255));
        return bytes;
    }

    /// Starts a new module, after an orderly end of the previous one, on a host with other values.
    void start()
    {
        if (life)
            files = life->files();
        life.reset();
        for (std::optional<QByteArray>& file : files)
            disturb(file);
        project = perAddressProject(entries);
        auto module = moduleLibrary().createModel(); // which creates the directory
        layFiles(files);
        MemoryAreas cells;
        for (MemoryArea& area : cells.all())
            for (int k = 0; k < 40; ++k)
                area.setCell(interestingAddress(), valueOf());
        life = std::make_unique<CheckedLife>(std::move(module), *project, cells, files, &calls);
        life->init();
        ASSERT_EQ(life->difference() + life->cellDifference(), "") << situation();
        std::vector<std::string> wanted;
        const ExpectedProject expected = expectedOf(*project);
        for (std::size_t a = 0; a < 3; ++a)
            for (const ExpectedBlock& block : expected.blocks[a])
                for (int j = 0; j < block.count; ++j)
                    wanted.push_back(testAreas[a].name + (' ' + std::to_string(block.entry.index + j)));
        ASSERT_EQ(watchedCells(*life->module), wanted) << situation();
    }

    void change()
    {
        const auto area = static_cast<std::size_t>(random.between(0, 2));
        const QString known = QLatin1String(testAreas[area].name);
        const int address = interestingAddress();
        for (int k = random.between(0, 3); k >= 0; --k)
            life->setCell(known, address + k, valueOf());
        // A file that is not open yet can vanish or reappear while the module runs.
        if (!life->account.isOpen(area) && random.oneIn(4)) {
            std::optional<QByteArray> other;
            if (random.oneIn(2))
                other = randomBytes(random.between(0, 9));
            life->account.replaceFile(area, other);
            layFile(area, other);
        }
        const QString name = random.oneIn(20) ? known.toLower() : known;
        step = QStringLiteral("change of %1 %2").arg(name).arg(address);
        life->report(changeMessage(name, address));
        ASSERT_EQ(life->difference(), "") << situation();
    }

    /// Most often near a block's beginning or end.
    int interestingAddress()
    {
        if (random.oneIn(8))
            return 60100;
        const Entry& entry = random.oneOf(entries);
        switch (random.between(0, 2)) {
        case 0:
            return entry.index + random.between(-2, 2);
        case 1:
            return entry.index + entry.length + random.between(-3, 2);
        default:
            return entry.index + random.between(0, std::max(0, entry.length));
        }
    }

    ushort valueOf() { return static_cast<ushort>(random.oneIn(3) ? 0 : random.between(0, 65535)); }

    std::string situation() const
    {
        std::string text = "\nlife " + std::to_string(lives) + ", " + step.toStdString() + ", entries:";
        for (const Entry& entry : entries)
            text += " (" + entry.area.toStdString() + ' ' + std::to_string(entry.index) + ", " +
                    std::to_string(entry.length) + ")";
        return text;
    }

    RandomSource random;
    Files files; ///< between two starts
    std::vector<Entry> entries;
    std::unique_ptr<object> project;
    std::unique_ptr<CheckedLife> life;
    int lives = 0;
    QString step;
};

TEST_F(Life, IsThatOfTheModelAfterEveryStartAndEveryChange)
{
    int starts = 0;
    int changes = 0;
    ASSERT_GT(livesToLive(), 0) << "TEST_LIVES";
    for (; lives < livesToLive(); ++lives) {
        life.reset();
        files = Files();
        for (int run = 0; run < 5; ++run, ++starts) {
            if (run == 0 || random.oneIn(3))
                entries = randomEntries();
            step = QStringLiteral("start %1").arg(run);
            ASSERT_NO_FATAL_FAILURE(start());
            for (int k = 0; k < 25; ++k, ++changes)
                ASSERT_NO_FATAL_FAILURE(change());
            ASSERT_EQ(life->cellDifference(), "") << situation();
        }
    }
    std::cout << lives << " lives, " << starts << " starts, " << changes << " changes\n";
}

} // namespace
