// Waits for command lines and reads them.
// SPDX-License-Identifier: MIT
#include "tools/panel_simulator/line_source.h"

#include <algorithm>
#include <climits>
#include <poll.h>
#include <unistd.h>

namespace {

char promptText[] = "panel> ";

char* prompt(EditLine*)
{
    return promptText;
}

} // namespace

LineSource::LineSource(int descriptor, Panel& panel, LiveView& view)
    : descriptor(descriptor), panel(panel), view(view)
{
    clock.start();
    if (!isatty(descriptor))
        return;
    HistEvent event;
    history.reset(history_init());
    ::history(history.get(), &event, H_SETSIZE, 1000);
    editor.reset(el_init("panel_simulator", stdin, stdout, stderr));
    el_set(editor.get(), EL_EDITOR, "emacs");
    el_set(editor.get(), EL_PROMPT, prompt);
    el_set(editor.get(), EL_HIST, ::history, history.get());
    el_set(editor.get(), EL_CLIENTDATA, this);
    el_set(editor.get(), EL_GETCFN, readKey);
}

bool LineSource::next(QString& line)
{
    return editor ? nextEdited(line) : nextPlain(line);
}

bool LineSource::nextEdited(QString& line)
{
    int length = 0;
    const char* const text = el_gets(editor.get(), &length);
    if (!text || length <= 0)
        return false;
    line = QString::fromUtf8(text, length).trimmed();
    if (!line.isEmpty()) {
        HistEvent event;
        ::history(history.get(), &event, H_ENTER, text);
    }
    return true;
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
    const ExtendFuncModelBase& model = *panel.model;
    for (;;) {
        view.draw();
        long long timeout = INT_MAX;
        if (model.cyclePeriodMs > 0)
            timeout = std::clamp<long long>(model.cycleRemainingMs, 0, INT_MAX);
        if (view.isShown())
            timeout = std::min<long long>(timeout, LiveView::frameMs);
        pollfd waiting = {descriptor, POLLIN, 0};
        const int ready = poll(&waiting, 1, static_cast<int>(timeout));
        panel.advance(clock.restart());
        if (ready > 0)
            return;
    }
}

int LineSource::readKey(EditLine* editor, wchar_t* key)
{
    LineSource* source = nullptr;
    el_get(editor, EL_CLIENTDATA, &source);
    source->wait();
    char byte = 0;
    if (read(source->descriptor, &byte, 1) != 1)
        return 0;
    *key = static_cast<unsigned char>(byte);
    return 1;
}
