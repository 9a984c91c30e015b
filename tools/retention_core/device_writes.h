// Reads how much was written to the device that holds a directory, as the kernel counts it.
// SPDX-License-Identifier: MIT
#pragma once

#include <QtCore/QString>

/// Written since the machine started, by all programs.
struct DeviceWrites
{
    QString device; ///< such as "mmcblk0p3"
    qint64 requests;
    qint64 bytes;
};

/// Throws a Refusal when there is no such directory, or when it is not on a block device, as with UBIFS,
/// tmpfs or a network file system. `systemFolder` is the kernel's "/sys" or, in tests, a substitute.
DeviceWrites deviceWrites(const QString& directory, const QString& systemFolder = QStringLiteral("/sys"));
