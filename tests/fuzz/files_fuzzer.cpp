// Hostile files and messages: files of any length and content under any project, change messages with any
// name and address, in both modes, over several starts with the same project or another one. Files, cells and
// syncs must come out as the account of them says. SPDX-License-Identifier: MIT
#include "poweroff_protect/poweroff_protect.h"
#include "simulated_host/shell.h"
#include "simulated_host/simulated_comm.h"
#include "tests/fuzz/fuzz_check.h"
#include "tests/fuzz/fuzz_start.h"
#include "tests/fuzz/hostile_files.h"
#include "tests/fuzz/project_from_bytes.h"
#include "tests/support/kept_files_model.h"

#include <QtCore/QFile>

#include <algorithm>
#include <cstring>
#include <memory>
#include <utility>

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

/// A panel that runs, and the account of it.
struct Life
{
    /// Switches the panel on, with these files, which are laid already.
    Life(object& project, ExpectedProject retention, const Files& files, SimulatedComm& comm,
         MemoryAreas& expectedAreas)
        : model(std::move(retention), expectedAreas, files), syncsBefore(commandsRun(QStringLiteral("sync")))
    {
        module.extModelOpen(&project, QString(), &comm);
        model.open();
    }

    void checkSyncsAndFiles() const
    {
        FUZZ_CHECK(commandsRun(QStringLiteral("sync")) - syncsBefore == model.syncs());
        for (std::size_t a = 0; a < 3; ++a)
            FUZZ_CHECK(fileNow(a) == model.file(a));
    }

    poweroff_protect module;
    KeptFilesModel model;
    int syncsBefore;
    bool ready = false;
};

void checkAreas(const MemoryAreas& areas, const MemoryAreas& expected)
{
    for (std::size_t a = 0; a < 3; ++a)
        FUZZ_CHECK(areas.all()[a].memory() == expected.all()[a].memory());
}

std::unique_ptr<object> nextProject(FuzzInput& input)
{
    const QByteArray bytes = input.bytes();
    FuzzInput projectInput(reinterpret_cast<const std::uint8_t*>(bytes.constData()),
                           static_cast<std::size_t>(bytes.size()));
    return projectFromBytes(projectInput);
}

const int mostLives = 8;

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    return startFuzzing();
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    FuzzInput input(data, size);
    const Files start = filesFrom(input);
    auto project = nextProject(input);
    if (!isCheckable(expectedOf(*project)))
        return -1;

    static MemoryAreas areas;
    static MemoryAreas expectedAreas;
    SimulatedComm comm(areas);
    fillAreas(areas);
    fillAreas(expectedAreas);
    layFiles(start);
    auto life = std::make_unique<Life>(*project, expectedOf(*project), start, comm, expectedAreas);
    for (int lives = 1; !input.atEnd();) {
        const int form = input.byte();
        if (form % 16 == 0 && !life->ready) {
            life->ready = true;
            life->module.extModelInit();
            life->model.init();
        } else if (form % 16 == 1) {
            FUZZ_CHECK(life->module.cyclicRun() == 0);
            life->model.cyclicRun();
        } else if (form % 16 < 4 && lives < mostLives) { // a restart, with the same project or another one
            ++lives;
            life->checkSyncsAndFiles();
            checkAreas(areas, expectedAreas);
            const Files files = {life->model.file(0), life->model.file(1), life->model.file(2)};
            life.reset();
            for (std::size_t a = 0; a < 3; ++a)
                FUZZ_CHECK(fileNow(a) == files[a]);
            auto other = form % 16 == 2 ? nullptr : nextProject(input);
            if (other && isCheckable(expectedOf(*other)))
                project = std::move(other);
            fillAreas(areas);
            fillAreas(expectedAreas);
            life = std::make_unique<Life>(*project, expectedOf(*project), files, comm, expectedAreas);
        } else {
            const auto message = messageFrom(input, form >> 4);
            const auto name = QByteArray(message.areaName, sizeof message.areaName);
            for (MemoryAreas* const all : {&areas, &expectedAreas})
                if (MemoryArea* const area = all->named(QString::fromLatin1(name.constData())))
                    area->setCell(message.address, static_cast<ushort>(form * 257));
            life->module.addrOptChangeMsg(&message);
            life->model.change(name, message.address);
        }
    }
    life->checkSyncsAndFiles();
    checkAreas(areas, expectedAreas);
    return 0;
}
