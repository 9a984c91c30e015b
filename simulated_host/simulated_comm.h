// The communication interface over the simulated areas.
// SPDX-License-Identifier: MIT
#pragma once

#include "host_interface/interface_comm.h"
#include "simulated_host/memory_areas.h"

#include <QtCore/QSet>

/// Reads and writes cells of `areas`, whatever `link` and `selector` are; cells outside an area are left out.
/// Every call goes to the call log. The areas stay the caller's.
class SimulatedComm : public InterfaceComm
{
public:
    /// `areas` stay the caller's and must outlive the object.
    explicit SimulatedComm(MemoryAreas& areas) : areas(areas) {}

    /// From now on getAreaMemory() answers null for this code, as on a panel without the area.
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
