// Makes a scratch directory, and a process that waits for the end of this one and removes it.
// SPDX-License-Identifier: MIT
#include "simulated_host/scratch_directory.h"

#include "simulated_host/remove_directory.h"

#include <QtCore/QDir>
#include <QtCore/QTemporaryDir>

#include <csignal>
#include <fcntl.h>
#include <unistd.h>

namespace {

/// Waits until no process holds the other end of the pipe, then removes the directory.
[[noreturn]] void removeAfterTheEnd(int pipeEnd, const QString& directory)
{
    // Detaches from terminal, pipes and process group, so that nothing waits for this process.
    setsid();
    for (int descriptor = 0; descriptor < 1024; ++descriptor)
        if (descriptor != pipeEnd)
            close(descriptor);
    for (const int signal : {SIGHUP, SIGINT, SIGTERM})
        std::signal(signal, SIG_IGN);
    char byte;
    while (read(pipeEnd, &byte, 1) < 0) {
    }
    removeDirectory(directory);
    _exit(0);
}

} // namespace

QString makeScratchDirectory()
{
    QTemporaryDir directory(QDir::tempPath() + QStringLiteral("/usr_tavrin.XXXXXX"));
    int ends[2];
    if (!directory.isValid() || pipe2(ends, O_CLOEXEC) != 0)
        return {};
    const pid_t child = fork();
    if (child < 0)
        return {};
    if (child == 0) {
        close(ends[1]);
        removeAfterTheEnd(ends[0], directory.path());
    }
    close(ends[0]);
    directory.setAutoRemove(false);
    return directory.path();
}
