// Keeps chosen contents of the areas "LB", "LW" and "RWI" in three files across power loss.
// SPDX-License-Identifier: MIT
#pragma once

#include "define_header/define_header.h"
#include "host_interface/host_interface.h"
#include "poweroff_protect/maintenance_file_info.h"
#include "poweroff_protect/version.h"

#include <QtCore/QFileInfo>
#include <QtCore/QList>
#include <QtCore/QString>
#include <QtCore/QVector>

#include <fstream>

/// The module object: createModel(), extModelOpen(), extModelInit() and getMonitorTriggerAddr(), then
/// cyclicRun() and addrOptChangeMsg() as things happen, at last deletModel(), all from one thread. Nothing is
/// ever reported: what cannot be made, opened, read or written is not retained, and the rest goes on.
class POWEROFF_PROTECT_EXPORT poweroff_protect : public ExtendFuncModelBase
{
public:
    /// Creates the project directory, with its parents, when it is missing.
    poweroff_protect();
    /// Closes the open files. Saves nothing.
    ~poweroff_protect() override;

    // Calls of the runtime
    /// Reads "DataRetention" below `project`, chooses the mode and, for whole areas, restores them. `project`
    /// and `comm` stay the runtime's and must outlive the module. A second call in whole-area mode ends the
    /// saving.
    void extModelOpen(object* project, QString text, InterfaceComm* comm) override;
    /// In per-address mode makes missing files and restores existing ones. Change messages count from now on.
    void extModelInit() override;
    /// In whole-area mode saves the three areas, then runs "sync". Always returns 0.
    int cyclicRun() override;
    /// Does nothing.
    void rebuildExtModelAddr() override;
    /// Appends one record for every retained cell of the per-address mode: "LB", then "LW", then "RWI".
    void getMonitorTriggerAddr(QList<RegisterValueChangeSize>& watched) override;
    /// Writes the changed cell (in word areas the whole block around it) to the file, then runs "sync".
    /// Null messages, unknown areas, messages before extModelInit() and "LB" 60100 are ignored.
    void addrOptChangeMsg(const _ExtendTriggerMsg_t* msg) override;

    // Whole-area mode
    /// Makes the file `name` at the size of the area with that whole-area code (0 "LW", 1 "LB", 2 "RWI"; any
    /// other has size 0), or empties and refills a shorter one; then opens `file` on it and restores the area
    /// from it.
    void initFile(std::fstream& file, QString name, int areaCode);
    /// Writes the memory of the area with that whole-area code to the beginning of `file`.
    void writeFile(std::fstream& file, int areaCode);

    // Per-address mode: from the project to the blocks
    /// Rebuilds the three block lists from the entries of "DataRetention".
    void initAddrInfo();
    /// Appends the blocks for the entries of one area, which must be sorted by compare(); see partition().
    void memoryPartition(QVector<structMaintenance>& entries, QList<MaintenanceFileInfo>& blocks);
    /// Places the blocks of one area in its file, end to end: sets fileOffset and bitOffset.
    void fileMemoryMap(QList<MaintenanceFileInfo>& blocks);

    // Per-address mode: the files
    /// Opens `file` on the file `fileName` of the project directory unless it is open already. An open file
    /// is left as it is, errors included; a file that cannot be opened leaves the stream closed and failed.
    void checkFile(std::basic_fstream<char>& file, const char* fileName);
    /// Reads `length` bytes at `offset` bytes into `buffer`, which keeps its contents where the file has
    /// none. Running past the end of the file clears the stream's errors.
    void readFile(std::basic_fstream<char>& file, char* buffer, int length, int offset);
    /// Writes `length` bytes at `offset` bytes and hands them to the operating system.
    void writeFile(std::basic_fstream<char>& file, char* buffer, int length, int offset);
    /// Makes a missing file at the length of `blocks` (per-address code 1: bits; 2 and 5: words; any other:
    /// empty) and leaves it closed; leaves an empty file alone; opens any other on `file` and restores
    /// `blocks` from it. What can be neither looked at nor opened restores nothing.
    void initFile(std::basic_fstream<char>& file, QFileInfo& info, QString fileName,
                  QList<MaintenanceFileInfo>& blocks, int perAddressCode);
    /// Restores `blocks` from the module's files, chosen by each block's own area name. A bit whose byte in
    /// the file is zero is not written, so that it keeps the runtime's start value.
    void initMaintenance(QList<MaintenanceFileInfo>& blocks);

    // Per-address mode: changes
    /// Appends one watch record for every cell of `blocks`, under the name `areaName`.
    void _getMonitorTriggerAddr(QList<MaintenanceFileInfo>& blocks, QList<RegisterValueChangeSize>& watched,
                                const char* areaName);
    /// Writes every block of `blocks` that contains the cell `address` through to `file`, then runs "sync",
    /// also when no block does. A null `areaName`, or no communication interface, does nothing at all.
    void poweroffMaintenance(std::basic_fstream<char>& file, QList<MaintenanceFileInfo>& blocks,
                             const char* areaName, int address, const char* fileName);

private:
    friend struct AreaFields;
    friend struct PoweroffProtectLayout;

    // The order is the binary interface.
    InterfaceComm* interfaceComm = nullptr; ///< not owned
    object* projectObject = nullptr;        ///< root of the configuration tree, not owned
    QList<MaintenanceFileInfo> bitFileBlocks;
    QList<MaintenanceFileInfo> wordFileBlocks;
    QList<MaintenanceFileInfo> rwiFileBlocks;
    QFileInfo bitFileInfo;
    QFileInfo wordFileInfo;
    QFileInfo rwiFileInfo;
    std::fstream bitFile;
    std::fstream wordFile;
    std::fstream rwiFile;
    bool modelReady = false;     ///< start-up finished: change messages count
    bool saveAllEnabled = false; ///< whole-area mode
    qint16 saveTimeMinutes = 5;  ///< period of the whole-area saves; negative values pass through
};

/// Makes a module object, for deletModel(). What construction throws reaches the caller.
extern "C" POWEROFF_PROTECT_EXPORT ExtendFuncModelBase* createModel();
/// Destroys a module object that createModel() made. Null is ignored.
extern "C" POWEROFF_PROTECT_EXPORT void deletModel(ExtendFuncModelBase* model);
