// Tells whether files fit a project, and what the next start does with them.
// SPDX-License-Identifier: MIT
#include "tools/retention_inspector/command.h"

namespace {

Report run(const Inputs& inputs)
{
    const Layout& layout = inputs.layout();
    Report report;
    report.facts.push_back({"mode", "Mode", layout.settings.mode});
    Table table{"files",
                "file",
                "Files",
                {{"file", "File"},
                 {"bytes", "Bytes"},
                 {"expected", "Expected"},
                 {"fits", "Fits"},
                 {"next_start", "At the next start"}}};
    const FileChecks checks = checkFiles(layout, inputs.files.front());
    report.findings = findingsOf(checks);
    for (std::size_t i = 0; i < checks.size(); ++i) {
        const RetentionFile& file = inputs.files.front()[i];
        const FileCheck& check = checks[i];
        const bool readable = file.state == RetentionFile::State::Readable;
        table.rows.push_back({file.area->fileName, readable ? Value(file.size) : Value(),
                              layout.of(*file.area).fileLength, check.findings.empty() ? "yes" : "no",
                              check.nextStart});
    }
    report.tables.push_back(std::move(table));
    report.addNote(projectNote(layout));
    report.notes.append(QStringLiteral("The files do not record which project they were written for: one of "
                                       "the right length may still hold the values of other cells."));
    return report;
}

} // namespace

extern const Command checkCommand = {
    "check",
    {{"PROJECT.xml", Argument::Kind::Project}, {"DIR", Argument::Kind::FilesAsFound}},
    "whether the files fit the project, and what the next start does with them",
    "Checks the files of DIR against the project: missing, empty, too short, too long, written in the other\n"
    "mode, bits set after the last cell. Says what the next start does with each file.",
    "project.xml /usr/tavrin/project",
    {},
    run};
