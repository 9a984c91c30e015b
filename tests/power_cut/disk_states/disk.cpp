// Applies changes to the disk, one by one.
// SPDX-License-Identifier: MIT
#include "tests/power_cut/disk_states/disk.h"

#include <algorithm>
#include <string_view>

namespace {

const qint64 sectorBytes = 512;

int asSize(qint64 length)
{
    return static_cast<int>(length);
}

} // namespace

QString DiskOp::text() const
{
    switch (kind) {
    case Kind::MakeDirectory:
        return QStringLiteral("make the directory");
    case Kind::Make:
        return QStringLiteral("make %1 as file %2").arg(name).arg(file);
    case Kind::Rename:
        return QStringLiteral("rename %1 to %2").arg(name, newName);
    case Kind::Remove:
        return QStringLiteral("remove %1").arg(name);
    case Kind::SyncNames:
        return QStringLiteral("synchronise the directory");
    case Kind::SyncFile:
        return QStringLiteral("synchronise file %1").arg(file);
    case Kind::SetLength:
        return QStringLiteral("set the length of file %1 to %2").arg(file).arg(length);
    case Kind::GrowTo:
        return QStringLiteral("grow file %1 to %2").arg(file).arg(length);
    case Kind::Data:
        break;
    }
    return QStringLiteral("write %1 bytes at %2 of file %3: %4")
        .arg(bytes.size())
        .arg(offset)
        .arg(file)
        .arg(QLatin1String(bytes.left(32).toHex() + (bytes.size() > 32 ? " ..." : "")));
}

std::vector<DiskOp> atomsOf(const DiskOp& op, qint64 lengthBefore)
{
    std::vector<DiskOp> atoms;
    const auto nextSector = [](qint64 at) { return (at / sectorBytes + 1) * sectorBytes; };
    if (op.kind == DiskOp::Kind::GrowTo) {
        for (qint64 at = lengthBefore; at < op.length;) {
            at = std::min(nextSector(at), op.length);
            DiskOp atom = op;
            atom.length = at;
            atoms.push_back(atom);
        }
    } else if (op.kind == DiskOp::Kind::Data) {
        const qint64 end = op.offset + op.bytes.size();
        for (qint64 at = op.offset; at < end;) {
            const qint64 stop = std::min(nextSector(at), end);
            DiskOp atom = op;
            atom.offset = at;
            atom.bytes = op.bytes.mid(asSize(at - op.offset), asSize(stop - at));
            atoms.push_back(atom);
            at = stop;
        }
    } else {
        atoms.push_back(op);
    }
    return atoms;
}

DiskOp withStaleBytes(DiskOp growTo)
{
    growTo.bytes.clear();
    for (qint64 at = growTo.offset; at < growTo.length; ++at)
        growTo.bytes.append(static_cast<char>(0x5a ^ (at * 37 & 0x7f)));
    return growTo;
}

std::size_t DiskImage::hash() const
{
    const auto ofBytes = [](const QByteArray& bytes) {
        return std::hash<std::string_view>()({bytes.constData(), static_cast<std::size_t>(bytes.size())});
    };
    std::size_t result = directory ? 1 : 0;
    for (const auto& [name, bytes] : files)
        result = (result * 31 + ofBytes(name.toUtf8())) * 31 + ofBytes(bytes);
    return result;
}

void DiskFile::apply(const DiskOp& op)
{
    switch (op.kind) {
    case DiskOp::Kind::SetLength:
        data.truncate(asSize(op.length));
        length = op.length;
        break;
    case DiskOp::Kind::GrowTo:
        if (!op.bytes.isEmpty()) { // only for what lies past the end
            const int end = asSize(std::max(length, op.offset));
            if (data.size() < end)
                data.append(QByteArray(end - data.size(), '\0'));
            data.append(op.bytes.mid(data.size() - asSize(op.offset)));
        }
        length = std::max(length, op.length);
        break;
    default:
        if (data.size() < op.offset)
            data.append(QByteArray(asSize(op.offset) - data.size(), '\0'));
        data.replace(asSize(op.offset), op.bytes.size(), op.bytes);
    }
}

QByteArray DiskFile::visible() const
{
    if (data.size() >= length)
        return data.left(asSize(length));
    return data + QByteArray(asSize(length) - data.size(), '\0');
}

void Disk::apply(const DiskOp& op)
{
    const auto named = names.find(op.name);
    switch (op.kind) {
    case DiskOp::Kind::MakeDirectory:
        directory = true;
        break;
    case DiskOp::Kind::Make:
        names[op.name] = op.file;
        files[op.file]; // its bytes may have arrived before its name
        break;
    case DiskOp::Kind::Rename:
        if (named != names.end()) {
            names[op.newName] = named->second;
            names.erase(op.name);
        }
        break;
    case DiskOp::Kind::Remove:
        names.erase(op.name);
        break;
    case DiskOp::Kind::SyncNames:
    case DiskOp::Kind::SyncFile:
        break;
    default:
        files[op.file].apply(op);
    }
}

DiskImage Disk::image() const
{
    DiskImage result;
    result.directory = directory;
    if (directory)
        for (const auto& [name, file] : names)
            result.files[name] = files.at(file).visible();
    return result;
}

void Disk::forgetNameless(const std::vector<DiskOp>& pending)
{
    if (files.size() == names.size())
        return;
    std::set<FileId> needed;
    for (const auto& [name, file] : names)
        needed.insert(file);
    for (const DiskOp& op : pending)
        needed.insert(op.file);
    for (auto file = files.begin(); file != files.end();)
        file = needed.count(file->first) ? std::next(file) : files.erase(file);
}
