// Finds, creates and opens the retention files.
// SPDX-License-Identifier: MIT
#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QString>

#include <fstream>

/// The fixed directory of the retention files, with its trailing slash.
extern const char projectDirectory[];

/// The path of a file in that directory, in the form that the C library takes.
QByteArray projectPath(const QString& fileName);

/// What checking a path found. A check may fail for temporary reasons, such as a medium error: a file is
/// neither missing nor too short unless that is known.
struct FileLook
{
    bool missing; ///< there is certainly nothing at the path
    bool regular; ///< a regular file is there: no folder, FIFO or device
    qint64 size;  ///< bytes; -1 when unknown
};

FileLook lookAtFile(const QByteArray& path);

/// Creates the file, or empties it, and gives it `length` zero bytes; a negative length leaves it empty.
void makeZeroFile(const QByteArray& path, qint64 length);

/// Opens `file` on an existing file for reading and writing: nothing is created, truncated or appended. On
/// failure `file` is marked failed; if it was open before the call, it stays open.
void openRetentionFile(std::fstream& file, const QByteArray& path);
