// Measures one reported change, written through to its file.
// SPDX-License-Identifier: MIT
#include "benchmarks/bare_file.h"
#include "benchmarks/operation.h"

#include "poweroff_protect/word_buffer.h"
#include "simulated_host/watch_list.h"

#include <limits>
#include <string>

namespace {

const int firstCell = 100;
const int changedCell = 103;

Operation reportedChange(const std::shared_ptr<BenchModule>& host, const char* area, int address)
{
    const _ExtendTriggerMsg_t message = changeMessage(QLatin1String(area), address);
    return {[host, message](int times) {
                for (int i = 0; i < times; ++i)
                    host->module->addrOptChangeMsg(&message);
            },
            {},
            {}};
}

Sides bitChange()
{
    const auto host = std::make_shared<BenchModule>(perAddressProject({{"LB", firstCell, 10}}));
    host->start();
    const auto file = std::make_shared<BareFile>("maintenance-bit.dat");
    const auto hand = std::make_shared<HandStream>("maintenance-bit.dat");
    InterfaceComm* const comm = &host->comm;
    const QString area = QStringLiteral("LB");
    const int bit = changedCell - firstCell;
    const auto changed = [comm, area, bit](unsigned char byte) {
        ushort value = 0;
        comm->readRegisterValues(area, area, changedCell, 0, 1, &value);
        return static_cast<unsigned char>(value ? byte | (1 << bit) : byte & ~(1 << bit));
    };
    Sides sides;
    sides.module = reportedChange(host, "LB", changedCell);
    sides.bare.run = [file, changed](int times) {
        for (int i = 0; i < times; ++i) {
            unsigned char byte = 0;
            readAt(file->fd, &byte, 1, 0);
            byte = changed(byte);
            writeAt(file->fd, &byte, 1, 0);
        }
    };
    sides.byHand.run = [hand, changed](int times) {
        for (int i = 0; i < times; ++i) {
            unsigned char byte = 0;
            readByHand(hand->stream, &byte, 1, 0);
            byte = changed(byte);
            writeByHand(hand->stream, &byte, 1, 0);
        }
    };
    return sides;
}

Sides wordChange(int length)
{
    const auto host = std::make_shared<BenchModule>(perAddressProject({{"LW", firstCell, length}}));
    host->start();
    const auto file = std::make_shared<BareFile>("maintenance-word.dat");
    const auto hand = std::make_shared<HandStream>("maintenance-word.dat");
    const auto reused = std::make_shared<std::vector<ushort>>(length);
    InterfaceComm* const comm = &host->comm;
    const QString area = QStringLiteral("LW");
    const std::size_t bytes = 2 * static_cast<std::size_t>(length);
    const auto readInto = [comm, area, length](ushort* words) {
        comm->readRegisterValues(area, area, firstCell, 0, length, words);
        return words;
    };
    Sides sides;
    sides.module = reportedChange(host, "LW", changedCell);
    sides.bare.run = [file, reused, readInto, bytes](int times) {
        for (int i = 0; i < times; ++i)
            writeAt(file->fd, readInto(reused->data()), bytes, 0);
    };
    sides.byHand.run = [hand, readInto, length, bytes](int times) {
        for (int i = 0; i < times; ++i) {
            const WordBuffer words = makeWordBuffer(static_cast<int>(bytes));
            writeByHand(hand->stream, readInto(words.get()), bytes, 0);
        }
    };
    return sides;
}

/// Whether a binary search would work: blocks ascend, have cells, and neither overlap nor wrap around.
bool isSearchable(const QList<MaintenanceFileInfo>& blocks)
{
    qint64 end = std::numeric_limits<qint64>::min();
    for (int k = 0; k < blocks.size(); ++k) {
        const MaintenanceFileInfo& block = blocks.at(k);
        if (block.count <= 0 || block.address.index < end)
            return false;
        end = qint64(block.address.index) + block.count;
    }
    return end <= std::numeric_limits<int>::max();
}

/// Changes the last block, so that the whole list is searched; next to the cost of checking that a faster
/// search would work.
Sides changeAmong(int blocks)
{
    const auto host = std::make_shared<BenchModule>(perAddressProject(scatteredWordRanges(blocks, 1)));
    host->start();
    Sides sides;
    sides.module = reportedChange(host, "LW", 2 * (blocks - 1));
    QList<MaintenanceFileInfo> list;
    for (int k = 0; k < blocks; ++k) {
        list.append(MaintenanceFileInfo());
        list.last().address.index = 2 * k;
        list.last().count = 1;
    }
    sides.byHand.run = [list](int times) {
        for (int i = 0; i < times; ++i)
            mustMove(isSearchable(list) ? 0 : -1, 0);
    };
    return sides;
}

} // namespace

std::vector<Workload> changeWorkloads()
{
    std::vector<Workload> rows = {{"bit_change", 1.1, bitChange,
                                   "host call, seekg, read, seekp, write, flush",
                                   "lseek + read + lseek + write"},
                                  {"word_change/10", 1.1, [] { return wordChange(10); },
                                   "zeroed buffer, host call, seekp, write, flush", "lseek + write"},
                                  {"word_change/1000", 1.1, [] { return wordChange(1000); },
                                   "zeroed buffer, host call, seekp, write, flush", "lseek + write"}};
    for (const int blocks : {10, 100, 1000, 10000})
        rows.push_back({"change_among_blocks/" + std::to_string(blocks), 0,
                        [blocks] { return changeAmong(blocks); }, "a look whether the list is sorted", ""});
    return rows;
}
