// Applies the rules for files and cells, one by one.
// SPDX-License-Identifier: MIT
#include "tests/support/kept_files_model.h"

#include "tests/support/areas.h"
#include "tests/support/literal_rules.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace {

/// The bytes of the file at that place, zeros past its end. A negative place breaks the stream.
QByteArray readAt(ModelFile& file, std::int32_t offset, std::int32_t length)
{
    QByteArray result;
    if (file.open && offset < 0)
        file.failed = true;
    if (file.open && !file.failed)
        result = file.bytes->mid(offset, length);
    result.append(QByteArray(length - result.size(), '\0'));
    return result;
}

void writeAt(ModelFile& file, std::int32_t offset, const QByteArray& data)
{
    if (file.open && offset < 0)
        file.failed = true;
    if (!file.open || file.failed)
        return;
    if (file.bytes->size() < offset + data.size())
        file.bytes->append(QByteArray(offset + data.size() - file.bytes->size(), '\0'));
    file.bytes->replace(offset, data.size(), data);
}

/// In this machine's byte order, as all words are kept.
ushort unitAt(const QByteArray& bytes, int unit)
{
    ushort value = 0;
    std::memcpy(&value, bytes.constData() + 2 * unit, sizeof value);
    return value;
}

std::vector<ushort> unitsOf(const QByteArray& bytes)
{
    std::vector<ushort> units;
    for (int k = 0; k < bytes.size() / 2; ++k)
        units.push_back(unitAt(bytes, k));
    return units;
}

QString readCall(const ExpectedBlock& block, std::int32_t address, std::int32_t count)
{
    return QStringLiteral("readRegisterValues link=%1 area=%1 address=%2 selector=0 count=%3")
        .arg(block.entry.block, QString::number(address), QString::number(count));
}

QString writeCall(const ExpectedBlock& block, std::int32_t address, const std::vector<ushort>& values)
{
    QStringList texts;
    for (const ushort value : values)
        texts.append(QString::number(value));
    return QStringLiteral("writeRegisterValues link=%1 area=%2 address=%3 selector=-1 count=%4 data=%5")
        .arg(block.entry.link, block.entry.block, QString::number(address), QString::number(values.size()),
             texts.join(QLatin1String(",")));
}

} // namespace

void KeptFilesModel::sync()
{
    ++syncCount;
    if (calls)
        calls->append(QStringLiteral("sync"));
}

KeptFilesModel::KeptFilesModel(ExpectedProject retention, MemoryAreas& areas,
                               std::array<std::optional<QByteArray>, 3> start, QStringList* calls)
    : retention(std::move(retention)), areas(areas), calls(calls)
{
    for (std::size_t a = 0; a < 3; ++a)
        files[a].bytes = std::move(start[a]);
}

void KeptFilesModel::open()
{
    if (retention.mode == 1)
        for (std::size_t a = 0; a < 3; ++a)
            restoreImage(a);
}

void KeptFilesModel::restoreImage(std::size_t area)
{
    ModelFile& file = files[area];
    if (!file.bytes || file.bytes->size() < testAreas[area].imageBytes)
        file.bytes = QByteArray(testAreas[area].imageBytes, '\0');
    file.open = true;
    std::copy_n(file.bytes->constData(), testAreas[area].imageBytes, memory(area).memory().begin());
}

void KeptFilesModel::init()
{
    ready = true;
    if (retention.saveAll)
        return;
    for (std::size_t a = 0; a < 3; ++a) {
        if (!files[a].bytes) {
            makeFile(a);
        } else if (!files[a].bytes->isEmpty()) {
            files[a].open = true;
            if (a == 0)
                restoreBits();
            else
                restoreWords(a);
        }
    }
}

void KeptFilesModel::makeFile(std::size_t area)
{
    std::int32_t total = 0;
    for (const ExpectedBlock& block : retention.blocks[area])
        total = sum32(total, block.count);
    const std::int32_t length = area == 0 ? total / 8 + 1 : sum32(total, total);
    files[area].bytes = QByteArray(std::max(0, length), '\0');
}

void KeptFilesModel::restoreBits()
{
    std::int32_t running = 0;
    for (const ExpectedBlock& block : retention.blocks[0]) {
        for (std::int32_t j = 0; j < block.count; ++j) {
            const std::int32_t bit = running + j;
            const int byte = static_cast<unsigned char>(readAt(files[0], bit / 8, 1).at(0));
            if (byte == 0)
                continue;
            const auto value = static_cast<ushort>(byte >> (bit % 8) & 1);
            const std::int32_t address = sum32(block.entry.index, j);
            memory(0).setCell(address, value);
            if (calls)
                calls->append(writeCall(block, address, {value}));
        }
        running += std::max(0, block.count);
    }
}

void KeptFilesModel::restoreWords(std::size_t area)
{
    for (const ExpectedBlock& block : retention.blocks[area]) {
        if (block.count < 1)
            continue;
        const QByteArray words = readAt(files[area], block.fileOffset, 2 * block.count);
        if (calls)
            calls->append(writeCall(block, block.entry.index, unitsOf(words)));
        for (std::int32_t j = 0; j < block.count; ++j) {
            const std::int64_t address = std::int64_t(block.entry.index) + j;
            if (address >= 0 && address < MemoryArea::cellCount)
                memory(area).setCell(static_cast<int>(address), unitAt(words, j));
        }
    }
}

void KeptFilesModel::cyclicRun()
{
    if (!retention.saveAll)
        return;
    for (std::size_t a = 0; a < 3; ++a) {
        const auto& image = memory(a).memory();
        writeAt(files[a], 0,
                QByteArray(reinterpret_cast<const char*>(image.data()), testAreas[a].imageBytes));
    }
    sync();
}

void KeptFilesModel::change(const QByteArray& nameField, std::int32_t address)
{
    if (!ready)
        return;
    for (std::size_t a = 0; a < 3; ++a) {
        if (nameField.left(nameField.indexOf('\0')) != testAreas[a].name || !nameField.contains('\0'))
            continue;
        if (a == 0 && address == 60100)
            return;
        for (const ExpectedBlock& block : retention.blocks[a]) {
            if (block.entry.index > address || address >= sum32(block.entry.index, block.count))
                continue;
            files[a].open = files[a].bytes.has_value();
            if (a == 0)
                writeBit(block, address);
            else
                writeWords(a, block);
        }
        sync();
    }
}

void KeptFilesModel::writeBit(const ExpectedBlock& block, std::int32_t address)
{
    if (calls)
        calls->append(readCall(block, address, 1));
    const std::int32_t bit = sum32(difference32(address, block.entry.index), block.bitOffset);
    const std::int32_t offset = sum32(block.fileOffset, bit / 8);
    const int byte = readAt(files[0], offset, 1).at(0);
    const int mask = bit % 8 < 0 ? 0 : 1 << (bit % 8); // negative after negative counts: no bit of the byte
    const bool set = memory(0).cell(address).value_or(0) != 0;
    writeAt(files[0], offset, QByteArray(1, static_cast<char>(set ? byte | mask : byte & ~mask)));
}

void KeptFilesModel::writeWords(std::size_t area, const ExpectedBlock& block)
{
    if (calls)
        calls->append(readCall(block, block.entry.index, block.count));
    QByteArray words;
    for (std::int32_t j = 0; j < block.count; ++j) {
        const std::int64_t address = std::int64_t(block.entry.index) + j;
        const bool inside = address >= 0 && address < MemoryArea::cellCount;
        const ushort value = inside ? *memory(area).cell(static_cast<int>(address)) : 0;
        words.append(reinterpret_cast<const char*>(&value), sizeof value);
    }
    writeAt(files[area], block.fileOffset, words);
}
