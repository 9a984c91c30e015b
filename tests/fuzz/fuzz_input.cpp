// Takes a fuzzer's bytes apart.
// SPDX-License-Identifier: MIT
#include "tests/fuzz/fuzz_input.h"

#include <algorithm>
#include <limits>

std::uint8_t FuzzInput::byte()
{
    if (size == 0)
        return 0;
    --size;
    return *data++;
}

std::uint32_t FuzzInput::littleEndian(int bytes)
{
    std::uint32_t value = 0;
    for (int k = 0; k < bytes; ++k)
        value |= std::uint32_t(byte()) << (8 * k);
    return value;
}

std::int32_t FuzzInput::number()
{
    static const std::int32_t borders[] = {0,
                                           60100,
                                           65535,
                                           65536,
                                           std::numeric_limits<std::int32_t>::max(),
                                           1 << 30,
                                           -1,
                                           -65536,
                                           std::numeric_limits<std::int32_t>::min()};
    const std::uint8_t form = byte();
    switch (form & 7) {
    case 0:
    case 1:
        return byte();
    case 2:
        return static_cast<std::int8_t>(byte());
    case 3:
    case 4:
        return static_cast<std::int16_t>(littleEndian(2));
    case 5: {
        const std::uint32_t near = static_cast<std::uint32_t>(static_cast<std::int8_t>(byte()));
        const std::uint32_t border = static_cast<std::uint32_t>(borders[(form >> 3) % std::size(borders)]);
        return static_cast<std::int32_t>(border + near);
    }
    default:
        return static_cast<std::int32_t>(littleEndian(4));
    }
}

QByteArray FuzzInput::bytes()
{
    const FuzzInput taken = part();
    return {reinterpret_cast<const char*>(taken.data), static_cast<int>(taken.size)};
}

FuzzInput FuzzInput::part()
{
    const std::size_t length = std::min<std::size_t>(byte(), size);
    size -= length;
    data += length;
    return {data - length, length};
}
