// One reported change, written through to its file.
// SPDX-License-Identifier: MIT
#include "benchmarks/bare_file.h"
#include "benchmarks/operation.h"

#include "simulated_host/watch_list.h"

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
    sides.other.run = [file, changed](int times) {
        for (int i = 0; i < times; ++i) {
            unsigned char byte = 0;
            mustMove(pread(file->fd, &byte, 1, 0), 1);
            byte = changed(byte);
            mustMove(pwrite(file->fd, &byte, 1, 0), 1);
        }
    };
    return sides;
}

Sides wordChange(int length)
{
    const auto host = std::make_shared<BenchModule>(perAddressProject({{"LW", firstCell, length}}));
    host->start();
    const auto file = std::make_shared<BareFile>("maintenance-word.dat");
    const auto words = std::make_shared<std::vector<ushort>>(length);
    InterfaceComm* const comm = &host->comm;
    const QString area = QStringLiteral("LW");
    const std::size_t bytes = 2 * static_cast<std::size_t>(length);
    const auto readWords = [comm, area, words, length] {
        comm->readRegisterValues(area, area, firstCell, 0, length, words->data());
        return words->data();
    };
    Sides sides;
    sides.module = reportedChange(host, "LW", changedCell);
    sides.bare.run = [file, readWords, bytes](int times) {
        for (int i = 0; i < times; ++i)
            writeAt(file->fd, readWords(), bytes, 0);
    };
    sides.other.run = [file, readWords, bytes](int times) {
        for (int i = 0; i < times; ++i)
            mustMove(pwrite(file->fd, readWords(), bytes, 0), bytes);
    };
    return sides;
}

/// The last of the blocks, so that the whole list is looked through.
Sides changeAmong(int blocks)
{
    const auto host = std::make_shared<BenchModule>(perAddressProject(scatteredWordRanges(blocks, 1)));
    host->start();
    Sides sides;
    sides.module = reportedChange(host, "LW", 2 * (blocks - 1));
    return sides;
}

} // namespace

std::vector<Workload> changeWorkloads()
{
    std::vector<Workload> rows = {
        {"bit_change", 2.0, bitChange, "lseek + read + lseek + write", "pread + pwrite"},
        {"word_change/10", 2.0, [] { return wordChange(10); }, "lseek + write", "pwrite"},
        {"word_change/1000", 1.4, [] { return wordChange(1000); }, "lseek + write", "pwrite"}};
    for (const int blocks : {10, 100, 1000, 10000})
        rows.push_back({"change_among_blocks/" + std::to_string(blocks), 0,
                        [blocks] { return changeAmong(blocks); }, "", ""});
    return rows;
}
