// Gives models access to the simulated areas.
// SPDX-License-Identifier: MIT
#pragma once

#include "host_interface/interface_comm.h"
#include "simulated_host/memory_areas.h"

#include <QtCore/QSet>

/// Reads and writes cells of `areas`, whatever `link` and `selector` are; cells outside an area are skipped.
/// Every call is recorded in the call log.
class SimulatedComm : public InterfaceComm
{
public:
    /// The caller owns `areas`, which must outlive the object.
    explicit SimulatedComm(MemoryAreas& areas) : areas(areas) {}

    /// Makes getAreaMemory() return null for this code from now on, as on a panel without the area.
    void removeAreaMemory(int areaCode) { removedCodes.insert(areaCode); }

    void* getAreaMemory(int areaCode) override;
    /// Both return the number of cells inside the area.
    int writeRegisterValues(const QString& link, const QString& area, int address, int selector, int count,
                            const ushort* data) override;
    int readRegisterValues(const QString& link, const QString& area, int address, int selector, int count,
                           ushort* data) override;

private:
    MemoryAreas& areas;
    QSet<int> removedCodes;
};
