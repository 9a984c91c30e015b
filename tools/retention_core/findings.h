// Finds what the user should change in a project or its files, and says how.
// SPDX-License-Identifier: MIT
#pragma once

#include "tools/retention_core/layout.h"
#include "tools/retention_core/retention_files.h"

#include <vector>

/// Something that the user should change.
struct Finding
{
    enum class Severity
    {
        Warning, ///< nothing is lost, but it is probably not intended
        Error    ///< values are or will be lost
    };

    Severity severity;
    const char* kind;      ///< stable key such as "lost-in-fold"
    QString place;         ///< file or entry, with area and cells
    QString problem;       ///< what is wrong
    QString remedy;        ///< what to do
    QString area = {};     ///< empty for none
    CellRanges cells = {}; ///< the cells concerned
    int entry = 0;         ///< number of the entry; 0 for none
};

/// What becomes of a configured entry.
struct EntryVerdict
{
    enum class Kind
    {
        Whole,   ///< every cell comes back, in a block of its own
        Folded,  ///< shares its block with entries that overlap it
        Partial, ///< some cells come back
        None     ///< nothing comes back
    };

    const ProjectEntry* entry = nullptr;
    Kind kind = Kind::None;
    const LayoutBlock* block = nullptr; ///< the block that it became part of; null for none
    CellRanges lost;                    ///< its cells that do not come back

    Words words() const; ///< such as "folded" and "folded into block 2"
};

/// One verdict per entry, in the project's order: the entry's cells compared with the cells that are kept.
/// None in whole-area mode, where entries have no effect. The verdicts point into `layout`.
std::vector<EntryVerdict> entryVerdicts(const Layout& layout);

/// About the mode, the save period and the "DataRetention" object as a whole.
std::vector<Finding> settingsFindings(const ProjectSettings& settings);
/// About single entries, and entries that lose cells to each other.
std::vector<Finding> entryFindings(const Layout& layout);
/// About properties and objects that the module does not read, or reads as their defaults.
std::vector<Finding> propertyFindings(const ProjectSettings& settings);
/// A note that names properties of entries which are read as their defaults, and on which no file depends;
/// empty for none.
QString defaultsNote(const ProjectSettings& settings);
/// The findings about settings, entries and properties, in that order.
std::vector<Finding> projectFindings(const Layout& layout);

/// A note, beginning with `name`, that the project itself has findings; empty when it has none.
QString projectNote(const Layout& layout, const char* name = "The project");

/// The result of checking one file.
struct FileCheck
{
    QString nextStart; ///< what the module will do with the file
    std::vector<Finding> findings;
    bool foreign = false; ///< evidently not written under this project: its values are doubtful
};

FileCheck checkFile(const Layout& layout, const RetentionFile& file);
using FileChecks = std::array<FileCheck, areaCount>;
FileChecks checkFiles(const Layout& layout, const RetentionFiles& files);
/// The findings of all three areas, in order, from FileChecks or AreaReadings.
template <typename OfArea> std::vector<Finding> findingsOf(const std::array<OfArea, areaCount>& areas)
{
    std::vector<Finding> findings;
    for (const OfArea& area : areas)
        findings.insert(findings.end(), area.findings.begin(), area.findings.end());
    return findings;
}

/// Such as "entries 1 "recipe", 2 "counters" and 7 more"; at least one.
QString entriesText(const std::vector<const ProjectEntry*>& entries);

/// Such as "1 cell" or "3 cells".
QString countText(qint64 count, const char* what);
