// Shows the progress of long work on a terminal.
// SPDX-License-Identifier: MIT
#pragma once

#include <QtCore/QElapsedTimer>

#include <cstddef>

/// A line on standard error, if that is a terminal and the work takes longer than a moment; removed at the
/// end.
class Progress
{
public:
    /// `what`, such as "panels compared", must outlive this object.
    Progress(std::size_t steps, const char* what);
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;
    ~Progress();

    void step();

private:
    std::size_t steps;
    std::size_t done = 0;
    const char* what;
    bool onTerminal;
    qint64 shownAt = 0; ///< milliseconds; 0 for never
    QElapsedTimer time;
};
