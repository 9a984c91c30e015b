// Takes a module and the model of the rules through the same life and reports where they differ.
// SPDX-License-Identifier: MIT
#pragma once

#include "host_interface/host_interface.h"
#include "simulated_host/module_library.h"
#include "simulated_host/simulated_comm.h"
#include "tests/support/kept_files_model.h"
#include "tests/support/retention_files.h"

#include <QtCore/QStringList>

#include <string>

class CheckedLife
{
public:
    /// Opens `project` in a panel with `cells`, on `files`, which must be on the disk. `log`, if not null, is
    /// the host's call log; the module's reads, writes and syncs in it are then compared, too.
    CheckedLife(ModelPointer module, object& project, const MemoryAreas& cells, const Files& files,
                QStringList* log = nullptr);

    void init();
    void save();
    void setCell(const QString& area, int address, ushort value);
    void report(const _ExtendTriggerMsg_t& message);
    /// Ends the module in an orderly way.
    void end() { module.reset(); }

    /// The files that there must be.
    Files files() const { return {account.file(0), account.file(1), account.file(2)}; }
    /// What is wrong with files, syncs and, since the last call, the call log; empty when nothing is.
    std::string difference();
    /// What is wrong with the areas.
    std::string cellDifference() const;

private:
    QStringList* log;
    QStringList accountCalls;
    MemoryAreas accountAreas;
    int syncsBefore;

public:
    ModelPointer module;
    MemoryAreas areas; ///< of the panel
    SimulatedComm comm{areas};
    KeptFilesModel account;
};
