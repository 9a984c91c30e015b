// Fuzzes files and messages: files of any length and content under any project, change messages with any name
// and address, in both modes, over several starts with the same project or another one. Files, cells and
// syncs must be as the model says.
// SPDX-License-Identifier: MIT
#include "poweroff_protect/poweroff_protect.h"
#include "tests/fuzz/fuzz_check.h"
#include "tests/fuzz/hostile_files.h"
#include "tests/fuzz/project_from_bytes.h"
#include "tests/support/areas.h"
#include "tests/support/checked_life.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <utility>

namespace {

/// Areas with a value in every cell, so that no change goes unnoticed.
const MemoryAreas& filledAreas()
{
    static const MemoryAreas filled = [] {
        MemoryAreas made;
        for (MemoryArea& area : made.all())
            for (int address = 0; address < MemoryArea::cellCount; ++address)
                area.setCell(address,
                             static_cast<ushort>(area.isBits() ? address % 3 == 0 : address * 11 + 5));
        return made;
    }();
    return filled;
}

_ExtendTriggerMsg_t messageFrom(FuzzInput& input, int form)
{
    _ExtendTriggerMsg_t message;
    std::memset(&message, form, sizeof message); // nothing else of it may matter
    message.address = input.number();
    if (form % 4 < 3) {
        std::strcpy(message.areaName, testAreas[form % 4].name);
    } else {
        const QByteArray name = input.bytes();
        std::copy_n(name.constData(), std::min<int>(name.size(), sizeof message.areaName), message.areaName);
    }
    return message;
}

void check(CheckedLife& life)
{
    const std::string difference = life.difference() + life.cellDifference();
    if (!difference.empty())
        std::fputs(difference.c_str(), stderr);
    FUZZ_CHECK(difference.empty());
}

/// Starts a panel on these files, which are already in place.
std::unique_ptr<CheckedLife> start(object& project, const Files& files)
{
    return std::make_unique<CheckedLife>(ModelPointer(createModel(), deletModel), project, filledAreas(),
                                         files);
}

std::unique_ptr<object> nextProject(FuzzInput& input)
{
    FuzzInput projectInput = input.part();
    return projectFromBytes(projectInput);
}

const int mostLives = 8;

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    FuzzInput input(data, size);
    const Files files = filesFrom(input);
    auto project = nextProject(input);
    if (!isCheckable(expectedOf(*project)))
        return -1;

    layFiles(files);
    auto life = start(*project, files);
    bool ready = false;
    for (int lives = 1; !input.atEnd();) {
        const int form = input.byte();
        if (form % 16 == 0 && !ready) {
            ready = true;
            life->init();
        } else if (form % 16 == 1) {
            life->save();
        } else if (form % 16 < 4 && lives < mostLives) { // a restart, with the same project or another one
            ++lives;
            ready = false;
            life->end();
            check(*life);
            auto other = form % 16 == 2 ? nullptr : nextProject(input);
            if (other && isCheckable(expectedOf(*other)))
                project = std::move(other);
            life = start(*project, life->files());
        } else {
            const auto message = messageFrom(input, form >> 4);
            const auto name = QByteArray(message.areaName, sizeof message.areaName);
            life->setCell(QString::fromLatin1(name.constData()), message.address,
                          static_cast<ushort>(form * 257));
            life->report(message);
        }
    }
    check(*life);
    return 0;
}
