// Builds change messages byte by byte, for names and surroundings that a well-behaved host does not send.
// SPDX-License-Identifier: MIT
#pragma once

#include "host_interface/host_interface.h"

#include <QtCore/QByteArray>

#include <array>
#include <cstring>

/// A message as raw bytes: everything except the address at 12 and the terminated name at 20 is `filler`.
class RawMessage
{
public:
    RawMessage(const QByteArray& area, int address, char filler = '\x5a')
    {
        bytes.fill(filler);
        std::memcpy(bytes.data() + 12, &address, sizeof address);
        std::memcpy(bytes.data() + 20, area.constData(), static_cast<std::size_t>(area.size()) + 1);
    }

    operator const _ExtendTriggerMsg_t*() const
    {
        return reinterpret_cast<const _ExtendTriggerMsg_t*>(bytes.data());
    }

private:
    alignas(8) std::array<char, 128> bytes;
};
