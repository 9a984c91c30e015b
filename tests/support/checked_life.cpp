// Runs a life of a module next to its model.
// SPDX-License-Identifier: MIT
#include "tests/support/checked_life.h"

#include "simulated_host/shell.h"
#include "tests/support/areas.h"

#include <utility>

CheckedLife::CheckedLife(ModelPointer madeModule, object& project, const MemoryAreas& cells,
                         const Files& files, QStringList* log)
    : log(log), accountAreas(cells), syncsBefore(commandsRun(QStringLiteral("sync"))),
      module(std::move(madeModule)), areas(cells),
      account(expectedOf(project), accountAreas, files, log ? &accountCalls : nullptr)
{
    if (log)
        log->clear();
    module->extModelOpen(&project, QString(), &comm);
    account.open();
}

void CheckedLife::init()
{
    module->extModelInit();
    account.init();
}

void CheckedLife::save()
{
    module->cyclicRun();
    account.cyclicRun();
}

void CheckedLife::setCell(const QString& area, int address, ushort value)
{
    for (MemoryAreas* const all : {&areas, &accountAreas})
        if (MemoryArea* const named = all->named(area))
            named->setCell(address, value);
}

void CheckedLife::report(const _ExtendTriggerMsg_t& message)
{
    module->addrOptChangeMsg(&message);
    account.change(QByteArray(message.areaName, sizeof message.areaName), message.address);
}

std::string CheckedLife::difference()
{
    std::string text;
    const int syncs = commandsRun(QStringLiteral("sync")) - syncsBefore;
    if (syncs != account.syncs())
        text += std::to_string(syncs) + " syncs, not " + std::to_string(account.syncs()) + '\n';
    const Files now = filesNow();
    for (std::size_t a = 0; a < now.size(); ++a)
        text += fileDifference(a, now[a], account.file(a));
    if (!log)
        return text;
    QStringList calls;
    for (const QString& call : std::as_const(*log))
        if (call.startsWith(QLatin1String("read")) || call.startsWith(QLatin1String("write")) ||
            call == QLatin1String("sync"))
            calls.append(call);
    if (calls != accountCalls)
        text += "calls:\n" + calls.join(QLatin1String("\n")).toStdString() + "\nthey must be:\n" +
                accountCalls.join(QLatin1String("\n")).toStdString() + '\n';
    log->clear();
    accountCalls.clear();
    return text;
}

std::string CheckedLife::cellDifference() const
{
    for (std::size_t a = 0; a < 3; ++a) {
        const MemoryArea& area = areas.all()[a];
        const MemoryArea& must = accountAreas.all()[a];
        if (area.memory() == must.memory())
            continue;
        for (int address = 0; address < MemoryArea::cellCount; ++address)
            if (area.cell(address) != must.cell(address))
                return testAreas[a].name + (' ' + std::to_string(address)) + " is " +
                       std::to_string(*area.cell(address)) + " and must be " +
                       std::to_string(*must.cell(address)) + '\n';
    }
    return {};
}
