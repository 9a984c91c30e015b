// Writes random entries as XML.
// SPDX-License-Identifier: MIT
#include "tests/power_cut/disk_states/panel_project.h"

#include "project_tree/project_reader.h"

#include <QtCore/QBuffer>

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

QByteArray propertyXml(const char* name, const char* type, const QByteArray& value)
{
    return QByteArray("<property name=\"") + name + "\" type=\"" + type + "\">" + value + "</property>\n";
}

QByteArray projectXml(bool wholeAreas, const Ranges& ranges, RandomSource& random)
{
    QByteArray xml = "<object name=\"project\"><object name=\"DataRetention\">\n" +
                     propertyXml("open Save all", "uint32", wholeAreas ? "1" : "0") +
                     propertyXml("Save Time", "uint32", "5");
    for (const Range& range : ranges) {
        xml += "<object name=\"entry\">\n" +
               propertyXml("addressLength", "int32", QByteArray::number(range.count));
        // It has no effect.
        if (const char* const type = random.oneOf<const char*>({nullptr, "Bit", "Word", "Double Word"}))
            xml += propertyXml("addressType", "string", type);
        xml += "<object name=\"sourceAddress\">\n" + propertyXml("Block", "string", range.area) +
               propertyXml("index", "int32", QByteArray::number(range.first)) + "</object></object>\n";
    }
    return xml + "</object></object>\n";
}

int randomCount(RandomSource& random, bool bits, bool few)
{
    if (bits)
        return random.between(1, few ? 10 : 60);
    if (random.oneIn(few ? 4 : 8)) // crosses one or more sector boundaries
        return random.between(256 - 20, few ? 256 + 40 : 3 * 256);
    return random.between(1, few ? 5 : 40);
}

Ranges separateRanges(RandomSource& random, bool few)
{
    Ranges ranges;
    for (int area = 0; area < 3; ++area) {
        int next = random.below(random.oneIn(2) ? 1000 : 64000);
        for (int left = random.below(few ? 3 : 6); left > 0; --left) {
            // The last one of many may end at the last cell of the area.
            const int count = std::min(randomCount(random, area == 0, few), 65536 - next);
            ranges.push_back({testAreas[area].name, next, count});
            next = std::min(next + count + (random.oneIn(3) ? 0 : random.between(1, 50)), 65536);
        }
        // Around the one bit whose changes are never written.
        if (area == 0 && random.oneIn(4))
            ranges.push_back({testAreas[area].name, random.between(60092, 60100), random.between(9, 20)});
    }
    return ranges;
}

Ranges overlappingRanges(RandomSource& random)
{
    Ranges ranges;
    for (int left = random.between(2, 12); left > 0; --left)
        ranges.push_back({random.oneOf<const char*>({"LB", "LB", "LW", "LW", "RWI", "lw"}), random.below(40),
                          random.below(12)});
    return ranges;
}

Ranges longBlocks(RandomSource& random)
{
    Ranges ranges;
    for (int i = 0; i < 3; ++i)
        ranges.push_back({"LB", random.below(1000) + 5000 * i, random.between(2100, 3500)});
    ranges.push_back(
        {random.oneOf<const char*>({"LW", "RWI"}), random.below(1000), random.between(4097, 6000)});
    return ranges;
}

Ranges rangesOf(ProjectKind kind, RandomSource& random)
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
    // Entries remain when a project switches to whole areas, and have no effect.
    return random.oneIn(2) ? separateRanges(random, false) : Ranges();
}

} // namespace

PanelProject randomProject(ProjectKind kind, RandomSource& random)
{
    PanelProject project;
    do {
        Ranges ranges = rangesOf(kind, random);
        std::shuffle(ranges.begin(), ranges.end(), random.engine);
        project.xml = projectXml(kind == ProjectKind::WholeAreas, ranges, random);
        QBuffer buffer(&project.xml);
        buffer.open(QIODevice::ReadOnly);
        ProjectReading reading = readProject(buffer, QStringLiteral("project.xml"));
        if (!reading.project)
            qFatal("the random project is no project: %s", qPrintable(reading.error));
        project.root = std::move(reading.project);
        project.cells = retainedCellsOf(*project.root);
    } while (!project.cells.wholeAreas &&
             project.cells.count(0) + project.cells.count(1) + project.cells.count(2) <= 0);
    return project;
}
