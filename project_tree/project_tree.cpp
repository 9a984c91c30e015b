// Builds configuration trees and finds their nodes and properties.
// SPDX-License-Identifier: MIT
#include "project_tree/project_tree.h"

namespace {

template <typename Item> Item* findNamed(const std::vector<std::unique_ptr<Item>>& items, const QString& name)
{
    for (const auto& item : items)
        if (item->name == name)
            return item.get();
    return nullptr;
}

property& propertyToSet(object& node, const QString& name)
{
    if (property* const existing = node.findProperty(name))
        return *existing;
    node.properties.push_back(std::make_unique<property>());
    node.properties.back()->name = name;
    return *node.properties.back();
}

} // namespace

object& object::addChild(const QString& childName)
{
    auto child = std::make_unique<object>();
    child->name = childName;
    if (!children.empty())
        children.back()->next = child.get();
    children.push_back(std::move(child));
    return *children.back();
}

object& object::setNumber(const QString& propertyName, qint64 value)
{
    property& target = propertyToSet(*this, propertyName);
    target.isText = false;
    target.number = static_cast<quint32>(value);
    return *this;
}

object& object::setText(const QString& propertyName, const QString& value)
{
    property& target = propertyToSet(*this, propertyName);
    target.isText = true;
    target.text = value;
    return *this;
}

property* object::findProperty(const QString& propertyName) const
{
    return findNamed(properties, propertyName);
}

object* object::findChild(const QString& childName) const
{
    return findNamed(children, childName);
}
