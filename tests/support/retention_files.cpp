// Reads and writes the three retention files together.
// SPDX-License-Identifier: MIT
#include "tests/support/retention_files.h"

#include "simulated_host/private_directory.h"
#include "tests/support/areas.h"

#include <QtCore/QFile>

namespace {

std::string beginningOf(const std::optional<QByteArray>& bytes)
{
    if (!bytes)
        return "no such file";
    return std::to_string(bytes->size()) + " bytes, " + bytes->left(40).toHex().constData();
}

} // namespace

QString pathOfFile(std::size_t area)
{
    return QLatin1String(fixedProjectDirectory) + QLatin1Char('/') + QLatin1String(testAreas[area].fileName);
}

void layFile(std::size_t area, const std::optional<QByteArray>& file)
{
    QFile onDisk(pathOfFile(area));
    if (!file)
        onDisk.remove();
    else if (!onDisk.open(QIODevice::WriteOnly) || onDisk.write(*file) != file->size())
        qFatal("%s: cannot be written", testAreas[area].fileName);
}

void layFiles(const Files& files)
{
    for (std::size_t a = 0; a < files.size(); ++a)
        layFile(a, files[a]);
}

Files filesNow()
{
    Files files;
    for (std::size_t a = 0; a < files.size(); ++a) {
        QFile file(pathOfFile(a));
        if (file.open(QIODevice::ReadOnly))
            files[a] = file.readAll();
    }
    return files;
}

std::string fileDifference(std::size_t area, const std::optional<QByteArray>& file,
                           const std::optional<QByteArray>& must)
{
    if (file == must)
        return {};
    return testAreas[area].fileName + (": " + beginningOf(file)) + "; it must be: " + beginningOf(must) +
           '\n';
}
