// Adds and subtracts 32-bit numbers that wrap, so that configured values of any size pass through.
// SPDX-License-Identifier: MIT
#pragma once

inline int wrapAdd(int a, int b)
{
    return static_cast<int>(static_cast<unsigned>(a) + static_cast<unsigned>(b));
}

inline int wrapSubtract(int a, int b)
{
    return static_cast<int>(static_cast<unsigned>(a) - static_cast<unsigned>(b));
}
