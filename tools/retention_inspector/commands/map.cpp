// The command "map".
// SPDX-License-Identifier: MIT
#include "tools/retention_inspector/map_file.h"

#include "tools/retention_inspector/layout_report.h"
#include "tools/retention_inspector/report/map_picture.h"

#include <QtCore/QFileInfo>
#include <QtCore/QSaveFile>

CommandResult writeMap(const Layout& layout, const QString& projectFile, const QString& path, bool force)
{
    const QFileInfo info(path);
    if ((info.exists() || info.isSymLink()) && (!force || !info.isFile()))
        return {{},
                QStringLiteral("%1: exists already; name a new file%2")
                    .arg(path, QLatin1String(info.isFile() ? ", or replace it with --force" : ""))};
    const QByteArray picture = mapSvg(layout, QStringLiteral("%1: %2").arg(QFileInfo(projectFile).fileName(),
                                                                           modeText(layout.settings.mode)));
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(picture) != picture.size() || !file.commit())
        return {{}, QStringLiteral("%1: cannot be written: %2").arg(path, file.errorString())};
    CommandResult result;
    result.report = layoutReport(layout);
    result.report.command = QStringLiteral("map");
    result.report.tables.clear();
    result.report.facts.push_back({QStringLiteral("picture"), QStringLiteral("Picture"), textValue(path)});
    return result;
}
