// Draws the three files of a project as a picture.
// SPDX-License-Identifier: MIT
#include "tools/retention_inspector/report/map_picture.h"

#include "tools/retention_inspector/command.h"
#include "tools/retention_inspector/report/output_file.h"

#include <QtCore/QFileInfo>

namespace {

Report run(const Inputs& inputs)
{
    const QString title = QStringLiteral("%1: %2").arg(QFileInfo(inputs.projects.front().path).fileName(),
                                                       wordsOf(inputs.layout().settings.mode).text);
    const QByteArray picture = mapPicture(inputs.layout(), title);
    Report report = commandNamed(QStringLiteral("layout"))->run(inputs);
    report.tables.clear();
    report.csvTable.clear();
    deliver(picture, inputs.option("output"), inputs.has("force"), report);
    report.facts.push_back({"picture", "Picture", placeText(inputs.option("output"))});
    return report;
}

} // namespace

extern const Command mapCommand = {
    "map",
    {{"PROJECT.xml", Argument::Kind::Project}},
    "a picture of the three files",
    "Draws the files as an SVG picture: blocks in colour with their first and last address, cells that are "
    "not\n"
    "retained hatched.",
    "project.xml --output project.svg\nproject.xml --output - | rsvg-convert -o project.png",
    {{"output", "FILE.svg", "File to create; - for standard output", nullptr, Option::Kind::Required},
     {"force", nullptr, "Replace an existing file"}},
    run};
