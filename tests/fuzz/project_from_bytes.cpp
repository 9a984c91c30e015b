// Builds project trees step by step.
// SPDX-License-Identifier: MIT
#include "tests/fuzz/project_from_bytes.h"

#include "tests/support/areas.h"

#include <QtCore/QStringList>

#include <vector>

namespace {

const int mostObjects = 4000;

const QStringList objectNames = {QStringLiteral("DataRetention"), QStringLiteral("sourceAddress"),
                                 QStringLiteral("Entry"), QStringLiteral("dataRetention"), QString()};
const QStringList propertyNames =
    QStringLiteral(
        "open Save all,Save Time,addressLength,addressType,Link,Block,No,index,station,length,Bit_or_Word")
        .split(QLatin1Char(','));
const QStringList propertyTexts = {
    QStringLiteral("LB"),  QStringLiteral("LW"),    QStringLiteral("RWI"), QStringLiteral("lb"),
    QStringLiteral("LB "), QStringLiteral("LW100"), QStringLiteral("Bit"), QString()};

/// A name from the list, or one from the input.
QString choice(FuzzInput& input, const QStringList& known)
{
    const int at = input.byte() % (known.size() + 1);
    return at < known.size() ? known.at(at) : input.text();
}

void appendEntry(FuzzInput& input, object& parent)
{
    object& entry = parent.addChild(QStringLiteral("Entry"));
    const std::uint8_t form = input.byte();
    object& source = entry.addChild(QStringLiteral("sourceAddress"));
    source.setText(QStringLiteral("Block"), QLatin1String(testAreas[form % 3].name));
    source.setNumber(QStringLiteral("index"), input.number());
    entry.setNumber(QStringLiteral("addressLength"), input.number());
    if (form & 64)
        source.setNumber(QStringLiteral("length"), input.number());
    if (form & 128)
        source.setText(QStringLiteral("Link"), input.text());
}

} // namespace

std::unique_ptr<object> projectFromBytes(FuzzInput& input)
{
    auto root = std::make_unique<object>();
    std::vector<object*> open = {root.get()};
    if (input.byte() % 8 != 0) // most inputs should be about retention
        open.push_back(&root->addChild(QStringLiteral("DataRetention")));
    for (int objects = 0; !input.atEnd() && objects < mostObjects;) {
        object& here = *open.back();
        const int step = input.byte() % 8;
        const QString name = step == 2 || step == 3 ? choice(input, propertyNames) : QString();
        switch (step) {
        case 0:
            open.push_back(&here.addChild(choice(input, objectNames)));
            ++objects;
            break;
        case 1:
            if (open.size() > 1)
                open.pop_back();
            break;
        case 2:
            here.setNumber(name, input.number());
            break;
        case 3:
            here.setText(name, choice(input, propertyTexts));
            break;
        default:
            appendEntry(input, here);
            objects += 2;
        }
    }
    return root;
}
