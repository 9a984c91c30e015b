// Reads retention files at given offsets, and puts new ones in place in one step.
// SPDX-License-Identifier: MIT
#include "tools/retention_core/retention_files.h"

#include "tools/retention_core/refusal.h"

#include <QtCore/QDir>
#include <QtCore/QFileInfo>
#include <QtCore/QTemporaryDir>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

/// Waits until a file or directory is on the disk.
bool syncToDisk(const QString& path)
{
    const int descriptor = open(QFile::encodeName(path).constData(), O_RDONLY | O_CLOEXEC);
    if (descriptor < 0)
        return false;
    const bool ok = fsync(descriptor) == 0;
    close(descriptor);
    return ok;
}

/// A temporary folder is private; this gives it the mode that mkdir would.
bool setUsualRights(const QString& path)
{
    const mode_t mask = umask(0);
    umask(mask);
    return chmod(QFile::encodeName(path).constData(), 0777 & ~mask) == 0;
}

/// Whether the directory can be searched: without that permission, its files would seem to be missing.
void requireDirectory(const QString& directory)
{
    const QFileInfo info(directory);
    const char* const problem = !info.exists()  ? "no such directory"
                                : !info.isDir() ? "is not a directory"
                                : access(QFile::encodeName(directory).constData(), X_OK) != 0
                                    ? std::strerror(errno)
                                    : nullptr;
    if (problem)
        throw Refusal(QStringLiteral("%1: %2; name the directory with the files maintenance-*.dat")
                          .arg(directory, QString::fromLocal8Bit(problem)));
}

bool isTaken(const QFileInfo& target)
{
    if (target.isSymLink() || !target.exists())
        return target.isSymLink();
    const auto everything = QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot;
    return !target.isDir() || !QDir(target.filePath()).isEmpty(everything);
}

} // namespace

QByteArray RetentionFile::read(qint64 offset, qint64 length) const
{
    if (!device || offset < 0 || offset >= size || !device->seek(offset))
        return {};
    return device->read(std::min(length, size - offset));
}

RetentionFiles openRetentionFiles(const QString& directory)
{
    requireDirectory(directory);
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

void requireReadable(const RetentionFiles& files)
{
    for (const RetentionFile& file : files)
        if (file.state == RetentionFile::State::Unreadable)
            throw Refusal(QStringLiteral("%1: %2; replace it with a readable file, or remove it")
                              .arg(file.path, file.error));
}

void makeRetentionFiles(const QString& directory,
                        const std::function<bool(const AreaFacts& area, QFile& file)>& fill)
{
    if (directory.isEmpty() || directory == QLatin1String("-"))
        throw Refusal(
            QStringLiteral("--output \"%1\": expected a new directory for the three files").arg(directory));
    const QString target = QDir::cleanPath(QFileInfo(directory).absoluteFilePath());
    const auto refuse = [&target](const QString& message) {
        throw Refusal(QStringLiteral("%1: %2").arg(target, message));
    };
    const auto lastError = [] { return QString::fromLocal8Bit(std::strerror(errno)); };
    const QString parent = QFileInfo(target).path();
    if (isTaken(QFileInfo(target)))
        refuse(QStringLiteral("already exists, and nothing is overwritten; name a new directory"));
    if (!QFileInfo(parent).isDir())
        refuse(QStringLiteral("cannot be created: there is no directory %1").arg(parent));
    QTemporaryDir folder(parent + QLatin1String("/.retention_inspector-XXXXXX"));
    if (!folder.isValid())
        refuse(QStringLiteral("cannot be created: %1").arg(folder.errorString()));
    for (const AreaFacts& area : areaFacts) {
        const QString name = QString::fromLatin1(area.fileName);
        QFile file(folder.filePath(name));
        if (!file.open(QIODevice::ReadWrite | QIODevice::NewOnly) || !fill(area, file) || !file.flush())
            refuse(QStringLiteral("%1 cannot be written: %2").arg(name, file.errorString()));
        if (!syncToDisk(file.fileName()))
            refuse(QStringLiteral("%1 cannot be written: %2").arg(name, lastError()));
    }
    // rename() replaces an empty directory and nothing else.
    if (!setUsualRights(folder.path()) || !syncToDisk(folder.path()) ||
        rename(QFile::encodeName(folder.path()).constData(), QFile::encodeName(target).constData()) != 0)
        refuse(QStringLiteral("cannot be created: %1").arg(lastError()));
    folder.setAutoRemove(false);
    syncToDisk(parent);
}
