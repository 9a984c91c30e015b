// Hostile projects and files for the inspector: every report must come out in every format, and what it says
// about kept cells must be what the module restores.
// SPDX-License-Identifier: MIT
#include "tests/fuzz/fuzz_check.h"
#include "tests/fuzz/hostile_files.h"
#include "tests/fuzz/kept_files_model.h"
#include "tests/fuzz/project_from_bytes.h"
#include "tests/inspector/memory_file.h"
#include "tests/inspector/report_of.h"
#include "tools/retention_core/kept_values.h"

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

void checkFormats(const Report& report)
{
    for (const ReportFormat& format : reportFormats)
        FUZZ_CHECK(format.write(report).endsWith(QLatin1Char('\n')));
}

/// The same start-up with areas full of zeros and full of ones tells what is restored at all.
void checkKeptCells(const ExpectedProject& project, const Files& files, const std::array<AreaValues, 3>& kept)
{
    static MemoryAreas zeros;
    static MemoryAreas ones;
    for (std::size_t a = 0; a < 3; ++a) {
        auto& memory = zeros.all()[a].memory();
        std::fill(memory.begin(), memory.end(), 0);
        auto& otherMemory = ones.all()[a].memory();
        std::fill(otherMemory.begin(), otherMemory.end(), a == 0 ? 1 : 0xff);
    }
    for (MemoryAreas* const areas : {&zeros, &ones}) {
        KeptFilesModel panel(project, *areas, files);
        panel.open();
        panel.init();
    }
    for (std::size_t a = 0; a < 3; ++a) {
        for (int address = 0; address < MemoryArea::cellCount; ++address) {
            const auto at = static_cast<std::size_t>(address);
            if (kept[a].states[at] == CellState::Kept) {
                FUZZ_CHECK(zeros.all()[a].cell(address) == ones.all()[a].cell(address));
                FUZZ_CHECK(zeros.all()[a].cell(address) ==
                           (a == 0 ? kept[a].values[at] != 0 : kept[a].values[at]));
            }
        }
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    FuzzInput input(data, size);
    const Files bytes = filesFrom(input);
    const auto project = projectFromBytes(input);
    const ExpectedProject expected = expectedOf(*project);
    const Layout layout = makeLayout(readSettings(project.get()));
    FUZZ_CHECK(static_cast<int>(layout.settings.mode) == expected.mode);

    const RetentionFiles files = filesInMemory(bytes);
    checkFormats(reportOf("layout", {layout}));
    checkFormats(reportOf("check", {layout}, {files}));
    checkFormats(reportOf("wear", {layout}, {}, {{"changes-per-hour", QStringLiteral("60")}}));
    const int first = bytes[0] ? bytes[0]->size() % 65516 : 0; // any range; all cells would take too long
    checkFormats(reportOf("show", {layout}, {files},
                          {{"address", QStringLiteral("%1-%2").arg(first).arg(first + 20)}}));
    if (isAffordable(expected))
        checkKeptCells(
            expected, bytes,
            {areaValues(layout, files[0]), areaValues(layout, files[1]), areaValues(layout, files[2])});
    return 0;
}
