// Reads the project directory into an image, and writes one back.
// SPDX-License-Identifier: MIT
#include "simulated_host/private_directory.h"
#include "simulated_host/remove_directory.h"
#include "tests/power_cut/disk_states/recorder.h"

#include <QtCore/QDir>
#include <QtCore/QFile>

DiskImage readProjectDirectory()
{
    DiskImage image;
    const QDir directory = QString::fromLatin1(fixedProjectDirectory);
    image.directory = directory.exists();
    for (const QString& name : directory.entryList(QDir::Files | QDir::Hidden)) {
        QFile file(directory.filePath(name));
        if (!file.open(QIODevice::ReadOnly))
            qFatal("%s: cannot be read", qPrintable(file.fileName()));
        image.files[name] = file.readAll();
    }
    return image;
}

void writeProjectDirectory(const DiskImage& image)
{
    QDir directory = QString::fromLatin1(fixedProjectDirectory);
    if (!image.directory) {
        removeDirectory(directory.path());
        return;
    }
    directory.mkpath(directory.path());
    for (const QString& name : directory.entryList(QDir::Files | QDir::Hidden))
        if (image.files.count(name) == 0)
            directory.remove(name);
    for (const auto& [name, bytes] : image.files) {
        QFile file(directory.filePath(name));
        if (!file.open(QIODevice::WriteOnly | QIODevice::Unbuffered) || file.write(bytes) != bytes.size())
            qFatal("%s: cannot be written: %s", qPrintable(file.fileName()), qPrintable(file.errorString()));
    }
}
