// The benchmark program: everything side by side, in one run, on one file system.
#include "benchmarks/side_by_side.h"
#include "simulated_host/private_directory.h"

#include <QtCore/QFileInfo>

#include <cstdio>

int main(int argc, char** argv)
{
    benchmark::Initialize(&argc, argv);
    if (argc != 2 || !QFileInfo(QString::fromLocal8Bit(argv[1])).isDir()) {
        std::fprintf(stderr,
                     "usage: %s [Google Benchmark's options] DIRECTORY\n"
                     "Needs an existing DIRECTORY, whose retention files are lost, and measures with the "
                     "files in it.\n",
                     argv[0]);
        return 2;
    }
    QString error = enterPrivateUsr();
    if (error.isEmpty())
        error = mapProjectDirectory(QString::fromLocal8Bit(argv[1]));
    if (!error.isEmpty()) {
        std::fprintf(stderr, "%s\n", qPrintable(error));
        return 2;
    }
    registerSideBySide(workloads());
    registerDurable();
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
