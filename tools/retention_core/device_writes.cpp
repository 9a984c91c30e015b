// Reads how much was written to the device that holds a directory, as the kernel counts it.
// SPDX-License-Identifier: MIT
#include "tools/retention_core/device_writes.h"

#include "tools/retention_core/refusal.h"

#include <QtCore/QFile>
#include <QtCore/QFileInfo>

#include <cerrno>
#include <cstring>
#include <sys/stat.h>
#include <sys/sysmacros.h>

DeviceWrites deviceWrites(const QString& directory, const QString& systemFolder)
{
    struct stat status;
    if (stat(QFile::encodeName(directory).constData(), &status) != 0)
        throw Refusal(QStringLiteral("%1: %2").arg(directory, QString::fromLocal8Bit(std::strerror(errno))));
    const QString folder = QStringLiteral("%1/dev/block/%2:%3")
                               .arg(systemFolder)
                               .arg(major(status.st_dev))
                               .arg(minor(status.st_dev));
    QFile counts(folder + QStringLiteral("/stat"));
    if (!counts.open(QIODevice::ReadOnly))
        throw Refusal(
            QStringLiteral("%1: not on a block device whose writes the kernel counts (%2: %3); name a "
                           "directory that is not on UBIFS, tmpfs, an overlay or a network file system")
                .arg(directory, counts.fileName(), counts.errorString()));
    // Reads, merged reads, sectors, milliseconds, then the same for writes. These sectors have 512 bytes on
    // every device.
    const QList<QByteArray> fields = counts.readAll().simplified().split(' ');
    bool isRequests = false;
    bool isSectors = false;
    const qint64 requests = fields.value(4).toLongLong(&isRequests);
    const qint64 sectors = fields.value(6).toLongLong(&isSectors);
    if (!isRequests || !isSectors)
        throw Refusal(QStringLiteral("%1: contains no count of writes").arg(counts.fileName()));
    return {QFileInfo(QFileInfo(folder).canonicalFilePath()).fileName(), requests, 512 * sectors};
}
