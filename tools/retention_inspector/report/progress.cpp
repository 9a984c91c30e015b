// Rewrites one line, at limited intervals.
// SPDX-License-Identifier: MIT
#include "tools/retention_inspector/report/progress.h"

#include <cstdio>
#include <unistd.h>

namespace {

const qint64 everyMs = 300;

} // namespace

Progress::Progress(std::size_t steps, const char* what)
    : steps(steps), what(what), onTerminal(isatty(STDERR_FILENO) != 0)
{
    time.start();
}

Progress::~Progress()
{
    if (shownAt > 0)
        std::fputs("\r\033[K", stderr);
}

void Progress::step()
{
    ++done;
    if (!onTerminal || time.elapsed() - shownAt < everyMs)
        return;
    shownAt = time.elapsed();
    std::fprintf(stderr, "\r\033[K%3zu %% %s", 100 * done / steps, what);
    std::fflush(stderr);
}
