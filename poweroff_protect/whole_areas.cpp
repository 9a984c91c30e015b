// Restores and saves whole areas: each file is a raw image of its area's memory.
// SPDX-License-Identifier: MIT
#include "poweroff_protect/area_facts.h"
#include "poweroff_protect/file_access.h"
#include "poweroff_protect/poweroff_protect.h"

namespace {

/// Bytes of the area with that whole-area code; 0 for an unknown code.
int imageBytes(int areaCode)
{
    const AreaFacts* const area = areaWithWholeAreaCode(areaCode);
    return area ? area->imageBytes : 0;
}

/// The runtime's memory of an area; null when there is none or no way to it.
char* areaMemory(InterfaceComm* comm, int areaCode)
{
    return static_cast<char*>(comm ? comm->getAreaMemory(areaCode) : nullptr);
}

} // namespace

void poweroff_protect::initFile(std::fstream& file, QString name, int areaCode)
{
    const QString path = projectPath(name);
    const int size = imageBytes(areaCode);
    const FileLook look = lookAtFile(path);
    // Anything but a regular file stays as it is: opening a FIFO for writing would wait for its reader.
    if (look.missing || (look.regular && look.size < size))
        makeZeroFile(path, size);
    openRetentionFile(file, path);

    char* const memory = areaMemory(interfaceComm, areaCode);
    if (!memory || size == 0)
        return;
    file.seekg(0);
    file.read(memory, size);
    file.flush();
}

void poweroff_protect::writeFile(std::fstream& file, int areaCode)
{
    const int size = imageBytes(areaCode);
    const char* const memory = areaMemory(interfaceComm, areaCode);
    if (!memory || size == 0)
        return;
    file.seekp(0);
    file.write(memory, size);
    file.flush();
}
