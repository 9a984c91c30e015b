// Parses CSV with libcsv, line by line, so that messages can name the line.
// SPDX-License-Identifier: MIT
#include "tools/retention_core/csv_table.h"

#include "tools/retention_core/refusal.h"

#include <QtCore/QFile>

#include <csv.h>

#include <algorithm>
#include <cstdio>

namespace {

/// What the parser's callbacks fill.
struct Reading
{
    CsvTable table;
    CsvTable::Row row;
    int line = 0;
    bool inRow = false;
    bool isUtf8 = true;
};

void takeField(void* bytes, std::size_t length, void* data)
{
    auto& reading = *static_cast<Reading*>(data);
    const QByteArray field(static_cast<const char*>(bytes), static_cast<int>(length));
    reading.row.fields.append(QString::fromUtf8(field));
    reading.isUtf8 = reading.isUtf8 && reading.row.fields.last().toUtf8() == field;
    reading.inRow = true;
}

void endRow(int /*character*/, void* data)
{
    auto& reading = *static_cast<Reading*>(data);
    reading.row.line = reading.line;
    const auto isEmpty = [](const QString& field) { return field.trimmed().isEmpty(); };
    if (!std::all_of(reading.row.fields.begin(), reading.row.fields.end(), isEmpty))
        reading.table.rows.push_back(reading.row);
    reading.row = {};
    reading.inRow = false;
}

/// Blanks belong to the field, because a text may begin with them.
int noBlank(unsigned char /*character*/)
{
    return 0;
}

char delimiterOf(const QByteArray& firstLine)
{
    const auto uses = [&](char c) { return firstLine.count(c); };
    if (uses(';') > uses(','))
        return ';';
    return uses('\t') > uses(',') ? '\t' : ',';
}

[[noreturn]] void refuse(const Reading& reading, const QString& message)
{
    throw Refusal(QStringLiteral("%1:%2: %3").arg(reading.table.fileName).arg(reading.line).arg(message));
}

void parse(QIODevice& device, Reading& reading)
{
    csv_parser parser;
    if (csv_init(&parser, CSV_STRICT | CSV_STRICT_FINI) != 0)
        throw std::bad_alloc();
    struct Freeing
    {
        csv_parser* parser;
        ~Freeing() { csv_free(parser); }
    } const freeing{&parser};
    csv_set_space_func(&parser, noBlank);
    const QString unquoted = QStringLiteral("there is a quotation mark inside a field; enclose the whole "
                                            "field in quotation marks, and double those inside it");
    for (;;) {
        QByteArray line = device.readLine();
        if (line.isEmpty())
            break;
        if (++reading.line == 1) {
            if (line.startsWith("\xef\xbb\xbf"))
                line.remove(0, 3);
            csv_set_delim(&parser, static_cast<unsigned char>(delimiterOf(line)));
        }
        const auto size = static_cast<std::size_t>(line.size());
        if (csv_parse(&parser, line.constData(), size, takeField, endRow, &reading) != size)
            refuse(reading, unquoted);
        if (line.contains('\0') || !reading.isUtf8)
            refuse(reading, QStringLiteral("not UTF-8 text; save the table as CSV in UTF-8"));
    }
    if (csv_fini(&parser, takeField, endRow, &reading) != 0)
        refuse(reading,
               QStringLiteral("the file ends inside a quoted field; add the missing quotation mark"));
    if (!reading.isUtf8)
        refuse(reading, QStringLiteral("not UTF-8 text; save the table as CSV in UTF-8"));
}

void takeHeader(Reading& reading, const QStringList& required)
{
    CsvTable& table = reading.table;
    const QString wanted = QStringLiteral("the first line must name the columns, including ") +
                           required.join(QLatin1String(", "));
    reading.line = table.rows.empty() ? 1 : table.rows.front().line;
    if (table.rows.empty())
        refuse(reading, QStringLiteral("the table is empty; ") + wanted);
    const QStringList names = table.rows.front().fields;
    for (int i = 0; i < names.size(); ++i) {
        const QString name = names[i].trimmed().toLower();
        if (name.isEmpty())
            continue;
        if (table.places.contains(name))
            refuse(reading, QStringLiteral("there are two columns \"%1\"; remove one").arg(name));
        table.places.insert(name, i);
    }
    for (const QString& name : required)
        if (!table.places.contains(name))
            refuse(reading, QStringLiteral("there is no column \"%1\"; %2").arg(name, wanted));
    table.rows.erase(table.rows.begin());
    for (const CsvTable::Row& row : table.rows) {
        reading.line = row.line;
        for (int i = names.size(); i < row.fields.size(); ++i)
            if (!row.fields[i].isEmpty())
                refuse(reading, QStringLiteral("the line has %1 fields, but there are only %2 columns; "
                                               "enclose a field that contains a separator in quotation marks")
                                    .arg(row.fields.size())
                                    .arg(names.size()));
    }
}

bool opened(QFile& file, const QString& path)
{
    return path == QLatin1String("-") ? file.open(stdin, QIODevice::ReadOnly)
                                      : file.open(QIODevice::ReadOnly);
}

} // namespace

QString CsvTable::field(const Row& row, const char* column) const
{
    return row.fields.value(places.value(QLatin1String(column), -1));
}

CsvTable readCsvTable(const QString& path, const QStringList& required)
{
    Reading reading;
    reading.table.fileName = path == QLatin1String("-") ? QStringLiteral("standard input") : path;
    QFile file(path);
    if (!opened(file, path))
        throw Refusal(QStringLiteral("%1: cannot be read: %2").arg(path, file.errorString()));
    parse(file, reading);
    if (file.error() != QFileDevice::NoError)
        throw Refusal(QStringLiteral("%1: cannot be read: %2").arg(path, file.errorString()));
    takeHeader(reading, required);
    return std::move(reading.table);
}

QString csvField(const QString& text)
{
    const auto needsQuotes = [](QChar c) {
        return c == QLatin1Char(',') || c == QLatin1Char('"') || c == QLatin1Char('\n') ||
               c == QLatin1Char('\r') || c == QLatin1Char(';') || c == QLatin1Char('\t');
    };
    const bool blanks = text.startsWith(QLatin1Char(' ')) || text.endsWith(QLatin1Char(' '));
    if (!blanks && std::none_of(text.begin(), text.end(), needsQuotes))
        return text;
    QString quoted = text;
    quoted.replace(QLatin1Char('"'), QLatin1String("\"\""));
    return QLatin1Char('"') + quoted + QLatin1Char('"');
}

QString withoutFormula(const QString& text)
{
    const QChar first = text.isEmpty() ? QChar(QLatin1Char('a')) : text[0];
    return QStringLiteral("=+-@'").contains(first) || first < QLatin1Char(' ') ? QLatin1Char('\'') + text
                                                                               : text;
}

QString plainText(const QString& text)
{
    return text.startsWith(QLatin1Char('\'')) ? text.mid(1) : text;
}
