// Change tracking: which cells are watched, and the write-through of each reported change.
#include "poweroff_protect/poweroff_protect.h"
#include "poweroff_protect/retention_area.h"
#include "poweroff_protect/word_buffer.h"

#include <QtCore/QByteArray>

#include <cstring>

namespace {

/// The one bit cell whose changes are never written through.
const int ignoredBitAddress = 60100;

/// Makes room for all records at once, as far as a list can hold them.
void reserveRecords(QList<RegisterValueChangeSize>& watched, const QList<MaintenanceFileInfo>& blocks)
{
    qint64 size = watched.size();
    for (int k = 0; k < blocks.size(); ++k)
        size += qMax(0, blocks.at(k).count);
    if (size <= 1000000)
        watched.reserve(static_cast<int>(size));
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
        for (int j = 0; j < block.count; ++j) {
            record.address = block.address.index + j;
            watched.append(record);
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
    const QString areaText = QLatin1String(areaName);
    const RetentionArea* const area = RetentionArea::named(areaName);
    for (int k = 0; k < blocks.size(); ++k) {
        const MaintenanceFileInfo& block = blocks.at(k);
        const int start = block.address.index;
        if (address < start || address >= start + block.count)
            continue;
        checkFile(file, fileName);
        if (!area)
            continue;
        if (area->bits) {
            ushort value = 0;
            interfaceComm->readRegisterValues(areaText, areaText, address, 0, 1, &value);
            const int bit = (address - start) + block.bitOffset;
            // Negative counts before the block can put it before its own byte; it then has no cell in the
            // file.
            if (bit < 0)
                continue;
            const int offset = block.fileOffset + bit / 8;
            unsigned char byte = 0;
            readFile(file, reinterpret_cast<char*>(&byte), 1, offset);
            const int mask = 1 << (bit % 8);
            byte = static_cast<unsigned char>(value != 0 ? byte | mask : byte & ~mask);
            writeFile(file, reinterpret_cast<char*>(&byte), 1, offset);
        } else {
            const int bytes = block.count * 2;
            if (const WordBuffer words = makeWordBuffer(bytes)) {
                interfaceComm->readRegisterValues(areaText, areaText, start, 0, block.count, words.get());
                writeFile(file, reinterpret_cast<char*>(words.get()), bytes, block.fileOffset);
            }
        }
    }
    sys_base_do_system("sync");
}
