// Reading of inputs, with errors that name the input and what to do.
// SPDX-License-Identifier: MIT
#include "tools/retention_inspector/inputs.h"

#include "project_tree/project_reader.h"

#include <QtCore/QFileInfo>

LayoutInput readLayout(const QString& projectFile)
{
    const QFileInfo info(projectFile);
    if (info.exists() && !info.isFile())
        return {{}, QStringLiteral("%1: is not a file; name the project's XML file").arg(projectFile)};
    const ProjectReading reading = readProjectFile(projectFile);
    if (!reading.project)
        return {{}, reading.error};
    return {makeLayout(readSettings(reading.project.get())), {}};
}

FilesInput readFiles(const QString& directory, Unreadable unreadable)
{
    if (!QFileInfo(directory).isDir())
        return {{},
                QStringLiteral("%1: no such directory; name the folder with the files maintenance-*.dat")
                    .arg(directory)};
    FilesInput input{openRetentionFiles(directory), {}};
    for (const RetentionFile& file : input.files)
        if (file.state == RetentionFile::State::Unreadable && unreadable == Unreadable::IsAnError)
            input.error =
                QStringLiteral("%1: %2; make it a readable file, or remove it").arg(file.path, file.error);
    return input;
}

SelectionInput readSelection(const Invocation& invocation)
{
    SelectionInput input;
    if (invocation.has("area")) {
        input.selection.area = areaNamed(invocation.option("area"));
        if (!input.selection.area)
            input.error =
                QStringLiteral("--area \"%1\": expected LB, LW or RWI").arg(invocation.option("area"));
    }
    if (invocation.has("address")) {
        const QStringList ends = invocation.option("address").split(QLatin1Char('-'));
        bool firstOk = false;
        bool lastOk = false;
        const CellRange range = {ends.first().toUShort(&firstOk), ends.last().toUShort(&lastOk)};
        if (ends.size() > 2 || !firstOk || !lastOk || range.first > range.last)
            input.error =
                QStringLiteral("--address \"%1\": expected an address from 0 to 65535, or two such as "
                               "100-109")
                    .arg(invocation.option("address"));
        input.selection.addresses = range;
    }
    return input;
}

namespace {

/// A number, or with `sizes` a size such as 4096 or 128K.
bool readNumber(const QString& text, bool sizes, double& number)
{
    const QString units = QStringLiteral("KMG");
    const int unit = sizes && !text.isEmpty() ? units.indexOf(text.back().toUpper()) : -1;
    bool ok = false;
    number = (unit < 0 ? text : text.left(text.size() - 1)).toDouble(&ok);
    for (int i = 0; i <= unit; ++i)
        number *= 1024;
    return ok;
}

} // namespace

WearInput readWearQuestion(const Invocation& invocation)
{
    const double largest = 1e15;
    double page = 4096;
    double eraseBlock = 131072;
    double fileSystemPages = 1;
    double capacity = 0;
    WearInput input;
    const struct
    {
        const char* name;
        double* value;
        double lowest;
        double highest;
        bool size;
    } options[] = {{"changes-per-hour", &input.question.changesPerHour, 0, 1e9, false},
                   {"endurance-cycles", &input.question.enduranceCycles, 1, largest, false},
                   {"capacity", &capacity, 1, largest, true},
                   {"erase-block", &eraseBlock, 1, 1 << 30, true},
                   {"page", &page, 1, 1 << 30, true},
                   {"file-system-pages", &fileSystemPages, 0, 1000, false},
                   {"years", &input.question.years, 0, 1000, false}};
    for (const auto& option : options) {
        const QString text = invocation.option(option.name);
        if (!invocation.has(option.name))
            continue;
        const bool ok = readNumber(text, option.size, *option.value);
        if (!ok || !(*option.value >= option.lowest && *option.value <= option.highest))
            input.error = QStringLiteral("--%1 \"%2\": expected a number from %3 to %4%5")
                              .arg(QLatin1String(option.name), text, QString::number(option.lowest, 'f', 0),
                                   QString::number(option.highest, 'f', 0),
                                   QLatin1String(option.size ? ", in bytes or with K, M or G" : ""));
    }
    if (!input.error.isEmpty())
        return input;
    input.question.page = static_cast<qint64>(page);
    input.question.eraseBlock = static_cast<qint64>(eraseBlock);
    input.question.fileSystemPages = static_cast<qint64>(fileSystemPages);
    input.question.capacity = static_cast<qint64>(capacity);
    return input;
}
