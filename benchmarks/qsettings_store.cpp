// Implements a store with QSettings: every sync() rewrites an INI file and renames it into place; the store
// makes file and directory durable.
// SPDX-License-Identifier: MIT
#include "benchmarks/bench_host.h"
#include "benchmarks/durable_store.h"
#include "simulated_host/private_directory.h"

#include <QtCore/QSettings>

#include <fcntl.h>
#include <unistd.h>

namespace {

class QSettingsStore : public DurableStore
{
public:
    explicit QSettingsStore(int cells)
        : settings(QString::fromLatin1(filePath("qsettings.ini")), QSettings::IniFormat)
    {
        settings.clear();
        for (int cell = 0; cell < cells; ++cell)
            settings.setValue(cellKey(cell), 0);
        sync();
    }

    void keepCell(int cell, ushort value) override
    {
        settings.setValue(cellKey(cell), value);
        sync();
    }

    void keepImages(int seed) override
    {
        int image = 0;
        for (const std::vector<char>& bytes : imagesToKeep(seed))
            settings.setValue(QStringLiteral("images/%1").arg(image++),
                              QByteArray(bytes.data(), static_cast<int>(bytes.size())));
        sync();
    }

private:
    static QString cellKey(int cell) { return QStringLiteral("LW/%1").arg(cell); }

    void sync()
    {
        settings.sync();
        if (settings.status() != QSettings::NoError)
            storeFailed("QSettings", "the file cannot be written");
        synchronise(filePath("qsettings.ini").constData());
        synchronise(fixedProjectDirectory);
    }

    static void synchronise(const char* path)
    {
        const int fd = open(path, O_RDONLY | O_CLOEXEC);
        if (fd < 0 || fsync(fd) != 0)
            storeFailed("QSettings", path);
        close(fd);
    }

    QSettings settings;
};

} // namespace

StorePtr makeQSettingsStore(int cells)
{
    return std::make_unique<QSettingsStore>(cells);
}
