// Generates random numbers that depend only on their seed.
// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <limits>
#include <random>
#include <vector>

/// The seed of this run: the environment variable TEST_SEED, or a fixed one. Printed, so that a failure can
/// be reproduced.
inline unsigned printedSeed()
{
    const char* const asked = std::getenv("TEST_SEED"); // NOLINT(concurrency-mt-unsafe): one thread
    const unsigned seed = asked ? static_cast<unsigned>(std::strtoul(asked, nullptr, 10)) : 20170412U;
    std::cout << "TEST_SEED=" << seed << '\n';
    return seed;
}

class RandomSource
{
public:
    /// `stream` gives independent numbers for the same seed.
    explicit RandomSource(std::uint64_t seed, std::uint64_t stream = 0)
    {
        std::seed_seq mixed{seed, seed >> 32, stream, stream >> 32};
        engine.seed(mixed);
    }

    /// From 0 up to, not including, `end`, which is at least 1.
    int below(int end) { return static_cast<int>(engine() % static_cast<std::uint64_t>(end)); }
    /// From `first` to `last`, which are less than 2^31 apart.
    int between(int first, int last) { return first + below(last - first + 1); }
    /// True once in `n` times.
    bool oneIn(int n) { return below(n) == 0; }
    template <typename T> const T& oneOf(const std::vector<T>& values)
    {
        return values[static_cast<std::size_t>(below(static_cast<int>(values.size())))];
    }
    /// Any 32-bit value; those at the limits and around zero far more often than others.
    int extreme()
    {
        switch (below(6)) {
        case 0:
            return std::numeric_limits<int>::min() + below(10);
        case 1:
            return std::numeric_limits<int>::max() - below(10);
        case 2:
            return (oneIn(2) ? 1 << 30 : -(1 << 30)) + between(-5, 5);
        case 3:
            return between(-9, 9);
        default:
            return static_cast<int>(static_cast<std::uint32_t>(engine()));
        }
    }

    std::mt19937_64 engine;
};
