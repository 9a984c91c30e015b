// Hostile files and messages: files of any length and content under any project, change messages with any
// name and address, in both modes. Files, cells and syncs must come out as the account of them says.
// SPDX-License-Identifier: MIT
#include "poweroff_protect/poweroff_protect.h"
#include "simulated_host/shell.h"
#include "simulated_host/simulated_comm.h"
#include "tests/fuzz/fuzz_check.h"
#include "tests/fuzz/fuzz_start.h"
#include "tests/fuzz/hostile_files.h"
#include "tests/fuzz/kept_files_model.h"
#include "tests/fuzz/project_from_bytes.h"

#include <QtCore/QFile>

#include <algorithm>
#include <cstring>

namespace {

const char* const fileNames[3] = {"maintenance-bit.dat", "maintenance-word.dat", "maintenance-RWI.dat"};

QString pathOf(std::size_t area)
{
    return QStringLiteral("/usr/tavrin/project/") + QLatin1String(fileNames[area]);
}

void layFiles(const Files& files)
{
    for (std::size_t a = 0; a < 3; ++a) {
        QFile file(pathOf(a));
        if (!files[a])
            file.remove();
        else
            FUZZ_CHECK(file.open(QIODevice::WriteOnly) && file.write(*files[a]) == files[a]->size());
    }
}

std::optional<QByteArray> fileNow(std::size_t area)
{
    QFile file(pathOf(area));
    if (!file.open(QIODevice::ReadOnly))
        return std::nullopt;
    return file.readAll();
}

/// The areas hold something everywhere, so that nothing is mistaken for untouched.
void fillAreas(MemoryAreas& areas)
{
    static const MemoryAreas filled = [] {
        MemoryAreas made;
        for (MemoryArea& area : made.all())
            for (int address = 0; address < MemoryArea::cellCount; ++address)
                area.setCell(address,
                             static_cast<ushort>(area.isBits() ? address % 3 == 0 : address * 11 + 5));
        return made;
    }();
    for (std::size_t a = 0; a < 3; ++a)
        areas.all()[a].memory() = filled.all()[a].memory();
}

_ExtendTriggerMsg_t messageFrom(FuzzInput& input, int form)
{
    _ExtendTriggerMsg_t message;
    std::memset(&message, form, sizeof message); // nothing else of it may matter
    message.address = input.number();
    if (form % 4 < 3) {
        std::strcpy(message.areaName, areaNames[form % 4]);
    } else {
        const QByteArray name = input.bytes();
        std::copy_n(name.constData(), std::min<int>(name.size(), sizeof message.areaName), message.areaName);
    }
    return message;
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    return startFuzzing();
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    FuzzInput input(data, size);
    const Files start = filesFrom(input);
    const QByteArray projectBytes = input.bytes();
    FuzzInput projectInput(reinterpret_cast<const std::uint8_t*>(projectBytes.constData()),
                           static_cast<std::size_t>(projectBytes.size()));
    const auto project = projectFromBytes(projectInput);
    const ExpectedProject retention = expectedOf(*project);
    if (!isAffordable(retention))
        return -1;

    static MemoryAreas areas;
    static MemoryAreas expectedAreas;
    fillAreas(areas);
    fillAreas(expectedAreas);
    SimulatedComm comm(areas);
    KeptFilesModel model(retention, expectedAreas, start);
    layFiles(start);
    const int syncsBefore = commandsRun(QStringLiteral("sync"));

    poweroff_protect module;
    module.extModelOpen(project.get(), QString(), &comm);
    model.open();
    for (bool ready = false; !input.atEnd();) {
        const int form = input.byte();
        if (form % 16 == 0 && !ready) {
            ready = true;
            module.extModelInit();
            model.init();
        } else if (form % 16 == 1) {
            FUZZ_CHECK(module.cyclicRun() == 0);
            model.cyclicRun();
        } else {
            const auto message = messageFrom(input, form >> 4);
            const auto name = QByteArray(message.areaName, sizeof message.areaName);
            for (MemoryAreas* const all : {&areas, &expectedAreas})
                if (MemoryArea* const area = all->named(QString::fromLatin1(name.constData())))
                    area->setCell(message.address, static_cast<ushort>(form * 257));
            module.addrOptChangeMsg(&message);
            model.change(name, message.address);
        }
    }

    FUZZ_CHECK(commandsRun(QStringLiteral("sync")) - syncsBefore == model.syncs());
    for (std::size_t a = 0; a < 3; ++a) {
        FUZZ_CHECK(fileNow(a) == model.file(a));
        FUZZ_CHECK(areas.all()[a].memory() == expectedAreas.all()[a].memory());
    }
    return 0;
}
