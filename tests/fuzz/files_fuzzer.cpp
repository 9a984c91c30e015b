// Hostile files and messages: files of any length and content under any project, change messages with any
// name and address, in both modes. Files, cells and syncs must come out as the account of them says.
#include "poweroff_protect/poweroff_protect.h"
#include "simulated_host/shell.h"
#include "simulated_host/simulated_comm.h"
#include "tests/fuzz/fuzz_check.h"
#include "tests/fuzz/fuzz_start.h"
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

using Files = std::array<std::optional<QByteArray>, 3>;

/// Made once: the instrumented loop takes far longer than the rest of a run.
QByteArray patterned(int length, int seed)
{
    static const QByteArray pattern = [] {
        QByteArray bytes(200000, '\0');
        for (int k = 0; k < bytes.size(); ++k)
            bytes[k] = static_cast<char>(k * 7 + k / 256);
        return bytes;
    }();
    return pattern.mid(seed, length);
}

/// No file, one of a few bytes, one of any length, or one as the whole-area mode leaves it.
Files filesFrom(FuzzInput& input)
{
    Files files;
    for (std::size_t a = 0; a < 3; ++a) {
        const int form = input.byte();
        const int image = a == 0 ? 65536 : 131072;
        if (form % 8 == 0)
            files[a] = patterned(image - 1 + form / 8 % 3, form);
        else if (form % 8 == 1)
            files[a] = patterned((input.byte() | input.byte() << 8) * 3, form);
        else if (form % 8 < 6)
            files[a] = input.bytes();
    }
    return files;
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

/// Keeps memory and files small: no block may lie or reach far away.
bool isAffordable(const RetentionModel& model)
{
    const std::int64_t most = 200000;
    std::int64_t total = 0;
    for (std::size_t a = 0; a < 3; ++a) {
        for (const ModelBlock& block : model.blocks[a]) {
            total += std::max(0, block.count) * (a == 0 ? 20 : 1);
            if (std::abs(std::int64_t(block.count)) > most || block.fileOffset > most)
                return false;
        }
    }
    return total <= most;
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
        std::strcpy(message.areaName, modelAreas[form % 4]);
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
    const RetentionModel retention = modelOf(*project);
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
