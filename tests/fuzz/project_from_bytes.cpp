// Builds project trees step by step.
// SPDX-License-Identifier: MIT
#include "tests/fuzz/project_from_bytes.h"

#include <QtCore/QStringList>

#include <vector>

namespace {

const int mostObjects = 4000;

/// A name from the list, or one from the input.
QString choice(FuzzInput& input, const QStringList& known)
{
    const int at = input.byte() % (known.size() + 1);
    return at < known.size() ? known.at(at) : input.text();
}

QString objectName(FuzzInput& input)
{
    static const QStringList known = {QStringLiteral("DataRetention"), QStringLiteral("sourceAddress"),
                                      QStringLiteral("Entry"), QStringLiteral("dataRetention"), QString()};
    return choice(input, known);
}

QString propertyName(FuzzInput& input)
{
    static const QStringList known = {QStringLiteral("open Save all"),
                                      QStringLiteral("Save Time"),
                                      QStringLiteral("addressLength"),
                                      QStringLiteral("addressType"),
                                      QStringLiteral("Link"),
                                      QStringLiteral("Block"),
                                      QStringLiteral("No"),
                                      QStringLiteral("index"),
                                      QStringLiteral("station"),
                                      QStringLiteral("length"),
                                      QStringLiteral("Bit_or_Word")};
    return choice(input, known);
}

QString propertyText(FuzzInput& input)
{
    static const QStringList known = {
        QStringLiteral("LB"),  QStringLiteral("LW"),    QStringLiteral("RWI"), QStringLiteral("lb"),
        QStringLiteral("LB "), QStringLiteral("LW100"), QStringLiteral("Bit"), QString()};
    return choice(input, known);
}

void appendEntry(FuzzInput& input, object& parent)
{
    static const QString areas[] = {QStringLiteral("LB"), QStringLiteral("LW"), QStringLiteral("RWI")};
    object& entry = parent.addChild(QStringLiteral("Entry"));
    const std::uint8_t form = input.byte();
    object& source = entry.addChild(QStringLiteral("sourceAddress"));
    source.setText(QStringLiteral("Block"), areas[form % 3]);
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
        switch (input.byte() % 8) {
        case 0:
            open.push_back(&here.addChild(objectName(input)));
            ++objects;
            break;
        case 1:
            if (open.size() > 1)
                open.pop_back();
            break;
        case 2:
            here.setNumber(propertyName(input), input.number());
            break;
        case 3:
            here.setText(propertyName(input), propertyText(input));
            break;
        default:
            appendEntry(input, here);
            objects += 2;
        }
    }
    return root;
}
