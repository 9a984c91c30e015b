// Implements a communication interface whose answers a test determines and whose calls it records.
// SPDX-License-Identifier: MIT
#pragma once

#include "host_interface/interface_comm.h"

#include <QtCore/QString>

#include <functional>
#include <vector>

class ScriptedComm : public InterfaceComm
{
public:
    struct Call
    {
        bool write;
        QString link;
        QString area;
        int address;
        int selector;
        int count;
        std::vector<ushort> data; ///< the values written; for a read, the previous contents of the buffer
    };

    /// The answer to a read for one cell; while empty, reads leave their buffer unchanged.
    std::function<ushort(const QString& area, int address)> value;
    /// The return value of both calls.
    int result = 0;
    std::vector<Call> calls;

    void* getAreaMemory(int) override { return nullptr; }

    int writeRegisterValues(const QString& link, const QString& area, int address, int selector, int count,
                            const ushort* data) override
    {
        calls.push_back({true, link, area, address, selector, count, {data, data + count}});
        return result;
    }

    int readRegisterValues(const QString& link, const QString& area, int address, int selector, int count,
                           ushort* data) override
    {
        calls.push_back({false, link, area, address, selector, count, {data, data + count}});
        for (int j = 0; value && j < count; ++j)
            data[j] = value(area, address + j);
        return result;
    }
};
