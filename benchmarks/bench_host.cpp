// Implements a host that does only what its interface requires.
// SPDX-License-Identifier: MIT
#include "benchmarks/bench_host.h"

#include "host_interface/shell.h"
#include "simulated_host/private_directory.h"
#include "simulated_host/watch_list.h"

#include <QtCore/QDir>
#include <QtCore/QFile>

#include <algorithm>
#include <cstring>
#include <random>
#include <utility>

namespace {
std::function<void()> shell;
}

void setShell(std::function<void()> run)
{
    shell = std::move(run);
}

/// Replaces the simulated host's function, whose bookkeeping would be measured along with the module.
int sys_base_do_system(const char*)
{
    if (shell)
        shell();
    return 0;
}

BenchComm::BenchComm() : cells(65536), images(3, std::vector<unsigned char>(131072, 0x5a))
{
    for (std::size_t at = 0; at < cells.size(); ++at)
        cells[at] = static_cast<ushort>(at * 40503U);
}

void* BenchComm::getAreaMemory(int areaCode)
{
    return images.at(static_cast<std::size_t>(areaCode)).data();
}

int BenchComm::writeRegisterValues(const QString&, const QString&, int address, int, int count,
                                   const ushort* data)
{
    std::copy_n(data, count, cells.begin() + address);
    return count;
}

int BenchComm::readRegisterValues(const QString&, const QString&, int address, int, int count, ushort* data)
{
    std::copy_n(cells.begin() + address, count, data);
    return count;
}

std::unique_ptr<object> wholeAreaProject()
{
    auto project = std::make_unique<object>();
    project->addChild(QStringLiteral("DataRetention")).setNumber(QStringLiteral("open Save all"), 1);
    return project;
}

std::unique_ptr<object> perAddressProject(const std::vector<Range>& ranges)
{
    auto project = std::make_unique<object>();
    object& retention = project->addChild(QStringLiteral("DataRetention"));
    retention.setNumber(QStringLiteral("open Save all"), 0);
    for (const Range& range : ranges) {
        object& entry = retention.addChild(QStringLiteral("Entry"));
        entry.setNumber(QStringLiteral("addressLength"), range.length);
        entry.setText(QStringLiteral("addressType"), QStringLiteral("Word"));
        entry.addChild(QStringLiteral("sourceAddress"))
            .setText(QStringLiteral("Link"), QStringLiteral("Local"))
            .setText(QStringLiteral("Block"), QLatin1String(range.area))
            .setText(QStringLiteral("No"), QStringLiteral("0"))
            .setNumber(QStringLiteral("index"), range.index)
            .setNumber(QStringLiteral("station"), 0)
            .setNumber(QStringLiteral("length"), 1)
            .setNumber(QStringLiteral("Bit_or_Word"), 1);
    }
    return project;
}

std::vector<Range> scatteredWordRanges(int count, int length)
{
    std::vector<Range> ranges;
    for (int k = 0; k < count; ++k)
        ranges.push_back({"LW", k * (length + 1), length});
    std::shuffle(ranges.begin(), ranges.end(), std::mt19937(7)); // NOLINT: the same order every time
    return ranges;
}

BenchModule::BenchModule(std::unique_ptr<object> project, Files files)
    : project(std::move(project)), module(nullptr)
{
    if (files == NewFiles)
        removeRetentionFiles();
    module = static_cast<poweroff_protect*>(createModel());
}

BenchModule::~BenchModule()
{
    deletModel(module);
}

void BenchModule::start()
{
    module->extModelOpen(project.get(), QString(), &comm);
    module->extModelInit();
}

void BenchModule::change(const char* area, int address)
{
    const _ExtendTriggerMsg_t message = changeMessage(QLatin1String(area), address);
    module->addrOptChangeMsg(&message);
}

QByteArray filePath(const char* name)
{
    return QByteArray(fixedProjectDirectory) + '/' + name;
}

void removeRetentionFiles()
{
    QDir directory(QString::fromLatin1(fixedProjectDirectory));
    for (const QString& name : directory.entryList({QStringLiteral("maintenance-*.dat")}, QDir::Files))
        directory.remove(name);
}

void writeFileBytes(const char* name, const QByteArray& bytes)
{
    QFile file(QString::fromLatin1(filePath(name)));
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
        qFatal("cannot write %s: %s", filePath(name).constData(), qPrintable(file.errorString()));
}
