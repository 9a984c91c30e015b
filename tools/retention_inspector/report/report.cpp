// Values of a report, and the choice of its form.
// SPDX-License-Identifier: MIT
#include "tools/retention_inspector/report/report.h"

#include <QtCore/QJsonArray>

Value numberValue(qint64 number)
{
    return {QJsonValue(static_cast<double>(number)), QString::number(number)};
}

Value numberValue(double number, int decimals)
{
    return {QJsonValue(number), QString::number(number, 'f', decimals)};
}

Value textValue(const QString& text)
{
    return {QJsonValue(text), text};
}

Value textValue(const char* text)
{
    return textValue(QString::fromLatin1(text));
}

Value absentValue()
{
    return {QJsonValue(), QString()};
}

Value rangesValue(const CellRanges& ranges)
{
    QJsonArray data;
    for (const CellRange& range : ranges)
        data.append(QJsonArray{static_cast<double>(range.first), static_cast<double>(range.last)});
    return {data, ranges.text()};
}

Value numbersValue(const std::vector<int>& numbers)
{
    QJsonArray data;
    QStringList texts;
    for (const int number : numbers) {
        data.append(number);
        texts.append(QString::number(number));
    }
    return {data, texts.join(QLatin1String(", "))};
}

QString formatted(const Report& report, Format format)
{
    switch (format) {
    case Format::Json:
        return reportJson(report);
    case Format::Csv:
        return reportCsv(report);
    case Format::Text:
        break;
    }
    return reportText(report);
}
