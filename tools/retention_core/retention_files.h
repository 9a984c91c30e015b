// The retention files of a directory, opened for reading without harm from whatever lies in their place.
// SPDX-License-Identifier: MIT
#ifndef TOOLS_RETENTION_CORE_RETENTION_FILES_H
#define TOOLS_RETENTION_CORE_RETENTION_FILES_H

#include "poweroff_protect/area_facts.h"

#include <QtCore/QByteArray>
#include <QtCore/QIODevice>
#include <QtCore/QString>

#include <array>
#include <memory>

struct RetentionFile
{
    enum class State
    {
        Missing,
        Unreadable, ///< not a regular file, or not to be opened
        Readable
    };

    const AreaFacts* area = nullptr;
    QString path;
    State state = State::Missing;
    QString error;                     ///< why it is Unreadable
    qint64 size = 0;                   ///< bytes
    std::shared_ptr<QIODevice> device; ///< open when Readable

    /// The bytes from `offset` on: up to `length`, fewer where the file ends, none before its beginning.
    QByteArray read(qint64 offset, qint64 length) const;
};

/// In the order of areaFacts.
using RetentionFiles = std::array<RetentionFile, 3>;

/// Looks into a directory, which need not have any of the files.
RetentionFiles openRetentionFiles(const QString& directory);

/// A file that is only in memory.
RetentionFile memoryFile(const AreaFacts& area, const QByteArray& bytes);

#endif
