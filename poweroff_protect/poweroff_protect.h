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

/// The module object. The runtime calls createModel(), extModelOpen(), extModelInit() and
/// getMonitorTriggerAddr(), then cyclicRun() periodically and addrOptChangeMsg() for each change, and finally
/// deletModel(), all from one thread. Nothing is ever reported: what cannot be created, opened, read or
/// written is not retained, and the rest goes on.
class POWEROFF_PROTECT_EXPORT poweroff_protect : public ExtendFuncModelBase
{
public:
    /// Creates the project directory and its parents if they are missing.
    poweroff_protect();
    /// Closes the open files. Saves nothing.
    ~poweroff_protect() override;

    // Calls of the runtime
    /// Reads "DataRetention" below `project`, chooses the mode and, in whole-area mode, restores the areas.
    /// The runtime owns `project` and `comm`, which must outlive the module. After a second call in
    /// whole-area mode, nothing is saved any more.
    void extModelOpen(object* project, QString text, InterfaceComm* comm) override;
    /// In per-address mode, creates missing files and restores existing ones. From now on change messages are
    /// handled.
    void extModelInit() override;
    /// In whole-area mode, saves the three areas, then runs "sync". Always returns 0.
    int cyclicRun() override;
    /// Does nothing.
    void rebuildExtModelAddr() override;
    /// In per-address mode, appends one record for every retained cell: "LB", then "LW", then "RWI".
    void getMonitorTriggerAddr(QList<RegisterValueChangeSize>& watched) override;
    /// Writes the changed cell (in word areas, the whole block around it) to the file, then runs "sync".
    /// Ignores null messages, unknown areas, "LB" 60100 and messages before extModelInit().
    void addrOptChangeMsg(const _ExtendTriggerMsg_t* msg) override;

    // Whole-area mode
    /// Creates the file `name` with the size of the area that has this whole-area code (0 "LW", 1 "LB", 2
    /// "RWI"; any other has size 0), or empties and refills a shorter one; then opens `file` on it and
    /// restores the area.
    void initFile(std::fstream& file, QString name, int areaCode);
    /// Writes the memory of the area that has this whole-area code to the beginning of `file`.
    void writeFile(std::fstream& file, int areaCode);

    // Per-address mode: from the project to the blocks
    /// Rebuilds the three block lists from the entries of "DataRetention".
    void initAddrInfo();
    /// Appends the blocks for one area's entries, which must be sorted by compare(); see partition().
    void memoryPartition(QVector<structMaintenance>& entries, QList<MaintenanceFileInfo>& blocks);
    /// Places the blocks of one area in its file, end to end: sets fileOffset and bitOffset.
    void fileMemoryMap(QList<MaintenanceFileInfo>& blocks);

    // Per-address mode: the files
    /// Opens `file` on the file `fileName` in the project directory. A stream that is already open is left as
    /// it is, errors included; a file that cannot be opened leaves the stream closed and failed.
    void checkFile(std::basic_fstream<char>& file, const char* fileName);
    /// Reads `length` bytes at byte `offset` into `buffer`, which keeps its contents past the end of the
    /// file. Reading past the end clears the stream's errors.
    void readFile(std::basic_fstream<char>& file, char* buffer, int length, int offset);
    /// Writes `length` bytes at byte `offset` and passes them to the operating system.
    void writeFile(std::basic_fstream<char>& file, char* buffer, int length, int offset);
    /// Creates a missing file at the length of `blocks` (per-address code 1: bits; 2 and 5: words; any other:
    /// empty) and leaves it closed. Leaves an empty file alone. Opens `file` on any other and restores
    /// `blocks` from it. A file that can be neither checked nor opened restores nothing.
    void initFile(std::basic_fstream<char>& file, QFileInfo& info, QString fileName,
                  QList<MaintenanceFileInfo>& blocks, int perAddressCode);
    /// Restores `blocks` from the module's files, chosen by each block's own area name. A bit whose byte in
    /// the file is 0 is not written and so keeps the runtime's start value.
    void initMaintenance(QList<MaintenanceFileInfo>& blocks);

    // Per-address mode: changes
    /// Appends one watch record for every cell of `blocks`, with the area name `areaName`.
    void _getMonitorTriggerAddr(QList<MaintenanceFileInfo>& blocks, QList<RegisterValueChangeSize>& watched,
                                const char* areaName);
    /// Writes every block of `blocks` that contains the cell `address` through to `file`, then runs "sync",
    /// even when no block contains it. Does nothing at all when `areaName` or the communication interface is
    /// null.
    void poweroffMaintenance(std::basic_fstream<char>& file, QList<MaintenanceFileInfo>& blocks,
                             const char* areaName, int address, const char* fileName);

private:
    friend struct AreaFields;
    friend struct PoweroffProtectLayout;

    // The order is part of the binary interface.
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
    bool modelReady = false;     ///< start-up is finished: change messages are handled
    bool saveAllEnabled = false; ///< whole-area mode
    qint16 saveTimeMinutes = 5;  ///< period of the whole-area saves; negative values pass through
};

/// Creates a module object, to be destroyed with deletModel(). Exceptions of the constructor reach the
/// caller.
extern "C" POWEROFF_PROTECT_EXPORT ExtendFuncModelBase* createModel();
/// Destroys a module object that createModel() returned; ignores null.
extern "C" POWEROFF_PROTECT_EXPORT void deletModel(ExtendFuncModelBase* model);
