// Writes the retention settings of a panel's project as a project file.
// SPDX-License-Identifier: MIT
//
// The runtime loads this model once, instead of the retention module. It calls the same functions of the
// runtime, so the file has what the module would read. Compile it with
//
//   arm-linux-gnueabihf-g++ -shared -fPIC -I INCLUDE $(pkg-config --cflags Qt5Core)
//       -o libpoweroff_protect.so dump_project.cpp
//
// where INCLUDE holds the installed headers, such as /usr/include/poweroff_protect. With Qt 4, QtCore takes
// the place of Qt5Core. It writes /usr/tavrin/project/dumped_project.xml. The functions do not return names
// of objects, so entries are called "entry 1" and so on, and only properties that the module knows are
// written.
#include "host_interface/host_interface.h"

#include <QtCore/QFile>
#include <QtCore/QXmlStreamWriter>

namespace {

const char* const fileName = "/usr/tavrin/project/dumped_project.xml";

void writeProperty(QXmlStreamWriter& xml, const char* name, const char* type, const QString& value)
{
    xml.writeStartElement(QLatin1String("property"));
    xml.writeAttribute(QLatin1String("name"), QLatin1String(name));
    xml.writeAttribute(QLatin1String("type"), QLatin1String(type));
    xml.writeCharacters(value);
    xml.writeEndElement();
}

/// A number that is missing, or is not a number, yields whatever default is passed.
void writeUnsigned(QXmlStreamWriter& xml, object* node, const char* name)
{
    property* const value = object_get_property(node, name);
    const quint32 number = property_get_value_type_uint32(value, 0);
    if (value && number == property_get_value_type_uint32(value, 1))
        writeProperty(xml, name, "uint32", QString::number(number));
}

void writeSigned(QXmlStreamWriter& xml, object* node, const char* name)
{
    const int number = object_get_property_value_type_int32(node, name, 0);
    if (object_get_property(node, name) && number == object_get_property_value_type_int32(node, name, 1))
        writeProperty(xml, name, "int32", QString::number(number));
}

void writeText(QXmlStreamWriter& xml, object* node, const char* name)
{
    const QString text = object_get_property_value_type_string(node, name, QLatin1String("a"));
    if (object_get_property(node, name) &&
        text == object_get_property_value_type_string(node, name, QLatin1String("b")))
        writeProperty(xml, name, "string", text);
}

void startObject(QXmlStreamWriter& xml, const QString& name)
{
    xml.writeStartElement(QLatin1String("object"));
    xml.writeAttribute(QLatin1String("name"), name);
}

void writeEntry(QXmlStreamWriter& xml, object* entry, int number)
{
    startObject(xml, QString::fromLatin1("entry %1").arg(number));
    writeSigned(xml, entry, "addressLength");
    writeText(xml, entry, "addressType");
    if (object* const source = object_get_child(entry, "sourceAddress")) {
        startObject(xml, QLatin1String("sourceAddress"));
        for (const char* name : {"Link", "Block", "No"})
            writeText(xml, source, name);
        for (const char* name : {"index", "station", "length", "Bit_or_Word"})
            writeSigned(xml, source, name);
        xml.writeEndElement();
    }
    xml.writeEndElement();
}

void dumpProject(object* project, QIODevice& device)
{
    QXmlStreamWriter xml(&device);
    xml.setAutoFormatting(true);
    xml.setAutoFormattingIndent(2);
    xml.writeStartDocument();
    startObject(xml, QLatin1String("project"));
    if (object* const retention = object_get_child(project, "DataRetention")) {
        startObject(xml, QLatin1String("DataRetention"));
        writeUnsigned(xml, retention, "open Save all");
        writeUnsigned(xml, retention, "Save Time");
        int number = 0;
        for (object* entry = object_first_child(retention); entry; entry = object_next(entry))
            writeEntry(xml, entry, ++number);
        xml.writeEndElement();
    }
    xml.writeEndElement();
    xml.writeEndDocument();
}

class DumpProject : public ExtendFuncModelBase
{
public:
    void extModelOpen(object* project, QString /*text*/, InterfaceComm* /*comm*/) override
    {
        QFile file(QString::fromLatin1(fileName));
        if (file.open(QIODevice::WriteOnly))
            dumpProject(project, file);
    }
};

} // namespace

extern "C" HOST_INTERFACE_PUBLIC ExtendFuncModelBase* createModel()
{
    return new DumpProject;
}

extern "C" HOST_INTERFACE_PUBLIC void deletModel(ExtendFuncModelBase* model)
{
    delete model;
}
