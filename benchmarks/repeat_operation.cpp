// Runs one operation of one side a given number of times between two marks, for count_plugin.c.
// SPDX-License-Identifier: MIT
#include "benchmarks/operation.h"
#include "simulated_host/private_directory.h"

#include <QtCore/QByteArray>
#include <QtCore/QFileInfo>
#include <QtCore/QString>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

int usage(const char* program)
{
    std::fprintf(
        stderr,
        "usage: %s DIRECTORY ROW module|by-hand|bare TIMES\n"
        "       %s --rows\n"
        "Needs an existing DIRECTORY, whose retention files are lost, and works with the files in it.\n",
        program, program);
    return 2;
}

/// Prints one row per line, with its sides.
int printRows()
{
    for (const Workload& row : workloads())
        std::printf("%s module%s%s\n", row.name.c_str(), row.byHandCalls.empty() ? "" : " by-hand",
                    row.bareCalls.empty() ? "" : " bare");
    return 0;
}

const Workload* rowNamed(const char* name)
{
    for (const Workload& row : workloads())
        if (row.name == name)
            return &row;
    return nullptr;
}

/// Makes a system call that fails and that nothing else makes.
void mark()
{
    syscall(SYS_close, 0x636f756e);
}

void repeat(const Operation& operation, int times, void (*atBothEnds)())
{
    if (operation.prepare)
        operation.prepare(times);
    atBothEnds();
    operation.run(times);
    atBothEnds();
    if (operation.tidy)
        operation.tidy();
}

} // namespace

int main(int argc, char** argv)
{
    if (argc == 2 && std::strcmp(argv[1], "--rows") == 0)
        return printRows();
    const Workload* const row = argc == 5 ? rowNamed(argv[2]) : nullptr;
    if (!row || !QFileInfo(QString::fromLocal8Bit(argv[1])).isDir())
        return usage(argv[0]);
    QString error = enterPrivateUsr();
    if (error.isEmpty())
        error = mapProjectDirectory(QString::fromLocal8Bit(argv[1]));
    if (!error.isEmpty()) {
        std::fprintf(stderr, "%s\n", qPrintable(error));
        return 2;
    }
    const Sides sides = row->make();
    const QByteArray name = argv[3];
    const Operation& side = name == "module" ? sides.module : name == "by-hand" ? sides.byHand : sides.bare;
    const int times = std::atoi(argv[4]);
    if (!side.run || times < 1)
        return usage(argv[0]);
    repeat(side, times, [] {}); // fills the allocator's caches
    repeat(side, times, mark);
    return 0;
}
