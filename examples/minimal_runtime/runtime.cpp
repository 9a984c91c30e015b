// Implements the least that a runtime must supply, and makes the calls.
// SPDX-License-Identifier: MIT
#include "runtime.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <unistd.h>

// --- The configuration tree: one project that retains one cell, "LW" 100 ---

struct object
{
    const char* name;
    object* child;
};
struct property
{
};

namespace {
object sourceAddress = {"sourceAddress", nullptr};
object entry = {"counter", &sourceAddress};
object retention = {"DataRetention", &entry};
object project = {"project", &retention};
} // namespace

object* object_get_child(object* parent, const char* name)
{
    object* child = parent != nullptr ? parent->child : nullptr;
    return child != nullptr && std::strcmp(child->name, name) == 0 ? child : nullptr;
}
object* object_first_child(object* parent)
{
    return parent != nullptr ? parent->child : nullptr;
}
object* object_next(object*)
{
    return nullptr;
}
property* object_get_property(object*, const char*)
{
    return nullptr;
}
quint32 property_get_value_type_uint32(property*, quint32 defaultValue)
{
    return defaultValue;
}
int object_get_property_value_type_int32(object* node, const char* name, int defaultValue)
{
    if (node == &entry && std::strcmp(name, "addressLength") == 0)
        return 1;
    return node == &sourceAddress && std::strcmp(name, "index") == 0 ? 100 : defaultValue;
}
QString object_get_property_value_type_string(object* node, const char* name, const QString& defaultValue)
{
    return node == &sourceAddress && std::strcmp(name, "Block") == 0 ? QString::fromLatin1("LW")
                                                                     : defaultValue;
}

// --- The shell and the base class of all models ---

int sys_base_do_system(const char* command)
{
    // The module's only command. The system call does the same without a shell, in a fraction of the time.
    if (std::strcmp(command, "sync") == 0) {
        sync();
        return 0;
    }
    return std::system(command);
}

ExtendFuncModelBase::ExtendFuncModelBase()
    : extModelParam(0), retentionMode(0), cyclePeriodMs(0), cycleRemainingMs(0)
{
}
ExtendFuncModelBase::~ExtendFuncModelBase() {}
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
void ExtendFuncModelBase::ArriveTimeCyclicRun(long long) {}
void ExtendFuncModelBase::getMonitorTriggerAddr(QList<RegisterValueChangeSize>&) {}
void ExtendFuncModelBase::addrOptChangeMsg(const _ExtendTriggerMsg_t*) {}
void ExtendFuncModelBase::addrOptResetMsg(const _ExtendTriggerMsg_t*) {}
void ExtendFuncModelBase::addrOptSceneReset(const _ExtendTriggerMsg_t*) {}

// --- The cells: one word ---

namespace {

class OneCell : public InterfaceComm
{
public:
    ushort counter = 0;

    void* getAreaMemory(int) override { return nullptr; }
    int writeRegisterValues(const QString&, const QString&, int, int, int, const ushort* data) override
    {
        counter = data[0];
        return 0;
    }
    int readRegisterValues(const QString&, const QString&, int, int, int, ushort* data) override
    {
        data[0] = counter;
        return 0;
    }
};

} // namespace

int countOnce(ExtendFuncModelBase* model)
{
    static OneCell cells; // outlives the model
    model->extModelOpen(&project, QString(), &cells);
    model->extModelInit(); // restores the kept value
    QList<RegisterValueChangeSize> watched;
    model->getMonitorTriggerAddr(watched);
    const ushort before = cells.counter++;

    // A cell that the module watches has changed: report it.
    _ExtendTriggerMsg_t change = {};
    change.address = watched.at(0).address;
    std::memcpy(change.areaName, watched.at(0).areaName, sizeof change.areaName);
    model->addrOptChangeMsg(&change);

    std::printf("mode %d, %s %d: %d, now %d\n", model->retentionMode, change.areaName, change.address, before,
                cells.counter);
    return 0;
}
