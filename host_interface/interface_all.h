// Defines the root of the runtime's class tree.
// SPDX-License-Identifier: MIT
#pragma once

#include <QtCore/QString>
#include <QtCore/QStringList>

/// Everything is inline and only keeps the operator-log type, so that a plug-in has its own copy and needs
/// none of it from the runtime. The order of the operations is part of the binary interface.
class InterfaceAll
{
public:
    virtual ~InterfaceAll() {}
    virtual void keyboardReflash(const QString&) {}
    virtual void execComplete(const int&, const QString&) {}
    virtual ushort getOptLogType() { return optLogType; }          ///< what setOptLogType() stored
    virtual void setOptLogType(ushort type) { optLogType = type; } ///< any value
    virtual void exportData() {}
    virtual void insertOperatorLog(QString) {}
    virtual void insertOperatorLog(const QStringList&) {}

    /// Operator-log type; the runtime defines its meaning. 0 until set.
    ushort optLogType = 0;
};
