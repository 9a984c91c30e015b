// Making of random projects.
// SPDX-License-Identifier: MIT
#include "tests/power_cut/support/panel_project.h"

#include "project_tree/project_reader.h"

#include <QtCore/QBuffer>
#include <QtCore/QXmlStreamWriter>

#include <utility>

namespace {

void writeProperty(QXmlStreamWriter& xml, const char* name, const char* type, const QString& value)
{
    xml.writeStartElement(QStringLiteral("property"));
    xml.writeAttribute(QStringLiteral("name"), QLatin1String(name));
    xml.writeAttribute(QStringLiteral("type"), QLatin1String(type));
    xml.writeCharacters(value);
    xml.writeEndElement();
}

void startObject(QXmlStreamWriter& xml, const char* name)
{
    xml.writeStartElement(QStringLiteral("object"));
    xml.writeAttribute(QStringLiteral("name"), QLatin1String(name));
}

QByteArray projectXml(const std::vector<CellRange>& ranges)
{
    QByteArray bytes;
    QXmlStreamWriter xml(&bytes);
    xml.setAutoFormatting(true);
    xml.writeStartDocument();
    startObject(xml, "project");
    startObject(xml, "DataRetention");
    writeProperty(xml, "open Save all", "uint32", QString::number(ranges.empty() ? 1 : 0));
    writeProperty(xml, "Save Time", "uint32", QStringLiteral("5"));
    for (const CellRange& range : ranges) {
        startObject(xml, "entry");
        writeProperty(xml, "addressLength", "int32", QString::number(range.count));
        startObject(xml, "sourceAddress");
        writeProperty(xml, "Block", "string", QLatin1String(areaNames[range.area]));
        writeProperty(xml, "index", "int32", QString::number(range.first));
        xml.writeEndElement();
        xml.writeEndElement();
    }
    xml.writeEndDocument();
    return bytes;
}

int randomCount(Random& random, bool bits, ProjectSize size)
{
    const int sectorCells = bits ? 512 * 8 : 256;
    const bool small = size == ProjectSize::Small;
    if (!bits && random.oneIn(small ? 4 : 8)) // crosses one or more sector boundaries
        return random.between(sectorCells - 20, small ? sectorCells + 40 : 3 * sectorCells);
    if (bits)
        return random.between(1, small ? 10 : 60);
    return random.between(1, small ? 5 : 40);
}

} // namespace

PanelProject projectOf(std::vector<CellRange> ranges)
{
    PanelProject project;
    project.xml = projectXml(ranges);
    project.ranges = std::move(ranges);
    QBuffer buffer(&project.xml);
    buffer.open(QIODevice::ReadOnly);
    ProjectReading reading = readProject(buffer, QStringLiteral("project.xml"));
    if (!reading.project)
        qFatal("the random project is no project: %s", qPrintable(reading.error));
    project.root = std::move(reading.project);
    return project;
}

PanelProject randomRanges(Random& random, ProjectSize size)
{
    std::vector<CellRange> ranges;
    const int most = size == ProjectSize::Small ? 2 : 5;
    while (ranges.empty()) {
        for (int area = 0; area < 3; ++area) {
            int next = random.below(1000);
            for (int left = random.below(most + 1); left > 0; --left) {
                const int count = randomCount(random, area == 0, size);
                ranges.push_back({area, next, count});
                next += count + (random.oneIn(3) ? 0 : random.between(1, 50));
            }
            // Around the one bit whose changes are never written.
            if (area == 0 && random.oneIn(4))
                ranges.push_back({area, random.between(60092, 60100), random.between(9, 20)});
        }
    }
    return projectOf(std::move(ranges));
}
