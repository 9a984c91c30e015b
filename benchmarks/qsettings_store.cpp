// QSettings as a store: an INI file that is written anew and moved into place by every sync().
// SPDX-License-Identifier: MIT
#include "benchmarks/bench_host.h"
#include "benchmarks/durable_store.h"

#include <QtCore/QSettings>

namespace {

class QSettingsStore : public DurableStore
{
public:
    QSettingsStore() : settings(QString::fromLatin1(filePath("qsettings.ini")), QSettings::IniFormat)
    {
        settings.clear();
        for (int cell = 0; cell < 10; ++cell)
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
    }

    QSettings settings;
};

} // namespace

std::unique_ptr<DurableStore> makeQSettingsStore()
{
    return std::make_unique<QSettingsStore>();
}
