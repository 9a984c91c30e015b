// Change tracking: which cells are watched, and the write-through of each reported change.
// SPDX-License-Identifier: MIT
#include "poweroff_protect/poweroff_protect.h"
#include "poweroff_protect/retention_area.h"
#include "poweroff_protect/word_buffer.h"

#include <QtCore/QByteArray>

#include <cstring>
#include <new>

namespace {

/// The one bit cell whose changes are never written through.
const int ignoredBitAddress = 60100;

/// Makes room for all records at once. Without the memory for it the list grows record by record.
void reserveRecords(QList<RegisterValueChangeSize>& watched, const QList<MaintenanceFileInfo>& blocks)
{
    const int mostRecords = 1000000; // beyond it a mistyped length would cost memory before it is used
    qint64 size = watched.size();
    for (int k = 0; k < blocks.size(); ++k)
        size += qMax(0, blocks.at(k).count);
    if (size > mostRecords)
        return;
    try {
        watched.reserve(static_cast<int>(size));
    } catch (const std::bad_alloc&) {
    }
}

bool contains(const MaintenanceFileInfo& block, int address)
{
    return block.address.index <= address && address < block.address.index + block.count;
}

/// Writes the runtime's value of the bit cell `address` of `block` into its bit of the file.
void writeBitThrough(poweroff_protect& module, InterfaceComm& comm, std::fstream& file,
                     const MaintenanceFileInfo& block, const QString& area, int address)
{
    ushort value = 0;
    comm.readRegisterValues(area, area, address, 0, 1, &value);
    const int bit = (address - block.address.index) + block.bitOffset;
    // Negative counts can put it in front of the block's byte. With a negative remainder it is no bit of any
    // byte, and nothing is written.
    if (bit % 8 < 0)
        return;
    const int offset = block.fileOffset + bit / 8;
    const int mask = 1 << (bit % 8);
    unsigned char byte = 0;
    module.readFile(file, reinterpret_cast<char*>(&byte), 1, offset);
    byte = static_cast<unsigned char>(value != 0 ? byte | mask : byte & ~mask);
    module.writeFile(file, reinterpret_cast<char*>(&byte), 1, offset);
}

/// Writes the runtime's values of all cells of the word block `block` to their place in the file.
void writeWordsThrough(poweroff_protect& module, InterfaceComm& comm, std::fstream& file,
                       const MaintenanceFileInfo& block, const QString& area)
{
    const int bytes = block.count * 2;
    const WordBuffer words = makeWordBuffer(bytes);
    if (!words)
        return;
    comm.readRegisterValues(area, area, block.address.index, 0, block.count, words.get());
    module.writeFile(file, reinterpret_cast<char*>(words.get()), bytes, block.fileOffset);
}

} // namespace

void poweroff_protect::getMonitorTriggerAddr(QList<RegisterValueChangeSize>& watched)
{
    for (const RetentionArea& area : RetentionArea::all)
        _getMonitorTriggerAddr(this->*area.blocks, watched, area.name);
}

void poweroff_protect::_getMonitorTriggerAddr(QList<MaintenanceFileInfo>& blocks,
                                              QList<RegisterValueChangeSize>& watched, const char* areaName)
{
    reserveRecords(watched, blocks);
    RegisterValueChangeSize record = RegisterValueChangeSize(); // all zero
    record.hostWord4 = -1;
    std::memcpy(record.areaName, areaName, qstrnlen(areaName, sizeof record.areaName));
    record.changeSize = 1;
    for (int k = 0; k < blocks.size(); ++k) {
        const MaintenanceFileInfo& block = blocks.at(k);
        const int before = watched.size();
        try {
            for (int j = 0; j < block.count; ++j) {
                record.address = block.address.index + j;
                watched.append(record);
            }
        } catch (const std::bad_alloc&) {
            // A block that does not fit into memory is not watched; the others are.
            // One by one, because an empty list would need memory even to be asked for its beginning.
            while (watched.size() > before)
                watched.removeLast();
        }
    }
}

void poweroff_protect::addrOptChangeMsg(const _ExtendTriggerMsg_t* msg)
{
    if (!msg || !modelReady)
        return;
    const RetentionArea* const area = RetentionArea::named(msg->areaName);
    if (!area || (area->bits && msg->address == ignoredBitAddress))
        return;
    poweroffMaintenance(this->*area->file, this->*area->blocks, area->name, msg->address, area->fileName);
}

void poweroff_protect::poweroffMaintenance(std::basic_fstream<char>& file, QList<MaintenanceFileInfo>& blocks,
                                           const char* areaName, int address, const char* fileName)
{
    if (!areaName || !interfaceComm)
        return;
    const RetentionArea* const area = RetentionArea::named(areaName);
    for (int k = 0; k < blocks.size(); ++k) {
        const MaintenanceFileInfo& block = blocks.at(k);
        if (!contains(block, address))
            continue;
        try {
            checkFile(file, fileName);
            if (area && area->bits)
                writeBitThrough(*this, *interfaceComm, file, block, QLatin1String(area->name), address);
            else if (area)
                writeWordsThrough(*this, *interfaceComm, file, block, QLatin1String(area->name));
        } catch (const std::bad_alloc&) {
            // Without memory the block keeps its last values in the file; the other blocks go on.
        }
    }
    sys_base_do_system("sync");
}
