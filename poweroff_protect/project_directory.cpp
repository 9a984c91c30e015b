// Paths and opening of the retention files.
// SPDX-License-Identifier: MIT
#include "poweroff_protect/project_directory.h"

#include <new>

QString projectDirectory()
{
    return QLatin1String("/usr/tavrin/project/");
}

QString projectPath(const QString& fileName)
{
    return QString(QLatin1String("%1%2")).arg(projectDirectory(), fileName);
}

void openRetentionFile(std::fstream& file, const QString& path)
{
    // Without a buffer a read moves just the bytes that were asked for; with one, every single bit would
    // fetch thousands of bytes around it. It must be taken away before the file is opened.
    file.rdbuf()->pubsetbuf(nullptr, 0);
    try {
        // The path is plain ASCII, where toLatin1() and the toAscii() of Qt 4 agree; only the former is in
        // both Qts.
        file.open(path.toLatin1().constData(), std::ios::in | std::ios::out | std::ios::binary);
    } catch (const std::bad_alloc&) {
        // A stream without memory may hold the file and yet neither read nor write it.
        file.close();
        file.setstate(std::ios::failbit);
    }
}
