// The table of the commands.
#include "tools/retention_inspector/commands.h"

#include "tools/retention_inspector/file_check.h"
#include "tools/retention_inspector/inputs.h"
#include "tools/retention_inspector/layout_report.h"
#include "tools/retention_inspector/show_report.h"

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
    };
    return forms;
}
