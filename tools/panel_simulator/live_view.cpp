// Draws the live view with ncurses and reads the lines typed in it.
// SPDX-License-Identifier: MIT
#include "tools/panel_simulator/live_view.h"

#include "tools/panel_simulator/command.h"
#include "tools/panel_simulator/live_content.h"

#include <QtCore/QElapsedTimer>
#include <QtCore/QStringList>

#include <algorithm>
#include <csignal>
#include <iostream>
#include <sstream>
#include <unistd.h>

#include <curses.h>

// curses.h defines macros with common names.
#undef lines
#undef timeout

namespace {

const int frameMs = 250;
const int mostLogLines = 1000;
const char* const prompt = "panel> ";

volatile std::sig_atomic_t interrupted = 0;

void noteInterrupt(int)
{
    interrupted = 1;
}

/// Hands the terminal to ncurses, which restores it around Ctrl-Z and follows its size.
class Screen
{
public:
    Screen() : terminal(newterm(nullptr, stdout, stdin))
    {
        if (!isOpen())
            return;
        cbreak();
        noecho();
        keypad(stdscr, TRUE);
        interrupted = 0;
        struct sigaction action = {};
        action.sa_handler = noteInterrupt; // without SA_RESTART, so that waiting for a key ends
        sigaction(SIGINT, &action, &before);
    }
    ~Screen()
    {
        if (!terminal)
            return;
        if (isOpen())
            sigaction(SIGINT, &before, nullptr);
        endwin();
        delscreen(terminal);
    }
    Screen(const Screen&) = delete;
    Screen& operator=(const Screen&) = delete;

    /// False on an unknown terminal, or one whose cursor cannot be moved.
    bool isOpen() const { return terminal && tigetstr("cup"); }

private:
    SCREEN* terminal;
    struct sigaction before = {};
};

/// A line being typed, and the earlier lines.
class TypedLine
{
public:
    /// Handles a key; true when the line is complete.
    bool type(int key)
    {
        switch (key) {
        case '\n':
        case '\r':
        case KEY_ENTER:
            return true;
        case KEY_LEFT:
            cursor = std::max(0, cursor - 1);
            break;
        case KEY_RIGHT:
            cursor = std::min(static_cast<int>(text.size()), cursor + 1);
            break;
        case KEY_HOME:
        case 'A' - '@':
            cursor = 0;
            break;
        case KEY_END:
        case 'E' - '@':
            cursor = text.size();
            break;
        case KEY_BACKSPACE:
        case '\b':
        case 127:
            if (cursor > 0)
                text.remove(--cursor, 1);
            break;
        case KEY_DC:
            text.remove(cursor, 1);
            break;
        case 'U' - '@':
            set(QString());
            break;
        case KEY_UP:
            recall(at - 1);
            break;
        case KEY_DOWN:
            recall(at + 1);
            break;
        case '\t':
            complete();
            break;
        default:
            if (key >= ' ' && key < 127)
                text.insert(cursor++, QLatin1Char(static_cast<char>(key)));
        }
        return false;
    }

    /// Takes the complete line and begins an empty one.
    QString take()
    {
        QString line = text.trimmed();
        if (!line.isEmpty())
            earlier.append(line);
        at = earlier.size();
        set(QString());
        return line;
    }

    bool isEmpty() const { return text.isEmpty(); }
    const QString& shown() const { return text; }
    int cursorAt() const { return cursor; }

private:
    void set(const QString& newText)
    {
        text = newText;
        cursor = text.size();
    }

    void recall(int which)
    {
        if (which < 0 || which > earlier.size())
            return;
        at = which;
        set(earlier.value(which));
    }

    void complete()
    {
        const QStringList words = completionsOf(text.left(cursor));
        if (words.size() != 1)
            return;
        const QString typed = text.left(cursor).section(QLatin1Char(' '), -1);
        const QString rest = words.first().mid(typed.size()) + QLatin1Char(' ');
        text.insert(cursor, rest);
        cursor += rest.size();
    }

    QString text;
    int cursor = 0;
    QStringList earlier;
    int at = 0;
};

void putLine(int row, const QString& line)
{
    mvaddnstr(row, 0, line.toLatin1().constData(), COLS);
}

/// Draws the view at the top, the answers below it, and the input line at the bottom. What does not fit is
/// left out of the middle. `back`, the number of answers left out at the end, is kept in range.
void draw(const QStringList& view, const QStringList& log, const TypedLine& line, int& back)
{
    erase();
    const int room = LINES - 1;
    const int viewRows = std::min(static_cast<int>(view.size()), room);
    for (int row = 0; row < viewRows; ++row)
        putLine(row, view.at(row));
    const bool edge = viewRows < room;
    if (edge)
        mvhline(viewRows, 0, ACS_HLINE, COLS);
    const int logRows = std::max(0, std::min(static_cast<int>(log.size()), room - viewRows - 1));
    back = std::clamp(back, 0, static_cast<int>(log.size()) - logRows);
    for (int i = 0; i < logRows; ++i)
        putLine(room - logRows + i, log.at(log.size() - logRows - back + i));
    const QString typed = QLatin1String(prompt) + line.shown();
    const int cursor = static_cast<int>(qstrlen(prompt)) + line.cursorAt();
    const int hidden = std::max(0, cursor - COLS + 1); // a long line scrolls
    putLine(LINES - 1, typed.mid(hidden));
    move(LINES - 1, cursor - hidden);
    refresh();
}

/// Milliseconds to wait for a key: a frame, or less when a cyclic call comes before.
int waitMs(const ExtendFuncModelBase& model)
{
    if (model.cyclePeriodMs <= 0)
        return frameMs;
    return static_cast<int>(std::clamp<long long>(model.cycleRemainingMs, 0, frameMs));
}

} // namespace

bool canShowLive()
{
    return isatty(STDIN_FILENO) && isatty(STDOUT_FILENO);
}

bool showLive(Session& session,
              const std::function<bool(const QString& line, std::ostream& answer)>& carryOut)
{
    QStringList log;
    const auto addToLog = [&log](const QString& text) {
        log += text.split(QLatin1Char('\n'), Qt::SkipEmptyParts);
        while (log.size() > mostLogLines)
            log.removeFirst();
    };
    bool goOn = true;
    bool opened = false;
    QString lastLine; // cuts the power, once the terminal is restored
    {
        std::cout.flush();
        const Screen screen;
        opened = screen.isOpen();
        LiveContent content(session);
        TypedLine typed;
        int back = 0;
        QElapsedTimer clock;
        clock.start();
        const auto advance = [&] { addToLog(session.advance(clock.restart())); };
        const auto progress = session.progress;
        session.progress = [&](int done, int all) {
            if (clock.elapsed() < frameMs)
                return;
            advance();
            draw(content.lines(COLS),
                 log + QStringList(QStringLiteral("%1 of %2 cells reported").arg(done).arg(all)), typed,
                 back);
        };
        bool leave = !opened;
        while (goOn && !leave && !interrupted) {
            draw(content.lines(COLS), log, typed, back);
            wtimeout(stdscr, waitMs(*session.panel().model));
            int key = getch();
            advance();
            // Handles all keys that are already there before the next frame.
            for (; key != ERR && !leave && goOn; wtimeout(stdscr, 0), key = getch()) {
                if (key == KEY_PPAGE || key == KEY_NPAGE) {
                    back += key == KEY_PPAGE ? LINES / 2 : -(LINES / 2);
                    continue;
                }
                if (key == 'D' - '@' && typed.isEmpty()) {
                    leave = true;
                    break;
                }
                if (!typed.type(key))
                    continue;
                const QString line = typed.take();
                const Command::Kind kind = parseCommand(line).kind;
                if (kind == Command::Kind::Live || kind == Command::Kind::PowerCut) {
                    lastLine = kind == Command::Kind::PowerCut ? line : QString();
                    leave = true;
                    break;
                }
                std::ostringstream answer;
                goOn = carryOut(line, answer);
                addToLog(QLatin1String(prompt) + line);
                addToLog(QString::fromStdString(answer.str()));
                back = 0;
            }
        }
        session.progress = progress;
    }
    if (!opened)
        std::cerr << "live: this terminal (TERM) cannot position the cursor" << std::endl;
    for (const QString& line : log)
        std::cout << line.toStdString() << '\n';
    std::cout.flush();
    return lastLine.isEmpty() ? goOn : carryOut(lastLine, std::cout);
}
