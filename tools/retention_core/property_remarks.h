// Notes where the module reads a project differently from how it is written: properties and objects that it
// does not read, or reads as their defaults.
// SPDX-License-Identifier: MIT
#pragma once

#include "project_tree/project_tree.h"

#include <QtCore/QString>

#include <vector>

struct PropertyRemark
{
    enum class Kind
    {
        Missing,        ///< and needed: read as its default
        Defaulted,      ///< missing in an entry and read as its default, on which no file depends
        Misspelt,       ///< not read; `known`, which is missing, would be
        WrongType,      ///< a text instead of a number, or the reverse: read as its default
        NotRead,        ///< the module knows no such property
        ObjectMisspelt, ///< not read; an object `known` would be
        ObjectMisplaced,
        ObjectNotRead
    };

    Kind kind;
    int entry = 0;         ///< number of the entry that it is about; 0 for "DataRetention" or the project
    QString holder;        ///< the object that has or lacks it
    QString name;          ///< as written in the project; of a missing one, as it would be read
    QString known;         ///< the similar name that the module reads; empty for none
    QString readAs;        ///< such as "0" or "an empty text"; empty when nothing is read
    bool isText = false;   ///< of a WrongType: the project has a text
    bool decisive = false; ///< the files depend on this property
};

/// `project` may be null. Entries are only checked where they have an effect.
std::vector<PropertyRemark> propertyRemarks(const object* project);
