// Running of compiled tools.
#include "tests/support/run_tool.h"

#include <QtCore/QTemporaryFile>

#include <gtest/gtest.h>

#include <vector>

#include <sys/wait.h>
#include <unistd.h>

namespace {

/// What waitpid() says of an ended process, as ToolRun::status.
int statusOf(int waited)
{
    return WIFSIGNALED(waited) ? -WTERMSIG(waited) : WEXITSTATUS(waited);
}

std::vector<char*> pointersTo(QList<QByteArray>& words)
{
    std::vector<char*> pointers;
    for (QByteArray& word : words)
        pointers.push_back(word.data());
    pointers.push_back(nullptr);
    return pointers;
}

QByteArray contents(QTemporaryFile& file)
{
    file.seek(0);
    return file.readAll();
}

} // namespace

ToolRun runTool(const QString& program, const QStringList& arguments, const QByteArray& input)
{
    QTemporaryFile in;
    QTemporaryFile out;
    QTemporaryFile err;
    EXPECT_TRUE(in.open() && out.open() && err.open());
    in.write(input);
    in.seek(0);

    QList<QByteArray> words = qgetenv("TEST_EMULATOR").simplified().split(' ');
    words.removeAll(QByteArray());
    words.append(program.toLocal8Bit());
    for (const QString& argument : arguments)
        words.append(argument.toLocal8Bit());
    const std::vector<char*> argv = pointersTo(words);

    // Files instead of pipes: nothing to pump, and whatever was printed before a SIGKILL is there.
    const pid_t child = fork();
    if (child == 0) {
        alarm(60);
        dup2(in.handle(), STDIN_FILENO);
        dup2(out.handle(), STDOUT_FILENO);
        dup2(err.handle(), STDERR_FILENO);
        execvp(argv.front(), argv.data());
        _exit(127);
    }
    int waited = 0;
    EXPECT_EQ(waitpid(child, &waited, 0), child);
    return {statusOf(waited), contents(out), contents(err)};
}
