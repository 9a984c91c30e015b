// Tests that the map is well-formed and shows every block and every lost cell.
// SPDX-License-Identifier: MIT
#include "tests/inspector/layout_of.h"
#include "tools/retention_inspector/report/map_picture.h"

#include <QtCore/QXmlStreamReader>

namespace {

struct Box
{
    double x;
    double y;
    double width;
    double height;
    QString tip;
};

/// The boxes that have a tooltip; fails when the picture is not well-formed.
std::vector<Box> boxesOf(const QByteArray& svg)
{
    std::vector<Box> boxes;
    QXmlStreamReader xml(svg);
    while (!xml.atEnd()) {
        if (xml.readNext() != QXmlStreamReader::StartElement)
            continue;
        const QXmlStreamAttributes attributes = xml.attributes();
        const auto value = [&](const char* name) { return attributes.value(QLatin1String(name)).toDouble(); };
        if (xml.name() == QLatin1String("rect"))
            boxes.push_back({value("x"), value("y"), value("width"), value("height"), {}});
        else if (xml.name() == QLatin1String("title"))
            boxes.back().tip = xml.readElementText();
    }
    EXPECT_FALSE(xml.hasError()) << xml.errorString().toStdString();
    boxes.erase(std::remove_if(boxes.begin(), boxes.end(), [](const Box& box) { return box.tip.isEmpty(); }),
                boxes.end());
    return boxes;
}

TEST(Map, ShowsBlocksAndLostCellsInTheOrderOfAddresses)
{
    const Layout layout = layoutOf({{LW, 2, 4}, {LW, 0, 4}, {LW, 8, 1}});
    const AreaMap map = areaMap(layout, areaFacts[1]);
    ASSERT_EQ(map.items.size(), 3U);
    EXPECT_EQ(map.items[0].kind, MapItem::Kind::Folded);
    EXPECT_EQ(map.items[1].kind, MapItem::Kind::Lost);
    EXPECT_EQ(map.items[1].cells, (CellRange{5, 5}));
    EXPECT_EQ(map.items[2].kind, MapItem::Kind::Retained);
}

TEST(Map, ShowsLostCellsInsideABlock)
{
    const AreaMap map = areaMap(layoutOf({{LB, 60095, 10}}), areaFacts[0]);
    ASSERT_EQ(map.items.size(), 1U);
    EXPECT_EQ(map.items[0].lost.text(), "60100");
}

TEST(Map, KeepsThreeHundredBoxesOnThePageAndApart)
{
    std::vector<Entry> entries;
    for (int i = 0; i < 300; ++i)
        entries.push_back({LW, 200 * i, 1 + i % 150});
    const std::vector<Box> boxes = boxesOf(mapPicture(layoutOf(entries), "300"));
    ASSERT_EQ(boxes.size(), 300U);
    for (std::size_t i = 0; i < boxes.size(); ++i) {
        EXPECT_GE(boxes[i].x, 0);
        EXPECT_LE(boxes[i].x + boxes[i].width, 1200);
        if (i > 0) {
            const Box& before = boxes[i - 1];
            EXPECT_TRUE(boxes[i].x >= before.x + before.width || boxes[i].y >= before.y + before.height);
        }
    }
}

TEST(Map, IsWellFormedWhateverTheNamesAndNumbers)
{
    const int largest = std::numeric_limits<int>::max();
    const auto project =
        perAddressProject({{LW, -5, largest}, {LB, 100, largest}, {RWI, 7, -3}, {RWI, 9, 3}});
    project->children.front()->children.front()->name = "<&\"']]>";
    EXPECT_EQ(boxesOf(mapPicture(layoutOf(*project), "<&>")).size(), 3U);
    EXPECT_TRUE(boxesOf(mapPicture(makeLayout(readSettings(nullptr)), QString())).empty());
    EXPECT_EQ(boxesOf(mapPicture(layoutOf(*wholeAreaProject(1, 5)), QString())).size(), 3U);
}

} // namespace
