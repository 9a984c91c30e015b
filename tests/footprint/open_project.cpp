// Opens a project with 1,000 entries and reports how much memory the module then holds.
// SPDX-License-Identifier: MIT
#include "project_tree/project_tree.h"
#include "simulated_host/module_library.h"
#include "simulated_host/panel.h"
#include "simulated_host/private_directory.h"

#include <fstream>
#include <iostream>
#include <sstream>
#include <string>

#include <malloc.h>

namespace {

/// `entries` ranges of 8 cells, alternating between the three areas, with gaps so that each stays a block.
void addEntries(object& project, int entries)
{
    object& retention = project.addChild(QStringLiteral("DataRetention"));
    retention.setNumber(QStringLiteral("open Save all"), 0);
    const char* const areas[] = {"LB", "LW", "RWI"};
    for (int number = 0; number < entries; ++number) {
        object& entry = retention.addChild(QStringLiteral("Entry"));
        entry.setNumber(QStringLiteral("addressLength"), 8);
        entry.setText(QStringLiteral("addressType"), QStringLiteral("Word"));
        entry.addChild(QStringLiteral("sourceAddress"))
            .setText(QStringLiteral("Link"), QStringLiteral("Local"))
            .setText(QStringLiteral("Block"), QString::fromLatin1(areas[number % 3]))
            .setNumber(QStringLiteral("index"), 10 * number);
    }
}

std::size_t heapInUse()
{
    const auto heap = mallinfo2();
    return heap.uordblks + heap.hblkhd;
}

/// The bytes of the library's file in memory. Read from the kernel, which also knows an emulated program's
/// pages.
std::size_t residentBytes(const std::string& library)
{
    std::ifstream maps("/proc/self/smaps");
    std::string line;
    std::size_t kibibytes = 0;
    bool inLibrary = false;
    while (std::getline(maps, line)) {
        std::istringstream words(line);
        std::string first;
        words >> first;
        if (first.find('-') != std::string::npos)
            inLibrary = line.find(library) != std::string::npos;
        std::size_t amount = 0;
        if (inLibrary && first == "Rss:" && words >> amount)
            kibibytes += amount;
    }
    return 1024 * kibibytes;
}

} // namespace

int main()
{
    const std::string error = enterPrivateUsr().toStdString();
    const ModuleLibrary library(QStringLiteral(MODULE_PATH));
    if (!error.empty() || !library.isLoaded()) {
        std::cerr << "open_project: " << error << library.error().toStdString() << '\n';
        return 2;
    }
    const int entries = 1000;
    object project;
    addEntries(project, entries);
    // The first start creates the files; the second opens and restores them, as every later one does.
    Panel(library, &project).start();
    Panel panel(library, &project);
    panel.open();
    panel.init();
    const std::size_t resident = residentBytes("libpoweroff_protect.so");
    // What the destructor frees is what the module held.
    const std::size_t opened = heapInUse();
    panel.model.reset();
    std::cout << "entries " << entries << "\nheap " << opened - heapInUse() << "\nresident " << resident
              << '\n';
    return 0;
}
