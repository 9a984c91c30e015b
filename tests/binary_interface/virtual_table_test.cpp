// Compares the virtual table of the shipped binary with the slots in virtual_table.txt.
// SPDX-License-Identifier: MIT
#include "tests/support/module_test.h"

#include <QtCore/QFile>

#include <cstring>

#include <cxxabi.h>
#include <dlfcn.h>
#include <link.h>

namespace {

struct Slot
{
    int number;
    QString supplier;  ///< "module", "inherited" or "runtime"
    QString operation; ///< with its class and parameters
};

std::vector<Slot> recordedSlots()
{
    QFile file(QStringLiteral(VIRTUAL_TABLE_FILE));
    EXPECT_TRUE(file.open(QIODevice::ReadOnly | QIODevice::Text)) << VIRTUAL_TABLE_FILE;
    std::vector<Slot> rows;
    while (!file.atEnd()) {
        const QString row = QString::fromUtf8(file.readLine()).simplified();
        bool isNumber = false;
        const int number = row.section(QLatin1Char(' '), 0, 0).toInt(&isNumber);
        if (isNumber)
            rows.push_back({number, row.section(QLatin1Char(' '), 1, 1), row.section(QLatin1Char(' '), 2)});
        if (isNumber && QT_VERSION >= 0x060000)
            rows.back().operation.replace(QLatin1String("QStringList"), QLatin1String("QList<QString>"));
    }
    return rows;
}

/// The exported symbol at an address, demangled.
std::string symbolAt(const void* address)
{
    Dl_info info{};
    if (dladdr(address, &info) == 0 || info.dli_sname == nullptr)
        return "nothing exported";
    int status = 0;
    const std::unique_ptr<char, void (*)(void*)> text(
        abi::__cxa_demangle(info.dli_sname, nullptr, nullptr, &status), std::free);
    // Both destructors have the same demangled name. D0 marks the one that also frees the memory.
    const bool deleting = std::strstr(info.dli_sname, "D0Ev") != nullptr;
    return (status == 0 ? text.get() : info.dli_sname) + std::string(deleting ? ", deleting" : "");
}

std::string libraryOf(const void* address)
{
    Dl_info info{};
    return dladdr(address, &info) != 0 ? info.dli_fname : "no library";
}

const std::string destructors[] = {"poweroff_protect::~poweroff_protect()",
                                   "poweroff_protect::~poweroff_protect(), deleting"};

void* const* tableOf(const ExtendFuncModelBase* model)
{
    void* const* table = nullptr;
    std::memcpy(&table, model, sizeof table);
    return table;
}

/// The virtual tables of the module object and of the runtime's base class.
class VirtualTable : public ModuleTest
{
protected:
    ModelPointer model = moduleLibrary().createModel();
    void* const* table = tableOf(model.get());
    const ExtendFuncModelBase base;
    void* const* runtimeTable = tableOf(&base);
};

TEST_F(VirtualTable, HasOneEntryForEveryRecordedSlotAndNoMore)
{
    Dl_info info{};
    void* symbol = nullptr;
    ASSERT_NE(dladdr1(const_cast<void**>(table), &info, &symbol, RTLD_DL_SYMENT), 0);
    ASSERT_STREQ(info.dli_sname, "_ZTV16poweroff_protect");
    constexpr std::size_t headerEntries = 2; // offset to top, type information
    const auto entries = static_cast<const ElfW(Sym)*>(symbol)->st_size / sizeof(void*) - headerEntries;
    EXPECT_EQ(entries, recordedSlots().size());
}

TEST_F(VirtualTable, IsSuppliedSlotBySlotAsRecorded)
{
    const std::vector<Slot> rows = recordedSlots();
    ASSERT_EQ(rows.size(), 21U);
    for (std::size_t number = 0; number < rows.size(); ++number) {
        const Slot& slot = rows[number];
        SCOPED_TRACE("slot " + std::to_string(number) + ", recorded as " + slot.operation.toStdString());
        EXPECT_EQ(slot.number, static_cast<int>(number));

        if (slot.supplier == QLatin1String("runtime")) {
            EXPECT_EQ(table[number], runtimeTable[number]) << "found " << symbolAt(table[number]);
            continue;
        }
        EXPECT_NE(table[number], runtimeTable[number]) << "not supplied by the module";
        EXPECT_EQ(libraryOf(table[number]), libraryOf(table)) << "not supplied by the module";
        if (slot.supplier == QLatin1String("module")) {
            const QString name = slot.operation.section(QLatin1String("::"), 1, -1);
            EXPECT_EQ(symbolAt(table[number]),
                      number < 2 ? destructors[number] : "poweroff_protect::" + name.toStdString());
        }
    }
}

TEST_F(VirtualTable, IsDeclaredSlotBySlotAsRecorded)
{
    for (const Slot& slot : recordedSlots()) {
        if (slot.number < 2) // every class has a destructor of its own
            continue;
        EXPECT_EQ(symbolAt(runtimeTable[slot.number]), slot.operation.toStdString())
            << "in slot " << slot.number;
    }
}

} // namespace
