// Defines the records that name ranges of cells in the runtime's areas, and their order.
// SPDX-License-Identifier: MIT
#pragma once

#include "define_header/export.h"

#include <QtCore/QString>

/// The runtime's address record: a place in an area. A value type.
struct _ADDRESS_ // NOLINT(bugprone-reserved-identifier): the runtime's own name
{
    QString link;      ///< passed back to the runtime when values are restored
    int station = 0;   ///< carried along, not interpreted
    QString block;     ///< area name: "LB", "LW" or "RWI"
    QString number;    ///< carried along, not interpreted
    int index = 0;     ///< first cell of the range
    QString spareText; ///< carried along; the module never sets it
    int length = 0;    ///< the address's own length value; not the number of cells in the range
    int bitOrWord = 0; ///< carried along, not interpreted
};

/// One configured retention entry: keep the cells address.index to address.index + addressLength - 1.
struct structMaintenance
{
    _ADDRESS_ address;       ///< the first cell
    QString addressType;     ///< "Bit", "Word" or "Double Word"; never scales addressLength
    int addressLength = 0;   ///< number of cells
    char dataArea[400] = {}; ///< unused; all zero
};

// Lets a growing QVector move its entries in memory instead of copying and destroying each.
Q_DECLARE_TYPEINFO(structMaintenance, Q_MOVABLE_TYPE);

/// The runtime's read-address record. The module only streams it; the extra fields belong to the runtime.
struct READADDRESS
{
    _ADDRESS_ address;
    QString extraText;
    int extra1 = 0;
    int extra2 = 0;
    int extra3 = 0;
    int extra4 = 0;
    int extra5 = 0;
};

/// Orders entries by address.index alone, signed: entries with the same index are equivalent.
POWEROFF_PROTECT_EXPORT bool compare(const structMaintenance& a, const structMaintenance& b);
