// Defines what is measured: operations of the module, and the same work without it.
// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <string>
#include <vector>

/// A repeatable operation. Empty functions are skipped.
struct Operation
{
    std::function<void(int times)> run;
    std::function<void(int times)> prepare; ///< before run(times), not measured
    std::function<void()> tidy;             ///< after it, not measured
};

/// One job, done in up to three ways on the same files.
struct Sides
{
    Operation module;
    Operation byHand; ///< the same calls without the module, on std::fstreams without a buffer; may be empty
    Operation bare;   ///< system calls instead of the streams; may be empty
};

/// A row of the table.
struct Workload
{
    std::string name;
    double target; ///< highest allowed ratio of module to by-hand CPU time; 0: only reported
    std::function<Sides()> make;
    std::string byHandCalls; ///< what `byHand` does, in words
    std::string bareCalls;   ///< what `bare` does, in words
};

/// All rows; names are unique.
const std::vector<Workload>& workloads();

// The rows by subject, each list in the order of the table.
std::vector<Workload> wholeAreaWorkloads();
std::vector<Workload> changeWorkloads();
std::vector<Workload> restoreWorkloads();
std::vector<Workload> startUpWorkloads();
