// Where the retention files live and how their streams are opened.
// SPDX-License-Identifier: MIT
#ifndef POWEROFF_PROTECT_PROJECT_DIRECTORY_H
#define POWEROFF_PROTECT_PROJECT_DIRECTORY_H

#include <QtCore/QString>

#include <fstream>

/// The fixed directory of the retention files, with its trailing slash.
QString projectDirectory();

/// The path of the file of that name in the project directory.
QString projectPath(const QString& fileName);

/// Opens `file` for reading and writing on an existing file: nothing is created, cut off or appended. On
/// failure, also when `file` is open already, it is marked failed.
void openRetentionFile(std::fstream& file, const QString& path);

#endif
