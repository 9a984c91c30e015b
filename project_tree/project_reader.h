// Reads projects from XML files: nested "object" elements with "property" children.
// SPDX-License-Identifier: MIT
#pragma once

#include "project_tree/project_tree.h"

#include <QtCore/QIODevice>
#include <QtCore/QString>

#include <memory>

/// Either a project or an error, never both.
struct ProjectReading
{
    std::unique_ptr<object> project; ///< the root object
    QString error;                   ///< "FILE:LINE:COLUMN: what is wrong"
};

/// Reads a project such as
///     <object name="project">
///       <object name="DataRetention">
///         <property name="Save Time" type="uint32">5</property>
/// with the types "int32", "uint32" (decimal) and "string". `fileName` is only used in messages.
ProjectReading readProject(QIODevice& device, const QString& fileName);
ProjectReading readProjectFile(const QString& fileName);
