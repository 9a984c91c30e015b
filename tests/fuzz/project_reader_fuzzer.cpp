// Fuzzes project files: for any bytes, the reader must return either a project or one message.
// SPDX-License-Identifier: MIT
#include "project_tree/project_reader.h"
#include "tests/fuzz/fuzz_check.h"

#include <QtCore/QBuffer>

#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    QByteArray bytes(reinterpret_cast<const char*>(data), static_cast<int>(size));
    QBuffer device(&bytes);
    FUZZ_CHECK(device.open(QIODevice::ReadOnly));
    const ProjectReading reading = readProject(device, QStringLiteral("project.xml"));
    FUZZ_CHECK((reading.project != nullptr) == reading.error.isEmpty());
    FUZZ_CHECK(reading.project || reading.error.startsWith(QStringLiteral("project.xml:")));
    return 0;
}
