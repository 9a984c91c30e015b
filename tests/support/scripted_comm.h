// A communication interface whose answers a test decides and whose calls it sees as they were made.
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
        std::vector<ushort> data; ///< written values; of a read what the buffer held before
    };

    /// The answer to a read for one cell; reads leave their buffer as it is while this is empty.
    std::function<ushort(const QString& area, int address)> value;
    /// What both calls return.
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
