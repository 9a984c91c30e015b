// Waits for command lines and reads them.
// SPDX-License-Identifier: MIT
#include "tools/panel_simulator/line_source.h"

#include <QtCore/QDir>
#include <QtCore/QFile>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <csignal>
#include <iostream>
#include <iterator>

#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

namespace {

char promptText[] = "panel> ";

char* prompt(EditLine*)
{
    return promptText;
}

volatile std::sig_atomic_t interrupted = 0;
int interruption =
    -1; ///< readable after one, so that none is missed just before waiting; -1 without a terminal

void noteInterrupt(int)
{
    const int error = errno;
    interrupted = 1;
    eventfd_write(interruption, 1);
    errno = error;
}

/// The first Ctrl-C ends the input, so that the tool can still say what the panel loses; a second one kills
/// it.
void endInputOnInterrupt()
{
    interruption = eventfd(0, EFD_CLOEXEC);
    struct sigaction action = {};
    action.sa_handler = noteInterrupt;
    action.sa_flags = static_cast<int>(SA_RESETHAND);
    sigaction(SIGINT, &action, nullptr);
}

/// The directory for state files; empty when there is none.
QByteArray findHistoryFile()
{
    QString state = qEnvironmentVariable("XDG_STATE_HOME");
    if (state.isEmpty() && !qEnvironmentVariableIsEmpty("HOME"))
        state = qEnvironmentVariable("HOME") + QLatin1String("/.local/state");
    if (state.isEmpty() || !QDir().mkpath(state + QLatin1String("/panel_simulator")))
        return {};
    return QFile::encodeName(state + QLatin1String("/panel_simulator/history"));
}

} // namespace

LineSource::LineSource(int descriptor, Session& session) : descriptor(descriptor), session(session)
{
    clock.start();
    if (!isatty(descriptor))
        return;
    HistEvent event;
    history.reset(history_init());
    ::history(history.get(), &event, H_SETSIZE, 1000);
    ::history(history.get(), &event, H_SETUNIQUE, 1);
    historyFile = findHistoryFile();
    if (QFile::exists(QFile::decodeName(historyFile)))
        ::history(history.get(), &event, H_LOAD, historyFile.constData());
    endInputOnInterrupt();
    editor.reset(el_init("panel_simulator", stdin, stdout, stderr));
    el_set(editor.get(), EL_EDITOR, "emacs");
    el_set(editor.get(), EL_SIGNAL, 1); // restores the terminal before a signal ends or stops the program
    el_set(editor.get(), EL_PROMPT, prompt);
    el_set(editor.get(), EL_HIST, ::history, history.get());
    el_set(editor.get(), EL_CLIENTDATA, this);
    el_set(editor.get(), EL_GETCFN, readKey);
    // The wide form keeps these texts; the other form would leak copies of them.
    el_wset(editor.get(), EL_ADDFN, L"complete-command", L"Completes a command or an area", complete);
    el_set(editor.get(), EL_BIND, "^I", "complete-command", nullptr);
}

bool LineSource::next(QString& line)
{
    return editor ? nextEdited(line) : nextPlain(line);
}

bool LineSource::nextEdited(QString& line)
{
    int length = 0;
    const char* const text = interrupted ? nullptr : el_gets(editor.get(), &length);
    if (!text || length <= 0) {
        std::cout << std::endl; // after the prompt
        return false;
    }
    line = QString::fromUtf8(text, length).trimmed();
    keep(line);
    return true;
}

/// Writes at once, because a power cut leaves no time for it later.
void LineSource::keep(const QString& line)
{
    if (line.isEmpty())
        return;
    HistEvent event;
    ::history(history.get(), &event, H_ENTER, (line.toUtf8() + '\n').constData());
    if (!historyFile.isEmpty())
        ::history(history.get(), &event, H_SAVE, historyFile.constData());
}

bool LineSource::nextPlain(QString& line)
{
    for (;;) {
        const int end = pending.indexOf('\n');
        if (end >= 0 || (ended && !pending.isEmpty())) {
            const int length = end >= 0 ? end : pending.size();
            line = QString::fromUtf8(pending.left(length));
            pending.remove(0, length + 1);
            return true;
        }
        if (ended)
            return false;
        wait();
        char buffer[4096];
        const ssize_t length = read(descriptor, buffer, sizeof buffer);
        if (length > 0)
            pending.append(buffer, static_cast<int>(length));
        else
            ended = true;
    }
}

void LineSource::wait()
{
    for (;;) {
        const ExtendFuncModelBase& model = *session.panel().model;
        long long timeout = -1;
        if (model.cyclePeriodMs > 0)
            timeout = std::clamp<long long>(model.cycleRemainingMs, 0, INT_MAX);
        pollfd waiting[] = {{descriptor, POLLIN, 0}, {interruption, POLLIN, 0}};
        const int ready = poll(waiting, std::size(waiting), static_cast<int>(timeout));
        const QString told = session.advance(clock.restart());
        if (!told.isEmpty()) {
            std::cerr << (editor ? "\n" : "") << told.toStdString() << std::endl;
            if (editor)
                el_set(editor.get(), EL_REFRESH);
        }
        if (ready > 0 || interrupted)
            return;
    }
}

int LineSource::readKey(EditLine* editor, wchar_t* key)
{
    LineSource* source = nullptr;
    el_get(editor, EL_CLIENTDATA, &source);
    source->wait();
    char byte = 0;
    if (interrupted || read(source->descriptor, &byte, 1) != 1)
        return 0;
    *key = static_cast<unsigned char>(byte);
    return 1;
}

unsigned char LineSource::complete(EditLine* editor, int)
{
    const LineInfo* const line = el_line(editor);
    const QString beginning = QString::fromUtf8(line->buffer, static_cast<int>(line->cursor - line->buffer));
    const QStringList words = completionsOf(beginning);
    const int typed = beginning.section(QLatin1Char(' '), -1).size();
    if (words.isEmpty())
        return CC_ERROR;
    // Completes as far as all of them agree.
    QString common = words.first();
    for (const QString& word : words)
        while (!word.startsWith(common))
            common.chop(1);
    if (words.size() == 1)
        common += QLatin1Char(' ');
    if (common.size() > typed)
        return el_insertstr(editor, common.mid(typed).toUtf8().constData()) == 0 ? CC_REFRESH : CC_ERROR;
    std::cout << '\n' << words.join(QLatin1String("  ")).toStdString() << std::endl;
    return CC_REDISPLAY;
}
