// Opening and positioned reading of retention files.
// SPDX-License-Identifier: MIT
#include "tools/retention_core/retention_files.h"

#include <QtCore/QBuffer>
#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>

#include <algorithm>

QByteArray RetentionFile::read(qint64 offset, qint64 length) const
{
    if (!device || offset < 0 || offset >= size || !device->seek(offset))
        return {};
    return device->read(std::min(length, size - offset));
}

RetentionFiles openRetentionFiles(const QString& directory)
{
    RetentionFiles files;
    for (const AreaFacts& area : areaFacts) {
        RetentionFile& file = files[&area - areaFacts];
        file.area = &area;
        file.path = QDir(directory).filePath(QLatin1String(area.fileName));
        const QFileInfo info(file.path);
        if (!info.exists() && !info.isSymLink())
            continue;
        file.state = RetentionFile::State::Unreadable;
        if (!info.isFile()) { // opening a FIFO would wait for its writer
            file.error = QStringLiteral("is not a regular file");
            continue;
        }
        const auto device = std::make_shared<QFile>(file.path);
        if (!device->open(QIODevice::ReadOnly)) {
            file.error = QStringLiteral("cannot be read: %1").arg(device->errorString());
            continue;
        }
        file.size = device->size();
        file.device = device;
        file.state = RetentionFile::State::Readable;
    }
    return files;
}

RetentionFile memoryFile(const AreaFacts& area, const QByteArray& bytes)
{
    const auto device = std::make_shared<QBuffer>();
    device->setData(bytes);
    device->open(QIODevice::ReadOnly);
    RetentionFile file;
    file.area = &area;
    file.path = QLatin1String(area.fileName);
    file.state = RetentionFile::State::Readable;
    file.size = bytes.size();
    file.device = device;
    return file;
}
