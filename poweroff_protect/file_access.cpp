// Checks, creates, opens, reads and writes the retention files.
// SPDX-License-Identifier: MIT
#define _FILE_OFFSET_BITS 64 // so that stat() works for files of any size on a 32-bit panel
#include "poweroff_protect/file_access.h"

#include "poweroff_protect/out_of_memory.h"
#include "poweroff_protect/poweroff_protect.h"

#include <QtCore/QFile>

#include <cerrno>
#include <sys/stat.h>

const char projectDirectory[] = "/usr/tavrin/project/";

QByteArray projectPath(const QString& fileName)
{
    // Names are plain ASCII, where toLatin1() is in all Qts what toAscii() is in Qt 4.
    return fileName.toLatin1().prepend(projectDirectory);
}

FileLook lookAtFile(const QByteArray& path)
{
    // Not QFileInfo, which reports a file as missing when the check fails.
    struct stat found;
    if (stat(path.constData(), &found) == 0)
        return {false, S_ISREG(found.st_mode), found.st_size};
    return {errno == ENOENT || errno == ENOTDIR, false, -1};
}

void makeZeroFile(const QByteArray& path, qint64 length)
{
    QFile file(QLatin1String(path.constData()));
    file.open(QIODevice::WriteOnly);
    file.resize(length);
    file.close();
}

void openRetentionFile(std::fstream& file, const QByteArray& path)
{
    // Without a buffer, a read transfers only the requested bytes; with one, reading a single bit would fetch
    // thousands. It must be removed before the file is opened.
    file.rdbuf()->pubsetbuf(nullptr, 0);
    const bool ended = ranWithMemory(
        [&file, &path] { file.open(path.constData(), std::ios::in | std::ios::out | std::ios::binary); });
    // Otherwise the stream may hold the file but can neither read nor write. It was closed before: an open
    // one fails without an allocation, and keeps what it holds.
    if (!ended) {
        file.close();
        file.setstate(std::ios::failbit);
    }
}

void poweroff_protect::checkFile(std::basic_fstream<char>& file, const char* fileName)
{
    if (!file.is_open())
        openRetentionFile(file, projectPath(QLatin1String(fileName)));
}

void poweroff_protect::readFile(std::basic_fstream<char>& file, char* buffer, int length, int offset)
{
    file.seekg(offset);
    file.read(buffer, length);
    if (file.eof())
        file.clear();
}

void poweroff_protect::writeFile(std::basic_fstream<char>& file, char* buffer, int length, int offset)
{
    file.seekp(offset);
    file.write(buffer, length);
    file.flush();
}
