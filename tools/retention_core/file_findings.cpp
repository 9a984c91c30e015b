// Checks a file against the layout and predicts what the next start does with it.
// SPDX-License-Identifier: MIT
#include "tools/retention_core/findings.h"
#include "tools/retention_core/kept_values.h"

#include <algorithm>

namespace {

const auto error = Finding::Severity::Error;
const auto warning = Finding::Severity::Warning;

const char* const anotherProject =
    "If it was written for another project, carry its values over with \"migrate\" before the next start.";
const char* const keepsItsLength =
    "No action needed if the panel has been running with this longer file: the module never shortens a file.";

/// Collects the check of one file.
struct Checking
{
    const AreaLayout& area;
    const RetentionFile& file;
    FileCheck result = {};

    QString name() const { return QString::fromLatin1(area.area->name); }
    QString startValues() const { return QStringLiteral("%1 keeps the panel's start values").arg(name()); }

    void add(Finding::Severity severity, const char* kind, const QString& problem, const QString& remedy,
             const CellRanges& cells = {})
    {
        result.findings.push_back({severity, kind, file.path, problem, remedy, name(), cells});
    }
    void addForeign(Finding::Severity severity, const char* kind, const QString& problem,
                    const CellRanges& cells = {})
    {
        add(severity, kind, problem, QString::fromLatin1(anotherProject), cells);
        result.foreign = true;
    }
};

void checkMissing(Checking& check)
{
    check.result.nextStart =
        QStringLiteral("created with %1; %2")
            .arg(countText(check.area.fileLength, "zero byte"),
                 check.area.image ? QStringLiteral("all of %1 starts at 0").arg(check.name())
                                  : check.startValues());
    if (!check.area.kept.isEmpty())
        check.add(error, "missing", QStringLiteral("the file does not exist."),
                  QStringLiteral("No action needed on a new panel. Otherwise copy the panel's file here."));
}

void checkUnreadable(Checking& check)
{
    const QString consequence =
        check.area.image ? QStringLiteral("%1 is neither restored nor saved").arg(check.name())
        : check.area.area->bits
            ? check.startValues() + QLatin1String(" and nothing is written")
            : QStringLiteral("the retained %1 cells start at 0 and nothing is written").arg(check.name());
    check.result.nextStart =
        QStringLiteral("if it cannot be opened on the panel either, %1").arg(consequence);
    check.add(error, "unreadable", check.file.error + QLatin1Char('.'),
              QStringLiteral("Replace it with a readable and writable file, or remove it."));
}

void checkImage(Checking& check)
{
    const qint64 size = check.file.size;
    const qint64 expected = check.area.fileLength;
    const QString bytes = countText(size, "byte");
    if (size < expected) {
        check.result.nextStart =
            QStringLiteral("emptied and filled with zeros; all of %1 starts at 0").arg(check.name());
        check.addForeign(
            error, size == 0 ? "empty" : "shorter",
            QStringLiteral(
                "it has %1, fewer than the area's %2: the next start empties it, and its values are lost.")
                .arg(bytes)
                .arg(expected));
        check.result.foreign = size > 0;
        return;
    }
    check.result.nextStart = QStringLiteral("restored");
    if (size > expected)
        check.add(warning, "longer",
                  QStringLiteral("it has %1, more than the area's %2; the rest is neither read nor written.")
                      .arg(bytes)
                      .arg(expected),
                  QString::fromLatin1(keepsItsLength));
}

/// The length of a file with at least one byte.
void checkLength(const Layout& layout, Checking& check)
{
    const AreaLayout& area = check.area;
    const qint64 size = check.file.size;
    const QString bytes = countText(size, "byte");
    if (size == area.fileLength)
        return;
    if (size == area.area->imageBytes) {
        check.result.nextStart = QLatin1String("its first ") + countText(area.fileLength, "byte") +
                                 QLatin1String(area.fileLength == 1 ? " is restored as if it were a block"
                                                                    : " are restored as if they were blocks");
        check.addForeign(error, "other-mode",
                         QStringLiteral("it has the length of a whole-area image, but the project retains "
                                        "address ranges: its values go to the wrong addresses."));
    } else if (size < area.fileLength) {
        const AreaValues values = areaValues(layout, check.file);
        const CellRanges half = values.cellsIn(CellState::HalfWord);
        const CellRanges missing = values.cellsIn(CellState::NoValue);
        check.result.nextStart =
            QStringLiteral("restored as far as it goes; %1")
                .arg(QLatin1String(area.area->bits ? "the rest keeps the panel's start values"
                                                   : "the rest starts at 0"));
        QString lost;
        if (!half.isEmpty())
            lost = QStringLiteral(": only the low byte of %1 %2, which therefore starts at %3")
                       .arg(check.name(), half.text())
                       .arg(values.values[static_cast<std::size_t>(half.begin()->first)]);
        if (!missing.isEmpty())
            lost += QStringLiteral("%1 no value for %2 %3")
                        .arg(QLatin1String(half.isEmpty() ? ":" : ";"), check.name(), missing.text());
        check.addForeign(
            error, "shorter",
            QStringLiteral("it has %1 instead of %2%3.").arg(bytes).arg(area.fileLength).arg(lost),
            area.kept.minus(values.cellsIn(CellState::Kept)).minus(values.cellsIn(CellState::StartValue)));
    } else {
        check.addForeign(warning, "longer",
                         QStringLiteral("it has %1 instead of %2, so it was written for another project, and "
                                        "its values may belong to other cells.")
                             .arg(bytes)
                             .arg(area.fileLength));
    }
}

void checkBlocks(const Layout& layout, Checking& check)
{
    const bool nothingKept = check.area.kept.isEmpty();
    if (check.file.size == 0) {
        check.result.nextStart = QStringLiteral("left empty; ") + check.startValues();
        if (!nothingKept)
            check.add(error, "empty", QStringLiteral("the file is empty, so nothing is restored."),
                      QStringLiteral("If its values are not needed, do nothing: the first change fills the "
                                     "file. Otherwise copy the panel's file here."));
        return;
    }
    check.result.nextStart = QString::fromLatin1(nothingKept ? "nothing to restore" : "restored");
    checkLength(layout, check);
    if (const qint64 bits = strayBits(layout, check.file))
        check.addForeign(error, "bits-after-last-cell",
                         QStringLiteral("%1 set after the last cell, which this project never does: the file "
                                        "was written for another project.")
                             .arg(countText(bits, "bit") + QLatin1String(bits == 1 ? " is" : " are")));
}

} // namespace

FileCheck checkFile(const Layout& layout, const RetentionFile& file)
{
    Checking check{layout.of(*file.area), file};
    if (file.state == RetentionFile::State::Missing)
        checkMissing(check);
    else if (file.state == RetentionFile::State::Unreadable)
        checkUnreadable(check);
    else if (check.area.image)
        checkImage(check);
    else
        checkBlocks(layout, check);
    return check.result;
}

FileChecks checkFiles(const Layout& layout, const RetentionFiles& files)
{
    FileChecks checks;
    std::transform(files.begin(), files.end(), checks.begin(),
                   [&layout](const RetentionFile& file) { return checkFile(layout, file); });
    return checks;
}

QString countText(qint64 count, const char* what)
{
    return QStringLiteral("%1 %2%3").arg(count).arg(QLatin1String(what),
                                                    QLatin1String(count == 1 ? "" : "s"));
}
