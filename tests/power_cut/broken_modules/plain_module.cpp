// A retention module of the simplest kind, built once as it should be and once with each FAULT that the
// laboratory must find. It shares nothing with the module that ships but the runtime's interface.
// SPDX-License-Identifier: MIT
#include "host_interface/host_interface.h"

#include <QtCore/QDir>
#include <QtCore/QFile>

#include <array>
#include <cstring>
#include <fstream>
#include <vector>

namespace {

enum class Fault
{
    None,
    NoFlush,          ///< the last write stays in the stream's buffer while "sync" runs
    SyncBeforeWrite,  ///< "sync" runs first
    NoSync,           ///< nothing makes the write durable
    ShrinkingFile,    ///< every write empties the file and fills it again
    ReplacedFile,     ///< a new file is renamed over the old one before its bytes are on the disk
    TouchedNeighbour, ///< a write is one cell too long
};
constexpr Fault fault = Fault::FAULT;

struct Area
{
    const char* name;
    const char* path;
    int code;
    int imageBytes;
};
const std::array<Area, 3> areas = {{
    {"LB", "/usr/tavrin/project/maintenance-bit.dat", 1, 65536},
    {"LW", "/usr/tavrin/project/maintenance-word.dat", 0, 131072},
    {"RWI", "/usr/tavrin/project/maintenance-RWI.dat", 2, 131072},
}};

struct Range
{
    std::size_t area;
    int first;
    int count;
    int offset; ///< bytes in the file, two for each cell
};

class PlainModule : public ExtendFuncModelBase
{
public:
    PlainModule() { QDir().mkpath(QStringLiteral("/usr/tavrin/project")); }

    void extModelOpen(object* project, QString, InterfaceComm* runtime) override;
    void extModelInit() override;
    int cyclicRun() override;
    void getMonitorTriggerAddr(QList<RegisterValueChangeSize>& watched) override;
    void addrOptChangeMsg(const _ExtendTriggerMsg_t* msg) override;

private:
    void restore();
    void writeBytes(std::size_t area, const char* bytes, int length, int offset);
    void writeWholeFile(std::size_t area, const char* bytes, int length, int offset);

    InterfaceComm* comm = nullptr;
    std::vector<Range> ranges;
    std::array<int, 3> lengths = {};
    std::array<std::fstream, 3> files;
};

void PlainModule::extModelOpen(object* project, QString, InterfaceComm* runtime)
{
    comm = runtime;
    object* const retention = object_get_child(project, "DataRetention");
    if (property_get_value_type_uint32(object_get_property(retention, "open Save all"), 0) != 0) {
        retentionMode = 1;
        cyclePeriodMs = cycleRemainingMs = 300000;
        for (std::size_t i = 0; i < areas.size(); ++i)
            lengths[i] = areas[i].imageBytes;
        restore();
        return;
    }
    retentionMode = 2;
    for (object* entry = object_first_child(retention); entry; entry = object_next(entry)) {
        object* const source = object_get_child(entry, "sourceAddress");
        const QString name = object_get_property_value_type_string(source, "Block", QString());
        for (std::size_t i = 0; i < areas.size(); ++i) {
            if (name != QLatin1String(areas[i].name))
                continue;
            const int count = object_get_property_value_type_int32(entry, "addressLength", 0);
            ranges.push_back(
                {i, object_get_property_value_type_int32(source, "index", 0), count, lengths[i]});
            lengths[i] += 2 * count;
        }
    }
}

void PlainModule::extModelInit()
{
    if (retentionMode == 2)
        restore();
}

void PlainModule::restore()
{
    for (std::size_t i = 0; i < areas.size(); ++i) {
        QFile file(QString::fromLatin1(areas[i].path));
        file.open(QIODevice::ReadWrite);
        if (file.size() < lengths[i])
            file.resize(lengths[i]);
        const QByteArray bytes = file.readAll();
        if (retentionMode == 1)
            std::memcpy(comm->getAreaMemory(areas[i].code), bytes.constData(),
                        static_cast<std::size_t>(lengths[i]));
        for (const Range& range : ranges)
            if (range.area == i)
                comm->writeRegisterValues(QString(), QLatin1String(areas[i].name), range.first, -1,
                                          range.count,
                                          reinterpret_cast<const ushort*>(bytes.constData() + range.offset));
        file.close();
        files[i].open(areas[i].path, std::ios::in | std::ios::out | std::ios::binary);
    }
}

int PlainModule::cyclicRun()
{
    if (fault == Fault::SyncBeforeWrite)
        sys_base_do_system("sync");
    for (std::size_t i = 0; i < areas.size(); ++i)
        writeBytes(i, static_cast<const char*>(comm->getAreaMemory(areas[i].code)), lengths[i], 0);
    if (fault != Fault::SyncBeforeWrite && fault != Fault::NoSync)
        sys_base_do_system("sync");
    return 0;
}

void PlainModule::getMonitorTriggerAddr(QList<RegisterValueChangeSize>&) {}

void PlainModule::addrOptChangeMsg(const _ExtendTriggerMsg_t* msg)
{
    if (fault == Fault::SyncBeforeWrite)
        sys_base_do_system("sync");
    for (const Range& range : ranges) {
        const QString name = QLatin1String(areas[range.area].name);
        if (name != QLatin1String(msg->areaName) || msg->address < range.first ||
            msg->address >= range.first + range.count)
            continue;
        const int extra = fault == Fault::TouchedNeighbour ? 1 : 0;
        std::vector<ushort> words(static_cast<std::size_t>(range.count + extra));
        comm->readRegisterValues(name, name, range.first, 0, range.count, words.data());
        writeBytes(range.area, reinterpret_cast<const char*>(words.data()), 2 * (range.count + extra),
                   range.offset);
    }
    if (fault != Fault::SyncBeforeWrite && fault != Fault::NoSync)
        sys_base_do_system("sync");
}

void PlainModule::writeBytes(std::size_t area, const char* bytes, int length, int offset)
{
    if (fault == Fault::ShrinkingFile || fault == Fault::ReplacedFile) {
        writeWholeFile(area, bytes, length, offset);
        return;
    }
    std::fstream& file = files[area];
    file.seekp(offset);
    file.write(bytes, length);
    if (fault != Fault::NoFlush)
        file.flush();
}

void PlainModule::writeWholeFile(std::size_t area, const char* bytes, int length, int offset)
{
    const QString path = QString::fromLatin1(areas[area].path);
    QFile file(path);
    file.open(QIODevice::ReadOnly);
    const QByteArray whole = file.readAll().replace(offset, length, bytes, length);
    file.close();
    if (fault == Fault::ReplacedFile)
        file.setFileName(path + QLatin1String(".new"));
    file.open(QIODevice::WriteOnly | QIODevice::Truncate);
    file.write(whole);
    file.close();
    if (fault == Fault::ReplacedFile)
        std::rename(QFile::encodeName(file.fileName()).constData(), areas[area].path);
}

} // namespace

extern "C" ExtendFuncModelBase* createModel()
{
    return new PlainModule;
}

extern "C" void deletModel(ExtendFuncModelBase* model)
{
    delete model;
}
