// Chooses between a mount namespace and mapped paths.
// SPDX-License-Identifier: MIT
#include "simulated_host/private_directory.h"

#include "simulated_host/file_calls/path_mapping.h"
#include "simulated_host/mount_namespace.h"
#include "simulated_host/scratch_directory.h"

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>

#include <sys/wait.h>
#include <unistd.h>

namespace {

QString refusal; ///< why there is no mount namespace; empty when there is one
QString scratch;

/// Tries in a child process, because a half-made namespace cannot be left again. Returns what was refused.
QString tryNamespace()
{
    int ends[2];
    const pid_t child = pipe(ends) == 0 ? fork() : -1;
    if (child < 0)
        return QStringLiteral("cannot start a process to try a mount namespace");
    if (child == 0) {
        const QByteArray error = enterNamespaceWithOwnUsr().toUtf8();
        const ssize_t written = write(ends[1], error.constData(), static_cast<size_t>(error.size()));
        _exit(written == error.size() && error.isEmpty() ? 0 : 1);
    }
    close(ends[1]);
    QFile answer;
    answer.open(ends[0], QIODevice::ReadOnly, QFile::AutoCloseHandle);
    const QString error = QString::fromUtf8(answer.readAll());
    int status = 0;
    waitpid(child, &status, 0);
    return status != 0 && error.isEmpty() ? QStringLiteral("no mount namespace") : error;
}

QString map(const QString& from, const QString& to)
{
    return mapPath(QFile::encodeName(from).constData(), QFile::encodeName(to).constData())
               ? QString()
               : QStringLiteral("cannot map %1 to %2: the path is too long").arg(from, to);
}

} // namespace

QString enterPrivateUsr()
{
    refusal = tryNamespace();
    if (refusal.isEmpty())
        return enterNamespaceWithOwnUsr();
    scratch = makeScratchDirectory();
    if (scratch.isEmpty())
        return QStringLiteral("a temporary directory is needed because nothing can be mounted here (%1), but "
                              "cannot be created in %2; set TMPDIR to a directory that you may write to")
            .arg(refusal, QDir::tempPath());
    return map(QStringLiteral("/usr/tavrin"), mappedUsrTavrin());
}

QString mapProjectDirectory(const QString& directory)
{
    const QString fixed = QString::fromLatin1(fixedProjectDirectory);
    const QString shown = QFileInfo(directory).absoluteFilePath();
    if (!QDir().mkpath(fixed))
        return QStringLiteral("cannot create %1").arg(fixed);
    return refusal.isEmpty() ? bindMount(shown, fixed) : map(fixed, shown);
}

QString pathMappingNotice()
{
    return refusal.isEmpty()
               ? QString()
               : QStringLiteral("mapping paths to /usr/tavrin inside this process, because nothing can be "
                                "mounted here (%1); this changes no result, and nothing needs to be done")
                     .arg(refusal);
}

QString mappedUsrTavrin()
{
    return refusal.isEmpty() ? QString() : scratch + QStringLiteral("/tavrin");
}
