// Implements the fixture of module tests.
// SPDX-License-Identifier: MIT
#include "tests/support/module_test.h"

#include "simulated_host/remove_directory.h"

#include <QtCore/QDir>
#include <QtCore/QFile>

#include <sys/mount.h>

const ModuleLibrary& moduleLibrary()
{
    const QByteArray other = qgetenv("MODULE_UNDER_TEST");
    static const ModuleLibrary library(other.isEmpty() ? QStringLiteral(MODULE_PATH)
                                                       : QFile::decodeName(other));
    return library;
}

QString retentionPath(const QString& fileName)
{
    return QLatin1String(fixedProjectDirectory) + QLatin1Char('/') + fileName;
}

std::optional<QByteArray> retentionFile(const QString& fileName)
{
    QFile file(retentionPath(fileName));
    if (!file.open(QIODevice::ReadOnly))
        return std::nullopt;
    return file.readAll();
}

void writeRetentionFile(const QString& fileName, const QByteArray& bytes)
{
    QDir().mkpath(QLatin1String(fixedProjectDirectory));
    QFile file(retentionPath(fileName));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly)) << file.errorString().toStdString();
    ASSERT_EQ(file.write(bytes), bytes.size());
}

std::unique_ptr<object> wholeAreaProject(std::optional<qint64> saveAll, std::optional<qint64> saveTime)
{
    auto project = std::make_unique<object>();
    object& retention = project->addChild(QStringLiteral("DataRetention"));
    if (saveAll)
        retention.setNumber(QStringLiteral("open Save all"), *saveAll);
    if (saveTime)
        retention.setNumber(QStringLiteral("Save Time"), *saveTime);
    return project;
}

std::unique_ptr<object> perAddressProject(const std::vector<Entry>& entries)
{
    auto project = std::make_unique<object>();
    object& retention = project->addChild(QStringLiteral("DataRetention"));
    retention.setNumber(QStringLiteral("open Save all"), 0);
    for (const Entry& entry : entries)
        addEntry(retention, entry);
    return project;
}

void addEntry(object& retention, const Entry& entry)
{
    object& node = retention.addChild(QStringLiteral("Entry"));
    node.setNumber(QStringLiteral("addressLength"), entry.length);
    node.addChild(QStringLiteral("sourceAddress"))
        .setText(QStringLiteral("Link"), QStringLiteral("Local"))
        .setText(QStringLiteral("Block"), entry.area)
        .setNumber(QStringLiteral("index"), entry.index);
}

std::vector<std::string> cellsOf(const QList<RegisterValueChangeSize>& records)
{
    std::vector<std::string> cells;
    for (const RegisterValueChangeSize& record : records)
        cells.push_back(std::string(record.areaName) + ' ' + std::to_string(record.address));
    return cells;
}

std::vector<std::string> watchedCells(ExtendFuncModelBase& model)
{
    QList<RegisterValueChangeSize> records;
    model.getMonitorTriggerAddr(records);
    return cellsOf(records);
}

ModuleTest::ModuleTest()
{
    const QByteArray fixed(fixedProjectDirectory);
    while (umount2(fixed.constData(), MNT_DETACH) == 0) {
    }
    removeDirectory(QStringLiteral("/usr/tavrin"));
    setCommandRunner({});
    setCallLog(&calls);
}

ModuleTest::~ModuleTest()
{
    setCallLog(nullptr);
}

std::unique_ptr<Panel> ModuleTest::makePanel(object* project)
{
    EXPECT_TRUE(moduleLibrary().isLoaded()) << moduleLibrary().error().toStdString();
    return std::make_unique<Panel>(moduleLibrary(), project);
}

std::unique_ptr<Panel> ModuleTest::startPanel(object* project)
{
    auto panel = makePanel(project);
    panel->start();
    return panel;
}

QStringList ModuleTest::callsTo(const QStringList& words) const
{
    QStringList result;
    for (const QString& call : calls)
        if (words.contains(call.section(QLatin1Char(' '), 0, 0)))
            result.append(call);
    return result;
}
