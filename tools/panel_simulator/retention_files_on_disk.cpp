// Checks the retention files, and watches the calls that write them.
// SPDX-License-Identifier: MIT
#include "tools/panel_simulator/retention_files_on_disk.h"

#include "simulated_host/private_directory.h"

#include <QtCore/QFile>
#include <QtCore/QFileInfo>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

QString pathOf(std::size_t area)
{
    return QStringLiteral("%1/%2").arg(QLatin1String(fixedProjectDirectory),
                                       QLatin1String(retentionFileNames[area]));
}

/// What prevents this process from writing there; empty when nothing does.
QString refusal(const QString& path)
{
    return access(QFile::encodeName(path).constData(), W_OK) == 0
               ? QString()
               : QString::fromLocal8Bit(std::strerror(errno));
}

bool nobodyMayWrite(const QString& path)
{
    struct stat status = {};
    return stat(QFile::encodeName(path).constData(), &status) == 0 && (status.st_mode & 0222) == 0;
}

} // namespace

FileOnDisk fileOnDisk(std::size_t area)
{
    const QString path = pathOf(area);
    const QFileInfo info(path);
    FileOnDisk file;
    file.exists = info.exists();
    if (!file.exists) {
        const QString why = refusal(QString::fromLatin1(fixedProjectDirectory));
        file.problem =
            why.isEmpty() ? QStringLiteral("is missing") : QStringLiteral("cannot be created: %1").arg(why);
        return file;
    }
    file.size = info.size();
    file.written = info.lastModified();
    const QString why = refusal(path);
    if (!info.isFile())
        file.problem = QStringLiteral("is not a regular file");
    else if (!why.isEmpty())
        file.problem = QStringLiteral("cannot be written: %1").arg(why);
    file.rootOnly = file.problem.isEmpty() && nobodyMayWrite(path);
    return file;
}

std::vector<int> cellsNotInImage(const MemoryArea& area, std::size_t number)
{
    const std::vector<unsigned char>& memory = area.memory();
    const auto size = static_cast<int>(memory.size());
    QFile file(pathOf(number));
    QByteArray image =
        QFileInfo(file).isFile() && file.open(QIODevice::ReadOnly) ? file.read(size) : QByteArray();
    if (image.size() < size)
        image = QByteArray(size, '\0');
    std::vector<int> cells;
    const std::ptrdiff_t bytesInCell = size / MemoryArea::cellCount;
    const auto* const kept = reinterpret_cast<const unsigned char*>(image.constData());
    for (int cell = 0; cell < MemoryArea::cellCount; ++cell)
        if (!std::equal(kept + cell * bytesInCell, kept + (cell + 1) * bytesInCell,
                        memory.begin() + cell * bytesInCell))
            cells.push_back(cell);
    return cells;
}

void WriteCounter::after(const FileCall& call, long long result)
{
    const bool opens = call.kind == FileCall::Kind::Open || call.kind == FileCall::Kind::StreamOpen;
    if (opens && result >= 0 && call.path) {
        areas.erase(static_cast<int>(result));
        const QByteArray path = QByteArray::fromRawData(call.path, static_cast<int>(std::strlen(call.path)));
        for (std::size_t i = 0; i < retentionFileNames.size(); ++i)
            if (path.startsWith(fixedProjectDirectory) && path.endsWith(retentionFileNames[i]))
                areas[static_cast<int>(result)] = i;
    } else if (call.kind == FileCall::Kind::Close) {
        areas.erase(call.descriptor);
    } else if (call.kind == FileCall::Kind::Write && result > 0) {
        const auto area = areas.find(call.descriptor);
        if (area == areas.end())
            return;
        bytesWritten[area->second] += result;
        ++successes;
    }
}
