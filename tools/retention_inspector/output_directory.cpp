// Making of a directory in one step.
// SPDX-License-Identifier: MIT
#include "tools/retention_inspector/output_directory.h"

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>

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

/// The temporary folder is private; the directory gets the rights of one made by mkdir.
bool setUsualRights(const QString& path)
{
    const mode_t mask = umask(0);
    umask(mask);
    return chmod(QFile::encodeName(path).constData(), 0777 & ~mask) == 0;
}

} // namespace

OutputDirectory::OutputDirectory(const QString& path)
    : target(QDir::cleanPath(QFileInfo(path).absoluteFilePath()))
{
    const QFileInfo info(target);
    const QString parent = info.path();
    if (info.isSymLink() ||
        (info.exists() && !(info.isDir() && QDir(target).isEmpty(QDir::AllEntries | QDir::Hidden |
                                                                 QDir::System | QDir::NoDotAndDotDot)))) {
        fail(QStringLiteral("exists already and nothing is overwritten; name a new directory"));
        return;
    }
    if (!QFileInfo(parent).isDir()) {
        fail(QStringLiteral("there is no directory %1 to make it in").arg(parent));
        return;
    }
    folder = std::make_unique<QTemporaryDir>(parent + QLatin1String("/.retention_inspector-XXXXXX"));
    if (!folder->isValid())
        fail(QStringLiteral("cannot be made: %1").arg(folder->errorString()));
}

QString OutputDirectory::filePath(const QString& name) const
{
    return folder ? folder->filePath(name) : QString();
}

bool OutputDirectory::commit()
{
    if (!errorText.isEmpty())
        return false;
    const QString made = folder->path();
    const QStringList names = QDir(made).entryList(QDir::Files | QDir::Hidden);
    for (const QString& name : names)
        if (!syncToDisk(folder->filePath(name)))
            return fail(QStringLiteral("%1 cannot be written: %2")
                            .arg(name, QString::fromLocal8Bit(std::strerror(errno))));
    // rename() takes the place of an empty directory and of nothing else.
    if (!setUsualRights(made) || !syncToDisk(made) ||
        rename(QFile::encodeName(made).constData(), QFile::encodeName(target).constData()) != 0)
        return fail(QStringLiteral("cannot be made: %1").arg(QString::fromLocal8Bit(std::strerror(errno))));
    folder->setAutoRemove(false);
    syncToDisk(QFileInfo(target).path());
    return true;
}

bool OutputDirectory::fail(const QString& message)
{
    errorText = QStringLiteral("%1: %2").arg(target, message);
    return false;
}
