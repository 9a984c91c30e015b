// The peak of this process's memory when one store did its job, or none, in KiB.
// SPDX-License-Identifier: MIT
#include "benchmarks/bench_host.h"
#include "benchmarks/durable_store.h"
#include "simulated_host/private_directory.h"

#include <QtCore/QFile>
#include <QtCore/QFileInfo>

#include <cstdio>
#include <cstring>

namespace {

/// From the process's own record: "VmHWM", the peak of what it holds in memory.
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

void useStore(const StoreKind& kind, bool images)
{
    const auto store = kind.make();
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
    imagesToKeep(0); // the values themselves count for every store alike
    if (kind)
        useStore(*kind, std::strcmp(argv[3], "images") == 0);
    std::printf("%ld\n", peakKiB());
    return 0;
}
