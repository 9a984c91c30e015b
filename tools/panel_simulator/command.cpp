// Parses command lines by the table of their forms.
// SPDX-License-Identifier: MIT
#include "tools/panel_simulator/command.h"

#include "simulated_host/memory_areas.h"

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
     "write cells from ADDRESS on; watched ones are reported"},
    {"cycle", Command::Kind::Cycle, "", "one cyclic call now"},
    {"watch", Command::Kind::Watch, "", "the cells that the module asked to watch"},
    {"status", Command::Kind::Status, "", "mode, period, syncs, files"},
    {"live", Command::Kind::Live, "", "show or hide a view of the running panel above the commands"},
    {"power-cut", Command::Kind::PowerCut, "", "end at once, as without power"},
    {"stop", Command::Kind::Stop, "", "end in good order"},
    {"help", Command::Kind::Help, "", "this list"},
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

/// The number from `lowest` to `highest` that `text` stands for.
std::optional<int> number(const QString& text, int lowest, int highest)
{
    bool ok = false;
    const bool hexadecimal = text.startsWith(QLatin1String("0x"));
    const qlonglong value = hexadecimal ? text.mid(2).toLongLong(&ok, 16) : text.toLongLong(&ok, 10);
    if (!ok || value < lowest || value > highest)
        return std::nullopt;
    return static_cast<int>(value);
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
        return bad(QStringLiteral("too many values: expected at most %1 from address %2 on")
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
    const QStringList words = line.simplified().split(QLatin1Char(' '), Qt::SkipEmptyParts);
    if (words.isEmpty() || words.first().startsWith(QLatin1Char('#')))
        return {};
    for (const Form& form : forms) {
        if (words.first() != QLatin1String(form.word))
            continue;
        if (form.kind == Command::Kind::Get || form.kind == Command::Kind::Set)
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

QString commandHelp()
{
    QString help;
    for (const Form& form : forms)
        help += QStringLiteral("  %1 %2\n").arg(usage(form), -26).arg(QLatin1String(form.meaning));
    return help;
}
