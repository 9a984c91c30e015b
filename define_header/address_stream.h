// Declares the stream operators of the address records. The format has nothing but the fields, integers as
// signed 32-bit numbers and strings as QString, in the stream's own version and byte order.
// SPDX-License-Identifier: MIT
#pragma once

#include "define_header/address_records.h"
#include "define_header/export.h"

#include <QtCore/QDataStream>

/// Streams the fields in the order of their declaration. Null and empty strings stay distinct. Neither
/// operator checks the stream's status.
POWEROFF_PROTECT_EXPORT QDataStream& operator<<(QDataStream& stream, const _ADDRESS_& address);
POWEROFF_PROTECT_EXPORT QDataStream& operator>>(QDataStream& stream, _ADDRESS_& address);

/// Streams extra2, extra5, extra3, address, extra1, extraText, extra4: not the order of declaration.
POWEROFF_PROTECT_EXPORT QDataStream& operator<<(QDataStream& stream, const READADDRESS& address);
POWEROFF_PROTECT_EXPORT QDataStream& operator>>(QDataStream& stream, READADDRESS& address);
