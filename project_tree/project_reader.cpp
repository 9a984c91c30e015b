// Reads project files.
// SPDX-License-Identifier: MIT
#include "project_tree/project_reader.h"

#include <QtCore/QFile>
#include <QtCore/QXmlStreamReader>

#include <limits>

namespace {

/// Far above any real project; keeps a hostile file from exhausting the stack.
const int deepestNesting = 100;

QString requiredAttribute(QXmlStreamReader& xml, const char* name)
{
    const QXmlStreamAttributes attributes = xml.attributes();
    if (!attributes.hasAttribute(QLatin1String(name))) {
        xml.raiseError(
            QStringLiteral("<%1> has no attribute \"%2\"").arg(xml.name().toString(), QLatin1String(name)));
        return {};
    }
    return attributes.value(QLatin1String(name)).toString();
}

/// Sets a number between `lowest` and `highest`, or raises an error.
void setNumber(QXmlStreamReader& xml, object& node, const QString& name, const QString& text, qint64 lowest,
               qint64 highest)
{
    bool ok = false;
    const qint64 value = text.trimmed().toLongLong(&ok);
    if (!ok || value < lowest || value > highest) {
        xml.raiseError(QStringLiteral("property \"%1\": value \"%2\": expected a number from %3 to %4")
                           .arg(name, text.trimmed(), QString::number(lowest), QString::number(highest)));
        return;
    }
    node.setNumber(name, value);
}

void readProperty(QXmlStreamReader& xml, object& node)
{
    const QString name = requiredAttribute(xml, "name");
    const QString type = requiredAttribute(xml, "type");
    if (xml.hasError())
        return;
    if (node.findProperty(name)) {
        xml.raiseError(QStringLiteral("object \"%1\" has two properties \"%2\"").arg(node.name, name));
        return;
    }
    const QString text = xml.readElementText();
    if (xml.hasError())
        return;
    if (type == QLatin1String("string"))
        node.setText(name, text);
    else if (type == QLatin1String("int32"))
        setNumber(xml, node, name, text, std::numeric_limits<qint32>::min(),
                  std::numeric_limits<qint32>::max());
    else if (type == QLatin1String("uint32"))
        setNumber(xml, node, name, text, 0, std::numeric_limits<quint32>::max());
    else
        xml.raiseError(
            QStringLiteral("property \"%1\": type \"%2\": expected int32, uint32 or string").arg(name, type));
}

/// Reads the contents of an "object" element up to its end.
void readObjectContents(QXmlStreamReader& xml, object& node, int nesting)
{
    while (xml.readNextStartElement()) {
        if (xml.name() == QLatin1String("property")) {
            readProperty(xml, node);
        } else if (xml.name() != QLatin1String("object")) {
            xml.raiseError(
                QStringLiteral("<%1>: expected <object> or <property>").arg(xml.name().toString()));
        } else if (nesting >= deepestNesting) {
            xml.raiseError(QStringLiteral("objects are nested more than %1 levels deep").arg(deepestNesting));
        } else {
            const QString name = requiredAttribute(xml, "name");
            if (!xml.hasError())
                readObjectContents(xml, node.addChild(name), nesting + 1);
        }
    }
}

} // namespace

ProjectReading readProject(QIODevice& device, const QString& fileName)
{
    QXmlStreamReader xml(&device);
    auto root = std::make_unique<object>();
    if (xml.readNextStartElement()) {
        if (xml.name() == QLatin1String("object"))
            root->name = requiredAttribute(xml, "name");
        else
            xml.raiseError(
                QStringLiteral("<%1>: expected the project's <object>").arg(xml.name().toString()));
        if (!xml.hasError())
            readObjectContents(xml, *root, 1);
    }
    while (!xml.atEnd()) // what follows the root must be well-formed too
        xml.readNext();
    if (xml.hasError())
        return {nullptr, QStringLiteral("%1:%2:%3: %4")
                             .arg(fileName, QString::number(xml.lineNumber()),
                                  QString::number(xml.columnNumber()), xml.errorString())};
    return {std::move(root), QString()};
}

ProjectReading readProjectFile(const QString& fileName)
{
    QFile file(fileName);
    if (!file.open(QIODevice::ReadOnly))
        return {nullptr, QStringLiteral("%1: cannot be read: %2").arg(fileName, file.errorString())};
    return readProject(file, fileName);
}
