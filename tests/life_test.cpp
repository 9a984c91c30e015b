// Whole lives of panels: random projects, starts, changes and restarts, compared with the account of the
// rules after every step. SPDX-License-Identifier: MIT
#include "tests/support/kept_files_model.h"
#include "tests/support/module_test.h"
#include "tests/support/random_source.h"
#include "tests/support/storage.h"

#include <cstdlib>
#include <utility>

namespace {

using Files = std::array<std::optional<QByteArray>, 3>;

const std::array<const char*, 3> fileNames = {bitFileName, wordFileName, rwiFileName};

/// How many lives a run lives: the environment variable TEST_LIVES, or enough for every build.
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
        std::vector<Entry> entries(static_cast<std::size_t>(random.between(1, 14)));
        for (Entry& entry : entries) {
            entry.area = QString::fromLatin1(names[random.between(0, 7)]);
            entry.index = regions[random.between(0, 6)] + random.between(0, 60);
            entry.length = random.oneIn(12) ? random.between(-12, 0) : random.between(1, 25);
            for (const Entry& other : entries)
                if (other.area == entry.area && other.index == entry.index)
                    entry.length = other.length;
        }
        return entries;
    }

    /// Something that a person, another program or a broken medium may have done to a file while the panel
    /// was off.
    void disturb(std::size_t area)
    {
        std::optional<QByteArray>& file = files[area];
        switch (random.between(0, 9)) {
        case 0:
            file.reset();
            break;
        case 1:
            file = QByteArray();
            break;
        case 2:
            file = randomBytes(random.between(1, 60));
            break;
        case 3:
            if (file)
                file->chop(random.between(1, 9));
            break;
        case 4:
            if (file)
                file->append(randomBytes(random.between(1, 9)));
            break;
        default: // untouched
            return;
        }
        store(area, file);
    }

    QByteArray randomBytes(int length)
    {
        QByteArray bytes(length, '\0');
        for (char& byte : bytes)
            byte = random.oneIn(3) ? '\0' : static_cast<char>(random.between(0, 255));
        return bytes;
    }

    static void store(std::size_t area, const std::optional<QByteArray>& file)
    {
        const QString name = QLatin1String(fileNames[area]);
        QFile::remove(retentionPath(name));
        if (file)
            writeRetentionFile(name, *file);
    }

    /// Starts a new module, after an orderly end of the one before, on a host with values of its own.
    void start()
    {
        panel.reset();
        if (model)
            files = {model->file(0), model->file(1), model->file(2)};
        for (std::size_t a = 0; a < 3; ++a)
            disturb(a);
        project = perAddressProject(entries);
        panel = makePanel(project.get());
        cells = MemoryAreas();
        for (std::size_t a = 0; a < 3; ++a)
            for (int k = 0; k < 40; ++k)
                setBoth(a, interestingAddress(), valueOf());
        expectedCalls.clear();
        calls.clear();
        model = std::make_unique<KeptFilesModel>(expectedOf(*project), cells, files, &expectedCalls);
        panel->open();
        panel->init();
        model->open();
        model->init();
        expectCalls();
        expectFilesAndCells();
        expectWatched();
    }

    void change()
    {
        const auto area = static_cast<std::size_t>(random.between(0, 2));
        const int address = interestingAddress();
        for (int k = random.between(0, 3); k >= 0; --k)
            setBoth(area, address + k, valueOf());
        // A file that is not open yet can vanish or come back under the running module.
        if (!model->isOpen(area) && random.oneIn(4)) {
            model->replaceFile(area, random.oneIn(2)
                                         ? std::optional<QByteArray>(randomBytes(random.between(0, 9)))
                                         : std::nullopt);
            store(area, model->file(area));
        }
        const QString known = QLatin1String(areaNames[area]);
        const QString name = random.oneIn(20) ? known.toLower() : known;
        expectedCalls.clear();
        calls.clear();
        panel->reportChange(name, address);
        model->change(name.toLatin1() + '\0', address);
        step = QStringLiteral("change of %1 %2").arg(name).arg(address);
        expectCalls();
        expectFilesAndCells();
    }

    /// Most often near a block's beginning or end.
    int interestingAddress()
    {
        if (random.oneIn(8))
            return 60100;
        const Entry& entry =
            entries[static_cast<std::size_t>(random.between(0, static_cast<int>(entries.size()) - 1))];
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

    void setBoth(std::size_t area, int address, ushort value)
    {
        cells.all()[area].setCell(address, value);
        panel->areas.all()[area].setCell(address, value);
    }

    void expectCalls()
    {
        ASSERT_EQ(lines(callsTo({QStringLiteral("readRegisterValues"), QStringLiteral("writeRegisterValues"),
                                 QStringLiteral("sync")})),
                  lines(expectedCalls))
            << situation();
    }

    void expectFilesAndCells()
    {
        for (std::size_t a = 0; a < 3; ++a) {
            ASSERT_EQ(hex(retentionFile(QLatin1String(fileNames[a]))), hex(model->file(a)))
                << fileNames[a] << situation();
            const MemoryArea& memory = panel->areas.all()[a];
            for (const Entry& entry : entries)
                for (int address = entry.index - 2; address < entry.index + entry.length + 2; ++address)
                    ASSERT_EQ(memory.cell(address), cells.all()[a].cell(address))
                        << areaNames[a] << ' ' << address << situation();
        }
    }

    void expectWatched()
    {
        QList<RegisterValueChangeSize> records;
        panel->model->getMonitorTriggerAddr(records);
        QStringList watched;
        for (const RegisterValueChangeSize& record : std::as_const(records))
            watched.append(QStringLiteral("%1 %2").arg(QLatin1String(record.areaName)).arg(record.address));
        QStringList wanted;
        const ExpectedProject expected = expectedOf(*project);
        for (std::size_t a = 0; a < 3; ++a)
            for (const ExpectedBlock& block : expected.blocks[a])
                for (int j = 0; j < block.count; ++j)
                    wanted.append(QStringLiteral("%1 %2").arg(areaNames[a]).arg(block.entry.index + j));
        ASSERT_EQ(lines(watched), lines(wanted)) << situation();
    }

    std::string situation() const
    {
        std::string text = "\nlife " + std::to_string(life) + ", " + step.toStdString() + ", entries:";
        for (const Entry& entry : entries)
            text += " (" + entry.area.toStdString() + ' ' + std::to_string(entry.index) + ", " +
                    std::to_string(entry.length) + ")";
        return text;
    }

    RandomSource random;
    Files files;       ///< between two starts
    MemoryAreas cells; ///< of the account
    QStringList expectedCalls;
    std::unique_ptr<KeptFilesModel> model;
    std::vector<Entry> entries;
    std::unique_ptr<object> project;
    std::unique_ptr<Panel> panel;
    int life = 0;
    QString step;
};

TEST_F(Life, IsThatOfTheModelAfterEveryStartAndEveryChange)
{
    int starts = 0;
    int changes = 0;
    ASSERT_GT(livesToLive(), 0) << "TEST_LIVES";
    for (life = 0; life < livesToLive(); ++life) {
        panel.reset();
        model.reset();
        files = Files();
        for (std::size_t a = 0; a < 3; ++a)
            store(a, files[a]);
        for (int run = 0; run < 5; ++run, ++starts) {
            if (run == 0 || random.oneIn(3))
                entries = randomEntries();
            step = QStringLiteral("start %1").arg(run);
            ASSERT_NO_FATAL_FAILURE(start());
            for (int k = 0; k < 25; ++k, ++changes)
                ASSERT_NO_FATAL_FAILURE(change());
        }
    }
    std::cout << life << " lives, " << starts << " starts, " << changes << " changes\n";
}

} // namespace
