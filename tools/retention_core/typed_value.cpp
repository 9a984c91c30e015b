// Reads and writes values of every type through the 32 bits, or the bytes, that they have.
// SPDX-License-Identifier: MIT
#include "tools/retention_core/typed_value.h"

#include "tools/numbers.h"
#include "tools/retention_core/refusal.h"

#include <QtCore/QStringList>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <limits>

namespace {

using Kind = ValueType::Kind;

struct KindFacts
{
    Kind kind;
    const char* name;
    int words;
    qint64 lowest;
    qint64 highest;
};

const std::array<KindFacts, 9> kinds = {{{Kind::Bit, "bit", 1, 0, 1},
                                         {Kind::Int16, "int16", 1, -32768, 32767},
                                         {Kind::UInt16, "uint16", 1, 0, 65535},
                                         {Kind::Int32, "int32", 2, -2147483648LL, 2147483647},
                                         {Kind::UInt32, "uint32", 2, 0, 4294967295LL},
                                         {Kind::Float, "float", 2, 0, 0},
                                         {Kind::Bcd, "bcd", 1, 0, 9999},
                                         {Kind::Bcd32, "bcd32", 2, 0, 99999999},
                                         {Kind::String, "string", 0, 0, 0}}};

const int longestString = 131072; // an area's bytes
const char* const highFirstText = "high-first";
const char* const lowFirstText = "low-first"; // the default

const KindFacts& factsOf(Kind kind)
{
    return kinds[static_cast<std::size_t>(kind)];
}

quint32 joined(const ValueType& type, const ushort* cells)
{
    if (type.cells() == 1)
        return cells[0];
    const quint32 low = cells[type.highFirst ? 1 : 0];
    const quint32 high = cells[type.highFirst ? 0 : 1];
    return high << 16U | low;
}

std::vector<ushort> split(const ValueType& type, quint32 bits)
{
    if (type.cells() == 1)
        return {static_cast<ushort>(bits)};
    std::vector<ushort> cells = {static_cast<ushort>(bits), static_cast<ushort>(bits >> 16U)};
    if (type.highFirst)
        std::swap(cells[0], cells[1]);
    return cells;
}

QString bcdText(quint32 bits)
{
    quint32 number = 0;
    for (int shift = 28; shift >= 0; shift -= 4) {
        const quint32 digit = bits >> static_cast<unsigned>(shift) & 15U;
        if (digit > 9)
            return {};
        number = number * 10 + digit;
    }
    return QString::number(number);
}

quint32 bcdBits(quint32 number)
{
    quint32 bits = 0;
    for (unsigned shift = 0; number != 0; shift += 4, number /= 10)
        bits |= number % 10 << shift;
    return bits;
}

/// Not finite unless the text is a number that a float can hold. Uses Qt, because GCC 10 lacks
/// std::from_chars() for floats.
float floatOf(const QByteArray& text)
{
    bool isNumber = false;
    const double number = text.toDouble(&isNumber);
    const auto value = static_cast<float>(number);
    const bool tooSmall = value == 0 && number != 0;
    return isNumber && !tooSmall ? value : std::numeric_limits<float>::infinity();
}

/// The shortest text that gives the same bits.
QString floatText(quint32 bits)
{
    float value = 0;
    std::memcpy(&value, &bits, sizeof value);
    if (!std::isfinite(value))
        return {};
    if (value == 0)
        return QLatin1String(std::signbit(value) ? "-0" : "0");
    int digits = 0; // after the point; 8 distinguish every two floats
    QByteArray scientific;
    do
        scientific = QByteArray::number(value, 'e', digits);
    while (floatOf(scientific) != value && ++digits <= 8);
    const int exponent = scientific.mid(scientific.indexOf('e') + 1).toInt();
    const QByteArray fixed = QByteArray::number(value, 'f', std::max(0, digits - exponent));
    return QString::fromLatin1(fixed.size() <= scientific.size() ? fixed : scientific);
}

quint32 floatBits(const QString& text)
{
    const float value = floatOf(text.toLatin1());
    if (text.contains(QLatin1Char(',')))
        throw Refusal(QStringLiteral("value \"%1\": expected a decimal point, not a comma").arg(text));
    if (!std::isfinite(value))
        throw Refusal(QStringLiteral("value \"%1\": expected a number in the range of a float, such as 21.5")
                          .arg(text));
    quint32 bits = 0;
    std::memcpy(&bits, &value, sizeof bits);
    return bits;
}

/// A table cannot hold a lone surrogate, a control character or a byte after the end of the text.
QString stringText(const ValueType& type, const ushort* cells)
{
    QByteArray bytes;
    for (int i = 0; i < type.cells(); ++i) {
        const auto low = static_cast<char>(cells[i]);
        const auto high = static_cast<char>(cells[i] >> 8);
        bytes.append(type.highFirst ? high : low).append(type.highFirst ? low : high);
    }
    while (bytes.endsWith('\0'))
        bytes.chop(1);
    const QString text = QString::fromUtf8(bytes);
    const auto isControl = [](QChar c) { return c.category() == QChar::Other_Control || c == QChar(0xfeff); };
    if (bytes.size() > type.length || text.toUtf8() != bytes ||
        std::any_of(text.begin(), text.end(), isControl))
        return {};
    return text.isNull() ? QString::fromLatin1("") : text;
}

std::vector<ushort> stringCells(const ValueType& type, const QString& text)
{
    QByteArray bytes = text.toUtf8();
    if (bytes.size() > type.length)
        throw Refusal(QStringLiteral("the text has %1 bytes, but the type holds %2; shorten it")
                          .arg(bytes.size())
                          .arg(type.length));
    bytes.append(QByteArray(2 * type.cells() - bytes.size(), '\0'));
    std::vector<ushort> cells;
    for (int i = 0; i < bytes.size(); i += 2) {
        const auto first = static_cast<unsigned char>(bytes[i]);
        const auto second = static_cast<unsigned char>(bytes[i + 1]);
        cells.push_back(static_cast<ushort>(type.highFirst ? first << 8 | second : second << 8 | first));
    }
    return cells;
}

qint64 numberOf(const ValueType& type, const QString& text)
{
    const KindFacts& facts = factsOf(type.kind);
    if (const std::optional<qint64> number = wholeNumber(text, facts.lowest, facts.highest))
        return *number;
    throw Refusal(QStringLiteral("value \"%1\": expected a whole number from %2 to %3 (%4)")
                      .arg(text)
                      .arg(facts.lowest)
                      .arg(facts.highest)
                      .arg(QLatin1String(facts.name)));
}

} // namespace

int ValueType::cells() const
{
    return kind == Kind::String ? (length + 1) / 2 : factsOf(kind).words;
}

QString ValueType::text() const
{
    QString text = QString::fromLatin1(factsOf(kind).name);
    if (kind == Kind::String)
        text += QStringLiteral(":%1").arg(length);
    return highFirst ? text + QLatin1Char(':') + QLatin1String(highFirstText) : text;
}

ValueType cellType(bool bits)
{
    ValueType type;
    type.kind = bits ? Kind::Bit : Kind::UInt16;
    return type;
}

ValueType valueTypeOf(const QString& text)
{
    const QString expected =
        QStringLiteral(
            "type \"%1\": expected bit, int16, uint16, int32, uint32, float, bcd, bcd32 or string:N")
            .arg(text);
    QStringList parts = text.trimmed().toLower().split(QLatin1Char(':'));
    ValueType type;
    const auto* const facts = std::find_if(kinds.begin(), kinds.end(), [&](const KindFacts& one) {
        return parts[0] == QLatin1String(one.name);
    });
    if (facts == kinds.end())
        throw Refusal(expected);
    type.kind = facts->kind;
    parts.removeFirst();
    if (type.kind == Kind::String) {
        bool ok = false;
        type.length = parts.value(0).toInt(&ok);
        if (!ok || type.length < 1 || type.length > longestString)
            throw Refusal(
                QStringLiteral("type \"%1\": expected a length in bytes, as in string:20").arg(text));
        parts.removeFirst();
    }
    if (parts.isEmpty())
        return type;
    type.highFirst = parts.first() == QLatin1String(highFirstText);
    if (parts.size() > 1 || (!type.highFirst && parts.first() != QLatin1String(lowFirstText)))
        throw Refusal(expected + QStringLiteral(", optionally followed by :low-first or :high-first"));
    if (type.kind != Kind::String && type.cells() == 1)
        throw Refusal(QStringLiteral("type \"%1\": a single word has no word order; leave out :%2")
                          .arg(text, parts.first()));
    return type;
}

QString valueText(const ValueType& type, const ushort* cells)
{
    switch (type.kind) {
    case Kind::Bit:
        return QString::number(cells[0] != 0 ? 1 : 0);
    case Kind::Int16:
        return QString::number(static_cast<qint16>(cells[0]));
    case Kind::UInt16:
        return QString::number(cells[0]);
    case Kind::Int32:
        return QString::number(static_cast<qint32>(joined(type, cells)));
    case Kind::UInt32:
        return QString::number(joined(type, cells));
    case Kind::Float:
        return floatText(joined(type, cells));
    case Kind::Bcd:
    case Kind::Bcd32:
        return bcdText(joined(type, cells));
    case Kind::String:
        break;
    }
    return stringText(type, cells);
}

std::vector<ushort> cellsOfValue(const ValueType& type, const QString& text)
{
    if (type.kind == Kind::String)
        return stringCells(type, text);
    const QString word = text.trimmed();
    if (type.kind == Kind::Float)
        return split(type, floatBits(word));
    const qint64 number = numberOf(type, word);
    const auto bits = static_cast<quint32>(number);
    return split(type, type.kind == Kind::Bcd || type.kind == Kind::Bcd32 ? bcdBits(bits) : bits);
}
