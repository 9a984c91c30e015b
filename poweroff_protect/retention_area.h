// The facts in which the areas "LB", "LW" and "RWI" differ, in one table.
// SPDX-License-Identifier: MIT
#ifndef POWEROFF_PROTECT_RETENTION_AREA_H
#define POWEROFF_PROTECT_RETENTION_AREA_H

#include "poweroff_protect/poweroff_protect.h"

/// One row for each area. The two numberings are the runtime's and unrelated.
struct RetentionArea
{
    const char* name;                                     ///< the runtime's name of the area
    const char* fileName;                                 ///< its file in the project directory
    std::fstream poweroff_protect::*file;                 ///< the stream on that file
    QFileInfo poweroff_protect::*fileInfo;                ///< used in per-address mode only
    QList<MaintenanceFileInfo> poweroff_protect::*blocks; ///< empty unless in per-address mode
    int wholeAreaCode;                                    ///< as in InterfaceComm::getAreaMemory()
    int perAddressCode;                                   ///< decides the length of a new per-address file
    int imageBytes;                                       ///< size of the area's memory
    bool bits;                                            ///< cells are bits; otherwise 16-bit words
    bool movesBits; ///< its blocks count into the bit number by which a restore finds "LB" cells

    /// The areas in the order in which everything visits them.
    static const RetentionArea all[3];

    /// The area of exactly that name; null for any other.
    static const RetentionArea* named(const QString& name);
    static const RetentionArea* named(const char* name);      ///< as above; `name` must not be null
    static const RetentionArea* withWholeAreaCode(int code);  ///< null for any other code
    static const RetentionArea* withPerAddressCode(int code); ///< null for any other code
};

#endif
