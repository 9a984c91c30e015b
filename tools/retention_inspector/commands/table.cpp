// The table of the commands.
// SPDX-License-Identifier: MIT
#include "tools/retention_inspector/command.h"

#include "tools/retention_inspector/difference.h"
#include "tools/retention_inspector/file_check.h"
#include "tools/retention_inspector/inputs.h"
#include "tools/retention_inspector/layout_report.h"
#include "tools/retention_inspector/map_file.h"
#include "tools/retention_inspector/migration.h"
#include "tools/retention_inspector/show_report.h"
#include "tools/retention_inspector/wear.h"

namespace {

QString project(const Invocation& invocation)
{
    return invocation.arguments.first();
}

CommandResult runLayout(const Invocation& invocation)
{
    const LayoutInput input = readLayout(project(invocation));
    if (!input.error.isEmpty())
        return {{}, input.error};
    return {layoutReport(input.layout), {}};
}

CommandResult runShow(const Invocation& invocation)
{
    const LayoutInput input = readLayout(project(invocation));
    if (!input.error.isEmpty())
        return {{}, input.error};
    const FilesInput files = readFiles(invocation.arguments.at(1), Unreadable::IsAnError);
    if (!files.error.isEmpty())
        return {{}, files.error};
    const SelectionInput selection = readSelection(invocation);
    if (!selection.error.isEmpty())
        return {{}, selection.error};
    return {showReport(input.layout, files.files, selection.selection), {}};
}

CommandResult runCheck(const Invocation& invocation)
{
    const LayoutInput input = readLayout(project(invocation));
    if (!input.error.isEmpty())
        return {{}, input.error};
    const FilesInput files = readFiles(invocation.arguments.at(1), Unreadable::IsAFinding);
    if (!files.error.isEmpty())
        return {{}, files.error};
    return {checkReport(input.layout, files.files), {}};
}

CommandResult runMigrate(const Invocation& invocation)
{
    const LayoutInput from = readLayout(project(invocation));
    const LayoutInput to = readLayout(invocation.arguments.at(1));
    for (const LayoutInput* input : {&from, &to})
        if (!input->error.isEmpty())
            return {{}, input->error};
    const FilesInput files = readFiles(invocation.arguments.at(2), Unreadable::IsAnError);
    if (!files.error.isEmpty())
        return {{}, files.error};
    if (!invocation.has("output"))
        return {{}, QStringLiteral("migrate: expected --output DIR, a new directory for the files")};
    const Migration migration = planMigration(from.layout, to.layout, files.files);
    const QString error = writeNewFiles(migration, invocation.option("output"));
    if (!error.isEmpty())
        return {{}, error};
    return {migrationReport(migration, invocation.option("output")), {}};
}

CommandResult runDiff(const Invocation& invocation)
{
    const LayoutInput input = readLayout(project(invocation));
    if (!input.error.isEmpty())
        return {{}, input.error};
    const FilesInput first = readFiles(invocation.arguments.at(1), Unreadable::IsAnError);
    const FilesInput second = readFiles(invocation.arguments.at(2), Unreadable::IsAnError);
    for (const FilesInput* files : {&first, &second})
        if (!files->error.isEmpty())
            return {{}, files->error};
    return {differenceReport(input.layout, first.files, second.files), {}};
}

CommandResult runWear(const Invocation& invocation)
{
    const LayoutInput input = readLayout(project(invocation));
    if (!input.error.isEmpty())
        return {{}, input.error};
    const WearInput question = readWearQuestion(invocation);
    if (!question.error.isEmpty())
        return {{}, question.error};
    if (input.layout.settings.mode == RetentionMode::PerAddress && !invocation.has("changes-per-hour"))
        return {
            {},
            QStringLiteral("wear: expected --changes-per-hour N, because this project writes every change")};
    return {wearReport(input.layout, question.question), {}};
}

CommandResult runMap(const Invocation& invocation)
{
    const LayoutInput input = readLayout(project(invocation));
    if (!input.error.isEmpty())
        return {{}, input.error};
    if (!invocation.has("output"))
        return {{}, QStringLiteral("map: expected --output FILE.svg")};
    return writeMap(input.layout, project(invocation), invocation.option("output"), invocation.has("force"));
}

} // namespace

const std::vector<CommandForm>& commandForms()
{
    static const std::vector<CommandForm> forms = {
        {"layout",
         {QStringLiteral("PROJECT.xml")},
         "mode, files, blocks and a verdict on every entry of a project",
         "Shows what a project retains: the mode, the blocks of each file with addresses, offset and bit, "
         "and\n"
         "what becomes of every entry. Each finding says how to change the project.",
         "project.xml\nproject.xml --format json",
         {},
         runLayout},
        {"show",
         {QStringLiteral("PROJECT.xml"), QStringLiteral("DIR")},
         "kept values by address",
         "Shows the values in the files of DIR by address.",
         "project.xml /usr/tavrin/project\nproject.xml copy --area LW --address 100-109",
         {{"area", "AREA", "Only this area: LB, LW or RWI."},
          {"address", "A[-B]", "Only these addresses, such as 100 or 100-109."}},
         runShow},
        {"check",
         {QStringLiteral("PROJECT.xml"), QStringLiteral("DIR")},
         "do the files fit the project, and what happens at the next start",
         "Checks the files of DIR against the project: missing, empty, shorter, longer, of the other mode, "
         "bits\n"
         "set behind the last cell. Says what the next start makes of each file.",
         "project.xml /usr/tavrin/project",
         {},
         runCheck},
        {"migrate",
         {QStringLiteral("OLD.xml"), QStringLiteral("NEW.xml"), QStringLiteral("DIR")},
         "new files for a changed project, with the kept values carried over",
         "Reads the files of DIR by the project OLD.xml and makes a new directory with the files that "
         "NEW.xml\n"
         "needs. Every cell that both projects retain keeps its value, by address; the others are 0. Lists "
         "what\n"
         "was carried, new and dropped. Nothing is overwritten; on an error nothing is made.",
         "old.xml new.xml /usr/tavrin/project --output carried",
         {{"output", "DIR2", "The directory to make; it must not exist, or be empty."}},
         runMigrate},
        {"diff",
         {QStringLiteral("PROJECT.xml"), QStringLiteral("DIR1"), QStringLiteral("DIR2")},
         "kept values that differ between two directories",
         "Compares the values in the files of two directories by address. Exit status 1 when any differs.",
         "project.xml monday friday\nproject.xml monday friday --format csv",
         {},
         runDiff},
        {"wear",
         {QStringLiteral("PROJECT.xml")},
         "bytes and erase blocks written a day, and how long the flash lasts",
         "Counts what the configured mode writes in a day, and with --endurance-cycles the years until the "
         "flash\n"
         "is worn out. Sizes are in bytes, or with K, M or G behind them.",
         "project.xml --changes-per-hour 3600\n"
         "project.xml --changes-per-hour 60 --endurance-cycles 3000 --capacity 4G --erase-block 512K",
         {{"changes-per-hour", "N", "Changes of retained cells per hour; needed for projects with entries."},
          {"endurance-cycles", "N", "Erasures that an erase block survives, from the flash's data sheet."},
          {"capacity", "SIZE", "Capacity over which the flash levels its wear; without it none is assumed."},
          {"erase-block", "SIZE", "Size of an erase block; 128K unless given."},
          {"page", "SIZE", "Smallest piece that is written to the flash; 4K unless given."},
          {"file-system-pages", "N", "Pages that the file system adds to every write; 1 unless given."},
          {"years", "N", "Years that the flash must last; 10 unless given."}},
         runWear},
        {"map",
         {QStringLiteral("PROJECT.xml")},
         "a picture of the three files",
         "Draws the files as an SVG picture: blocks in colour with addresses at their edges, lost cells "
         "hatched.",
         "project.xml --output project.svg",
         {{"output", "FILE.svg", "The picture to make."}, {"force", nullptr, "Replace an existing picture."}},
         runMap},
    };
    return forms;
}
