// The root of the runtime's class tree: what every object that the runtime drives can be asked.
#ifndef HOST_INTERFACE_INTERFACE_ALL_H
#define HOST_INTERFACE_INTERFACE_ALL_H

#include <QtCore/QString>
#include <QtCore/QStringList>

/// Everything is inline and does nothing but keep the operator-log type, so that a plug-in carries its own
/// copy and needs none of it from the runtime. The order of the operations is the binary interface.
class InterfaceAll
{
public:
    virtual ~InterfaceAll() {}
    virtual void keyboardReflash(const QString&) {}
    virtual void execComplete(const int&, const QString&) {}
    virtual ushort getOptLogType() { return optLogType; }
    virtual void setOptLogType(ushort type) { optLogType = type; }
    virtual void exportData() {}
    virtual void insertOperatorLog(QString) {}
    virtual void insertOperatorLog(const QStringList&) {}

    /// Operator-log type; its meaning is the runtime's. 0 until somebody sets it.
    ushort optLogType = 0;
};

#endif
