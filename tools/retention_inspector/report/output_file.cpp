// Writes a new file in one step, or passes the product to standard output.
// SPDX-License-Identifier: MIT
#include "tools/retention_inspector/report/output_file.h"

#include "tools/retention_core/refusal.h"

#include <QtCore/QFileInfo>
#include <QtCore/QSaveFile>

void deliver(const QByteArray& product, const QString& path, bool force, Report& report)
{
    if (path == QLatin1String("-")) {
        report.product = product;
        return;
    }
    if (path.isEmpty())
        throw Refusal(QStringLiteral("--output \"\": expected a new file, or - for standard output"));
    const QFileInfo info(path);
    if ((info.exists() || info.isSymLink()) && (!force || !info.isFile()))
        throw Refusal(QStringLiteral("%1: already exists; name a new file%2")
                          .arg(path, QLatin1String(info.isFile() ? ", or replace it with --force" : "")));
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(product) != product.size() || !file.commit())
        throw Refusal(QStringLiteral("%1: cannot be written: %2").arg(path, file.errorString()));
}

Value placeText(const QString& path)
{
    return {path, path == QLatin1String("-") ? QStringLiteral("standard output") : path};
}
