// Reads how much was written to the device that holds a directory, as the kernel counts it.
// SPDX-License-Identifier: MIT
#pragma once

#include <QtCore/QString>

/// Since the machine was started, by all programs.
struct DeviceWrites
{
    QString device; ///< such as "mmcblk0p3"
    qint64 requests;
    qint64 bytes;
};

/// Throws a Refusal when there is no such directory, or when no block device holds it, as with UBIFS, tmpfs
/// or a file system of the network. `systemFolder` is the kernel's "/sys", or what stands in for it.
DeviceWrites deviceWrites(const QString& directory, const QString& systemFolder = QStringLiteral("/sys"));
