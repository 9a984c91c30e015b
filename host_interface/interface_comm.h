// Declares the interface through which models access the memory areas "LB", "LW" and "RWI".
// SPDX-License-Identifier: MIT
#pragma once

#include <QtCore/QString>

/// The runtime implements it and owns the object, which outlives every model that has a pointer to it. Values
/// are 16-bit units: one per word cell; one per bit cell, holding 0 or 1.
class InterfaceComm
{
public:
    virtual ~InterfaceComm() {}

    /// The whole memory of an area: 0 "LW" (131072 bytes), 1 "LB" (65536 bytes), 2 "RWI" (131072 bytes).
    /// Writable, owned by the runtime; the module asks again each time and keeps no pointer. Null when there
    /// is no such area.
    virtual void* getAreaMemory(int areaCode) = 0;

    /// Stores `count` units from `data` in the cells of `area` from `address` on. The runtime defines the
    /// meanings of `link`, `selector` and the result.
    virtual int writeRegisterValues(const QString& link, const QString& area, int address, int selector,
                                    int count, const ushort* data) = 0;

    /// Fills `data` with `count` units from the cells of `area` from `address` on. The runtime defines the
    /// meanings of `link`, `selector` and the result. Units of cells that it cannot read stay as they were.
    virtual int readRegisterValues(const QString& link, const QString& area, int address, int selector,
                                   int count, ushort* data) = 0;
};
