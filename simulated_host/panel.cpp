// Follows the runtime's calling sequence.
// SPDX-License-Identifier: MIT
#include "simulated_host/panel.h"

Panel::Panel(const ModuleLibrary& library, object* project)
    : comm(areas), model(library.createModel()), project(project)
{
}

void Panel::start()
{
    open();
    init();
    watch();
    started = true;
}

void Panel::open()
{
    model->extModelOpen(project, QStringLiteral("poweroff_protect"), &comm);
}

void Panel::init()
{
    model->extModelInit();
}

void Panel::watch()
{
    QList<RegisterValueChangeSize> records;
    model->getMonitorTriggerAddr(records);
    watched.add(records);
}

bool Panel::setCells(const QString& area, int address, const std::vector<ushort>& values,
                     const std::function<void(int done, int all)>& progress)
{
    MemoryArea* const target = areas.named(area);
    const qint64 end = qint64(address) + qint64(values.size());
    if (!target || address < 0 || end > MemoryArea::cellCount)
        return false;
    int at = address;
    for (const ushort value : values)
        target->setCell(at++, value);
    for (at = address; at < end; ++at) {
        if (!watched.contains(area, at))
            continue;
        if (progress)
            progress(at - address, static_cast<int>(values.size()));
        reportChange(area, at);
    }
    return true;
}

void Panel::reportChange(const QString& area, int address)
{
    const _ExtendTriggerMsg_t message = changeMessage(area, address);
    model->addrOptChangeMsg(&message);
}
