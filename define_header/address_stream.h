// The wire format of the address records between module and runtime: the fields one after another with
// nothing around them, integers as 32-bit signed and strings as QString, in the stream's own version and byte
// order.
// SPDX-License-Identifier: MIT
#pragma once

#include "define_header/address_records.h"
#include "define_header/export.h"

#include <QtCore/QDataStream>

/// In the order of the fields. Null and empty strings stay apart. Neither direction checks the stream's
/// status.
POWEROFF_PROTECT_EXPORT QDataStream& operator<<(QDataStream& stream, const _ADDRESS_& address);
POWEROFF_PROTECT_EXPORT QDataStream& operator>>(QDataStream& stream, _ADDRESS_& address);

/// In the order extra2, extra5, extra3, address, extra1, extraText, extra4, which is not that of the fields.
POWEROFF_PROTECT_EXPORT QDataStream& operator<<(QDataStream& stream, const READADDRESS& address);
POWEROFF_PROTECT_EXPORT QDataStream& operator>>(QDataStream& stream, READADDRESS& address);
