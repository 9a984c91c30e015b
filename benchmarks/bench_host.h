// Declares the benchmarks' host, which does as little as a runtime can, so that the module's own cost shows.
// SPDX-License-Identifier: MIT
#pragma once

#include "host_interface/interface_comm.h"
#include "poweroff_protect/poweroff_protect.h"
#include "project_tree/project_tree.h"

#include <QtCore/QString>

#include <functional>
#include <memory>
#include <vector>

/// One array of cells for every area; the areas' whole memories are separate.
class BenchComm : public InterfaceComm
{
public:
    BenchComm();

    void* getAreaMemory(int areaCode) override;
    int writeRegisterValues(const QString& link, const QString& area, int address, int selector, int count,
                            const ushort* data) override;
    int readRegisterValues(const QString& link, const QString& area, int address, int selector, int count,
                           ushort* data) override;

    std::vector<ushort> cells;                      ///< 65536 of them
    std::vector<std::vector<unsigned char>> images; ///< by whole-area code
};

/// Sets what the module's shell commands do from now on; initially nothing.
void setShell(std::function<void()> run);

/// One configured range.
struct Range
{
    const char* area;
    int index;
    int length;
};

std::unique_ptr<object> wholeAreaProject();
std::unique_ptr<object> perAddressProject(const std::vector<Range>& ranges);
/// `count` blocks of `length` words with a gap after each, not in the order of their addresses.
std::vector<Range> scatteredWordRanges(int count, int length);

/// The module with a project.
class BenchModule
{
public:
    enum Files
    {
        NewFiles,     ///< removes the module's files first
        ExistingFiles ///< other modules may have them open
    };
    explicit BenchModule(std::unique_ptr<object> project, Files files = NewFiles);
    ~BenchModule();

    void start(); ///< the runtime's calls up to extModelInit()
    void change(const char* area, int address);

    BenchComm comm;
    std::unique_ptr<object> project;
    poweroff_protect* module;
};

/// Path of a file in the module's directory.
QByteArray filePath(const char* name);
/// Removes the module's files.
void removeRetentionFiles();
void writeFileBytes(const char* name, const QByteArray& bytes);
