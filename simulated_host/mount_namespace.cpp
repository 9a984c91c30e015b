// Enters a mount namespace with a newly assembled /usr.
// SPDX-License-Identifier: MIT
#include "simulated_host/mount_namespace.h"

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtCore/QTemporaryDir>

#include <cerrno>
#include <cstring>
#include <linux/capability.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

QString failure(const QString& what)
{
    return QStringLiteral("%1: %2").arg(what, QString::fromLocal8Bit(std::strerror(errno)));
}

bool writeProcFile(const char* path, const QByteArray& text)
{
    QFile file(QString::fromLatin1(path));
    return file.open(QIODevice::WriteOnly | QIODevice::Unbuffered) && file.write(text) == text.size();
}

/// Root only needs a mount namespace; an ordinary user also needs a user namespace around it, with unchanged
/// ids.
QString unshareMounts()
{
    if (unshare(CLONE_NEWNS) == 0)
        return {};
    const uid_t user = geteuid();
    const gid_t group = getegid();
    if (unshare(CLONE_NEWUSER | CLONE_NEWNS) != 0)
        return failure(QStringLiteral("no mount namespace"));
    const auto idMap = [](unsigned id) {
        return QByteArray::number(id) + ' ' + QByteArray::number(id) + " 1";
    };
    if (!writeProcFile("/proc/self/setgroups", "deny") || !writeProcFile("/proc/self/uid_map", idMap(user)) ||
        !writeProcFile("/proc/self/gid_map", idMap(group)))
        return failure(QStringLiteral("cannot keep the user id in the private mount namespace"));
    return {};
}

/// Makes one entry of /usr appear in the scratch file system.
QString keepEntry(const QFileInfo& entry, const QString& scratch)
{
    const QString target = scratch + QLatin1Char('/') + entry.fileName();
    if (entry.isSymLink()) {
        char link[4096];
        const ssize_t length =
            readlink(QFile::encodeName(entry.filePath()).constData(), link, sizeof link - 1);
        link[length > 0 ? length : 0] = '\0';
        if (length < 0 || symlink(link, QFile::encodeName(target).constData()) != 0)
            return failure(QStringLiteral("cannot copy the symbolic link %1").arg(entry.filePath()));
        return {};
    }
    const bool made = entry.isDir() ? QDir().mkdir(target) : QFile(target).open(QIODevice::WriteOnly);
    return made ? bindMount(entry.filePath(), target)
                : failure(QStringLiteral("cannot create %1").arg(target));
}

} // namespace

void giveUpNamespaceRights()
{
    if (geteuid() == 0)
        return;
    __user_cap_header_struct header = {_LINUX_CAPABILITY_VERSION_3, 0};
    __user_cap_data_struct none[_LINUX_CAPABILITY_U32S_3] = {};
    syscall(SYS_capset, &header, none);
}

QString bindMount(const QString& source, const QString& target)
{
    if (mount(QFile::encodeName(source).constData(), QFile::encodeName(target).constData(), nullptr,
              MS_BIND | MS_REC, nullptr) != 0)
        return failure(QStringLiteral("cannot mount %1 on %2").arg(source, target));
    return {};
}

QString enterNamespaceWithOwnUsr()
{
    QString error = unshareMounts();
    if (!error.isEmpty())
        return error;
    if (mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0)
        return failure(QStringLiteral("cannot make the mounts private"));

    // The new /usr is assembled next to the old one and then moved over it.
    const QTemporaryDir scratch;
    if (!scratch.isValid())
        return QStringLiteral("cannot create a temporary directory: %1").arg(scratch.errorString());
    const QByteArray scratchPath = QFile::encodeName(scratch.path());
    if (mount("tmpfs", scratchPath.constData(), "tmpfs", 0, "mode=0755") != 0)
        return failure(QStringLiteral("cannot mount a scratch file system"));
    // Through /proc, because qemu-user redirects /usr to its own library folder.
    const QFileInfoList entries =
        QDir(QStringLiteral("/proc/self/root/usr"))
            .entryInfoList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden | QDir::System);
    for (const QFileInfo& entry : entries) {
        if (entry.fileName() == QLatin1String("tavrin"))
            continue;
        error = keepEntry(entry, scratch.path());
        if (!error.isEmpty())
            return error;
    }
    if (mount(scratchPath.constData(), "/usr", nullptr, MS_MOVE, nullptr) != 0)
        return failure(QStringLiteral("cannot move the scratch file system to /usr"));
    return {};
}
