// Tests address records: defaults, copies, order, type texts and the bytes of the stream format.
// SPDX-License-Identifier: MIT
#include "define_header/define_header.h"

#include <QtCore/QByteArray>
#include <QtCore/QIODevice>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <limits>
#include <new>
#include <vector>

namespace {

/// What Qt writes for a number or a text.
template <typename Field> QByteArray encoded(const Field& field)
{
    QByteArray bytes;
    QDataStream stream(&bytes, QIODevice::WriteOnly);
    stream << field;
    return bytes;
}

QByteArray encoded(const _ADDRESS_& a)
{
    return encoded(a.link) + encoded(a.station) + encoded(a.block) + encoded(a.number) + encoded(a.index) +
           encoded(a.spareText) + encoded(a.length) + encoded(a.bitOrWord);
}

QByteArray encoded(const READADDRESS& r)
{
    return encoded(r.extra2) + encoded(r.extra5) + encoded(r.extra3) + encoded(r.address) +
           encoded(r.extra1) + encoded(r.extraText) + encoded(r.extra4);
}

/// Compares encodings, which distinguish even null texts from empty ones.
template <typename Record> void expectSame(const Record& got, const Record& expected)
{
    EXPECT_EQ(encoded(got).toHex(), encoded(expected).toHex());
}

/// Every field has a different value.
_ADDRESS_ fullAddress()
{
    _ADDRESS_ address;
    address.link = QStringLiteral("Local");
    address.station = 1;
    address.block = QStringLiteral("LW");
    address.number = QString::fromUtf8("\xc3\xa9\xe2\x82\xac"); // two letters, one beyond Latin-1
    address.index = -2;
    address.spareText = QStringLiteral("spare");
    address.length = 3;
    address.bitOrWord = std::numeric_limits<int>::min();
    return address;
}

READADDRESS fullReadAddress()
{
    READADDRESS record;
    record.address = fullAddress();
    record.extraText = QStringLiteral("extra");
    record.extra1 = 101;
    record.extra2 = 102;
    record.extra3 = 103;
    record.extra4 = 104;
    record.extra5 = -105;
    return record;
}

template <typename Record> QByteArray written(const Record& record)
{
    QByteArray bytes;
    QDataStream stream(&bytes, QIODevice::WriteOnly);
    EXPECT_EQ(&(stream << record), &stream) << "the operator returns its stream";
    return bytes;
}

template <typename Record> Record readFrom(const QByteArray& bytes, Record record = Record())
{
    QDataStream stream(bytes);
    EXPECT_EQ(&(stream >> record), &stream) << "the operator returns its stream";
    EXPECT_EQ(stream.status(), QDataStream::Ok);
    EXPECT_TRUE(stream.atEnd()) << "nothing is left over";
    return record;
}

structMaintenance entryAt(int index, int addressLength = 0)
{
    structMaintenance entry;
    entry.address.index = index;
    entry.addressLength = addressLength;
    return entry;
}

/// A record constructed in memory that is not zero. Never destroyed: its texts are null and own nothing.
template <typename Record> const Record& madeInFullMemory()
{
    alignas(Record) static std::array<char, sizeof(Record)> memory;
    memory.fill('\xaa');
    return *new (memory.data()) Record;
}

TEST(AddressRecords, BeginWithNullTextsAndZeros)
{
    const QByteArray none = "ffffffff00000000ffffffffffffffff00000000ffffffff0000000000000000";
    EXPECT_EQ(encoded(madeInFullMemory<_ADDRESS_>()).toHex(), none);
    EXPECT_EQ(encoded(madeInFullMemory<READADDRESS>()).toHex(),
              QByteArray(24, '0') + none + QByteArray(8, '0') + QByteArray(8, 'f') + QByteArray(8, '0'));
    const auto& entry = madeInFullMemory<structMaintenance>();
    EXPECT_EQ(encoded(entry.address).toHex(), none);
    EXPECT_TRUE(entry.addressType.isNull());
    EXPECT_EQ(entry.addressLength, 0);
    EXPECT_EQ(sizeof entry.dataArea, 400U);
    EXPECT_EQ(QByteArray(entry.dataArea, 400), QByteArray(400, '\0'));
}

TEST(AddressRecords, ACopiedEntryHasAllFieldsAndAll400BytesOfItsDataArea)
{
    structMaintenance entry;
    entry.address = fullAddress();
    entry.addressType = QStringLiteral("Word");
    entry.addressLength = -7;
    for (int i = 0; i < 400; ++i)
        entry.dataArea[i] = static_cast<char>(i * 7 + 1);
    const structMaintenance copy = entry;
    structMaintenance assigned;
    assigned = entry;
    for (const structMaintenance& other : {copy, assigned}) {
        expectSame(other.address, fullAddress());
        EXPECT_TRUE(other.addressType == QStringLiteral("Word"));
        EXPECT_EQ(other.addressLength, -7);
        EXPECT_TRUE(std::equal(std::begin(entry.dataArea), std::end(entry.dataArea), other.dataArea));
    }
    entry.address.link[0] = QLatin1Char('X');
    EXPECT_TRUE(copy.address.link == QStringLiteral("Local")) << "a copy does not change with its original";
}

TEST(AddressRecords, AreOrderedBySignedIndex)
{
    EXPECT_TRUE(compare(entryAt(-5), entryAt(3)));
    EXPECT_FALSE(compare(entryAt(3), entryAt(-5)));
    EXPECT_TRUE(compare(entryAt(std::numeric_limits<int>::min()), entryAt(std::numeric_limits<int>::max())));
    EXPECT_FALSE(compare(entryAt(std::numeric_limits<int>::max()), entryAt(std::numeric_limits<int>::min())));
    const structMaintenance same = entryAt(7);
    EXPECT_FALSE(compare(same, same));
}

TEST(AddressTypes, HaveTheTextsOfTheCodesOneTwoAndFour)
{
    EXPECT_TRUE(addressType2QString(1) == QStringLiteral("Bit"));
    EXPECT_TRUE(addressType2QString(2) == QStringLiteral("Word"));
    EXPECT_TRUE(addressType2QString(4) == QStringLiteral("Double Word"));
}

TEST(AddressTypes, GiveAnEmptyTextThatIsNotNullForAnyOtherCode)
{
    for (const int code :
         {0, 3, 5, 6, 7, 8, -1, -2, 257, std::numeric_limits<int>::max(), std::numeric_limits<int>::min()}) {
        EXPECT_TRUE(addressType2QString(code).isEmpty()) << code;
        EXPECT_FALSE(addressType2QString(code).isNull()) << code;
    }
}

TEST(AddressTypes, HaveTheCodesOfExactlyTheirTexts)
{
    EXPECT_EQ(addressType2Int(QStringLiteral("Bit")), 1);
    EXPECT_EQ(addressType2Int(QStringLiteral("Word")), 2);
    EXPECT_EQ(addressType2Int(QStringLiteral("Double Word")), 4);
    for (const char* text : {"bit", "BIT", "Word ", " Word", "word", "DoubleWord", "Double  Word",
                             "Double word", "Bits", "1", "2", "4", ""})
        EXPECT_EQ(addressType2Int(QString::fromLatin1(text)), -1) << '"' << text << '"';
    EXPECT_EQ(addressType2Int(QString()), -1);
}

TEST(AddressStream, WritesAnAddressInTheOrderOfItsFields)
{
    _ADDRESS_ address;
    address.link = QStringLiteral("A");
    address.station = 1;
    address.block = QStringLiteral("");
    address.index = 0x01020304;
    address.length = -1;
    address.bitOrWord = 2;
    EXPECT_EQ(written(address).toHex(), QByteArray("000000020041" // "A"
                                                   "00000001"
                                                   "00000000" // empty
                                                   "ffffffff" // null
                                                   "01020304"
                                                   "ffffffff" // null
                                                   "ffffffff" // -1
                                                   "00000002"));
    EXPECT_EQ(written(fullAddress()).toHex(), encoded(fullAddress()).toHex());
}

TEST(AddressStream, WritesAReadAddressInItsOwnOrder)
{
    EXPECT_EQ(written(fullReadAddress()).toHex(), encoded(fullReadAddress()).toHex());
}

TEST(AddressStream, BringsEveryFieldBackInThePlaceOfWhatTheRecordHeld)
{
    expectSame(readFrom<_ADDRESS_>(encoded(fullAddress())), fullAddress());
    expectSame(readFrom<_ADDRESS_>(encoded(_ADDRESS_()), fullAddress()), _ADDRESS_());
    expectSame(readFrom<READADDRESS>(encoded(fullReadAddress())), fullReadAddress());
    expectSame(readFrom<READADDRESS>(encoded(READADDRESS()), fullReadAddress()), READADDRESS());
    READADDRESS empty; // whose texts are not null
    _ADDRESS_& address = empty.address;
    empty.extraText = address.link = address.block = address.number = address.spareText = QStringLiteral("");
    expectSame(readFrom<READADDRESS>(encoded(empty)), empty);
}

TEST(AddressStream, GoesOnThroughARecordThatBreaksOff)
{
    const QByteArray whole = encoded(fullAddress());
    QDataStream stream(whole.left(encoded(QStringLiteral("Local")).size() + 4 + 3));
    _ADDRESS_ address = fullAddress();
    address.station = 99;
    address.index = 99;
    stream >> address;
    EXPECT_EQ(stream.status(), QDataStream::ReadPastEnd);
    EXPECT_TRUE(address.link == QStringLiteral("Local"));
    EXPECT_EQ(address.station, 1) << "what was there is assigned";
    EXPECT_EQ(address.index, 0) << "and what was not there is assigned as what the stream gave";
}

} // namespace
