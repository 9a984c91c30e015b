// Runs one operation of one side a given number of times and nothing else: what a counting tool sees of two
// runs differs by the operation alone.
// SPDX-License-Identifier: MIT
#include "benchmarks/operation.h"
#include "simulated_host/private_directory.h"

#include <QtCore/QFileInfo>

#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

int usage(const char* program)
{
    std::fprintf(stderr,
                 "usage: %s DIRECTORY ROW module|bare|other TIMES\n"
                 "Needs an existing DIRECTORY, whose retention files are lost, and works with the files in "
                 "it. Rows:\n",
                 program);
    for (const Workload& row : workloads())
        std::fprintf(stderr, "  %s\n", row.name.c_str());
    return 2;
}

const Workload* rowNamed(const char* name)
{
    for (const Workload& row : workloads())
        if (row.name == name)
            return &row;
    return nullptr;
}

void repeat(const Operation& operation, int times)
{
    if (operation.prepare)
        operation.prepare(times);
    operation.run(times);
}

} // namespace

int main(int argc, char** argv)
{
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
    const bool module = std::strcmp(argv[3], "module") == 0;
    const Operation& side = module                              ? sides.module
                            : std::strcmp(argv[3], "bare") == 0 ? sides.bare
                                                                : sides.other;
    if (!side.run)
        return usage(argv[0]);
    repeat(side, std::atoi(argv[4]));
    std::_Exit(0); // the tidying up is no part of the operation
}
