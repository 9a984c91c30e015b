// Whole-area mode: each file is a raw image of its area's memory, restored once and saved again and again.
// SPDX-License-Identifier: MIT
#include "poweroff_protect/poweroff_protect.h"
#include "poweroff_protect/project_directory.h"
#include "poweroff_protect/retention_area.h"

#include <QtCore/QFile>

namespace {

/// Bytes of the area with that whole-area code; 0 for an unknown code.
int imageBytes(int areaCode)
{
    const RetentionArea* const area = RetentionArea::withWholeAreaCode(areaCode);
    return area ? area->imageBytes : 0;
}

/// Makes a missing file, or empties a shorter one, and fills it with `size` zero bytes. Anything that is not
/// a regular file stays as it is: opening a FIFO for writing would wait for its reader.
void makeImageFile(const QString& path, qint64 size)
{
    const QFileInfo present(path);
    if (present.isFile() ? present.size() >= size : present.exists())
        return;
    QFile file(path);
    file.open(QIODevice::WriteOnly);
    file.resize(size);
    file.close();
}

} // namespace

void poweroff_protect::initFile(std::fstream& file, QString name, int areaCode)
{
    const QString path = projectPath(name);
    const int size = imageBytes(areaCode);
    makeImageFile(path, size);
    openRetentionFile(file, path);

    char* const memory = static_cast<char*>(interfaceComm ? interfaceComm->getAreaMemory(areaCode) : nullptr);
    if (!memory || size == 0)
        return;
    file.seekg(0);
    file.read(memory, size);
    file.flush();
}

void poweroff_protect::writeFile(std::fstream& file, int areaCode)
{
    const int size = imageBytes(areaCode);
    const char* const memory =
        static_cast<char*>(interfaceComm ? interfaceComm->getAreaMemory(areaCode) : nullptr);
    if (!memory || size == 0)
        return;
    file.seekp(0);
    file.write(memory, size);
    file.flush();
}
