// Measures the restore of the per-address files.
// SPDX-License-Identifier: MIT
#include "benchmarks/bare_file.h"
#include "benchmarks/operation.h"
#include "poweroff_protect/word_buffer.h"

#include <string>

namespace {

/// Reads a block's values as the module does, with its file open.
Operation restoreThroughModule(const std::shared_ptr<BenchModule>& host, const char* area, int count)
{
    MaintenanceFileInfo block;
    block.address.link = QStringLiteral("Local");
    block.address.block = QLatin1String(area);
    block.count = count;
    QList<MaintenanceFileInfo> blocks = {block};
    return {[host, blocks](int times) mutable {
                for (int i = 0; i < times; ++i)
                    host->module->initMaintenance(blocks);
            },
            {},
            {}};
}

std::shared_ptr<BenchModule> startedOnFile(const char* area, const char* file, int count, int bytes)
{
    auto host = std::make_shared<BenchModule>(perAddressProject({{area, 0, count}}));
    writeFileBytes(file, QByteArray(bytes, '\x55'));
    host->start();
    return host;
}

Sides bits(int count)
{
    const char* const name = "maintenance-bit.dat";
    const auto host = startedOnFile("LB", name, count, count / 8 + 1);
    const auto file = std::make_shared<BareFile>(name);
    InterfaceComm* const comm = &host->comm;
    const QString link = QStringLiteral("Local");
    const QString area = QStringLiteral("LB");
    const auto restore = [comm, link, area](int bit, unsigned char byte) {
        const ushort value = (byte >> (bit % 8)) & 1;
        if (byte != 0)
            comm->writeRegisterValues(link, area, bit, -1, 1, &value);
    };
    Sides sides;
    sides.module = restoreThroughModule(host, "LB", count);
    sides.bare.run = [file, restore, count](int times) {
        for (int i = 0; i < times; ++i)
            for (int bit = 0; bit < count; ++bit) {
                unsigned char byte = 0;
                readAt(file->fd, &byte, 1, bit / 8);
                restore(bit, byte);
            }
    };
    const auto hand = std::make_shared<HandStream>(name);
    sides.byHand.run = [hand, restore, count](int times) {
        for (int i = 0; i < times; ++i)
            for (int bit = 0; bit < count; ++bit) {
                unsigned char byte = 0;
                readByHand(hand->stream, &byte, 1, bit / 8);
                restore(bit, byte);
            }
    };
    return sides;
}

Sides words(int count)
{
    const char* const name = "maintenance-word.dat";
    const auto host = startedOnFile("LW", name, count, 2 * count);
    const auto file = std::make_shared<BareFile>(name);
    const auto reused = std::make_shared<std::vector<ushort>>(count);
    InterfaceComm* const comm = &host->comm;
    const QString link = QStringLiteral("Local");
    const QString area = QStringLiteral("LW");
    const std::size_t bytes = 2 * static_cast<std::size_t>(count);
    Sides sides;
    sides.module = restoreThroughModule(host, "LW", count);
    sides.bare.run = [file, reused, comm, link, area, count, bytes](int times) {
        for (int i = 0; i < times; ++i) {
            readAt(file->fd, reused->data(), bytes, 0);
            comm->writeRegisterValues(link, area, 0, -1, count, reused->data());
        }
    };
    const auto hand = std::make_shared<HandStream>(name);
    sides.byHand.run = [hand, comm, link, area, count, bytes](int times) {
        for (int i = 0; i < times; ++i) {
            const WordBuffer words = makeWordBuffer(static_cast<int>(bytes));
            readByHand(hand->stream, words.get(), bytes, 0);
            comm->writeRegisterValues(link, area, 0, -1, count, words.get());
        }
    };
    return sides;
}

} // namespace

std::vector<Workload> restoreWorkloads()
{
    const std::string hand = "seekg, read, host call for each bit";
    const std::string bare = "lseek + read and host call for each bit";
    return {{"bit_restore/4096", 1.1, [] { return bits(4096); }, hand, bare},
            {"bit_restore/65536", 1.1, [] { return bits(65536); }, hand, bare},
            {"word_restore/65536", 1.1, [] { return words(65536); }, "zeroed buffer, seekg, read, host call",
             "lseek + read and host call"}};
}
