// The configuration-tree functions that models call.
// SPDX-License-Identifier: MIT
#include "project_tree/project_tree.h"
#include "simulated_host/call_log.h"

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

/// For the call log.
QString nameOf(const object* node)
{
    return node ? node->name : QStringLiteral("nothing");
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

object* object_get_child(object* parent, const char* name)
{
    logCall([&] { return QStringLiteral("object_get_child %1").arg(QLatin1String(name)); });
    return parent ? parent->findChild(QLatin1String(name)) : nullptr;
}

object* object_first_child(object* parent)
{
    logCall([] { return QStringLiteral("object_first_child"); });
    return parent && !parent->children.empty() ? parent->children.front().get() : nullptr;
}

object* object_next(object* sibling)
{
    return sibling ? sibling->next : nullptr;
}

property* object_get_property(object* node, const char* name)
{
    logCall([&] { return QStringLiteral("object_get_property %1").arg(QLatin1String(name)); });
    return node ? node->findProperty(QLatin1String(name)) : nullptr;
}

quint32 property_get_value_type_uint32(property* value, quint32 defaultValue)
{
    return value && !value->isText ? value->number : defaultValue;
}

int object_get_property_value_type_int32(object* node, const char* name, int defaultValue)
{
    logCall([&] {
        return QStringLiteral("int32 %1 of=%2 default=%3")
            .arg(QLatin1String(name), nameOf(node), QString::number(defaultValue));
    });
    const property* const found = node ? node->findProperty(QLatin1String(name)) : nullptr;
    return found && !found->isText ? static_cast<int>(found->number) : defaultValue;
}

QString object_get_property_value_type_string(object* node, const char* name, const QString& defaultValue)
{
    logCall([&] {
        return QStringLiteral("string %1 of=%2 default=%3")
            .arg(QLatin1String(name), nameOf(node),
                 defaultValue.isNull() ? QStringLiteral("null")
                                       : QLatin1Char('"') + defaultValue + QLatin1Char('"'));
    });
    const property* const found = node ? node->findProperty(QLatin1String(name)) : nullptr;
    return found && found->isText ? found->text : defaultValue;
}
