// Removes a directory with everything in it.
// SPDX-License-Identifier: MIT
#pragma once

#include <QtCore/QDir>

/// Follows no links. False when the directory or something in it is left.
inline bool removeDirectory(const QString& path)
{
    QDir directory(path);
    const QFileInfoList entries =
        directory.entryInfoList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
    for (const QFileInfo& entry : entries) {
        if (entry.isDir() && !entry.isSymLink())
            removeDirectory(entry.filePath());
        else
            directory.remove(entry.fileName());
    }
    return !directory.exists() || directory.rmdir(path);
}
