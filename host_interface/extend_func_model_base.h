// The base class of the runtime's extension models.
// SPDX-License-Identifier: MIT
#pragma once

#include "host_interface/exchange_records.h"
#include "host_interface/interface_all.h"
#include "host_interface/visibility.h"

#include <QtCore/QList>
#include <QtCore/QString>
#include <QtCore/QStringList>

class InterfaceComm;
struct object;

/// All operations are defined by the runtime; a model overrides those it needs. All calls come from one
/// thread of the runtime, one at a time. The order of operations and fields is the binary interface.
class HOST_INTERFACE_PUBLIC ExtendFuncModelBase : public InterfaceAll
{
public:
    ExtendFuncModelBase();
    virtual ~ExtendFuncModelBase();

    /// Hands the model its project (configuration tree; may be null), a text and the way to the areas.
    virtual void extModelOpen(object* project, QString text, InterfaceComm* comm);
    /// The model's attribute; its meaning is the runtime's.
    virtual int getAttribute();
    /// Finishes the start-up after extModelOpen().
    virtual void extModelInit();
    /// The periodic call, every `cyclePeriodMs`.
    virtual int cyclicRun();
    /// Asks the model to make its addresses anew.
    virtual void rebuildExtModelAddr();
    /// Appends the names of the runtime's messages that the model wants to get.
    virtual void getMonitorMessageName(QStringList& names);
    /// Hands the model one of these messages; `sender` stays the runtime's.
    virtual void extModelProcessMessage(const QString& name, InterfaceAll* sender);
    /// Tells the model's base that `elapsedMs` milliseconds have passed; calls cyclicRun() when it is due.
    virtual void ArriveTimeCyclicRun(long long elapsedMs);
    /// Appends a record for every cell whose changes the model wants reported.
    virtual void getMonitorTriggerAddr(QList<RegisterValueChangeSize>& watched);
    /// Reports a changed cell. The message stays the runtime's and is valid during the call.
    virtual void addrOptChangeMsg(const _ExtendTriggerMsg_t* msg);
    /// As addrOptChangeMsg(), for a cell that was reset.
    virtual void addrOptResetMsg(const _ExtendTriggerMsg_t* msg);
    /// As addrOptChangeMsg(), for a cell that a change of scene reset.
    virtual void addrOptSceneReset(const _ExtendTriggerMsg_t* msg);

    int extModelParam;           ///< its use is the runtime's
    unsigned char retentionMode; ///< 0 no retention, 1 whole areas, 2 per-address entries
    long long cyclePeriodMs;     ///< milliseconds from one cyclicRun() to the next
    long long cycleRemainingMs;  ///< milliseconds until the next cyclicRun()
    QString extModelString;      ///< the text given to extModelOpen()
};
