// Creates missing per-address files and restores existing ones into the areas.
// SPDX-License-Identifier: MIT
#include "poweroff_protect/area_fields.h"
#include "poweroff_protect/file_access.h"
#include "poweroff_protect/placement.h"
#include "poweroff_protect/poweroff_protect.h"
#include "poweroff_protect/word_buffer.h"
#include "poweroff_protect/wrapping.h"

void poweroff_protect::initFile(std::basic_fstream<char>& file, QFileInfo& info, QString fileName,
                                QList<MaintenanceFileInfo>& blocks, int perAddressCode)
{
    const QByteArray path = projectPath(fileName);
    info.setFile(QLatin1String(path.constData()));
    const FileLook look = lookAtFile(path);
    if (look.missing) { // a new file holds no values yet
        makeZeroFile(path, newFileLength(perAddressCode, blocks));
        return;
    }
    if (look.size == 0)
        return;
    openRetentionFile(file, path);
    if (look.size == -1 && !file.is_open()) // nothing says that there is a file to restore
        return;
    initMaintenance(blocks);
}

void poweroff_protect::initMaintenance(QList<MaintenanceFileInfo>& blocks)
{
    if (!interfaceComm)
        return;
    const std::array<AreaFields, areaCount> areas = AreaFields::of(*this);
    const MaintenanceFileInfo fileStart;
    int bitNumber = 0; // of the block's first bit, counted through the file
    for (int k = 0; k < blocks.size(); ++k) {
        const MaintenanceFileInfo& block = blocks.at(k);
        if (block.count < 1)
            continue;
        const _ADDRESS_& address = block.address;
        const AreaFacts* const area = areaNamed(address.block);
        if (area && area->bits) {
            for (int j = 0; j < block.count; ++j) {
                const BitPlace place = bitPlace(fileStart, wrapAdd(bitNumber, j));
                unsigned char byte = 0;
                readFile(areas[area - areaFacts].file, reinterpret_cast<char*>(&byte), 1, place.byte);
                if (byte == 0) // its cells keep the values that the runtime started with
                    continue;
                const ushort value = (byte & place.mask) != 0;
                interfaceComm->writeRegisterValues(address.link, address.block, wrapAdd(address.index, j), -1,
                                                   1, &value);
            }
        } else if (area) {
            const int bytes = wrapAdd(block.count, block.count);
            if (const WordBuffer words = makeWordBuffer(bytes)) {
                readFile(areas[area - areaFacts].file, reinterpret_cast<char*>(words.get()), bytes,
                         block.fileOffset);
                interfaceComm->writeRegisterValues(address.link, address.block, address.index, -1,
                                                   block.count, words.get());
            }
        }
        if (!area || area->movesBitNumber)
            bitNumber = wrapAdd(bitNumber, block.count);
    }
}
