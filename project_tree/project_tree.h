// Defines the configuration tree of a project: the types that models see only as pointers.
// SPDX-License-Identifier: MIT
#pragma once

#include "host_interface/configuration_tree.h"

#include <QtCore/QString>

#include <functional>
#include <memory>
#include <vector>

/// A named value: a 32-bit number or a text. Read as the other kind, it counts as absent. A signed number
/// read as unsigned, or the reverse, keeps its 32 bits.
struct property
{
    QString name;        ///< unique among the properties of a node
    bool isText = false; ///< which of the two values counts
    quint32 number = 0;  ///< the 32 bits of a number, signed or not
    QString text;
};

/// A node. It owns its properties and children, whose addresses stay valid as long as it lives.
struct object
{
    QString name;                                      ///< need not be unique among its siblings
    object* next = nullptr;                            ///< next child of the same parent; null for the last
    std::vector<std::unique_ptr<property>> properties; ///< in the order in which they were set
    std::vector<std::unique_ptr<object>> children;     ///< in the order in which they were added

    object& addChild(const QString& childName); ///< returns the new, last child
    /// Keeps the low 32 bits of `value`. The setters return this node.
    object& setNumber(const QString& propertyName, qint64 value);
    object& setText(const QString& propertyName, const QString& value);

    property* findProperty(const QString& propertyName) const; ///< null when there is none of that name
    object* findChild(const QString& childName) const;         ///< the first of that name; null for none
};

using TreeObserver = std::function<void(const QString& call)>;

/// From now on, passes `observer` one line for each call of the configuration-tree functions, with its
/// arguments. An empty observer, the initial state, ends that.
void observeTree(TreeObserver observer);
