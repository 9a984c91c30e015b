// Measures the way from the project to the address list and the watch list, and a whole start-up.
// SPDX-License-Identifier: MIT
#include "benchmarks/bench_host.h"
#include "benchmarks/operation.h"

#include <QtCore/QList>
#include <QtCore/QVector>

#include <algorithm>
#include <cstring>
#include <string>
#include <utility>

namespace {

/// Reads what the module reads of every entry, in its order, sorts the records, and makes a block of each: in
/// these projects no entry adjoins another. The lists are those of the module's own declarations.
void readSortAndPlace(object* project)
{
    QVector<structMaintenance> records;
    object* const retention = object_get_child(project, "DataRetention");
    for (object* node = object_first_child(retention); node; node = object_next(node)) {
        object* const source = object_get_child(node, "sourceAddress");
        structMaintenance record;
        record.addressLength = object_get_property_value_type_int32(node, "addressLength", 0);
        record.addressType = object_get_property_value_type_string(node, "addressType", QString());
        record.address.link = object_get_property_value_type_string(source, "Link", QString());
        record.address.block = object_get_property_value_type_string(source, "Block", QString());
        record.address.number = object_get_property_value_type_string(source, "No", QString());
        record.address.index = object_get_property_value_type_int32(source, "index", 0);
        record.address.station = object_get_property_value_type_int32(source, "station", 0);
        record.address.length = object_get_property_value_type_int32(source, "length", 0);
        record.address.bitOrWord = object_get_property_value_type_int32(source, "Bit_or_Word", 0);
        records.append(record);
    }
    std::sort(records.begin(), records.end(), compare);
    QList<MaintenanceFileInfo> blocks;
    for (const structMaintenance& record : std::as_const(records)) {
        MaintenanceFileInfo block;
        block.address = record.address;
        block.count = record.addressLength;
        block.fileOffset =
            blocks.isEmpty() ? 0 : blocks.constLast().fileOffset + 2 * blocks.constLast().count;
        blocks.append(block);
    }
}

Sides addressList(int entries)
{
    const auto host = std::make_shared<BenchModule>(perAddressProject(scatteredWordRanges(entries, 1)));
    host->start();
    Sides sides;
    sides.module.run = [host](int times) {
        for (int i = 0; i < times; ++i)
            host->module->initAddrInfo();
    };
    sides.byHand.run = [host](int times) {
        for (int i = 0; i < times; ++i)
            readSortAndPlace(host->project.get());
    };
    return sides;
}

using WatchLists = std::vector<QList<RegisterValueChangeSize>>;

/// Fills lists; freeing them is not measured.
Operation fillLists(std::function<void(QList<RegisterValueChangeSize>&)> fill)
{
    const auto lists = std::make_shared<WatchLists>();
    return {[lists, fill = std::move(fill)](int) {
                for (auto& list : *lists)
                    fill(list);
            },
            [lists](int times) { lists->resize(static_cast<std::size_t>(times)); },
            [lists] { lists->clear(); }};
}

Sides watchList(int cells)
{
    const auto host = std::make_shared<BenchModule>(perAddressProject({{"LW", 0, cells}}));
    host->start();
    Sides sides;
    sides.module = fillLists(
        [host](QList<RegisterValueChangeSize>& list) { host->module->getMonitorTriggerAddr(list); });
    sides.byHand = fillLists([cells](QList<RegisterValueChangeSize>& list) {
        RegisterValueChangeSize record = {};
        record.hostWord4 = -1;
        std::strcpy(record.areaName, "LW");
        record.changeSize = 1;
        for (int address = 0; address < cells; ++address) {
            record.address = address;
            list.append(record);
        }
    });
    return sides;
}

/// From createModel() to the watch list, on existing files.
Sides startUp(int entries)
{
    const auto host = std::make_shared<BenchModule>(perAddressProject(scatteredWordRanges(entries, 1)));
    host->start();
    const auto started = std::make_shared<std::vector<ExtendFuncModelBase*>>();
    Sides sides;
    sides.module.run = [host, started](int times) {
        for (int i = 0; i < times; ++i) {
            started->push_back(createModel());
            ExtendFuncModelBase* const model = started->back();
            model->extModelOpen(host->project.get(), QString(), &host->comm);
            model->extModelInit();
            QList<RegisterValueChangeSize> watched;
            model->getMonitorTriggerAddr(watched);
        }
    };
    sides.module.tidy = [started] {
        for (ExtendFuncModelBase* const model : *started)
            deletModel(model);
        started->clear();
    };
    return sides;
}

} // namespace

std::vector<Workload> startUpWorkloads()
{
    std::vector<Workload> rows;
    for (const int entries : {1000, 10000})
        rows.push_back({"address_list/" + std::to_string(entries), 1.1,
                        [entries] { return addressList(entries); },
                        "property reads, one std::sort, a list of blocks", ""});
    for (const int cells : {1000, 65536})
        rows.push_back({"watch_list/" + std::to_string(cells), 1.1, [cells] { return watchList(cells); },
                        "append to a list", ""});
    for (const int entries : {10, 100, 1000, 10000})
        rows.push_back(
            {"start_up/" + std::to_string(entries), 0, [entries] { return startUp(entries); }, "", ""});
    return rows;
}
