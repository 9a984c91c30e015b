// Random inputs of tests, the same in every run unless asked otherwise.
// SPDX-License-Identifier: MIT
#pragma once

#include <cstdlib>
#include <iostream>
#include <limits>
#include <random>

/// The seed of this run: the environment variable TEST_SEED, or a fixed one. Printed, so that a failure can
/// be had again.
inline unsigned printedSeed()
{
    const char* const asked = std::getenv("TEST_SEED"); // NOLINT(concurrency-mt-unsafe): one thread
    const unsigned seed = asked ? static_cast<unsigned>(std::strtoul(asked, nullptr, 10)) : 20170412U;
    std::cout << "TEST_SEED=" << seed << '\n';
    return seed;
}

/// A source of random numbers.
class RandomSource
{
public:
    explicit RandomSource(unsigned seed) : engine(seed) {}

    /// From `low` to `high`, both included.
    int between(int low, int high) { return std::uniform_int_distribution<int>(low, high)(engine); }
    /// True once in `times`.
    bool oneIn(int times) { return between(1, times) == 1; }
    /// Any 32-bit value, those at the ends and around zero far more often than the others.
    int extreme()
    {
        constexpr int least = std::numeric_limits<int>::min();
        constexpr int most = std::numeric_limits<int>::max();
        switch (between(0, 5)) {
        case 0:
            return least + between(0, 9);
        case 1:
            return most - between(0, 9);
        case 2:
            return (between(0, 1) ? 1 << 30 : -(1 << 30)) + between(-5, 5);
        case 3:
            return between(-9, 9);
        default:
            return between(least, most);
        }
    }

private:
    std::mt19937 engine;
};
