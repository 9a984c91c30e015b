// Draws the three files of a project as a picture.
// SPDX-License-Identifier: MIT
#include "tools/retention_inspector/report/map_picture.h"

#include "tools/retention_core/refusal.h"
#include "tools/retention_inspector/command.h"

#include <QtCore/QFileInfo>
#include <QtCore/QSaveFile>

namespace {

/// Puts the picture in its place at once or not at all.
void writePicture(const QByteArray& picture, const QString& path, bool force)
{
    const QFileInfo info(path);
    if ((info.exists() || info.isSymLink()) && (!force || !info.isFile()))
        throw Refusal(QStringLiteral("%1: exists already; name a new file%2")
                          .arg(path, QLatin1String(info.isFile() ? ", or replace it with --force" : "")));
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(picture) != picture.size() || !file.commit())
        throw Refusal(QStringLiteral("%1: cannot be written: %2").arg(path, file.errorString()));
}

Report run(const Inputs& inputs)
{
    const QString path = inputs.option("output");
    const QString title = QStringLiteral("%1: %2").arg(QFileInfo(inputs.projects.front().path).fileName(),
                                                       wordsOf(inputs.layout().settings.mode).text);
    const QByteArray picture = mapPicture(inputs.layout(), title);
    Report report = commandNamed(QStringLiteral("layout"))->run(inputs);
    report.tables.clear();
    report.csvTable.clear();
    if (path == QLatin1String("-"))
        report.product = picture;
    else
        writePicture(picture, path, inputs.has("force"));
    report.facts.push_back({"picture", "Picture", path});
    return report;
}

} // namespace

extern const Command mapCommand = {
    "map",
    {{"PROJECT.xml", Argument::Kind::Project}},
    "a picture of the three files",
    "Draws the files as an SVG picture: blocks in colour with addresses at their edges, lost cells hatched.",
    "project.xml --output project.svg\nproject.xml --output - | rsvg-convert -o project.png",
    {{"output", "FILE.svg", "The picture to make; - for standard output", nullptr, Option::Kind::Required},
     {"force", nullptr, "Replace an existing picture"}},
    run};
