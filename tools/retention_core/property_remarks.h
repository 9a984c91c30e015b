// Notes where a project's spelling and the module's reading part: properties and objects that it does not
// read, or reads as their defaults. SPDX-License-Identifier: MIT
#pragma once

#include "project_tree/project_tree.h"

#include <QtCore/QString>

#include <vector>

struct PropertyRemark
{
    enum class Kind
    {
        Missing,        ///< and matters: it is read as its default
        Defaulted,      ///< missing in an entry and read as its default, on which no file depends
        Misspelt,       ///< not read; `known`, which is missing, would be
        WrongType,      ///< a text where a number is read, or the other way: read as its default
        NotRead,        ///< the module knows no such property
        ObjectMisspelt, ///< not read; an object `known` would be
        ObjectMisplaced,
        ObjectNotRead
    };

    Kind kind;
    int entry = 0;         ///< number of the entry that it is about; 0 for "DataRetention" or the project
    QString holder;        ///< the object that has it, or lacks it
    QString name;          ///< as the project has it; of a missing one, as it would be read
    QString known;         ///< what the module reads; empty where there is nothing like it
    QString readAs;        ///< such as "0" or "an empty text"; empty where nothing is read
    bool isText = false;   ///< of a WrongType, what the project has
    bool decisive = false; ///< the files depend on it
};

/// `project` may be null. Entries are only looked at where they have an effect.
std::vector<PropertyRemark> propertyRemarks(const object* project);
