// Lists all rows of the table.
// SPDX-License-Identifier: MIT
#include "benchmarks/operation.h"

const std::vector<Workload>& workloads()
{
    static const std::vector<Workload> all = [] {
        std::vector<Workload> rows;
        for (const auto& part :
             {wholeAreaWorkloads(), changeWorkloads(), restoreWorkloads(), startUpWorkloads()})
            rows.insert(rows.end(), part.begin(), part.end());
        return rows;
    }();
    return all;
}
