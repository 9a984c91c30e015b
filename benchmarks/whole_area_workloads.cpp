// Measures one save and one restore of the three images in whole-area mode.
// SPDX-License-Identifier: MIT
#include "benchmarks/bare_file.h"
#include "benchmarks/operation.h"

#include <sys/stat.h>

#include <array>
#include <deque>
#include <fstream>

namespace {

struct Image
{
    const char* fileName;
    int areaCode;
    std::size_t bytes;
};

const Image images[] = {{"maintenance-bit.dat", 1, 65536},
                        {"maintenance-word.dat", 0, 131072},
                        {"maintenance-RWI.dat", 2, 131072}};

Sides save()
{
    const auto host = std::make_shared<BenchModule>(wholeAreaProject());
    host->start();
    const auto files = std::make_shared<std::deque<BareFile>>();
    const auto hands = std::make_shared<std::deque<HandStream>>();
    for (const Image& image : images) {
        files->emplace_back(image.fileName);
        hands->emplace_back(image.fileName);
    }
    InterfaceComm* const comm = &host->comm;
    Sides sides;
    sides.module.run = [host](int times) {
        for (int i = 0; i < times; ++i)
            host->module->cyclicRun();
    };
    sides.bare.run = [host, files, comm](int times) {
        for (int i = 0; i < times; ++i)
            for (std::size_t k = 0; k < files->size(); ++k)
                writeAt((*files)[k].fd, comm->getAreaMemory(images[k].areaCode), images[k].bytes, 0);
    };
    sides.byHand.run = [host, hands, comm](int times) {
        for (int i = 0; i < times; ++i)
            for (std::size_t k = 0; k < hands->size(); ++k)
                writeByHand((*hands)[k].stream, comm->getAreaMemory(images[k].areaCode), images[k].bytes, 0);
    };
    return sides;
}

Sides restore()
{
    const auto host = std::make_shared<BenchModule>(wholeAreaProject());
    host->start();
    Sides sides;

    // Opening is part of the job. Closing is not, nor is constructing the streams, which are members of the
    // module object.
    const auto streams = std::make_shared<std::deque<std::fstream>>();
    sides.module.prepare = [streams](int times) { streams->resize(3 * static_cast<std::size_t>(times)); };
    sides.module.run = [host, streams](int times) {
        auto stream = streams->begin();
        for (int i = 0; i < times; ++i)
            for (const Image& image : images)
                host->module->initFile(*stream++, QLatin1String(image.fileName), image.areaCode);
    };
    sides.module.tidy = [streams] { streams->clear(); };

    std::array<QByteArray, 3> paths;
    for (std::size_t i = 0; i < paths.size(); ++i)
        paths[i] = filePath(images[i].fileName);
    InterfaceComm* const comm = &host->comm;
    sides.byHand = sides.module;
    sides.byHand.run = [host, streams, paths, comm](int times) {
        auto stream = streams->begin();
        for (int i = 0; i < times; ++i)
            for (std::size_t k = 0; k < paths.size(); ++k, ++stream) {
                struct stat status;
                mustMove(stat(paths[k].constData(), &status), 0);
                openByHand(*stream, paths[k].constData());
                readByHand(*stream, comm->getAreaMemory(images[k].areaCode), images[k].bytes, 0);
                stream->flush();
            }
    };

    const auto opened = std::make_shared<std::vector<int>>();
    sides.bare.prepare = [opened](int times) { opened->reserve(3 * static_cast<std::size_t>(times)); };
    sides.bare.run = [host, opened, paths, comm](int times) {
        for (int i = 0; i < times; ++i)
            for (std::size_t k = 0; k < paths.size(); ++k) {
                struct stat status;
                mustMove(stat(paths[k].constData(), &status), 0);
                opened->push_back(open(paths[k].constData(), O_RDWR));
                readAt(opened->back(), comm->getAreaMemory(images[k].areaCode), images[k].bytes, 0);
            }
    };
    sides.bare.tidy = [opened] {
        for (const int fd : *opened)
            close(fd);
        opened->clear();
    };
    return sides;
}

} // namespace

std::vector<Workload> wholeAreaWorkloads()
{
    return {{"whole_area_save", 1.05, save, "3 x seekp, write, flush", "3 x lseek + write"},
            {"whole_area_restore", 1.1, restore, "3 x stat, open, seekg, read, flush",
             "3 x stat + open + lseek + read"}};
}
