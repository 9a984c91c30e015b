// Puts storage into odd states: mounts file systems on the fixed directory, and shows files as text.
// SPDX-License-Identifier: MIT
#pragma once

#include "simulated_host/private_directory.h"

#include <QtCore/QByteArray>
#include <QtCore/QDir>
#include <QtCore/QFileInfo>
#include <QtCore/QString>
#include <QtCore/QStringList>

#include <gtest/gtest.h>

#include <optional>
#include <string>

#include <sys/mount.h>

/// Skips the test where nothing can be mounted.
#define NEEDS_A_MOUNT()                                                                                      \
    if (!pathMappingNotice().isEmpty())                                                                      \
    GTEST_SKIP() << "needs a mount"

/// Mounts a file system with these options ("size=8k") on the fixed directory. The fixture unmounts it.
inline void mountOnProjectDirectory(const char* options)
{
    QDir().mkpath(QLatin1String(fixedProjectDirectory));
    ASSERT_EQ(mount("tmpfs", fixedProjectDirectory, "tmpfs", 0, options), 0) << strerror(errno);
}

/// Changes that file system: its size or, with MS_RDONLY, whether it is writable.
inline void remountProjectDirectory(const char* options, unsigned long flags = 0)
{
    ASSERT_EQ(mount(nullptr, fixedProjectDirectory, nullptr, MS_REMOUNT | flags, options), 0)
        << strerror(errno);
}

/// The retention files that this process has open.
inline QStringList openFiles()
{
    QStringList names;
    const QFileInfoList descriptors =
        QDir(QStringLiteral("/proc/self/fd"))
            .entryInfoList(QDir::NoDotAndDotDot | QDir::AllEntries | QDir::System);
    for (const QFileInfo& descriptor : descriptors) {
        const QString target = descriptor.symLinkTarget();
        if (target.startsWith(QLatin1String(fixedProjectDirectory)))
            names.append(target.section(QLatin1Char('/'), -1));
    }
    names.sort();
    return names;
}

/// `size` bytes that differ from place to place and from seed to seed.
inline QByteArray pattern(int size, int seed)
{
    QByteArray bytes(size, '\0');
    for (int i = 0; i < size; ++i)
        bytes[i] = static_cast<char>((i * 31 + i / 251 + seed) & 0xff);
    return bytes;
}

/// Bytes as hexadecimal digits, for messages.
inline std::string hex(const std::optional<QByteArray>& bytes)
{
    if (!bytes)
        return "no such file";
    std::string text;
    for (int i = 0; i < bytes->size(); ++i)
        text += (i == 0 ? "" : " ") + std::string(bytes->mid(i, 1).toHex().constData());
    return text;
}

/// Recorded calls one a line, for messages.
inline std::string lines(const QStringList& calls)
{
    return calls.join(QLatin1String("\n")).toStdString();
}
