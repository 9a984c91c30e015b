// Keeps the place where calls are recorded.
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
