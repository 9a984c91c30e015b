// retention_inspector: shows, checks, explains and carries over kept values.
// SPDX-License-Identifier: MIT
#include "tools/retention_inspector/command_line.h"

#include <QtCore/QCoreApplication>

#include <cstdio>

namespace {

bool print(const QString& text, FILE* stream)
{
    const QByteArray bytes = text.toUtf8();
    const auto size = static_cast<std::size_t>(bytes.size());
    return std::fwrite(bytes.constData(), 1, size, stream) == size && std::fflush(stream) == 0;
}

} // namespace

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    const Outcome outcome = runInspector(QCoreApplication::arguments());
    print(outcome.err, stderr);
    if (!print(outcome.out, stdout)) {
        std::perror("retention_inspector: standard output");
        return 2;
    }
    return outcome.status;
}
