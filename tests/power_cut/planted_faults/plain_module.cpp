// Keeps values as the shipped module does, in the plainest way, with the fault that the environment variable
// PLANTED_FAULT names, if any. It shares only the runtime's interface with that module.
// SPDX-License-Identifier: MIT
#include "host_interface/host_interface.h"
#include "tests/support/literal_rules.h"

#include <QtCore/QDir>
#include <QtCore/QFile>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <functional>
#include <map>
#include <numeric>
#include <string>
#include <unistd.h>
#include <utility>
#include <vector>

namespace {

const char* const folder = "/usr/tavrin/project";
const int sectorBytes = 512;

struct AreaFacts
{
    const char* name;
    const char* path;
    int code;
    int imageBytes;
};
const std::array<AreaFacts, 3> facts = {{
    {"LB", "/usr/tavrin/project/maintenance-bit.dat", 1, 65536},
    {"LW", "/usr/tavrin/project/maintenance-word.dat", 0, 131072},
    {"RWI", "/usr/tavrin/project/maintenance-RWI.dat", 2, 131072},
}};

struct Block
{
    std::size_t area;
    int first;
    int count;
    int place; ///< cells of the area before it
};

struct Change
{
    std::size_t area;
    int address;
};

/// The file, then the directory that has its name.
void syncItself(int file)
{
    fdatasync(file);
    const int directory = open(folder, O_RDONLY | O_DIRECTORY);
    fsync(directory);
    close(directory);
}

class PlainModule : public ExtendFuncModelBase
{
public:
    PlainModule() : fault(std::getenv("PLANTED_FAULT") ? std::getenv("PLANTED_FAULT") : "")
    {
        QDir().mkpath(QString::fromLatin1(folder));
    }

    ~PlainModule() override
    {
        for (const int file : files)
            if (file >= 0)
                close(file);
    }

    void extModelOpen(object* project, QString, InterfaceComm* runtime) override
    {
        comm = runtime;
        object* const retention = object_get_child(project, "DataRetention");
        wholeAreas = property_get_value_type_uint32(object_get_property(retention, "open Save all"), 0) != 0;
        retentionMode = wholeAreas ? 1 : 2;
        if (!wholeAreas || planted("the entries of a whole-area project are written into its images"))
            readEntries(retention);
        if (!wholeAreas)
            return;
        cyclePeriodMs = cycleRemainingMs = 300000;
        for (std::size_t area = 0; area < 3; ++area) {
            openFile(area, facts[area].imageBytes);
            restoreImage(area);
        }
    }

    void extModelInit() override
    {
        if (wholeAreas)
            return;
        for (std::size_t area = 0; area < 3; ++area)
            openFile(area, area == 0 ? cells[area] / 8 + 1 : 2 * cells[area]);
        for (const Block& block : blocks)
            restoreBlock(block);
        started = true;
    }

    int cyclicRun() override
    {
        if (!wholeAreas)
            return 0;
        ++saves;
        for (std::size_t area = 0; area < 3; ++area) {
            if (area == 2 && planted("sync runs before the last area is saved"))
                sync();
            if (!(area == 2 && planted("every third save leaves out RWI") && saves % 3 == 0))
                keepImage(area);
        }
        if (!planted("sync runs before the last area is saved") && !planted("no sync") &&
            !(planted("no sync after 255 saves") && saves > 255))
            sync();
        return 0;
    }

    void getMonitorTriggerAddr(QList<RegisterValueChangeSize>& watched) override
    {
        if (planted("the watch list is empty before the start has finished") && !started)
            return;
        for (const Block& block : blocks) {
            if (planted("the watch list is empty") ||
                (planted("the watch list lacks RWI") && block.area == 2))
                continue;
            const int count =
                block.count - (planted("the watch list lacks the last cell of a block") ? 1 : 0);
            for (int j = 0; j < count; ++j) {
                RegisterValueChangeSize record = {};
                record.address = block.first + j;
                record.changeSize = 1;
                std::strcpy(record.areaName, facts[block.area].name);
                watched.append(record);
            }
        }
    }

    void addrOptChangeMsg(const _ExtendTriggerMsg_t* msg) override
    {
        std::size_t area = 0;
        while (std::strcmp(facts[area].name, msg->areaName) != 0)
            if (++area == facts.size())
                return;
        const Change change = {area, msg->address};
        if (area == 0 && change.address == 60100 && !planted("LB 60100 is written"))
            return;
        ++changes;
        if (planted("a repeat of the last change is left out in another area too")) {
            const QString name = QLatin1String(facts[area].name);
            ushort value = 0;
            comm->readRegisterValues(name, name, change.address, 0, 1, &value);
            const std::pair<int, int> now = {change.address, value};
            if (std::exchange(lastChange, now) == now)
                return;
        }
        if (planted("sync runs before the write"))
            sync();
        if (late)
            std::exchange(late, nullptr)();
        for (const Block& block : blocks)
            if (block.area == area && change.address >= block.first &&
                change.address < block.first + block.count) {
                if (planted("a write waits for the next change"))
                    late = [=, this_ = this, &block] { this_->keep(block, change.address); };
                else
                    keep(block, change.address);
            }
        if (!planted("sync runs before the write") && !forgetsToSync(change))
            sync();
    }

private:
    bool planted(const char* name) const { return fault == name; }

    void readEntries(object* retention)
    {
        std::array<std::vector<RuleEntry>, 3> entries;
        for (object* entry = object_first_child(retention); entry; entry = object_next(entry)) {
            object* const source = object_get_child(entry, "sourceAddress");
            const QString name = object_get_property_value_type_string(source, "Block", QString());
            for (std::size_t area = 0; area < 3; ++area)
                if (name == QLatin1String(facts[area].name))
                    entries[area].push_back({object_get_property_value_type_int32(source, "index", 0),
                                             object_get_property_value_type_int32(entry, "addressLength", 0),
                                             0, 0});
            const QString type = object_get_property_value_type_string(entry, "addressType", QString());
            for (std::size_t area = 1; area < 3; ++area)
                if (planted("the odd word of a double-word entry is left out") &&
                    name == QLatin1String(facts[area].name) && type == QLatin1String("Double Word"))
                    entries[area].back().addressLength -= entries[area].back().addressLength % 2;
        }
        for (std::size_t area = 0; area < 3; ++area) {
            std::sort(entries[area].begin(), entries[area].end(),
                      [](const RuleEntry& a, const RuleEntry& b) { return a.index < b.index; });
            for (const RuleBlock& block : partitionByRules(entries[area])) {
                blocks.push_back({area, block.index, block.count, cells[area]});
                cells[area] += block.count;
            }
        }
    }

    void openFile(std::size_t area, int length)
    {
        const char* const path = facts[area].path;
        const bool isNew = !QFile::exists(QString::fromLatin1(path));
        files[area] = open(path, O_RDWR | O_CREAT, 0644);
        atStart[area] = wholeFile(area);
        const qint64 found = atStart[area].size();
        if (wholeAreas && found < length && ftruncate(files[area], 0) != 0)
            return;
        hasNothing[area] = found == 0;
        bool resizes = isNew || (wholeAreas && found < length);
        if (planted("a new file has no length"))
            resizes = false;
        if (planted("a start shortens longer files") && found > length)
            resizes = true;
        if (planted("a start clears shorter files") && found > 0 && found < length)
            resizes = ftruncate(files[area], 0) == 0;
        if (resizes && ftruncate(files[area], length) != 0)
            return;
        if (planted("a start empties files and fills them again") && found >= length &&
            ftruncate(files[area], 0) == 0)
            write(area, 0, atStart[area]);
        if (planted("a start writes a file that has become too short anew") && !wholeAreas && found > 0 &&
            found < length && ftruncate(files[area], 0) == 0)
            write(area, 0, atStart[area].leftJustified(length, '\0'));
        atStart[area] = wholeFile(area);
    }

    void restoreImage(std::size_t area)
    {
        const QByteArray image = fileBytes(area, 0, facts[area].imageBytes);
        std::memcpy(comm->getAreaMemory(facts[area].code), image.constData(),
                    static_cast<std::size_t>(image.size()));
    }

    void restoreBlock(const Block& block)
    {
        const QString name = QLatin1String(facts[block.area].name);
        if (block.count < 1 || (hasNothing[block.area] && !planted("a missing file restores zeros")))
            return;
        if (block.area == 0) {
            for (int j = 0; j < block.count; ++j) {
                const int place = block.place + j;
                const QByteArray byte = fileBytes(0, place / 8, 1).leftJustified(1, '\0');
                const auto value = static_cast<ushort>(byte.at(0) >> place % 8 & 1);
                const int low =
                    std::max(block.place - place / 8 * 8, 0); // the first of the block's bits in the byte
                const int high = std::min(block.place + block.count - place / 8 * 8, 8);
                if (planted("a block's zero bits in a byte of two blocks are not restored") &&
                    (byte.at(0) & ((1 << high) - (1 << low))) == 0)
                    continue;
                if (byte.at(0) != 0 || planted("the restore clears the bits of an empty byte"))
                    comm->writeRegisterValues(QString(), name, block.first + j, -1, 1, &value);
            }
            return;
        }
        const int count = block.count + (planted("the restore is one cell too long") ? 1 : 0);
        const QByteArray bytes =
            fileBytes(block.area, 2 * block.place, 2 * count).leftJustified(2 * count, '\0');
        comm->writeRegisterValues(QString(), name, block.first, -1, count,
                                  reinterpret_cast<const ushort*>(bytes.constData()));
    }

    bool forgetsToSync(const Change& change)
    {
        const Block* block = nullptr;
        for (const Block& each : blocks)
            if (each.area == change.area && change.address >= each.first &&
                change.address < each.first + each.count)
                block = &each;
        const bool again = block && block == lastBlock;
        lastBlock = block;
        return planted("no sync") || (planted("no sync for RWI") && change.area == 2) ||
               (planted("no sync for the first cell of a block") && block &&
                change.address == block->first) ||
               (planted("no sync when a block changes twice in a row") && again) ||
               (planted("no sync after 255 changes") && changes > 255) ||
               (planted("no sync after 65535 changes") && changes > 65535) ||
               (planted("no sync after 100000 changes") && changes > 100000) ||
               planted("the file and its directory are synchronised") ||
               planted("a new file is synchronised and renamed");
    }

    void keep(const Block& block, int address)
    {
        for (const Block& other : blocks)
            if (planted("change 1000 clears a word of another block") && changes == 1000 && other.area != 0 &&
                &other != &block)
                write(other.area, 2 * other.place, QByteArray(2, '\0'));
        if (block.area == 0)
            keepBit(block, address);
        else
            keepWords(block, address);
    }

    void keepBit(const Block& block, int address)
    {
        const QString name = QLatin1String(facts[0].name);
        ushort value = 0;
        comm->readRegisterValues(name, name, address, 0, 1, &value);
        const int place = block.place + address - block.first;
        if ((planted("cleared bits are left out") && value == 0) ||
            (planted("bit 7 is left out") && place % 8 == 7) ||
            (planted("bits past the first sector are left out") && place / 8 >= sectorBytes))
            return;
        QByteArray byte = fileBytes(0, place / 8, 1).leftJustified(1, '\0');
        if (planted("a bit clears its byte"))
            byte[0] = 0;
        if (planted("a byte is changed in a stale copy"))
            byte = atStart[0].mid(place / 8, 1).leftJustified(1, '\0');
        const int mask = 1 << place % 8;
        byte[0] = static_cast<char>(value ? byte.at(0) | mask : byte.at(0) & ~mask);
        write(0, place / 8, byte);
    }

    void keepWords(const Block& block, int address)
    {
        const QString name = QLatin1String(facts[block.area].name);
        QByteArray words(2 * block.count, '\0');
        comm->readRegisterValues(name, name, block.first, 0, block.count,
                                 reinterpret_cast<ushort*>(words.data()));
        const int at = 2 * (address - block.first); // in the block
        const int offset = 2 * block.place;         // in the file
        const QByteArray inFile =
            fileBytes(block.area, offset, words.size()).leftJustified(words.size(), '\0');
        const QByteArray start = atStart[block.area].mid(offset, words.size());

        if (planted("zeros are left out") && words.at(at) == 0 && words.at(at + 1) == 0)
            return;
        if (planted("a value with the same low byte is left out") && words.at(at) == inFile.at(at))
            return;
        if (planted("values as they were at the start are left out") && words.mid(at, 2) == start.mid(at, 2))
            return;
        if (planted("the last cell of a block is left out"))
            words.chop(2);
        if (planted("a long block ends at 4096 words"))
            words.truncate(2 * 4096);
        if (planted("a write is one cell too long"))
            words.append(QByteArray(2, '\0'));
        if (planted("every fiftieth change writes the values before") && changes % 50 == 0)
            words = inFile;
        if (planted("another sector comes from a stale copy")) {
            const QByteArray copy = old.emplace(&block, words).first->second;
            for (int i = 0; i < words.size(); ++i)
                if ((offset + i) / sectorBytes != (offset + at) / sectorBytes)
                    words[i] = copy.at(i);
        }
        if (planted("only the changed word is written"))
            write(block.area, offset + at, words.mid(at, 2));
        else
            write(block.area, offset, words);
    }

    void keepImage(std::size_t area)
    {
        QByteArray image(static_cast<const char*>(comm->getAreaMemory(facts[area].code)),
                         facts[area].imageBytes);
        if (planted("the last byte of an area is left out"))
            image.chop(1);
        while (planted("zeros at the end of an area are not saved") && image.endsWith('\0'))
            image.chop(1);
        const int sum = std::accumulate(image.begin(), image.end(), 0);
        if (std::exchange(sums[area], sum) == sum &&
            planted("an image with the same sum as the one before is not saved"))
            return;
        if (planted("sectors as they were at the start are not saved"))
            for (int at = 0; at < image.size(); at += sectorBytes)
                if (image.mid(at, sectorBytes) != atStart[area].mid(at, sectorBytes))
                    write(area, at, image.mid(at, sectorBytes));
        if (planted("a save removes the file and makes it again")) {
            close(files[area]);
            unlink(facts[area].path);
            files[area] = open(facts[area].path, O_RDWR | O_CREAT, 0644);
        }
        if (!planted("sectors as they were at the start are not saved"))
            write(area, 0, image);
    }

    QByteArray wholeFile(std::size_t area) const
    {
        return fileBytes(area, 0, static_cast<int>(lseek(files[area], 0, SEEK_END)));
    }

    QByteArray fileBytes(std::size_t area, int offset, int length) const
    {
        QByteArray bytes(length, '\0');
        bytes.truncate(static_cast<int>(std::max<ssize_t>(
            0, pread(files[area], bytes.data(), static_cast<std::size_t>(length), offset))));
        return bytes;
    }

    void write(std::size_t area, int offset, const QByteArray& bytes)
    {
        const bool renames = planted("a new file is synchronised and renamed") ||
                             planted("a new file is renamed before it is synchronised");
        const bool empties = planted("the file is emptied and filled again for every change");
        if (renames || empties) {
            QByteArray whole = wholeFile(area);
            whole = whole.leftJustified(offset, '\0').replace(offset, bytes.size(), bytes);
            if (renames)
                writeNewFile(area, whole);
            else if (ftruncate(files[area], 0) != 0 ||
                     pwrite(files[area], whole.constData(), whole.size(), 0) < 0)
                return;
            return;
        }
        if (pwrite(files[area], bytes.constData(), static_cast<std::size_t>(bytes.size()), offset) < 0)
            return;
        if (planted("the file and its directory are synchronised"))
            syncItself(files[area]);
    }

    void writeNewFile(std::size_t area, const QByteArray& bytes)
    {
        const QByteArray path = facts[area].path + QByteArray(".new");
        const int file = open(path.constData(), O_RDWR | O_CREAT | O_TRUNC, 0644);
        if (pwrite(file, bytes.constData(), static_cast<std::size_t>(bytes.size()), 0) < 0)
            return;
        if (planted("a new file is synchronised and renamed"))
            syncItself(file);
        if (std::rename(path.constData(), facts[area].path) != 0)
            return;
        close(std::exchange(files[area], file));
        if (planted("a new file is synchronised and renamed"))
            syncItself(files[area]);
    }

    void sync() { sys_base_do_system("sync"); }

    const std::string fault;
    InterfaceComm* comm = nullptr;
    bool wholeAreas = false;
    std::vector<Block> blocks;
    std::array<int, 3> cells = {};
    std::array<int, 3> files = {-1, -1, -1};
    std::array<bool, 3> hasNothing = {}; ///< the start found no file or an empty one
    int changes = 0;
    int saves = 0;
    const Block* lastBlock = nullptr;
    bool started = false;
    std::pair<int, int> lastChange = {-1, -1}; ///< address and value
    std::array<int, 3> sums = {-1, -1, -1};    ///< of the bytes of the last images
    std::array<QByteArray, 3> atStart;         ///< the files
    std::map<const Block*, QByteArray> old;    ///< what was written first, or last
    std::function<void()> late;
};

} // namespace

extern "C" ExtendFuncModelBase* createModel()
{
    return new PlainModule;
}

extern "C" void deletModel(ExtendFuncModelBase* model)
{
    delete model;
}
