// Chooses what the map shows and draws it: boxes flow like text, so that 3 and 300 blocks are both readable.
// SPDX-License-Identifier: MIT
#include "tools/retention_inspector/report/map_picture.h"

#include "tools/retention_core/findings.h"

#include <QtCore/QStringList>
#include <QtCore/QXmlStreamWriter>

#include <algorithm>
#include <cmath>
#include <utility>

namespace {

const double pageWidth = 1200;
const double margin = 24;
const double innerWidth = pageWidth - 2 * margin;
const double boxHeight = 62;
const double lostHeight = 8; // of the strip that marks a block's lost cells
const double boxGap = 6;
const double lettersPerPixel = 1 / 6.7; // of the 12 pixel sans-serif

QString entryNames(const Layout& layout, const LayoutBlock& block)
{
    QStringList names;
    for (const int number : block.entries) {
        names.append(layout.settings.entries[static_cast<std::size_t>(number - 1)].name);
        if (names.size() == 8) // no more fit in a box
            break;
    }
    return names.join(QLatin1String(", "));
}

MapItem blockItem(const Layout& layout, const AreaLayout& area, const LayoutBlock& block)
{
    MapItem item;
    item.block = &block;
    item.cells = block.cells();
    item.names = entryNames(layout, block);
    if (block.entries.size() > 1)
        item.kind = MapItem::Kind::Folded;
    if (!area.problem.isEmpty()) {
        item.kind = MapItem::Kind::Unsound;
        return item;
    }
    const CellRanges cells({item.cells});
    const CellRanges lost = cells.minus(area.kept);
    if (lost == cells)
        item.kind = MapItem::Kind::Lost;
    else
        item.lost = lost;
    return item;
}

struct Colours
{
    const char* fill;
    const char* edge; ///< null for none
};

const Colours retainedColours = {"#d5e6f6", "#2f6ea8"};
const Colours nextColours = {"#bcd7f0", "#2f6ea8"}; // of every other block, to tell neighbours apart
const Colours foldedColours = {"#fbe2ad", "#a86a10"};
const Colours lostColours = {"url(#lost)", "#b3261e"};

Colours coloursOf(const MapItem& item)
{
    if (item.kind == MapItem::Kind::Retained)
        return item.block->number % 2 ? retainedColours : nextColours;
    return item.kind == MapItem::Kind::Folded ? foldedColours : lostColours;
}

QString number(double value)
{
    return QString::number(value, 'f', 1);
}

/// A thin layer over the XML writer.
class Drawing
{
public:
    explicit Drawing(QByteArray* out) : xml(out)
    {
        xml.setAutoFormatting(true);
        xml.setAutoFormattingIndent(1);
    }

    QXmlStreamWriter xml;

    void rectangle(double x, double y, double width, double height, const Colours& colours,
                   const QString& tip = QString())
    {
        xml.writeStartElement(QStringLiteral("rect"));
        attribute("x", number(x));
        attribute("y", number(y));
        attribute("width", number(width));
        attribute("height", number(height));
        attribute("fill", QString::fromLatin1(colours.fill));
        if (colours.edge)
            attribute("stroke", QString::fromLatin1(colours.edge));
        if (!tip.isEmpty())
            xml.writeTextElement(QStringLiteral("title"), tip);
        xml.writeEndElement();
    }

    void text(double x, double y, const QString& words, const char* style = nullptr)
    {
        xml.writeStartElement(QStringLiteral("text"));
        attribute("x", number(x));
        attribute("y", number(y));
        if (style)
            attribute("class", QString::fromLatin1(style));
        xml.writeCharacters(words);
        xml.writeEndElement();
    }

    void attribute(const char* name, const QString& value)
    {
        xml.writeAttribute(QString::fromLatin1(name), value);
    }
};

QString placeText(const AreaMap& map, const MapItem& item)
{
    QString text = countText(item.cells.last - item.cells.first + 1, "cell");
    if (item.block) {
        text += QStringLiteral(", byte %1").arg(item.block->info.fileOffset);
        if (map.layout->area->bits && item.block->info.bitOffset >= 0)
            text += QStringLiteral(".%1").arg(item.block->info.bitOffset);
    }
    return text;
}

/// The third line: what is lost, or which entries configured the cells.
QString remark(const MapItem& item)
{
    if (item.kind == MapItem::Kind::Lost || item.kind == MapItem::Kind::Unsound)
        return QStringLiteral("not retained");
    return item.lost.isEmpty() ? item.names : QStringLiteral("not retained: ") + item.lost.text();
}

QString shortened(const QString& text, double width)
{
    const int letters = static_cast<int>(width * lettersPerPixel);
    return text.size() <= letters ? text : text.left(std::max(0, letters - 1)) + QChar(0x2026);
}

double widthOf(const AreaMap& map, const MapItem& item)
{
    const qint64 cells = item.cells.last - item.cells.first + 1;
    const QString edges = rangeText(item.cells);
    const qint64 remarkLetters = std::min<qint64>(item.lost.isEmpty() ? 22 : 30, remark(item).size() + 2);
    const qint64 placeLetters = placeText(map, item).size();
    const qint64 letters = std::max<qint64>({edges.size() + 2, placeLetters, 13, remarkLetters});
    const double byCells = 60 + 14 * std::log2(static_cast<double>(cells));
    return std::min(innerWidth, std::max(byCells, static_cast<double>(letters) / lettersPerPixel + 14));
}

QString tip(const AreaMap& map, const MapItem& item)
{
    QString text =
        QStringLiteral("%1 %2: %3")
            .arg(QLatin1String(map.layout->area->name), rangeText(item.cells), placeText(map, item));
    if (item.block)
        text += QStringLiteral(", block %1").arg(item.block->number);
    if (item.block && !map.layout->problem.isEmpty())
        text += QStringLiteral(": ") + map.layout->problem;
    return text + QStringLiteral("; ") + remark(item);
}

void drawBox(Drawing& drawing, const AreaMap& map, const MapItem& item, double x, double y, double width)
{
    drawing.rectangle(x, y, width, boxHeight, coloursOf(item), tip(map, item));
    const auto cells = static_cast<double>(item.cells.last - item.cells.first + 1);
    for (const CellRange& lost : item.lost) {
        const double from = static_cast<double>(lost.first - item.cells.first) / cells * width;
        const double part = static_cast<double>(lost.last - lost.first + 1) / cells * width;
        const double shown = std::max(part, 5.0);
        drawing.rectangle(x + std::min(from, width - shown), y + boxHeight - lostHeight, shown, lostHeight,
                          lostColours);
    }
    drawing.text(x + 5, y + 16, QString::number(item.cells.first), "address");
    if (item.cells.last > item.cells.first)
        drawing.text(x + width - 5, y + 16, QString::number(item.cells.last), "address end");
    drawing.text(x + 5, y + 33, placeText(map, item));
    const bool lost =
        item.kind == MapItem::Kind::Lost || item.kind == MapItem::Kind::Unsound || !item.lost.isEmpty();
    drawing.text(x + 5, y + 50, shortened(remark(item), width - 10), lost ? "lost" : "name");
}

/// Draws boxes in rows; returns the y below them.
double drawBoxes(Drawing& drawing, const AreaMap& map, double y)
{
    double x = margin;
    for (const MapItem& item : map.items) {
        const double width = widthOf(map, item);
        if (x > margin && x + width > margin + innerWidth) {
            x = margin;
            y += boxHeight + boxGap;
        }
        drawBox(drawing, map, item, x, y, width);
        x += width + boxGap;
    }
    return y + boxHeight;
}

/// Draws the whole area to scale, with ticks; returns the y below it.
double drawScale(Drawing& drawing, const AreaMap& map, double y)
{
    const auto cells = static_cast<double>(cellCount(*map.layout->area));
    const CellRange area = {0, cellCount(*map.layout->area) - 1};
    drawing.rectangle(margin, y, innerWidth, 14, {"#f3f3f3", "#999999"});
    const auto mark = [&](const CellRange& range, const char* fill) {
        const double x = margin + static_cast<double>(range.first) / cells * innerWidth;
        const double width =
            std::max(1.5, static_cast<double>(range.last - range.first + 1) / cells * innerWidth);
        drawing.rectangle(std::min(x, margin + innerWidth - width), y, width, 14, {fill, nullptr});
    };
    for (const MapItem& item : map.items)
        if (item.block && item.kind != MapItem::Kind::Unsound)
            for (const CellRange& range : CellRanges({item.cells}).within(area))
                mark(range, coloursOf(item).edge);
    for (const CellRange& range : map.lost.within(area))
        mark(range, lostColours.edge);
    for (int quarter = 0; quarter <= 4; ++quarter) {
        const double x = margin + innerWidth * quarter / 4;
        const qint64 address = quarter == 4 ? area.last : cellCount(*map.layout->area) * quarter / 4;
        drawing.text(x, y + 27, QString::number(address),
                     quarter == 0   ? "tick"
                     : quarter == 4 ? "tick end"
                                    : "tick middle");
    }
    return y + 38;
}

/// Draws one area with its heading; returns the y below it.
double drawArea(Drawing& drawing, const AreaMap& map, double y)
{
    const AreaLayout& layout = *map.layout;
    drawing.text(margin, y + 16, QString::fromLatin1(layout.area->name), "area");
    QString summary =
        QStringLiteral("%1, %2 bytes").arg(QLatin1String(layout.area->fileName)).arg(layout.fileLength);
    summary += map.items.empty() ? QStringLiteral(": no cells are retained")
                                 : QStringLiteral(": %1, %2")
                                       .arg(countText(qint64(layout.blocks.size()), "block"),
                                            countText(layout.cells, "cell"));
    if (!map.lost.isEmpty())
        summary +=
            QStringLiteral("; %1 configured but not retained").arg(countText(map.lost.count(), "cell"));
    drawing.text(margin + 48, y + 16, summary);
    y = drawScale(drawing, map, y + 26);
    return map.items.empty() ? y : drawBoxes(drawing, map, y);
}

void drawLegend(Drawing& drawing, double y)
{
    const struct
    {
        Colours colours;
        const char* meaning;
        double width;
    } keys[] = {{retainedColours, "fully retained", 130},
                {foldedColours, "overlapping entries, folded into one block", 292},
                {lostColours, "configured but not retained", 205}};
    double x = margin;
    for (const auto& key : keys) {
        drawing.rectangle(x, y, 22, 14, key.colours);
        drawing.text(x + 29, y + 11, QString::fromLatin1(key.meaning));
        x += key.width + 29;
    }
    drawing.text(x, y + 11, QStringLiteral("Bar: the whole area to scale. Boxes: in file order."));
}

void drawDefinitions(Drawing& drawing)
{
    drawing.xml.writeTextElement(
        QStringLiteral("style"),
        QStringLiteral(
            "text{font:12px 'DejaVu Sans','Liberation Sans',Arial,sans-serif;fill:#222}"
            ".title{font-size:18px;font-weight:bold}.area{font-size:16px;font-weight:bold}"
            ".address{font-weight:bold}.end{text-anchor:end}.middle{text-anchor:middle}"
            ".tick{font-size:10px;fill:#666}.name{fill:#555}.lost{fill:#8c1d18;font-weight:bold}"));
    drawing.xml.writeStartElement(QStringLiteral("pattern"));
    for (const auto& [name, value] : {std::pair("id", "lost"),
                                      {"width", "6"},
                                      {"height", "6"},
                                      {"patternUnits", "userSpaceOnUse"},
                                      {"patternTransform", "rotate(45)"}})
        drawing.attribute(name, QString::fromLatin1(value));
    drawing.rectangle(0, 0, 6, 6, {"#ffffff", nullptr});
    drawing.rectangle(0, 0, 2, 6, {"#f0b4b0", nullptr});
    drawing.xml.writeEndElement();
}

} // namespace

AreaMap areaMap(const Layout& layout, const AreaFacts& area)
{
    AreaMap map;
    map.layout = &layout.of(area);
    std::vector<CellRange> lost;
    for (const EntryVerdict& verdict : entryVerdicts(layout))
        if (verdict.entry->area == &area)
            lost.insert(lost.end(), verdict.lost.begin(), verdict.lost.end());
    map.lost = CellRanges(std::move(lost));

    std::vector<CellRange> inBlocks;
    for (const LayoutBlock& block : map.layout->blocks) {
        if (block.info.count <= 0)
            continue;
        map.items.push_back(blockItem(layout, *map.layout, block));
        inBlocks.push_back(block.cells());
    }
    for (const CellRange& cells : map.lost.minus(CellRanges(std::move(inBlocks)))) {
        MapItem item;
        item.kind = MapItem::Kind::Lost;
        item.cells = cells;
        map.items.push_back(item);
    }
    std::stable_sort(map.items.begin(), map.items.end(),
                     [](const MapItem& a, const MapItem& b) { return a.cells.first < b.cells.first; });
    return map;
}

QByteArray mapPicture(const Layout& layout, const QString& title)
{
    QByteArray body;
    Drawing drawing(&body);
    drawDefinitions(drawing);
    drawing.xml.writeEmptyElement(QStringLiteral("rect")); // the background
    for (const char* side : {"width", "height"})
        drawing.attribute(side, QStringLiteral("100%"));
    drawing.attribute("fill", QStringLiteral("#ffffff"));
    double y = margin;
    drawing.text(margin, y + 14, title, "title");
    drawLegend(drawing, y + 28);
    y += 66;
    for (const AreaFacts& area : areaFacts)
        y = drawArea(drawing, areaMap(layout, area), y) + 26;

    // The root element needs the height, which is known only now.
    const QByteArray width = number(pageWidth).toLatin1();
    const QByteArray height = number(y).toLatin1();
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"" +
           width + "\" height=\"" + height + "\" viewBox=\"0 0 " + width + ' ' + height + "\">" + body +
           "\n</svg>\n";
}
