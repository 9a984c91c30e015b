// The root of the runtime's class tree: what every object that the runtime drives can be asked.
// SPDX-License-Identifier: MIT
#pragma once

#include <QtCore/QString>
#include <QtCore/QStringList>

/// Everything is inline and does nothing but keep the operator-log type, so that a plug-in carries its own
/// copy and needs none of it from the runtime. The order of the operations is the binary interface.
class InterfaceAll
{
public:
    virtual ~InterfaceAll() {}
    virtual void keyboardReflash(const QString&) {}                ///< does nothing
    virtual void execComplete(const int&, const QString&) {}       ///< does nothing
    virtual ushort getOptLogType() { return optLogType; }          ///< what setOptLogType() stored
    virtual void setOptLogType(ushort type) { optLogType = type; } ///< any value
    virtual void exportData() {}                                   ///< does nothing
    virtual void insertOperatorLog(QString) {}                     ///< does nothing
    virtual void insertOperatorLog(const QStringList&) {}          ///< does nothing

    /// Operator-log type; its meaning is the runtime's. 0 until somebody sets it.
    ushort optLogType = 0;
};
