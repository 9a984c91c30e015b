// Random entries as XML.
// SPDX-License-Identifier: MIT
#include "tests/power_cut/support/panel_project.h"

#include "project_tree/project_reader.h"
#include "tests/power_cut/support/retained_cells.h"

#include <QtCore/QBuffer>
#include <QtCore/QXmlStreamWriter>

#include <algorithm>
#include <utility>

namespace {

struct Range
{
    const char* area;
    int first;
    int count;
};
using Ranges = std::vector<Range>;

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

QByteArray projectXml(bool wholeAreas, const Ranges& ranges, Random& random)
{
    QByteArray bytes;
    QXmlStreamWriter xml(&bytes);
    xml.setAutoFormatting(true);
    xml.writeStartDocument();
    startObject(xml, "project");
    startObject(xml, "DataRetention");
    writeProperty(xml, "open Save all", "uint32", QString::number(wholeAreas ? 1 : 0));
    writeProperty(xml, "Save Time", "uint32", QStringLiteral("5"));
    for (const Range& range : ranges) {
        startObject(xml, "entry");
        writeProperty(xml, "addressLength", "int32", QString::number(range.count));
        // It has no effect.
        if (const char* const type = random.oneOf<const char*>({nullptr, "Bit", "Word", "Double Word"}))
            writeProperty(xml, "addressType", "string", QLatin1String(type));
        startObject(xml, "sourceAddress");
        writeProperty(xml, "Block", "string", QLatin1String(range.area));
        writeProperty(xml, "index", "int32", QString::number(range.first));
        xml.writeEndElement();
        xml.writeEndElement();
    }
    xml.writeEndDocument();
    return bytes;
}

int randomCount(Random& random, bool bits, bool few)
{
    if (bits)
        return random.between(1, few ? 10 : 60);
    if (random.oneIn(few ? 4 : 8)) // crosses one or more sector boundaries
        return random.between(256 - 20, few ? 256 + 40 : 3 * 256);
    return random.between(1, few ? 5 : 40);
}

Ranges separateRanges(Random& random, bool few)
{
    Ranges ranges;
    for (int area = 0; area < 3; ++area) {
        int next = random.below(random.oneIn(2) ? 1000 : 64000);
        for (int left = random.below(few ? 3 : 6); left > 0; --left) {
            // The last one of many may end at the last cell of the area.
            const int count = std::min(randomCount(random, area == 0, few), 65536 - next);
            ranges.push_back({areaNames[area], next, count});
            next = std::min(next + count + (random.oneIn(3) ? 0 : random.between(1, 50)), 65536);
        }
        // Around the one bit whose changes are never written.
        if (area == 0 && random.oneIn(4))
            ranges.push_back({areaNames[area], random.between(60092, 60100), random.between(9, 20)});
    }
    return ranges;
}

Ranges overlappingRanges(Random& random)
{
    Ranges ranges;
    for (int left = random.between(2, 12); left > 0; --left)
        ranges.push_back({random.oneOf<const char*>({"LB", "LB", "LW", "LW", "RWI", "lw"}), random.below(40),
                          random.below(12)});
    return ranges;
}

Ranges longBlocks(Random& random)
{
    Ranges ranges;
    for (int i = 0; i < 3; ++i)
        ranges.push_back({"LB", random.below(1000) + 5000 * i, random.between(2100, 3500)});
    ranges.push_back(
        {random.oneOf<const char*>({"LW", "RWI"}), random.below(1000), random.between(4097, 6000)});
    return ranges;
}

Ranges rangesOf(ProjectKind kind, Random& random)
{
    switch (kind) {
    case ProjectKind::FewRanges:
    case ProjectKind::ManyRanges:
        return separateRanges(random, kind == ProjectKind::FewRanges);
    case ProjectKind::OverlappingRanges:
        return overlappingRanges(random);
    case ProjectKind::LongBlocks:
        return longBlocks(random);
    case ProjectKind::WholeAreas:
        break;
    }
    // They are left when a project changes over to whole areas, and have no effect.
    return random.oneIn(2) ? separateRanges(random, false) : Ranges();
}

bool retainsSomething(const QByteArray& xml)
{
    const RetainedCells cells = retainedCellsOf(xml);
    return cells.wholeAreas || cells.count(0) + cells.count(1) + cells.count(2) > 0;
}

} // namespace

PanelProject randomProject(ProjectKind kind, Random& random)
{
    PanelProject project;
    do {
        Ranges ranges = rangesOf(kind, random);
        std::shuffle(ranges.begin(), ranges.end(), random.engine);
        project.xml = projectXml(kind == ProjectKind::WholeAreas, ranges, random);
    } while (!retainsSomething(project.xml));
    QBuffer buffer(&project.xml);
    buffer.open(QIODevice::ReadOnly);
    ProjectReading reading = readProject(buffer, QStringLiteral("project.xml"));
    if (!reading.project)
        qFatal("the random project is no project: %s", qPrintable(reading.error));
    project.root = std::move(reading.project);
    return project;
}
