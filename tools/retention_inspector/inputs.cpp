// Reading of inputs, with errors that name the input and what to do.
#include "tools/retention_inspector/inputs.h"

#include "simulated_host/project_reader.h"

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
        input.selection.area = RetentionArea::named(invocation.option("area"));
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
