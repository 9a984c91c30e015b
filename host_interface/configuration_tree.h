// Declares the functions through which models read the project's configuration tree. The runtime owns
// everything they return.
// SPDX-License-Identifier: MIT
#pragma once

#include "host_interface/visibility.h"

#include <QtCore/QString>
#include <QtCore/QtGlobal>

struct object;   ///< a node of the tree; opaque to models
struct property; ///< a named value of a node; opaque to models

/// The child of that name; null when `parent` is null or has none.
HOST_INTERFACE_PUBLIC object* object_get_child(object* parent, const char* name);
/// The first child; null when `parent` is null or has none.
HOST_INTERFACE_PUBLIC object* object_first_child(object* parent);
/// The next child of the same parent; null after the last and for a null `sibling`.
HOST_INTERFACE_PUBLIC object* object_next(object* sibling);
/// The property of that name; null when `node` is null or has none.
HOST_INTERFACE_PUBLIC property* object_get_property(object* node, const char* name);
/// The value; `defaultValue` for a null `value`.
HOST_INTERFACE_PUBLIC quint32 property_get_value_type_uint32(property* value, quint32 defaultValue);
/// The value of the property of that name; `defaultValue` when `node` is null or has none.
HOST_INTERFACE_PUBLIC int object_get_property_value_type_int32(object* node, const char* name,
                                                               int defaultValue);
/// The text of the property of that name; `defaultValue` when `node` is null or has none.
HOST_INTERFACE_PUBLIC QString object_get_property_value_type_string(object* node, const char* name,
                                                                    const QString& defaultValue);
