// Makes a retention file that is only in memory.
// SPDX-License-Identifier: MIT
#pragma once

#include "tools/retention_core/retention_files.h"

#include <QtCore/QBuffer>

inline RetentionFile memoryFile(const AreaFacts& area, const QByteArray& bytes)
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
