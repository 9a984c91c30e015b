// Shows what is in files and which of them are open, for messages and comparisons.
// SPDX-License-Identifier: MIT
#pragma once

#include "simulated_host/private_directory.h"

#include <QtCore/QByteArray>
#include <QtCore/QDir>
#include <QtCore/QFileInfo>
#include <QtCore/QString>
#include <QtCore/QStringList>

#include <optional>
#include <string>

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
