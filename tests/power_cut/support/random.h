// Random numbers that depend on nothing but their seed.
// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <random>
#include <vector>

class Random
{
public:
    /// `stream` gives independent numbers for the same seed.
    explicit Random(std::uint64_t seed, std::uint64_t stream = 0)
    {
        std::seed_seq mixed{seed, seed >> 32, stream, stream >> 32};
        engine.seed(mixed);
    }

    /// From 0 up to, not including, `end`, which is at least 1.
    int below(int end) { return static_cast<int>(engine() % static_cast<std::uint64_t>(end)); }
    /// From `first` to `last`.
    int between(int first, int last) { return first + below(last - first + 1); }
    /// True once in `n` times.
    bool oneIn(int n) { return below(n) == 0; }
    template <typename T> const T& oneOf(const std::vector<T>& values)
    {
        return values[static_cast<std::size_t>(below(static_cast<int>(values.size())))];
    }

    std::mt19937_64 engine;
};
