// Records the calls that a model makes to its host, for tests that check their order.
// SPDX-License-Identifier: MIT
#pragma once

#include <QtCore/QString>
#include <QtCore/QStringList>

/// Sets where calls are recorded, one line each; null, the initial value, records nothing. The caller owns
/// the list, which must outlive the recording.
void setCallLog(QStringList* log);
QStringList* callLog();

/// Records the line that `describe` returns; it is only called when there is a log.
template <typename Describe> void logCall(Describe describe)
{
    if (QStringList* const log = callLog())
        log->append(describe());
}
