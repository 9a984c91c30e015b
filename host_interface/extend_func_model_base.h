// Declares the base class of the runtime's extension models.
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

/// The runtime defines all operations; a model overrides those it needs. The runtime calls them from one
/// thread, one at a time. The order of operations and fields is part of the binary interface.
class HOST_INTERFACE_PUBLIC ExtendFuncModelBase : public InterfaceAll
{
public:
    ExtendFuncModelBase();
    virtual ~ExtendFuncModelBase();

    /// Passes the model its project (configuration tree; may be null), a text and access to the areas.
    virtual void extModelOpen(object* project, QString text, InterfaceComm* comm);
    /// The model's attribute; the runtime defines its meaning.
    virtual int getAttribute();
    /// Finishes the start-up after extModelOpen().
    virtual void extModelInit();
    /// The periodic call, every `cyclePeriodMs`.
    virtual int cyclicRun();
    /// Asks the model to rebuild its addresses.
    virtual void rebuildExtModelAddr();
    /// Appends the names of the runtime's messages that the model wants to receive.
    virtual void getMonitorMessageName(QStringList& names);
    /// Passes the model one of these messages; the runtime owns `sender`.
    virtual void extModelProcessMessage(const QString& name, InterfaceAll* sender);
    /// Tells the model that `elapsedMs` milliseconds have passed; calls cyclicRun() when it is due.
    virtual void ArriveTimeCyclicRun(long long elapsedMs);
    /// Appends a record for every cell whose changes the model wants reported.
    virtual void getMonitorTriggerAddr(QList<RegisterValueChangeSize>& watched);
    /// Reports a changed cell. The runtime owns the message, which is valid only during the call.
    virtual void addrOptChangeMsg(const _ExtendTriggerMsg_t* msg);
    /// Like addrOptChangeMsg(), for a cell that was reset.
    virtual void addrOptResetMsg(const _ExtendTriggerMsg_t* msg);
    /// Like addrOptChangeMsg(), for a cell that a change of scene reset.
    virtual void addrOptSceneReset(const _ExtendTriggerMsg_t* msg);

    int extModelParam;           ///< for the runtime's use
    unsigned char retentionMode; ///< 0 no retention, 1 whole areas, 2 per-address entries
    long long cyclePeriodMs;     ///< milliseconds from one cyclicRun() to the next
    long long cycleRemainingMs;  ///< milliseconds until the next cyclicRun()
    QString extModelString;      ///< the text given to extModelOpen()
};
