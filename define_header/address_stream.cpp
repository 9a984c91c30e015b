// Streams the address records.
// SPDX-License-Identifier: MIT
#include "define_header/address_stream.h"

QDataStream& operator<<(QDataStream& stream, const _ADDRESS_& address)
{
    return stream << address.link << qint32(address.station) << address.block << address.number
                  << qint32(address.index) << address.spareText << qint32(address.length)
                  << qint32(address.bitOrWord);
}

QDataStream& operator>>(QDataStream& stream, _ADDRESS_& address)
{
    return stream >> address.link >> address.station >> address.block >> address.number >> address.index >>
           address.spareText >> address.length >> address.bitOrWord;
}

QDataStream& operator<<(QDataStream& stream, const READADDRESS& address)
{
    return stream << qint32(address.extra2) << qint32(address.extra5) << qint32(address.extra3)
                  << address.address << qint32(address.extra1) << address.extraText << qint32(address.extra4);
}

QDataStream& operator>>(QDataStream& stream, READADDRESS& address)
{
    return stream >> address.extra2 >> address.extra5 >> address.extra3 >> address.address >>
           address.extra1 >> address.extraText >> address.extra4;
}
