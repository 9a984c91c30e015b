// Answers the seven configuration-tree functions that models call.
// SPDX-License-Identifier: MIT
#include "project_tree/project_tree.h"

#include <utility>

namespace {

TreeObserver observer;

/// Builds the line only if there is an observer: trees of 10,000 entries are read without one.
template <typename Describe> void observe(Describe describe)
{
    if (observer)
        observer(describe());
}

QString nameOf(const object* node)
{
    return node ? node->name : QStringLiteral("nothing");
}

} // namespace

void observeTree(TreeObserver newObserver)
{
    observer = std::move(newObserver);
}

object* object_get_child(object* parent, const char* name)
{
    observe([&] { return QStringLiteral("object_get_child %1").arg(QLatin1String(name)); });
    return parent ? parent->findChild(QLatin1String(name)) : nullptr;
}

object* object_first_child(object* parent)
{
    observe([] { return QStringLiteral("object_first_child"); });
    return parent && !parent->children.empty() ? parent->children.front().get() : nullptr;
}

object* object_next(object* sibling)
{
    return sibling ? sibling->next : nullptr;
}

property* object_get_property(object* node, const char* name)
{
    observe([&] { return QStringLiteral("object_get_property %1").arg(QLatin1String(name)); });
    return node ? node->findProperty(QLatin1String(name)) : nullptr;
}

quint32 property_get_value_type_uint32(property* value, quint32 defaultValue)
{
    return value && !value->isText ? value->number : defaultValue;
}

int object_get_property_value_type_int32(object* node, const char* name, int defaultValue)
{
    observe([&] {
        return QStringLiteral("int32 %1 of=%2 default=%3")
            .arg(QLatin1String(name), nameOf(node), QString::number(defaultValue));
    });
    const property* const found = node ? node->findProperty(QLatin1String(name)) : nullptr;
    return found && !found->isText ? static_cast<int>(found->number) : defaultValue;
}

QString object_get_property_value_type_string(object* node, const char* name, const QString& defaultValue)
{
    observe([&] {
        return QStringLiteral("string %1 of=%2 default=%3")
            .arg(QLatin1String(name), nameOf(node),
                 defaultValue.isNull() ? QStringLiteral("null")
                                       : QLatin1Char('"') + defaultValue + QLatin1Char('"'));
    });
    const property* const found = node ? node->findProperty(QLatin1String(name)) : nullptr;
    return found && found->isText ? found->text : defaultValue;
}
