// Fuzzes projects, files and options for every command of the inspector. Each must give a refusal or a report
// that says the same in every format, and kept cells must be those that a start restores.
// SPDX-License-Identifier: MIT
#include "tests/fuzz/fuzz_check.h"
#include "tests/fuzz/hostile_files.h"
#include "tests/fuzz/project_from_bytes.h"
#include "tests/fuzz/report_check.h"
#include "tests/support/areas.h"
#include "tests/support/kept_files_model.h"
#include "tests/support/memory_file.h"
#include "tools/retention_core/kept_values.h"
#include "tools/retention_core/refusal.h"
#include "tools/retention_inspector/command.h"

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QJsonArray>

#include <algorithm>
#include <cstring>
#include <set>

namespace {

RetentionFiles filesInMemory(const Files& bytes)
{
    RetentionFiles files;
    for (std::size_t a = 0; a < 3; ++a) {
        if (bytes[a])
            files[a] = memoryFile(areaFacts[a], *bytes[a]);
        else
            files[a].area = &areaFacts[a];
    }
    return files;
}

/// A second set of files to go with a first one. Long files differ in a few bytes: a report of all cells
/// would take too long.
Files otherFiles(const Files& first, Files second)
{
    for (std::size_t a = 0; a < 3; ++a) {
        const int length = std::max(first[a] ? first[a]->size() : 0, second[a] ? second[a]->size() : 0);
        if (length <= 2000)
            continue;
        second[a] = first[a];
        for (int at = 0; second[a] && at < second[a]->size(); at += 16384)
            (*second[a])[at] = static_cast<char>(second[a]->at(at) ^ 1);
    }
    return second;
}

/// The inputs of a command: the second project and the second files are those after the change.
struct World
{
    std::array<Layout, 2> layouts;
    std::array<RetentionFiles, 2> files;
};

const QString tableFile = QStringLiteral("/usr/tavrin/table.csv");

/// Tags or values, or anything at all, for the commands that read a table.
void writeTable(FuzzInput& input)
{
    static const std::array<const char*, 4> heads = {"", "area,address,name,type,value,state\n",
                                                     "area,address,type,name,unit\n", "area,address,value\n"};
    QFile file(tableFile);
    FUZZ_CHECK(file.open(QIODevice::WriteOnly));
    const std::size_t head = input.byte() % heads.size();
    file.write(heads.at(head));
    if (head < 3)
        file.write(input.bytes());
    for (int rows = head < 3 ? 0 : input.byte() % 8; rows > 0; --rows) { // most of them valid
        const int form = input.byte();
        const int address = form % 16 == 15 ? input.number() : input.byte();
        const int value = form % 16 == 14 ? input.number() : input.byte() % 2;
        file.write(testAreas[form % 3].name + (',' + QByteArray::number(address)) + ',' +
                   QByteArray::number(value) + '\n');
    }
}

/// Commands of which an input has led to a report.
std::set<QString> reportedCommands;

/// A value for an option, of the kind that its name in the help promises, or of another.
QString optionValue(const Option& option, FuzzInput& input)
{
    static const QString output = QStringLiteral("/usr/tavrin/output");
    const QString name = QLatin1String(option.value);
    const int form = input.byte();
    if (QLatin1String(option.name) == QLatin1String("output"))
        return output; // nothing else may be written
    if (QLatin1String(option.name) == QLatin1String("tags"))
        return tableFile;
    if (form % 16 == 15)
        return input.text();
    if (name.startsWith(QLatin1String("AREA")))
        return QLatin1String(testAreas[form % 3].name);
    if (name.startsWith(QLatin1String("A["))) // a few cells: all of them would take too long
        return QStringLiteral("%1-%2").arg(form * 8).arg(form * 8 + 40);
    return QString::number(form % 4 == 3 ? input.number() : form + 1) +
           QLatin1String(form % 3 == 2 ? "K" : "");
}

Inputs inputsOf(const Command& command, const World& world, FuzzInput& input)
{
    Inputs inputs;
    for (const Argument& argument : command.arguments) {
        if (argument.count == Argument::Count::AtMostOne && input.byte() % 2 == 0)
            continue;
        switch (argument.kind) {
        case Argument::Kind::Project:
            inputs.projects.push_back(
                {QStringLiteral("project.xml"), world.layouts.at(inputs.projects.size())});
            break;
        case Argument::Kind::Files:
        case Argument::Kind::FilesAsFound:
            inputs.files.push_back(world.files.at(inputs.files.size()));
            break;
        case Argument::Kind::Path:
            inputs.paths.append(QLatin1String(argument.name).startsWith(QLatin1String("DIR"))
                                    ? QStringLiteral("/usr/tavrin/project")
                                    : tableFile);
            break;
        default: // handle the new kind above
            FUZZ_CHECK(!"a kind of argument that this fuzzer knows");
        }
    }
    inputs.options = usualOptions(command);
    writeTable(input);
    for (const Option& option : command.options) {
        const QString name = QLatin1String(option.name);
        const int form = input.byte();
        const bool needed = name == QLatin1String("output") || name == QLatin1String("changes-per-hour") ||
                            name == QLatin1String("address");
        if (form % 4 == 3 || (needed && form % 16 != 1))
            inputs.options.insert(name, option.value ? optionValue(option, input) : QString());
    }
    return inputs;
}

/// Reduces a long table to about a thousand rows at equal distances: formatting it would take minutes.
void thinOut(Table& table, std::size_t first)
{
    const std::size_t distance = table.rows.size() / 1000 + 1;
    std::vector<std::vector<Value>> rows;
    for (std::size_t row = first % distance; row < table.rows.size(); row += distance)
        rows.push_back(std::move(table.rows[row]));
    table.rows = std::move(rows);
}

/// The report of a command in JSON; nothing when the command refused its inputs, with a message. `rows`
/// selects the rows of long tables.
std::optional<QJsonObject> reported(const Command& command, const Inputs& inputs, std::size_t rows)
{
    try {
        Report report = command.run(inputs);
        report.command = QLatin1String(command.name);
        reportedCommands.insert(report.command);
        for (Table& table : report.tables)
            thinOut(table, rows);
        return checkFormats(report);
    } catch (const Refusal& refusal) {
        FUZZ_CHECK(!refusal.message().isEmpty());
        return std::nullopt;
    }
}

/// For each cell of an area, its value after every start, or `untouched` if it keeps what the panel started
/// with.
using RestoredCells = std::array<std::vector<int>, 3>;
const int untouched = -1;

/// Starts with areas full of zeros and full of ones, which shows what is restored at all.
RestoredCells restoredCells(const ExpectedProject& project, const Files& files)
{
    static MemoryAreas zeros;
    static MemoryAreas ones;
    for (std::size_t a = 0; a < 3; ++a) {
        auto& memory = zeros.all()[a].memory();
        std::memset(memory.data(), 0, memory.size());
        std::memset(ones.all()[a].memory().data(), a == 0 ? 1 : 0xff, memory.size());
    }
    for (MemoryAreas* const areas : {&zeros, &ones}) {
        KeptFilesModel panel(project, *areas, files);
        panel.open();
        panel.init();
    }
    RestoredCells cells;
    for (std::size_t a = 0; a < 3; ++a) {
        const unsigned char* const low = zeros.all()[a].memory().data();
        const unsigned char* const high = ones.all()[a].memory().data();
        cells[a].resize(MemoryArea::cellCount);
        for (std::size_t k = 0; k < cells[a].size(); ++k) {
            if (a == 0)
                cells[a][k] = low[k] == high[k] ? low[k] != 0 : untouched;
            else
                cells[a][k] = low[2 * k] == high[2 * k] && low[2 * k + 1] == high[2 * k + 1]
                                  ? low[2 * k] | low[2 * k + 1] << 8
                                  : untouched;
        }
    }
    return cells;
}

bool agrees(const AreaValues& values, const AreaLayout& layout, std::size_t cell, int restored)
{
    const int value = values.values[cell];
    switch (values.states[cell]) {
    case CellState::Kept:
    case CellState::HalfWord:
        return restored == (values.area->bits ? value != 0 : value);
    case CellState::StartValue:
        return restored == untouched && value == 0;
    case CellState::NoValue: // words past the end of the file come back as 0
        return value == 0 && restored <= 0;
    default: // in an unreliable area, and for the ignored bit, an old value may come back
        return value == 0 && (restored == untouched || !layout.problem.isEmpty() ||
                              isIgnoredBit(*values.area, static_cast<int>(cell)));
    }
}

void checkKeptCells(const RestoredCells& restored, const World& world)
{
    for (std::size_t a = 0; a < 3; ++a) {
        const AreaValues values = areaValues(world.layouts[0], world.files[0][a]);
        for (std::size_t cell = 0; cell < restored[a].size(); ++cell)
            FUZZ_CHECK(agrees(values, world.layouts[0].areas[a], cell, restored[a][cell]));
    }
}

/// Checks that "show" shows what comes back.
void checkShown(const QJsonObject& report, const RestoredCells& restored)
{
    for (const QJsonValue& row : report.value(QStringLiteral("cells")).toArray()) {
        const QJsonObject cell = row.toObject();
        if (cell.value(QStringLiteral("state")) != QLatin1String("kept"))
            continue;
        std::size_t a = 0;
        while (cell.value(QStringLiteral("area")) != QLatin1String(testAreas[a].name))
            FUZZ_CHECK(++a < 3);
        const int address = cell.value(QStringLiteral("address")).toInt(-1);
        FUZZ_CHECK(address >= 0 && address < MemoryArea::cellCount);
        const QJsonValue value = cell.value(QStringLiteral("value"));
        const int shown = value.isString() ? value.toString().toInt(nullptr, 0) : value.toInt(); // --hex
        FUZZ_CHECK((a == 0 ? shown != 0 : shown) == restored[a][static_cast<std::size_t>(address)]);
    }
}

/// Checks that the files of "migrate" have the lengths that the new project needs and the values reported as
/// carried.
void checkMigrated(const World& world)
{
    const RetentionFiles made = openRetentionFiles(QStringLiteral("/usr/tavrin/output"));
    for (std::size_t a = 0; a < 3; ++a) {
        FUZZ_CHECK(made[a].size == world.layouts[1].areas[a].fileLength);
        const AreaValues before = areaValues(world.layouts[0], world.files[0][a]);
        const AreaValues after = areaValues(world.layouts[1], made[a]);
        const bool foreign = before.oddBytes > 0 && world.layouts[0].images() != world.layouts[1].images();
        for (std::size_t cell = 0; cell < after.values.size(); ++cell)
            if (after.states[cell] != CellState::NotRetained)
                FUZZ_CHECK(after.values[cell] ==
                           (before.hasValue(cell) && !foreign ? before.values[cell] : 0));
    }
}

} // namespace

extern "C" bool reachedAll()
{
    for (const Command* command : commands())
        if (reportedCommands.count(QLatin1String(command->name)) == 0)
            std::fprintf(stderr, "every input of \"%s\" was refused\n", command->name);
    return reportedCommands.size() == commands().size();
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    FuzzInput input(data, size);
    const Command& command = *commands().at(input.byte() % commands().size());
    const Files bytes = filesFrom(input);
    const Files otherBytes = otherFiles(bytes, filesFrom(input));
    FuzzInput options = input.part();
    FuzzInput otherInput = input.part();
    const auto otherProject = projectFromBytes(otherInput);
    const auto project = projectFromBytes(input);
    const ExpectedProject expected = expectedOf(*project);
    const ExpectedProject otherExpected = expectedOf(*otherProject);

    World world = {{makeLayout(readSettings(project.get())), makeLayout(readSettings(otherProject.get()))},
                   {filesInMemory(bytes), filesInMemory(otherBytes)}};
    FUZZ_CHECK(static_cast<int>(world.layouts[0].settings.mode) == expected.mode);
    if (!isCheckable(expected) || !isCheckable(otherExpected))
        return -1;
    const RestoredCells restored = restoredCells(expected, bytes);
    checkKeptCells(restored, world);
    QDir(QStringLiteral("/usr/tavrin/output")).removeRecursively();
    QFile::remove(QStringLiteral("/usr/tavrin/output"));
    const Inputs inputs = inputsOf(command, world, options);
    const std::optional<QJsonObject> report = reported(command, inputs, size);
    if (report && &command == commandNamed(QStringLiteral("show")))
        checkShown(*report, restored);
    if (report && &command == commandNamed(QStringLiteral("migrate")) && !inputs.has("move") &&
        !inputs.has("by-name"))
        checkMigrated(world);
    return 0;
}
