// The model's files are byte arrays and its streams three states; every step is what the files are meant to
// be.
// SPDX-License-Identifier: MIT
#include "tests/support/retention_model.h"

#include <algorithm>

namespace {

/// The byte at that place of the file; nothing past its end or when the stream does not read.
std::optional<unsigned char> byteAt(const ModelArea& area, int offset)
{
    if (area.stream != ModelArea::Open || offset >= area.file->size())
        return std::nullopt;
    return static_cast<unsigned char>(area.file->at(offset));
}

/// Places before the file cannot be sought, which fails a stream for good.
bool seeks(ModelArea& area, int offset)
{
    if (area.stream != ModelArea::Open || offset < 0)
        area.stream = ModelArea::Failed;
    return area.stream == ModelArea::Open;
}

void putBytes(ModelArea& area, int offset, const QByteArray& bytes)
{
    if (!seeks(area, offset))
        return;
    if (area.file->size() < offset + bytes.size())
        area.file->append(QByteArray(offset + bytes.size() - area.file->size(), '\0'));
    area.file->replace(offset, bytes.size(), bytes);
}

/// Opens a stream that is not open; one that is stays as it is.
void openOnDemand(ModelArea& area, bool& isOpen)
{
    if (isOpen)
        return;
    isOpen = area.file.has_value();
    area.stream = isOpen ? ModelArea::Open : ModelArea::Failed;
}

QString readCall(const QString& area, int address, int count)
{
    return QStringLiteral("readRegisterValues link=%1 area=%1 address=%2 selector=0 count=%3")
        .arg(area, QString::number(address), QString::number(count));
}

QString writeCall(const QString& area, int address, const std::vector<ushort>& values)
{
    QStringList texts;
    for (const ushort value : values)
        texts.append(QString::number(value));
    return QStringLiteral("writeRegisterValues link=Local area=%1 address=%2 selector=-1 count=%3 data=%4")
        .arg(area, QString::number(address), QString::number(values.size()), texts.join(QLatin1String(",")));
}

} // namespace

ushort cellOf(const ModelArea& area, int address)
{
    return address >= 0 && address < 65536 ? area.cells[static_cast<std::size_t>(address)] : 0;
}

RetentionModel::RetentionModel()
    : areas{{{QStringLiteral("LB"), QString::fromLatin1(bitFileName), true},
             {QStringLiteral("LW"), QString::fromLatin1(wordFileName), false},
             {QStringLiteral("RWI"), QString::fromLatin1(rwiFileName), false}}}
{
}

void RetentionModel::setCell(ModelArea& area, int address, ushort value)
{
    if (address >= 0 && address < 65536)
        area.cells[static_cast<std::size_t>(address)] = area.bits ? value != 0 : value;
}

void RetentionModel::makeBlocks(ModelArea& area, const std::vector<Entry>& entries)
{
    std::vector<RuleEntry> own;
    for (const Entry& entry : entries)
        if (entry.area == area.name)
            own.push_back({entry.index, entry.length, 0, 0});
    std::sort(own.begin(), own.end(),
              [](const RuleEntry& a, const RuleEntry& b) { return a.index < b.index; });
    area.blocks = partitionByRules(own);
    for (RuleBlock& block : area.blocks)
        block.area = area.name;
    mapByRules(area.blocks);
}

QStringList RetentionModel::start(const std::vector<Entry>& entries)
{
    QStringList calls;
    for (ModelArea& area : areas) {
        makeBlocks(area, entries);
        area.stream = ModelArea::Closed;
        area.isOpen = false;
    }
    for (ModelArea& area : areas)
        startArea(area, calls);
    return calls;
}

void RetentionModel::startArea(ModelArea& area, QStringList& calls)
{
    if (!area.file) {
        int total = 0;
        for (const RuleBlock& block : area.blocks)
            total += block.count;
        area.file = QByteArray(std::max(0, area.bits ? total / 8 + 1 : total * 2), '\0');
        return;
    }
    if (area.file->isEmpty())
        return;
    area.stream = ModelArea::Open;
    area.isOpen = true;
    if (area.bits)
        restoreBits(area, calls);
    else
        restoreWords(area, calls);
}

void RetentionModel::restoreBits(ModelArea& area, QStringList& calls)
{
    int number = 0;
    for (const RuleBlock& block : area.blocks)
        for (int j = 0; j < block.count; ++j, ++number) {
            const unsigned char byte = byteAt(area, number / 8).value_or(0);
            if (byte == 0)
                continue;
            const auto value = static_cast<ushort>((byte >> (number % 8)) & 1);
            calls.append(writeCall(area.name, block.index + j, {value}));
            setCell(area, block.index + j, value);
        }
}

void RetentionModel::restoreWords(ModelArea& area, QStringList& calls)
{
    for (const RuleBlock& block : area.blocks) {
        if (block.count < 1)
            continue;
        seeks(area, block.fileOffset);
        std::vector<ushort> values;
        for (int j = 0; j < block.count; ++j) {
            const int low = byteAt(area, block.fileOffset + 2 * j).value_or(0);
            const int high = byteAt(area, block.fileOffset + 2 * j + 1).value_or(0);
            values.push_back(static_cast<ushort>(low + 256 * high));
            setCell(area, block.index + j, values.back());
        }
        calls.append(writeCall(area.name, block.index, values));
    }
}

QStringList RetentionModel::change(const QString& areaName, int address)
{
    QStringList calls;
    const auto area = std::find_if(areas.begin(), areas.end(),
                                   [&](const ModelArea& each) { return each.name == areaName; });
    if (area == areas.end() || (area->bits && address == 60100))
        return calls;
    for (const RuleBlock& block : area->blocks) {
        if (address < block.index || address >= block.index + block.count)
            continue;
        openOnDemand(*area, area->isOpen);
        if (area->bits)
            changeBit(*area, block, address, calls);
        else
            changeWords(*area, block, calls);
    }
    calls.append(QStringLiteral("sync"));
    return calls;
}

void RetentionModel::changeBit(ModelArea& area, const RuleBlock& block, int address, QStringList& calls)
{
    calls.append(readCall(area.name, address, 1));
    const int place = address - block.index + block.bitOffset;
    const int offset = block.fileOffset + place / 8;
    if (!seeks(area, offset))
        return;
    // A negative remainder, which only negative counts bring, is no bit: the byte is written back as it was.
    const int mask = place % 8 < 0 ? 0 : 1 << (place % 8);
    const int byte = byteAt(area, offset).value_or(0);
    putBytes(area, offset,
             QByteArray(1, static_cast<char>(cellOf(area, address) ? byte | mask : byte & ~mask)));
}

void RetentionModel::changeWords(ModelArea& area, const RuleBlock& block, QStringList& calls)
{
    calls.append(readCall(area.name, block.index, block.count));
    QByteArray bytes;
    for (int j = 0; j < block.count; ++j) {
        const ushort value = cellOf(area, block.index + j);
        bytes.append(static_cast<char>(value & 0xff)).append(static_cast<char>(value >> 8));
    }
    putBytes(area, block.fileOffset, bytes);
}

QStringList RetentionModel::watched() const
{
    QStringList cells;
    for (const ModelArea& area : areas)
        for (const RuleBlock& block : area.blocks)
            for (int j = 0; j < block.count; ++j)
                cells.append(QStringLiteral("%1 %2").arg(area.name).arg(block.index + j));
    return cells;
}
