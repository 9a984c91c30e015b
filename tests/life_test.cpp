// Whole lives of panels: random projects, starts, changes and restarts, compared with the model after every
// step.
// SPDX-License-Identifier: MIT
#include "tests/support/module_test.h"
#include "tests/support/random_source.h"
#include "tests/support/retention_model.h"
#include "tests/support/storage.h"

#include <cstdlib>

namespace {

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
    void disturb(ModelArea& area)
    {
        switch (random.between(0, 9)) {
        case 0:
            area.file.reset();
            break;
        case 1:
            area.file = QByteArray();
            break;
        case 2:
            area.file = randomBytes(random.between(1, 60));
            break;
        case 3:
            if (area.file)
                area.file->chop(random.between(1, 9));
            break;
        case 4:
            if (area.file)
                area.file->append(randomBytes(random.between(1, 9)));
            break;
        default: // untouched
            return;
        }
        store(area);
    }

    QByteArray randomBytes(int length)
    {
        QByteArray bytes(length, '\0');
        for (char& byte : bytes)
            byte = random.oneIn(3) ? '\0' : static_cast<char>(random.between(0, 255));
        return bytes;
    }

    static void store(const ModelArea& area)
    {
        QFile::remove(retentionPath(area.fileName));
        if (area.file)
            writeRetentionFile(area.fileName, *area.file);
    }

    /// Starts a new module, after an orderly end of the one before, on a host with values of its own.
    void start()
    {
        panel.reset();
        for (ModelArea& area : model.areas) {
            disturb(area);
            area.cells.assign(area.cells.size(), 0);
        }
        project = perAddressProject(entries);
        panel = makePanel(project.get());
        for (ModelArea& area : model.areas)
            for (int k = 0; k < 40; ++k)
                setBoth(area, interestingAddress(), valueOf());
        calls.clear();
        panel->open();
        panel->init();
        expectCalls(model.start(entries));
        expectFilesAndCells();
        expectWatched();
    }

    void change()
    {
        ModelArea& area = model.areas[static_cast<std::size_t>(random.between(0, 2))];
        const int address = interestingAddress();
        for (int k = random.between(0, 3); k >= 0; --k)
            setBoth(area, address + k, valueOf());
        // A file that is not open yet can vanish or come back under the running module.
        if (!area.isOpen && random.oneIn(4)) {
            area.file =
                random.oneIn(2) ? std::optional<QByteArray>(randomBytes(random.between(0, 9))) : std::nullopt;
            store(area);
        }
        const QString name = random.oneIn(20) ? area.name.toLower() : area.name;
        calls.clear();
        panel->reportChange(name, address);
        step = QStringLiteral("change of %1 %2").arg(name).arg(address);
        expectCalls(model.change(name, address));
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

    void setBoth(ModelArea& area, int address, ushort value)
    {
        model.setCell(area, address, value);
        panel->areas.named(area.name)->setCell(address, value);
    }

    void expectCalls(const QStringList& expected)
    {
        ASSERT_EQ(lines(callsTo({QStringLiteral("readRegisterValues"), QStringLiteral("writeRegisterValues"),
                                 QStringLiteral("sync")})),
                  lines(expected))
            << situation();
    }

    void expectFilesAndCells()
    {
        for (const ModelArea& area : model.areas) {
            ASSERT_EQ(hex(retentionFile(area.fileName)), hex(area.file))
                << area.fileName.toStdString() << situation();
            const MemoryArea& memory = *panel->areas.named(area.name);
            for (const Entry& entry : entries)
                for (int address = entry.index - 2; address < entry.index + entry.length + 2; ++address)
                    ASSERT_EQ(memory.cell(address).value_or(0), cellOf(area, address))
                        << area.name.toStdString() << ' ' << address << situation();
        }
    }

    void expectWatched()
    {
        QList<RegisterValueChangeSize> records;
        panel->model->getMonitorTriggerAddr(records);
        QStringList cells;
        for (const RegisterValueChangeSize& record : qAsConst(records))
            cells.append(QStringLiteral("%1 %2").arg(QLatin1String(record.areaName)).arg(record.address));
        ASSERT_EQ(lines(cells), lines(model.watched())) << situation();
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
    RetentionModel model;
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
        model = RetentionModel();
        for (ModelArea& area : model.areas)
            store(area);
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
