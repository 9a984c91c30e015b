// Alternating measurement: what disturbs the machine disturbs all sides alike.
// SPDX-License-Identifier: MIT
#pragma once

#include "benchmarks/operation.h"

#include <benchmark/benchmark.h>

/// Makes the rows' benchmarks. Each iteration is one round: a batch of every side, in turning order. The
/// counters are medians over the rounds: "module_ns", "bare_ns" and "other_ns" of CPU time for one
/// operation, and the median of the rounds' own ratios as "ratio" and "ratio_other".
void registerSideBySide(const std::vector<Workload>& rows, int repetitions);

/// Makes the benchmarks of the stores, in wall-clock time because waiting for the disk is the work. Counters:
/// "NAME_us" for each kind of store and "ratio_NAME", the module's time over that store's, as medians.
void registerDurable(int repetitions);

/// The middle of the values, which must not be empty.
double medianOf(std::vector<double> values);
