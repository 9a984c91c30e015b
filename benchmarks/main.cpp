// Runs all benchmarks side by side, in one run, on one file system.
// SPDX-License-Identifier: MIT
#include "benchmarks/side_by_side.h"
#include "simulated_host/private_directory.h"

#include <QtCore/QFileInfo>

#include <cstdio>
#include <cstring>

int main(int argc, char** argv)
{
    benchmark::Initialize(&argc, argv);
    const bool isShort = argc == 3 && std::strcmp(argv[1], "--short") == 0;
    const char* const folder = argv[argc - 1];
    if (argc != (isShort ? 3 : 2) || !QFileInfo(QString::fromLocal8Bit(folder)).isDir()) {
        std::fprintf(stderr,
                     "usage: %s [Google Benchmark's options] [--short] DIRECTORY\n"
                     "Needs an existing DIRECTORY, whose retention files are lost, and measures with the "
                     "files in it.\n",
                     argv[0]);
        return 2;
    }
    QString error = enterPrivateUsr();
    if (error.isEmpty())
        error = mapProjectDirectory(QString::fromLocal8Bit(folder));
    if (!error.isEmpty()) {
        std::fprintf(stderr, "%s\n", qPrintable(error));
        return 2;
    }
    registerSideBySide(workloads(), isShort ? 1 : 5);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
