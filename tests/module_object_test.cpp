// Tests construction, destruction and entry points of the module object.
// SPDX-License-Identifier: MIT
#include "poweroff_protect/version.h"
#include "tests/support/module_test.h"
#include "tests/support/storage.h"

#include <QtCore/QDir>

namespace {

class ModuleObject : public ModuleTest
{
};

bool directoryExists(const char* path)
{
    return QDir(QString::fromLatin1(path)).exists();
}

TEST_F(ModuleObject, CreatesTheProjectDirectoryWithItsParent)
{
    ASSERT_FALSE(directoryExists("/usr/tavrin"));
    const ModelPointer model = moduleLibrary().createModel();
    EXPECT_NE(model, nullptr);
    EXPECT_TRUE(directoryExists(fixedProjectDirectory));
}

TEST_F(ModuleObject, LeavesAnExistingProjectDirectoryAsItIs)
{
    writeRetentionFile(QStringLiteral("other.txt"), "kept");
    const ModelPointer model = moduleLibrary().createModel();
    EXPECT_EQ(QDir(QLatin1String(fixedProjectDirectory)).entryList(QDir::Files),
              QStringList(QStringLiteral("other.txt")));
}

TEST_F(ModuleObject, LivesOnWhenItsDirectoryCannotBeMade)
{
    QDir().mkpath(QStringLiteral("/usr/tavrin"));
    QFile file(QStringLiteral("/usr/tavrin/project"));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    const ModelPointer model = moduleLibrary().createModel();
    EXPECT_NE(model, nullptr);
    EXPECT_FALSE(directoryExists(fixedProjectDirectory));
}

TEST_F(ModuleObject, DestroyingNullDoesNothing)
{
    const auto destroy = moduleLibrary().createModel().get_deleter();
    calls.clear();
    destroy(nullptr);
    EXPECT_EQ(lines(calls), "");
}

TEST_F(ModuleObject, DestroyingAModuleThatWasNeverOpenedWritesNothingAndRunsNothing)
{
    moduleLibrary().createModel().reset();
    const QDir directory = QString::fromLatin1(fixedProjectDirectory);
    EXPECT_EQ(lines(directory.entryList(QDir::Files)) + lines(calls), "");
    startPanel(nullptr);
    EXPECT_NE(lines(directory.entryList(QDir::Files)), "") << "one that was opened does";
    EXPECT_NE(lines(calls), "") << "and calls are recorded";
}

TEST_F(ModuleObject, KeepsTheOperatorLogType)
{
    const ModelPointer model = moduleLibrary().createModel();
    model->setOptLogType(65535);
    EXPECT_EQ(model->getOptLogType(), 65535);
    model->setOptLogType(7);
    EXPECT_EQ(model->getOptLogType(), 7);
}

TEST_F(ModuleObject, OtherCallsOfTheRootInterfaceChangeNothing)
{
    const ModelPointer model = moduleLibrary().createModel();
    model->setOptLogType(3);
    model->keyboardReflash(QStringLiteral("x"));
    model->execComplete(1, QStringLiteral("x"));
    model->exportData();
    model->insertOperatorLog(QStringLiteral("x"));
    model->insertOperatorLog(QStringList(QStringLiteral("x")));
    EXPECT_EQ(model->getOptLogType(), 3);
    EXPECT_EQ(lines(calls), "");
}

TEST_F(ModuleObject, RebuildingDoesNothing)
{
    const auto project = perAddressProject({{LW, 0, 4}});
    const auto panel = startPanel(project.get());
    EXPECT_NE(lines(calls), "") << "what the start called";
    calls.clear();
    panel->model->rebuildExtModelAddr();
    EXPECT_EQ(lines(calls), "");
    EXPECT_EQ(watchedCells(*panel->model).size(), 4U);
}

TEST_F(ModuleObject, TellsItsVersionAsTextAndAsANumber)
{
    const auto parts = QString::fromLatin1(poweroffProtectVersion()).split(QLatin1Char('.'));
    ASSERT_EQ(parts.size(), 3);
    EXPECT_EQ(10000 * parts[0].toInt() + 100 * parts[1].toInt() + parts[2].toInt(),
              POWEROFF_PROTECT_VERSION_NUMBER);
}

} // namespace
