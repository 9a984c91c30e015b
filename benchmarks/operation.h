// What is measured: operations of the module beside the system calls that move the same bytes.
#ifndef BENCHMARKS_OPERATION_H
#define BENCHMARKS_OPERATION_H

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
    Operation bare;      ///< the fewest system calls; may be empty
    Operation sameCalls; ///< the very system calls that the module makes, without the module; may be empty
};

/// A row of the table.
struct Workload
{
    std::string name;
    double target; ///< highest ratio of module to bare CPU time; 0: reported only
    std::function<Sides()> make;
};

/// All rows; names are unique.
const std::vector<Workload>& workloads();

// The rows by subject, each list in the order of the table.
std::vector<Workload> wholeAreaWorkloads();
std::vector<Workload> changeWorkloads();
std::vector<Workload> restoreWorkloads();
std::vector<Workload> startUpWorkloads();

#endif
