// Prints this process's peak memory in KiB after one store, or none, did its job. It includes a panel's cells
// and areas for every store.
// SPDX-License-Identifier: MIT
#include "benchmarks/bench_host.h"
#include "benchmarks/durable_store.h"
#include "simulated_host/private_directory.h"

#include <QtCore/QFile>
#include <QtCore/QFileInfo>

#include <cstdio>
#include <cstring>

namespace {

/// "VmHWM", the process's peak resident memory.
long peakKiB()
{
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly))
        storeFailed("peak_memory", "/proc/self/status cannot be read");
    for (const QByteArray& line : status.readAll().split('\n'))
        if (line.startsWith("VmHWM:"))
            return line.mid(6).trimmed().split(' ').front().toLong();
    return 0;
}

/// What the module's store holds besides the module: the panel's cells and areas, and the project.
struct Host
{
    BenchComm comm;
    std::unique_ptr<object> project;
};

/// The same as the module's store makes; the other stores have it so that it counts equally for all.
std::vector<Host> hostsBeside(bool images)
{
    std::vector<Host> hosts(images ? 2 : 1);
    hosts[0].project = perAddressProject({{"LW", 100, 10}});
    if (images)
        hosts[1].project = wholeAreaProject();
    return hosts;
}

void useStore(const StoreKind& kind, bool images)
{
    const auto store = kind.make(10);
    for (int value = 1; value <= 100; ++value) {
        if (images)
            store->keepImages(value);
        else
            store->keepCell(3, static_cast<ushort>(value));
    }
}

} // namespace

int main(int argc, char** argv)
{
    const StoreKind* kind = nullptr;
    for (const StoreKind& known : storeKinds())
        if (argc == 4 && known.name == argv[2])
            kind = &known;
    const bool none = argc == 4 && std::strcmp(argv[2], "none") == 0;
    if ((!kind && !none) || !QFileInfo(QString::fromLocal8Bit(argv[1])).isDir()) {
        std::fprintf(stderr, "usage: %s DIRECTORY STORE|none cells|images\n", argv[0]);
        return 2;
    }
    QString error = enterPrivateUsr();
    if (error.isEmpty())
        error = mapProjectDirectory(QString::fromLocal8Bit(argv[1]));
    if (!error.isEmpty())
        storeFailed("peak_memory", qPrintable(error));
    removeRetentionFiles();
    imagesToKeep(0); // so do the values themselves
    const bool images = std::strcmp(argv[3], "images") == 0;
    const std::vector<Host> hosts =
        kind && kind->name.rfind("module", 0) == 0 ? std::vector<Host>() : hostsBeside(images);
    if (kind)
        useStore(*kind, images);
    std::printf("%ld\n", peakKiB());
    return 0;
}
