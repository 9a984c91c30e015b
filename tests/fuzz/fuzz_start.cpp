// Gives the process of a fuzzer its own /usr/tavrin in memory, with an empty project directory, and a shell
// that runs nothing.
// SPDX-License-Identifier: MIT
#include "simulated_host/private_directory.h"
#include "simulated_host/shell.h"

#include <QtCore/QDir>

#include <cstdlib>
#include <iostream>

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    const QString error = enterPrivateUsr();
    if (!error.isEmpty() || !QDir().mkpath(QLatin1String(fixedProjectDirectory))) {
        std::cerr << "no private /usr/tavrin: " << error.toStdString() << '\n';
        std::exit(2);
    }
    setCommandRunner({});
    return 0;
}
