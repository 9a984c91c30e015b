// Makes one store keep values in an emulated panel and reports when, so that the emulator can count what
// reaches the medium.
// SPDX-License-Identifier: MIT
//
// Prints these lines, and waits for a line on standard input after each:
//   medium ready    the store is made and has kept its first values; everything is on the medium
//   medium made     all changes are made, and everything that is left over of them is on the medium, too
#include "benchmarks/bench_host.h"
#include "benchmarks/durable_store.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <iostream>
#include <string>
#include <thread>
#include <unistd.h>

namespace {

struct Load
{
    int cells; ///< 0: images
    int changes;
    std::chrono::milliseconds pause; ///< after each change
    bool log;                        ///< a log gets a line before each change
    int timesEach;                   ///< more than 1: a store that repeats its work
};

/// A log as many programs write it: into the page cache, which the kernel writes later.
class Log
{
public:
    Log() : fd(open(filePath("log.txt").constData(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0644)) {}
    void append()
    {
        char line[128];
        std::memset(line, 'x', sizeof line);
        line[sizeof line - 1] = '\n';
        if (write(fd, line, sizeof line) != static_cast<ssize_t>(sizeof line))
            storeFailed("log", "it cannot be written");
    }

private:
    const int fd;
};

void report(const char* what)
{
    sync();
    std::cout << "medium " << what << std::endl;
    std::string answer;
    std::getline(std::cin, answer);
}

void keep(DurableStore& store, const Load& load, int number)
{
    for (int i = 0; i < load.timesEach; ++i) {
        const int value = number * load.timesEach + i + 1;
        if (load.cells == 0)
            store.keepImages(value);
        else
            store.keepCell(number * 7 % load.cells, static_cast<ushort>(value));
    }
}

int run(const StoreKind& kind, const Load& load)
{
    const StorePtr store = kind.make(load.cells == 0 ? 1 : load.cells);
    Log log;
    const int first = 3; // by then every file exists, and nothing grows any more
    for (int number = 0; number < first; ++number) {
        log.append();
        keep(*store, load, number);
    }
    report("ready");
    for (int number = first; number < first + load.changes; ++number) {
        if (load.log)
            log.append();
        keep(*store, load, number);
        std::this_thread::sleep_for(load.pause);
    }
    report("made");
    return 0;
}

} // namespace

int main(int argc, char** argv)
{
    const StoreKind* const kind = argc == 7 ? storeKindNamed(argv[1]) : nullptr;
    const Load load =
        kind ? Load{std::atoi(argv[2]), std::atoi(argv[3]), std::chrono::milliseconds(std::atoi(argv[4])),
                    std::atoi(argv[5]) != 0, std::atoi(argv[6])}
             : Load{};
    if (!kind || load.cells < 0 || load.changes < 1 || load.timesEach < 1) {
        std::fprintf(stderr,
                     "usage: medium_costs STORE CELLS|0 CHANGES PAUSE-MS LOG TIMES-EACH\n"
                     "Keeps values in the project directory; 0 cells are the three images. LOG is 0 or 1.\n");
        return 2;
    }
    return run(*kind, load);
}
