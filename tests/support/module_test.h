// Provides what tests of the module binary share: a fresh fixed directory, the loaded library, files,
// projects, the call log.
// SPDX-License-Identifier: MIT
#pragma once

#include "simulated_host/call_log.h"
#include "simulated_host/panel.h"
#include "simulated_host/private_directory.h"
#include "simulated_host/shell.h"
#include "tests/support/areas.h"

#include <QtCore/QByteArray>
#include <QtCore/QString>
#include <QtCore/QStringList>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

inline const QString LB = QStringLiteral("LB");
inline const QString LW = QStringLiteral("LW");
inline const QString RWI = QStringLiteral("RWI");

inline const char* const bitFileName = testAreas[0].fileName;
inline const char* const wordFileName = testAreas[1].fileName;
inline const char* const rwiFileName = testAreas[2].fileName;

/// The module binary under test, loaded once: the one that the environment variable MODULE_UNDER_TEST names,
/// or that of the build.
const ModuleLibrary& moduleLibrary();

/// Path of a file in the fixed directory.
QString retentionPath(const QString& fileName);
/// The file's bytes; nothing when there is no such file.
std::optional<QByteArray> retentionFile(const QString& fileName);
/// Creates the file, and the directory if necessary.
void writeRetentionFile(const QString& fileName, const QByteArray& bytes);

/// A project whose "DataRetention" has these numbers, each of which may be absent.
std::unique_ptr<object> wholeAreaProject(std::optional<qint64> saveAll, std::optional<qint64> saveTime);

/// One per-address entry.
struct Entry
{
    QString area;
    int index;
    int length;
};
/// A project in per-address mode.
std::unique_ptr<object> perAddressProject(const std::vector<Entry>& entries);
void addEntry(object& retention, const Entry& entry);

/// "AREA ADDRESS" of every watch record.
std::vector<std::string> cellsOf(const QList<RegisterValueChangeSize>& records);
/// The same for the cells that the module asks to watch.
std::vector<std::string> watchedCells(ExtendFuncModelBase& model);

/// Starts every test without /usr/tavrin, with an empty call log that records, and with a shell that only
/// counts.
class ModuleTest : public testing::Test
{
protected:
    ModuleTest();
    ~ModuleTest() override;

    /// A panel that is not started yet.
    std::unique_ptr<Panel> makePanel(object* project);
    /// A panel after the whole start-up.
    std::unique_ptr<Panel> startPanel(object* project);

    /// The recorded calls that begin with one of these words, in order.
    QStringList callsTo(const QStringList& words) const;
    int syncs() const { return calls.count(QStringLiteral("sync")); }

    QStringList calls;
};
