// Parses command lines with a table of their forms.
// SPDX-License-Identifier: MIT
#include "tools/panel_simulator/command.h"

#include "simulated_host/memory_areas.h"
#include "tools/numbers.h"

#include <QtCore/QStringList>

#include <optional>

namespace {

struct Form
{
    const char* word;
    Command::Kind kind;
    const char* arguments;
    const char* meaning;
};

const Form forms[] = {
    {"get", Command::Kind::Get, "AREA ADDRESS [COUNT]", "show cells; AREA is LB, LW or RWI"},
    {"set", Command::Kind::Set, "AREA ADDRESS VALUE...",
     "write cells starting at ADDRESS; watched ones are reported"},
    {"expect", Command::Kind::Expect, "AREA ADDRESS VALUE...",
     "compare cells; the exit status is 1 if any differs"},
    {"cycle", Command::Kind::Cycle, "", "make one cyclic call now"},
    {"watch", Command::Kind::Watch, "", "show the cells that the module watches"},
    {"status", Command::Kind::Status, "", "show the mode, the period, the syncs and the files"},
    {"live", Command::Kind::Live, "", "show or hide a view of the running panel above the commands"},
    {"restart", Command::Kind::Restart, "", "shut the panel down cleanly and start it again"},
    {"power-cut", Command::Kind::PowerCut, "", "end immediately, as if the power failed"},
    {"stop", Command::Kind::Stop, "", "shut the panel down cleanly and exit"},
    {"help", Command::Kind::Help, "", "show this list"},
};

QString usage(const Form& form)
{
    return QStringLiteral("%1 %2").arg(QLatin1String(form.word), QLatin1String(form.arguments)).trimmed();
}

Command bad(const QString& message)
{
    Command command;
    command.error = message;
    return command;
}

Command expected(const Form& form)
{
    return bad(QStringLiteral("expected: %1").arg(usage(form)));
}

std::optional<int> number(const QString& text, int lowest, int highest)
{
    const std::optional<qint64> value = wholeNumber(text, lowest, highest);
    return value ? std::optional<int>(static_cast<int>(*value)) : std::nullopt;
}

bool namesCells(const Form& form)
{
    return form.kind == Command::Kind::Get || form.kind == Command::Kind::Set ||
           form.kind == Command::Kind::Expect;
}

QString notANumber(const char* what, const QString& text, int lowest, int highest)
{
    return QStringLiteral("%1 \"%2\": expected a number from %3 to %4")
        .arg(QLatin1String(what), text, QString::number(lowest), QString::number(highest));
}

Command cellCommand(const Form& form, const QStringList& words)
{
    static const MemoryAreas areas;
    const bool get = form.kind == Command::Kind::Get;
    if (words.size() < (get ? 3 : 4) || (get && words.size() > 4))
        return expected(form);
    const MemoryArea* const area = areas.named(words[1]);
    if (!area)
        return bad(QStringLiteral("area \"%1\": expected LB, LW or RWI").arg(words[1]));

    Command command;
    command.kind = form.kind;
    command.area = words[1];
    const int last = MemoryArea::cellCount - 1;
    const auto address = number(words[2], 0, last);
    if (!address)
        return bad(notANumber("address", words[2], 0, last));
    command.address = *address;

    const int room = MemoryArea::cellCount - *address;
    if (get) {
        const auto count = words.size() > 3 ? number(words[3], 1, room) : 1;
        if (!count)
            return bad(notANumber("count", words[3], 1, room));
        command.count = *count;
        return command;
    }
    if (words.size() - 3 > room)
        return bad(QStringLiteral("too many values: expected at most %1 starting at address %2")
                       .arg(room)
                       .arg(*address));
    const int lowest = area->isBits() ? 0 : -32768;
    const int highest = area->isBits() ? 1 : 65535;
    for (const QString& text : words.mid(3)) {
        const auto value = number(text, lowest, highest);
        if (!value)
            return bad(notANumber("value", text, lowest, highest));
        command.values.push_back(static_cast<ushort>(*value));
    }
    return command;
}

} // namespace

Command parseCommand(const QString& line)
{
    const QStringList words =
        line.section(QLatin1Char('#'), 0, 0).simplified().split(QLatin1Char(' '), Qt::SkipEmptyParts);
    if (words.isEmpty())
        return {};
    for (const Form& form : forms) {
        if (words.first() != QLatin1String(form.word))
            continue;
        if (namesCells(form))
            return cellCommand(form, words);
        if (words.size() > 1)
            return expected(form);
        Command command;
        command.kind = form.kind;
        return command;
    }
    QStringList known;
    for (const Form& form : forms)
        known.append(QLatin1String(form.word));
    return bad(QStringLiteral("unknown command \"%1\": expected one of %2")
                   .arg(words.first(), known.join(QLatin1String(", "))));
}

QStringList completionsOf(const QString& beginning)
{
    QString before = beginning;
    while (!before.isEmpty() && before.at(0).isSpace())
        before.remove(0, 1);
    const QStringList words = before.split(QLatin1Char(' '));
    QStringList candidates;
    for (const Form& form : forms) {
        if (words.size() == 1)
            candidates.append(QLatin1String(form.word));
        else if (words.size() == 2 && namesCells(form) && words.first() == QLatin1String(form.word))
            candidates = QStringList{QStringLiteral("LB"), QStringLiteral("LW"), QStringLiteral("RWI")};
    }
    QStringList fitting;
    for (const QString& candidate : candidates)
        if (candidate.startsWith(words.last()))
            fitting.append(candidate);
    return fitting;
}

QString commandHelp()
{
    QString help;
    for (const Form& form : forms)
        help += QStringLiteral("  %1 %2\n").arg(usage(form), -28).arg(QLatin1String(form.meaning));
    return help;
}
