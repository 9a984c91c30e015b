// Implements a store with the module.
// SPDX-License-Identifier: MIT
#include "benchmarks/bench_host.h"
#include "benchmarks/durable_store.h"

#include <algorithm>

namespace {

const int firstCell = 100;

class ModuleStore : public DurableStore
{
public:
    ModuleStore(int count, void (*sync)())
        : cells(perAddressProject({{"LW", firstCell, count}}), BenchModule::ExistingFiles), sync(sync)
    {
        cells.start();
    }
    ~ModuleStore() override { setShell({}); }

    void keepCell(int cell, ushort value) override
    {
        setShell(sync);
        cells.comm.cells[static_cast<std::size_t>(firstCell + cell)] = value;
        cells.change("LW", firstCell + cell);
    }

    void keepImages(int seed) override
    {
        if (!areas) {
            areas = std::make_unique<BenchModule>(wholeAreaProject(), BenchModule::ExistingFiles);
            areas->start();
        }
        setShell(sync);
        const int areaCodes[] = {1, 0, 2};
        const auto& images = imagesToKeep(seed);
        for (std::size_t k = 0; k < images.size(); ++k)
            std::copy(images[k].begin(), images[k].end(),
                      static_cast<char*>(areas->comm.getAreaMemory(areaCodes[k])));
        areas->module->cyclicRun();
    }

private:
    BenchModule cells;
    std::unique_ptr<BenchModule> areas;
    void (*const sync)();
};

} // namespace

StorePtr makeModuleStore(int cells, void (*sync)())
{
    return std::make_unique<ModuleStore>(cells, sync);
}
