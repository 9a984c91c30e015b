// Restores and saves whole areas: each file is a raw image of its area's memory.
// SPDX-License-Identifier: MIT
#include "poweroff_protect/area_facts.h"
#include "poweroff_protect/file_access.h"
#include "poweroff_protect/poweroff_protect.h"

namespace {

/// The size in bytes of the area with that whole-area code; 0 for an unknown code.
int imageBytes(int areaCode)
{
    for (const AreaFacts& area : areaFacts)
        if (area.wholeAreaCode == areaCode)
            return area.imageBytes;
    return 0;
}

} // namespace

void poweroff_protect::initFile(std::fstream& file, QString name, int areaCode)
{
    const QByteArray path = projectPath(name);
    const int size = imageBytes(areaCode);
    const FileLook look = lookAtFile(path);
    // Leaves anything but a regular file alone: opening a FIFO for writing would wait for its reader.
    if (look.missing || (look.regular && look.size < size))
        makeZeroFile(path, size);
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
    char* const memory = static_cast<char*>(interfaceComm ? interfaceComm->getAreaMemory(areaCode) : nullptr);
    if (!memory || size == 0)
        return;
    file.seekp(0);
    file.write(memory, size);
    file.flush();
}
