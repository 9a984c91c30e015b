// Writing of the new project's files.
// SPDX-License-Identifier: MIT
#include "tools/retention_inspector/migration.h"

#include "tools/retention_inspector/output_directory.h"

#include <QtCore/QFile>

namespace {

QByteArray wordBytes(const AreaValues& values, const CellRange& cells)
{
    QByteArray bytes;
    bytes.reserve(static_cast<int>(2 * (cells.last - cells.first + 1)));
    for (qint64 cell = cells.first; cell <= cells.last; ++cell) {
        const ushort value = values.values[static_cast<std::size_t>(cell)];
        bytes.append(static_cast<char>(value & 0xff));
        bytes.append(static_cast<char>(value >> 8));
    }
    return bytes;
}

bool writeAt(QIODevice& device, qint64 offset, const QByteArray& bytes)
{
    return device.seek(offset) && device.write(bytes) == bytes.size();
}

/// Sets the bits of some cells of a block; the first byte may hold bits of the block before it.
bool writeBits(QIODevice& device, const LayoutBlock& block, const CellRange& cells, const AreaValues& values)
{
    const qint64 firstBit = block.byte * 8 + block.bit + (cells.first - block.first);
    const qint64 lastBit = firstBit + (cells.last - cells.first);
    const int length = static_cast<int>(lastBit / 8 - firstBit / 8 + 1);
    QByteArray bytes = device.seek(firstBit / 8) ? device.read(length) : QByteArray();
    if (bytes.size() != length)
        return false;
    for (qint64 cell = cells.first; cell <= cells.last; ++cell) {
        const qint64 bit = firstBit + (cell - cells.first);
        const int at = static_cast<int>(bit / 8 - firstBit / 8);
        if (values.values[static_cast<std::size_t>(cell)] != 0)
            bytes[at] = static_cast<char>(bytes.at(at) | (1 << (bit % 8)));
    }
    return writeAt(device, firstBit / 8, bytes);
}

bool writeBlocks(QIODevice& device, const AreaLayout& area, const AreaValues& values)
{
    for (const LayoutBlock& block : area.blocks) {
        if (!block.problem.isEmpty())
            continue;
        for (const CellRange& cells : area.kept.within({block.first, block.last()})) {
            const bool ok = area.area->bits ? writeBits(device, block, cells, values)
                                            : writeAt(device, block.byte + 2 * (cells.first - block.first),
                                                      wordBytes(values, cells));
            if (!ok)
                return false;
        }
    }
    return true;
}

bool writeBitImage(QIODevice& device, const Migration& migration, const RetentionFile& old,
                   const AreaValues& values)
{
    // From image to image the bytes stay as the panel laid them out.
    if (migration.from->images() && values.oddBytes > 0)
        return writeAt(device, 0, old.read(0, old.area->imageBytes));
    QByteArray bytes;
    for (const ushort value : values.values)
        bytes.append(static_cast<char>(value));
    return writeAt(device, 0, bytes);
}

} // namespace

QString writeNewFile(const Migration& migration, const AreaFacts& area, const QString& path)
{
    const auto at = static_cast<std::size_t>(&area - areaFacts);
    const AreaLayout& layout = migration.to->areas[at];
    const AreaValues& values = migration.areas[at].values;
    QFile file(path);
    bool ok = file.open(QIODevice::ReadWrite | QIODevice::NewOnly) && file.resize(layout.fileLength);
    if (ok && migration.to->images() && area.bits)
        ok = writeBitImage(file, migration, (*migration.files)[at], values);
    else if (ok)
        ok = writeBlocks(file, layout, values);
    ok = ok && file.flush();
    return ok ? QString() : QStringLiteral("%1: cannot be written: %2").arg(path, file.errorString());
}

QString writeNewFiles(const Migration& migration, const QString& directory)
{
    OutputDirectory output(directory);
    if (!output.error().isEmpty())
        return output.error();
    for (const AreaFacts& area : areaFacts) {
        QString error = writeNewFile(migration, area, output.filePath(QString::fromLatin1(area.fileName)));
        if (!error.isEmpty())
            return error;
    }
    return output.commit() ? QString() : output.error();
}
