// The per-address files: opening on demand, positioned reading and writing, creation, restore.
// SPDX-License-Identifier: MIT
#include "poweroff_protect/poweroff_protect.h"
#include "poweroff_protect/project_directory.h"
#include "poweroff_protect/retention_area.h"
#include "poweroff_protect/word_buffer.h"

#include <QtCore/QFile>

void poweroff_protect::checkFile(std::basic_fstream<char>& file, const char* fileName)
{
    if (!file.is_open())
        openRetentionFile(file, projectPath(QLatin1String(fileName)));
}

void poweroff_protect::readFile(std::basic_fstream<char>& file, char* buffer, int length, int offset)
{
    file.seekg(offset);
    file.read(buffer, length);
    if (file.eof())
        file.clear();
}

void poweroff_protect::writeFile(std::basic_fstream<char>& file, char* buffer, int length, int offset)
{
    file.seekp(offset);
    file.write(buffer, length);
    file.flush();
}

void poweroff_protect::initFile(std::basic_fstream<char>& file, QFileInfo& info, QString fileName,
                                QList<MaintenanceFileInfo>& blocks, int perAddressCode)
{
    const QString path = projectPath(fileName);
    info.setFile(path);
    if (!info.exists()) {
        int total = 0;
        for (int k = 0; k < blocks.size(); ++k)
            total += blocks.at(k).count;
        const RetentionArea* const area = RetentionArea::withPerAddressCode(perAddressCode);
        QFile created(path);
        created.open(QIODevice::WriteOnly);
        created.resize(!area ? 0 : area->bits ? total / 8 + 1 : total * 2);
        created.close();
        return; // a new file holds no values yet
    }
    if (info.size() < 1)
        return;
    openRetentionFile(file, path);
    initMaintenance(blocks);
}

void poweroff_protect::initMaintenance(QList<MaintenanceFileInfo>& blocks)
{
    if (!interfaceComm)
        return;
    int firstBit = 0; // of the block at hand, counted through the file
    for (int k = 0; k < blocks.size(); ++k) {
        const MaintenanceFileInfo& block = blocks.at(k);
        if (block.count < 1)
            continue;
        const _ADDRESS_& address = block.address;
        const RetentionArea* const area = RetentionArea::named(address.block);
        if (area && area->bits) {
            for (int j = 0; j < block.count; ++j) {
                const int bit = firstBit + j;
                unsigned char byte = 0;
                readFile(this->*area->file, reinterpret_cast<char*>(&byte), 1, bit / 8);
                if (byte == 0)
                    continue;
                const ushort value = (byte >> (bit % 8)) & 1;
                interfaceComm->writeRegisterValues(address.link, address.block, address.index + j, -1, 1,
                                                   &value);
            }
        } else if (area) {
            const int bytes = block.count * 2;
            if (const WordBuffer words = makeWordBuffer(bytes)) {
                readFile(this->*area->file, reinterpret_cast<char*>(words.get()), bytes, block.fileOffset);
                interfaceComm->writeRegisterValues(address.link, address.block, address.index, -1,
                                                   block.count, words.get());
            }
        }
        if (!area || area->movesBits)
            firstBit += block.count;
    }
}
