// Keeps the list in which calls are recorded.
// SPDX-License-Identifier: MIT
#include "simulated_host/call_log.h"

#include "project_tree/project_tree.h"

namespace {
QStringList* currentLog = nullptr;
}

void setCallLog(QStringList* log)
{
    currentLog = log;
    observeTree(log ? TreeObserver([log](const QString& call) { log->append(call); }) : TreeObserver());
}

QStringList* callLog()
{
    return currentLog;
}
