// Sets up the private directory of the fuzzers.
// SPDX-License-Identifier: MIT
#include "tests/fuzz/fuzz_start.h"

#include "simulated_host/private_directory.h"
#include "simulated_host/shell.h"

#include <QtCore/QDir>

#include <cstdlib>
#include <iostream>

int startFuzzing()
{
    const QString error = enterPrivateUsr();
    if (!error.isEmpty() || !QDir().mkpath(QLatin1String(fixedProjectDirectory))) {
        std::cerr << "no private /usr/tavrin: " << error.toStdString() << '\n';
        std::exit(2);
    }
    setCommandRunner({});
    return 0;
}
