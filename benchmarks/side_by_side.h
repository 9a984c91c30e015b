// Measures all sides in turn, so that disturbances of the machine affect all alike.
// SPDX-License-Identifier: MIT
#pragma once

#include "benchmarks/operation.h"

#include <benchmark/benchmark.h>

/// Registers the rows' benchmarks. Each iteration is one round: a batch of every side, in rotating order. The
/// counters are medians over the rounds: "module_ns", "by_hand_ns" and "bare_ns" of CPU time for one
/// operation, and the median of the rounds' own ratios as "ratio" (to by hand) and "ratio_bare".
void registerSideBySide(const std::vector<Workload>& rows, int repetitions);

/// The median of the values, of which there must be at least one.
double medianOf(std::vector<double> values);
