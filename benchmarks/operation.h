// What is measured: operations of the module beside the system calls that move the same bytes.
// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <string>
#include <vector>

/// Something that can be done again and again. Empty functions are left out.
struct Operation
{
    std::function<void(int times)> run;
    std::function<void(int times)> prepare; ///< before run(times), not measured
    std::function<void()> tidy;             ///< after it, not measured
};

/// One job done in up to three ways, all on the same files.
struct Sides
{
    Operation module;
    Operation bare;  ///< the system calls alone, against which the target counts; may be empty
    Operation other; ///< another choice of system calls, for comparison; may be empty
};

/// A row of the table.
struct Workload
{
    std::string name;
    double target; ///< highest ratio of module to bare CPU time; 0: reported only
    std::function<Sides()> make;
    std::string bareCalls;  ///< what `bare` does, in words
    std::string otherCalls; ///< what `other` does, in words
};

/// All rows; names are unique.
const std::vector<Workload>& workloads();

// The rows by subject, each list in the order of the table.
std::vector<Workload> wholeAreaWorkloads();
std::vector<Workload> changeWorkloads();
std::vector<Workload> restoreWorkloads();
std::vector<Workload> startUpWorkloads();
