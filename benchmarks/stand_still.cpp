// Keeps values in one store and prints how long each change blocks the panel.
// SPDX-License-Identifier: MIT
#include "benchmarks/bench_host.h"
#include "benchmarks/durable_store.h"
#include "simulated_host/private_directory.h"

#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <iostream>
#include <thread>

#include <fcntl.h>
#include <unistd.h>

namespace {

/// Another program's log in the same directory: a line of 128 bytes every 10 ms.
class LogWriter
{
public:
    LogWriter()
        : fd(open(filePath("log.txt").constData(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0644)),
          writer([this] { writeLines(); })
    {
    }
    ~LogWriter()
    {
        ended = true;
        writer.join();
        close(fd);
    }
    Q_DISABLE_COPY(LogWriter)

private:
    void writeLines() const
    {
        const std::string line = std::string(127, 'x') + '\n';
        while (!ended) {
            if (write(fd, line.data(), line.size()) != static_cast<ssize_t>(line.size()))
                storeFailed("log", "it cannot be written");
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
    }

    const int fd;
    std::atomic<bool> ended = false;
    std::thread writer;
};

double microseconds(DurableStore& store, int number)
{
    const auto begin = std::chrono::steady_clock::now();
    store.keepCell(number % 10, static_cast<ushort>(number));
    return std::chrono::duration<double, std::micro>(std::chrono::steady_clock::now() - begin).count();
}

} // namespace

int main(int argc, char** argv)
{
    const StoreKind* const kind = argc == 4 ? storeKindNamed(argv[2]) : nullptr;
    if (!kind) {
        std::fprintf(stderr,
                     "usage: %s DIRECTORY STORE quiet|log\n"
                     "Keeps values in files in DIRECTORY. For each number on standard input it makes so many "
                     "changes and prints the microseconds of each.\n",
                     argv[0]);
        return 2;
    }
    QString error = enterPrivateUsr();
    if (error.isEmpty())
        error = mapProjectDirectory(QString::fromLocal8Bit(argv[1]));
    if (!error.isEmpty())
        storeFailed("stand_still", qPrintable(error));
    const StorePtr store = kind->make(10);
    const bool logs = std::strcmp(argv[3], "log") == 0;
    int number = 0;
    for (int count = 0; std::cin >> count;) {
        auto log = logs ? std::make_unique<LogWriter>() : nullptr;
        while (count-- > 0)
            std::cout << microseconds(*store, ++number) << ' ';
        log.reset();
        sync(); // so that no other store pays for what this one and its log left unwritten
        std::cout << std::endl;
    }
    return 0;
}
