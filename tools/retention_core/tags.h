// Reads a table of tags: names, types and units of the values that cells hold.
// SPDX-License-Identifier: MIT
#pragma once

#include "tools/retention_core/findings.h"
#include "tools/retention_core/typed_value.h"

#include <vector>

/// One named value.
struct Tag
{
    const AreaFacts* area = nullptr;
    int first = 0; ///< address of its first cell; all its cells lie in the area
    ValueType type;
    QString name; ///< never empty
    QString unit; ///< may be empty
    int line = 0; ///< of the file

    CellRange cells() const { return {first, qint64(first) + type.cells() - 1}; }
};

/// Ascending by area and address; no two share a cell.
struct Tags
{
    QString fileName;
    std::vector<Tag> tags;

    /// The tag that a cell belongs to; null for none.
    const Tag* of(const AreaFacts& area, qint64 cell) const;
};

/// Reads a CSV file with the columns area, address, type, name and optionally unit. Throws a Refusal that
/// names the first few lines in error.
Tags readTags(const QString& path);

/// The area of exactly that name. Throws a Refusal for any other text.
const AreaFacts& areaOf(const QString& text);
/// Parses a number from 0 to 65535. Throws a Refusal for any other text.
int addressOf(const QString& text);

/// Findings about tags of which only some cells are retained, and about those that a power cut may leave half
/// old and half new: across 512-byte sectors of the file, or in two blocks, which are written one after the
/// other.
std::vector<Finding> tagFindings(const Layout& layout, const Tags& tags);

/// Collects messages about single lines of a table, to be thrown as one Refusal.
class LineErrors
{
public:
    void add(const QString& message) { messages.append(message); }
    /// Throws if there are any, and names the first few.
    void refuseIfAny() const;

private:
    QStringList messages;
};
