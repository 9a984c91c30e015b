// Runs alternating rounds with Google Benchmark.
// SPDX-License-Identifier: MIT
#include "benchmarks/side_by_side.h"

#include <algorithm>
#include <array>
#include <ctime>

namespace {

const int rounds = 41;
const double shortestBatch = 0.001; ///< seconds of CPU, far above the clock's own cost

double cpuSeconds()
{
    timespec now;
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + 1e-9 * static_cast<double>(now.tv_nsec);
}

double measure(const Operation& operation, int times)
{
    if (operation.prepare)
        operation.prepare(times);
    const double begin = cpuSeconds();
    operation.run(times);
    const double seconds = cpuSeconds() - begin;
    if (operation.tidy)
        operation.tidy();
    return seconds;
}

/// The number of operations in a batch; the first ones also warm the caches.
int batchSize(const Operation& operation)
{
    int times = 1;
    while (times < 100000 && measure(operation, times) < shortestBatch)
        times *= 2;
    return times;
}

void runRounds(benchmark::State& state, const Workload& row)
{
    const Sides sides = row.make();
    const std::array<const Operation*, 3> all = {&sides.module, &sides.byHand, &sides.bare};
    const int times = batchSize(sides.module);
    std::array<std::vector<double>, 3> seconds;
    std::size_t first = 0;
    for (auto _ : state) {
        for (std::size_t turn = 0; turn < all.size(); ++turn) {
            const std::size_t side = (first + turn) % all.size();
            if (all[side]->run)
                seconds[side].push_back(measure(*all[side], times));
        }
        first = (first + 1) % all.size();
        state.SetIterationTime(seconds[0].back());
    }
    const std::array<const char*, 3> names = {"module_ns", "by_hand_ns", "bare_ns"};
    const std::array<const char*, 3> ratioNames = {"", "ratio", "ratio_bare"};
    for (std::size_t side = 0; side < all.size(); ++side) {
        if (seconds[side].empty())
            continue;
        state.counters[names[side]] = 1e9 * medianOf(seconds[side]) / times;
        if (side == 0)
            continue;
        std::vector<double> ratios;
        for (std::size_t round = 0; round < seconds[side].size(); ++round)
            ratios.push_back(seconds[0][round] / seconds[side][round]);
        state.counters[ratioNames[side]] = medianOf(ratios);
    }
    state.SetLabel(row.byHandCalls + ";" + row.bareCalls);
    if (row.target > 0)
        state.counters["target"] = row.target;
}

} // namespace

double medianOf(std::vector<double> values)
{
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

void registerSideBySide(const std::vector<Workload>& rows, int repetitions)
{
    for (const Workload& row : rows)
        benchmark::RegisterBenchmark(("cpu/" + row.name).c_str(),
                                     [&row](benchmark::State& state) { runRounds(state, row); })
            ->Iterations(rounds)
            ->Repetitions(repetitions)
            ->UseManualTime();
}
