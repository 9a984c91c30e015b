// The runtime's communication interface: how a model reaches the memory areas "LB", "LW" and "RWI".
// SPDX-License-Identifier: MIT
#pragma once

#include <QtCore/QString>

/// Implemented by the runtime, used by models. The object stays the runtime's and outlives every model that
/// was given a pointer to it. Values travel as 16-bit units: one per word cell; one per bit cell, holding 0
/// or 1.
class InterfaceComm
{
public:
    virtual ~InterfaceComm() {}

    /// The whole memory of an area: 0 "LW" (131072 bytes), 1 "LB" (65536 bytes), 2 "RWI" (131072 bytes).
    /// Writable, owned by the runtime; the module asks anew each time and keeps no pointer. Null when there
    /// is no such area.
    virtual void* getAreaMemory(int areaCode) = 0;

    /// Stores `count` units from `data` into the cells of `area` from `address` on. The meanings of `link`
    /// and `selector` and of the result are the runtime's.
    virtual int writeRegisterValues(const QString& link, const QString& area, int address, int selector,
                                    int count, const ushort* data) = 0;

    /// Fills `data` with `count` units from the cells of `area` from `address` on. The meanings of `link` and
    /// `selector` and of the result are the runtime's; cells it cannot read leave their units as they were.
    virtual int readRegisterValues(const QString& link, const QString& area, int address, int selector,
                                   int count, ushort* data) = 0;
};
