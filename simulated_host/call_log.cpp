// Keeps the place where calls are recorded.
// SPDX-License-Identifier: MIT
#include "simulated_host/call_log.h"

namespace {
QStringList* currentLog = nullptr;
}

void setCallLog(QStringList* log)
{
    currentLog = log;
}

QStringList* callLog()
{
    return currentLog;
}
