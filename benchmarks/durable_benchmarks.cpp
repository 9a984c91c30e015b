// The stores side by side: in every round each keeps the same values, in turning order.
// SPDX-License-Identifier: MIT
#include "benchmarks/bench_host.h"
#include "benchmarks/durable_store.h"
#include "benchmarks/side_by_side.h"

#include <chrono>
#include <map>

namespace {

using Keep = void (*)(DurableStore& store, int value);

double wallSeconds(DurableStore& store, Keep keep, int value)
{
    const auto begin = std::chrono::steady_clock::now();
    keep(store, value);
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
}

void runRounds(benchmark::State& state, Keep keep)
{
    const std::vector<StoreKind>& kinds = storeKinds();
    removeRetentionFiles();
    std::vector<std::unique_ptr<DurableStore>> stores;
    for (const StoreKind& kind : kinds)
        stores.push_back(kind.make());
    std::vector<std::vector<double>> seconds(kinds.size());
    int round = 0;
    for (auto _ : state) {
        ++round;
        for (std::size_t turn = 0; turn < kinds.size(); ++turn) {
            const std::size_t at = (turn + static_cast<std::size_t>(round)) % kinds.size();
            seconds[at].push_back(wallSeconds(*stores[at], keep, round));
        }
        state.SetIterationTime(seconds[0].back());
    }
    for (std::size_t at = 0; at < kinds.size(); ++at) {
        state.counters[kinds[at].name + "_us"] = 1e6 * medianOf(seconds[at]);
        if (at == 0)
            continue;
        std::vector<double> ratios;
        for (std::size_t i = 0; i < seconds[at].size(); ++i)
            ratios.push_back(seconds[0][i] / seconds[at][i]);
        state.counters["ratio_" + kinds[at].name] = medianOf(ratios);
    }
}

} // namespace

void registerDurable(int repetitions)
{
    const std::pair<const char*, Keep> jobs[] = {
        {"durable/word_change",
         [](DurableStore& store, int value) { store.keepCell(3, static_cast<ushort>(value)); }},
        {"durable/whole_area_save", [](DurableStore& store, int value) { store.keepImages(value); }}};
    for (const auto& [name, keep] : jobs)
        benchmark::RegisterBenchmark(name, [keep = keep](benchmark::State& state) { runRounds(state, keep); })
            ->Iterations(101)
            ->Repetitions(repetitions)
            ->UseManualTime();
}
