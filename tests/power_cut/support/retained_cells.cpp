// Rules of the files, said once more.
// SPDX-License-Identifier: MIT
#include "tests/power_cut/support/retained_cells.h"

#include "tests/support/literal_rules.h"

#include <QtCore/QStringList>
#include <QtCore/QXmlStreamReader>

#include <algorithm>

namespace {

struct Entry
{
    QString area;
    int first = 0;
    int count = 0;
};

struct RetentionSettings
{
    bool wholeAreas = false;
    std::vector<Entry> entries;
};

/// Reads properties by their path of object names below the root.
RetentionSettings readSettings(const QByteArray& projectXml)
{
    RetentionSettings settings;
    QXmlStreamReader xml(projectXml);
    QStringList objects;
    const auto text = [&](const char* attribute) {
        return xml.attributes().value(QLatin1String(attribute)).toString();
    };
    while (!xml.atEnd()) {
        xml.readNext();
        const bool isObject = xml.name() == QLatin1String("object");
        if (xml.isStartElement() && isObject) {
            objects.append(text("name"));
            if (objects.size() == 3 && objects[1] == QLatin1String("DataRetention"))
                settings.entries.emplace_back();
        } else if (xml.isEndElement() && isObject) {
            objects.removeLast();
        } else if (xml.isStartElement() && objects.value(1) == QLatin1String("DataRetention")) {
            const QString name = text("name");
            const QString value = xml.readElementText();
            if (objects.size() == 2 && name == QLatin1String("open Save all"))
                settings.wholeAreas = value.toUInt() != 0;
            else if (objects.size() == 3 && name == QLatin1String("addressLength"))
                settings.entries.back().count = value.toInt();
            else if (objects.value(3) == QLatin1String("sourceAddress") && name == QLatin1String("Block"))
                settings.entries.back().area = value;
            else if (objects.value(3) == QLatin1String("sourceAddress") && name == QLatin1String("index"))
                settings.entries.back().first = value.toInt();
        }
    }
    return settings;
}

int wordAt(const QByteArray& bytes, int at)
{
    const auto byte = [&](int offset) {
        return offset < bytes.size() ? static_cast<unsigned char>(bytes.at(offset)) : 0;
    };
    return byte(at) | byte(at + 1) << 8;
}

QByteArray fileOf(std::size_t area, const Files& files)
{
    const auto found = files.find(QLatin1String(retentionFileNames[area]));
    return found == files.end() ? QByteArray() : found->second;
}

int imageBytes(std::size_t area)
{
    return area == 0 ? 65536 : 131072;
}

} // namespace

int RetainedCells::count(std::size_t area) const
{
    return blocks[area].empty() ? 0 : blocks[area].back().place + blocks[area].back().count;
}

const Block* RetainedCells::blockOf(std::size_t area, int address) const
{
    const auto found = std::find_if(blocks[area].begin(), blocks[area].end(), [&](const Block& block) {
        return address >= block.first && address < block.first + block.count;
    });
    return found == blocks[area].end() ? nullptr : &*found;
}

int RetainedCells::addressAt(std::size_t area, int place) const
{
    for (const Block& block : blocks[area])
        if (place < block.place + block.count)
            return block.first + place - block.place;
    return -1;
}

RetainedCells retainedCellsOf(const QByteArray& projectXml)
{
    const RetentionSettings settings = readSettings(projectXml);
    RetainedCells cells;
    cells.wholeAreas = settings.wholeAreas;
    for (std::size_t area = 0; area < 3 && !cells.wholeAreas; ++area) {
        std::vector<RuleEntry> entries;
        for (const Entry& entry : settings.entries)
            if (entry.area == QLatin1String(areaNames[area]))
                entries.push_back({entry.first, entry.count, 0, 0});
        std::sort(entries.begin(), entries.end(),
                  [](const RuleEntry& a, const RuleEntry& b) { return a.index < b.index; });
        int place = 0;
        for (const RuleBlock& block : partitionByRules(entries)) {
            if (block.count > 0)
                cells.blocks[area].push_back({block.index, block.count, place});
            place += block.count;
        }
    }
    return cells;
}

std::vector<int> storedCells(std::size_t area, const Files& files, int place, int count)
{
    const QByteArray file = fileOf(area, files);
    std::vector<int> values;
    values.reserve(static_cast<std::size_t>(count));
    for (int i = place; i < place + count; ++i) {
        if (area == 0)
            values.push_back(wordAt(file, i / 8) >> i % 8 & 1);
        else
            values.push_back(file.isEmpty() ? nothing : wordAt(file, 2 * i));
    }
    return values;
}

QByteArray storedImage(std::size_t area, const Files& files)
{
    const QByteArray file = fileOf(area, files);
    return file.size() < imageBytes(area) ? QByteArray(imageBytes(area), '\0') : file.left(imageBytes(area));
}

void restoreInto(MemoryAreas& areas, const RetainedCells& cells, const Files& files)
{
    for (std::size_t area = 0; area < 3; ++area) {
        if (cells.wholeAreas) {
            const QByteArray image = storedImage(area, files);
            std::copy(image.begin(), image.end(), areas.all()[area].memory().begin());
            continue;
        }
        const QByteArray file = fileOf(area, files);
        for (const Block& block : cells.blocks[area]) {
            const std::vector<int> values = storedCells(area, files, block.place, block.count);
            for (int j = 0; j < block.count; ++j) {
                const bool zeroByte = area == 0 && (wordAt(file, (block.place + j) / 8) & 0xff) == 0;
                const int value = values[static_cast<std::size_t>(j)];
                if (value != nothing && !zeroByte)
                    areas.all()[area].setCell(block.first + j, static_cast<ushort>(value));
            }
        }
    }
}

Files filesAfterStart(const RetainedCells& cells, Files files)
{
    for (std::size_t area = 0; area < 3; ++area) {
        const QString name = QLatin1String(retentionFileNames[area]);
        const int count = cells.count(area);
        if (cells.wholeAreas && fileOf(area, files).size() < imageBytes(area))
            files[name] = QByteArray(imageBytes(area), '\0');
        else if (files.count(name) == 0)
            files[name] = QByteArray(area == 0 ? count / 8 + 1 : 2 * count, '\0');
    }
    return files;
}
