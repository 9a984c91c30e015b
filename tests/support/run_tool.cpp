// Runs compiled tools.
// SPDX-License-Identifier: MIT
#include "tests/support/run_tool.h"

#include <QtCore/QTemporaryFile>

#include <gtest/gtest.h>

#include <csignal>
#include <vector>

#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

/// Converts the status from waitpid() to ToolRun::status.
int statusOf(int waited)
{
    return WIFSIGNALED(waited) ? -WTERMSIG(waited) : WEXITSTATUS(waited);
}

/// The command to execute, with the emulator's words before it.
QList<QByteArray> commandWords(const QString& program, const QStringList& arguments)
{
    QList<QByteArray> words = qgetenv("TEST_EMULATOR").simplified().split(' ');
    words.removeAll(QByteArray());
    words.append(program.toLocal8Bit());
    for (const QString& argument : arguments)
        words.append(argument.toLocal8Bit());
    return words;
}

std::vector<char*> pointersTo(QList<QByteArray>& words)
{
    std::vector<char*> pointers;
    for (QByteArray& word : words)
        pointers.push_back(word.data());
    pointers.push_back(nullptr);
    return pointers;
}

/// Executes the program, for at most a minute.
[[noreturn]] void becomeProgram(const std::vector<char*>& argv)
{
    signal(SIGINT, SIG_DFL); // a shell ignores it for what it starts in the background
    alarm(60);
    execvp(argv.front(), argv.data());
    _exit(127);
}

int statusAfter(pid_t child)
{
    int waited = 0;
    EXPECT_EQ(waitpid(child, &waited, 0), child);
    return statusOf(waited);
}

/// What other processes wrote to the file.
QByteArray contents(const QTemporaryFile& file)
{
    QFile again(file.fileName());
    EXPECT_TRUE(again.open(QIODevice::ReadOnly));
    return again.readAll();
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

    QList<QByteArray> words = commandWords(program, arguments);
    const std::vector<char*> argv = pointersTo(words);

    // Files instead of pipes: nothing to pump, and output before a SIGKILL is not lost.
    const pid_t child = fork();
    if (child == 0) {
        dup2(in.handle(), STDIN_FILENO);
        dup2(out.handle(), STDOUT_FILENO);
        dup2(err.handle(), STDERR_FILENO);
        becomeProgram(argv);
    }
    const int status = statusAfter(child);
    return {status, contents(out), contents(err)};
}

ToolRun runToolOnTerminal(const QString& program, const QStringList& arguments, const QByteArray& keys,
                          const std::vector<Typing>& later)
{
    QList<QByteArray> words = commandWords(program, arguments);
    const std::vector<char*> argv = pointersTo(words);
    winsize size = {};
    size.ws_row = 30;
    size.ws_col = 120;
    int terminal = -1;
    const pid_t child = forkpty(&terminal, nullptr, nullptr, &size);
    if (child == 0) {
        setenv("TERM", "xterm", 1);
        becomeProgram(argv);
    }
    const auto type = [terminal](const QByteArray& text) {
        EXPECT_EQ(write(terminal, text.constData(), static_cast<std::size_t>(text.size())), text.size());
    };
    type(keys);
    QByteArray out;
    char buffer[4096];
    auto next = later.begin();
    int seen = 0;
    // Twice, because the end may be reported while the last output is still on its way.
    for (int ends = 0; ends < 2;) {
        const ssize_t length = read(terminal, buffer, sizeof buffer);
        if (length <= 0) {
            ++ends;
            continue;
        }
        out.append(buffer, static_cast<int>(length));
        if (next != later.end() && out.indexOf(next->after, seen) >= 0) {
            seen = out.size();
            type(next++->keys);
        }
    }
    EXPECT_TRUE(next == later.end()) << "never said: " << next->after.constData();
    close(terminal);
    return {statusAfter(child), out, QByteArray()};
}
