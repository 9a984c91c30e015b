// Tells the runtime which cells to watch and writes each reported change through to its file.
// SPDX-License-Identifier: MIT
#include "poweroff_protect/area_fields.h"
#include "poweroff_protect/out_of_memory.h"
#include "poweroff_protect/placement.h"
#include "poweroff_protect/poweroff_protect.h"
#include "poweroff_protect/word_buffer.h"
#include "poweroff_protect/wrapping.h"

#include <cstring>

namespace {

bool contains(const MaintenanceFileInfo& block, int address)
{
    return block.address.index <= address && address < wrapAdd(block.address.index, block.count);
}

/// Writes the runtime's value of the bit cell `address` of `block` into its bit of the file.
void writeBitThrough(poweroff_protect& module, InterfaceComm& comm, std::fstream& file,
                     const MaintenanceFileInfo& block, const QString& area, int address)
{
    ushort value = 0;
    comm.readRegisterValues(area, area, address, 0, 1, &value);
    const BitPlace place = bitPlace(block, wrapSubtract(address, block.address.index));
    unsigned char byte = 0;
    module.readFile(file, reinterpret_cast<char*>(&byte), 1, place.byte);
    byte = static_cast<unsigned char>(value != 0 ? byte | place.mask : byte & ~place.mask);
    module.writeFile(file, reinterpret_cast<char*>(&byte), 1, place.byte);
}

/// Writes the runtime's values of all cells of the word block `block` to their place in the file.
void writeWordsThrough(poweroff_protect& module, InterfaceComm& comm, std::fstream& file,
                       const MaintenanceFileInfo& block, const QString& area)
{
    const int bytes = wrapAdd(block.count, block.count);
    const WordBuffer words = makeWordBuffer(bytes);
    if (!words)
        return;
    comm.readRegisterValues(area, area, block.address.index, 0, block.count, words.get());
    module.writeFile(file, reinterpret_cast<char*>(words.get()), bytes, block.fileOffset);
}

/// Writes what changed of `block`, an area's, to the file; nothing for an unknown area.
void writeThrough(poweroff_protect& module, InterfaceComm& comm, std::fstream& file,
                  const MaintenanceFileInfo& block, const char* areaName, int address)
{
    const AreaFacts* const area = areaNamed(areaName);
    if (!area)
        return;
    // Where the block's own text is the same, it is passed on: another would take an allocation, and even a
    // copy two locked instructions.
    const QString& own = block.address.block;
    const QString other = own == QLatin1String(areaName) ? QString() : QString(QLatin1String(areaName));
    const QString& text = other.isNull() ? own : other;
    if (area->bits)
        writeBitThrough(module, comm, file, block, text, address);
    else
        writeWordsThrough(module, comm, file, block, text);
}

} // namespace

void poweroff_protect::getMonitorTriggerAddr(QList<RegisterValueChangeSize>& watched)
{
    for (const AreaFields& area : AreaFields::of(*this))
        _getMonitorTriggerAddr(area.blocks, watched, area.facts.name);
}

void poweroff_protect::_getMonitorTriggerAddr(QList<MaintenanceFileInfo>& blocks,
                                              QList<RegisterValueChangeSize>& watched, const char* areaName)
{
    RegisterValueChangeSize record = RegisterValueChangeSize(); // all zero
    record.hostWord4 = -1;
    std::memcpy(record.areaName, areaName, qstrnlen(areaName, sizeof record.areaName));
    record.changeSize = 1;
    for (int k = 0; k < blocks.size(); ++k) {
        const MaintenanceFileInfo& block = blocks.at(k);
        const int before = static_cast<int>(watched.size());
        const bool complete = ranWithMemory([&] {
            for (int j = 0; j < block.count; ++j) {
                record.address = wrapAdd(block.address.index, j);
                watched.append(record);
            }
        });
        // A block whose records do not fit into memory is not watched. One by one, because erasing a range
        // may allocate.
        while (!complete && watched.size() > before)
            watched.removeLast();
    }
}

void poweroff_protect::addrOptChangeMsg(const _ExtendTriggerMsg_t* msg)
{
    if (!msg || !modelReady)
        return;
    const AreaFacts* const facts = areaNamed(msg->areaName);
    if (!facts || isIgnoredBit(*facts, msg->address))
        return;
    const AreaFields area = AreaFields::of(*this)[facts - areaFacts];
    poweroffMaintenance(area.file, area.blocks, facts->name, msg->address, facts->fileName);
}

void poweroff_protect::poweroffMaintenance(std::basic_fstream<char>& file, QList<MaintenanceFileInfo>& blocks,
                                           const char* areaName, int address, const char* fileName)
{
    if (!areaName || !interfaceComm)
        return;
    // When memory runs out, the file keeps the block's last values.
    ranWithMemory([&] {
        for (int k = 0; k < blocks.size(); ++k) {
            if (!contains(blocks.at(k), address))
                continue;
            checkFile(file, fileName);
            writeThrough(*this, *interfaceComm, file, blocks.at(k), areaName, address);
        }
    });
    sys_base_do_system("sync");
}
