// The records that name ranges of cells in the runtime's areas, and their order.
// SPDX-License-Identifier: MIT
#pragma once

#include "define_header/export.h"

#include <QtCore/QString>

/// The runtime's address record: a place in an area. A value: copies share nothing that can change.
struct _ADDRESS_ // NOLINT(bugprone-reserved-identifier): the runtime's own name
{
    QString link;      ///< link text; handed back to the runtime when values are restored
    int station = 0;   ///< station number; carried along
    QString block;     ///< area name: "LB", "LW" or "RWI"
    QString number;    ///< number text; carried along
    int index = 0;     ///< first cell of the range
    QString spareText; ///< carried along; the module never fills it
    int length = 0;    ///< length value of the address; not the range's number of cells
    int bitOrWord = 0; ///< bit/word selector; carried along
};

/// One configured retention entry: the cells address.index to address.index + addressLength - 1 are to be
/// kept.
struct structMaintenance
{
    _ADDRESS_ address;       ///< where the range begins
    QString addressType;     ///< "Bit", "Word" or "Double Word"; carried along, never scales addressLength
    int addressLength = 0;   ///< number of cells
    char dataArea[400] = {}; ///< all zero; copied with the entry, otherwise unused
};

// A vector that grows moves its entries in memory instead of copying and destroying each.
Q_DECLARE_TYPEINFO(structMaintenance, Q_MOVABLE_TYPE);

/// The runtime's read-address record. The module only streams it and gives the extra fields no meaning.
struct READADDRESS
{
    _ADDRESS_ address; ///< the place that is read
    QString extraText; ///< the runtime's
    int extra1 = 0;    ///< the runtime's
    int extra2 = 0;    ///< the runtime's
    int extra3 = 0;    ///< the runtime's
    int extra4 = 0;    ///< the runtime's
    int extra5 = 0;    ///< the runtime's
};

/// The order in which entries are sorted: by address.index, signed. Nothing else takes part, so entries with
/// equal index are equivalent.
POWEROFF_PROTECT_EXPORT bool compare(const structMaintenance& a, const structMaintenance& b);
