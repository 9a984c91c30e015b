// Defines the base class of extension models for this host.
// SPDX-License-Identifier: MIT
#include "host_interface/host_interface.h"

ExtendFuncModelBase::ExtendFuncModelBase()
    : extModelParam(0), retentionMode(0), cyclePeriodMs(0), cycleRemainingMs(0)
{
}

ExtendFuncModelBase::~ExtendFuncModelBase() = default;

void ExtendFuncModelBase::extModelOpen(object*, QString, InterfaceComm*) {}

int ExtendFuncModelBase::getAttribute()
{
    return 0;
}

void ExtendFuncModelBase::extModelInit() {}

int ExtendFuncModelBase::cyclicRun()
{
    return 0;
}

void ExtendFuncModelBase::rebuildExtModelAddr() {}

void ExtendFuncModelBase::getMonitorMessageName(QStringList&) {}

void ExtendFuncModelBase::extModelProcessMessage(const QString&, InterfaceAll*) {}

void ExtendFuncModelBase::ArriveTimeCyclicRun(long long elapsedMs)
{
    if (cyclePeriodMs <= 0) // no cyclic calls
        return;
    cycleRemainingMs -= elapsedMs;
    if (cycleRemainingMs > 0)
        return;
    // However late, one call makes up for all missed ones.
    cycleRemainingMs = cyclePeriodMs;
    cyclicRun();
}

void ExtendFuncModelBase::getMonitorTriggerAddr(QList<RegisterValueChangeSize>&) {}

void ExtendFuncModelBase::addrOptChangeMsg(const _ExtendTriggerMsg_t*) {}

void ExtendFuncModelBase::addrOptResetMsg(const _ExtendTriggerMsg_t*) {}

void ExtendFuncModelBase::addrOptSceneReset(const _ExtendTriggerMsg_t*) {}
