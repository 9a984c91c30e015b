// Implements a store with LMDB, synced at every commit, its default.
// SPDX-License-Identifier: MIT
#include "benchmarks/bench_host.h"
#include "benchmarks/durable_store.h"

#include <lmdb.h>

namespace {

class LmdbStore : public DurableStore
{
public:
    explicit LmdbStore(int cells)
    {
        for (const char* name : {"lmdb.db", "lmdb.db-lock"})
            std::remove(filePath(name).constData());
        check(mdb_env_create(&environment));
        check(mdb_env_set_mapsize(environment, 8U << 20));
        check(mdb_env_open(environment, filePath("lmdb.db").constData(), MDB_NOSUBDIR, 0644));
        inTransaction([&] {
            const ushort zero = 0;
            for (int cell = 0; cell < cells; ++cell)
                put(cell, &zero, sizeof zero);
        });
    }
    ~LmdbStore() override { mdb_env_close(environment); }
    Q_DISABLE_COPY(LmdbStore)

    void keepCell(int cell, ushort value) override
    {
        inTransaction([&] { put(cell, &value, sizeof value); });
    }

    void keepImages(int seed) override
    {
        inTransaction([&] {
            int image = 1000000; // past all cells
            for (const std::vector<char>& bytes : imagesToKeep(seed))
                put(image++, bytes.data(), bytes.size());
        });
    }

private:
    static void check(int result)
    {
        if (result != MDB_SUCCESS)
            storeFailed("LMDB", mdb_strerror(result));
    }

    template <typename Change> void inTransaction(Change change)
    {
        check(mdb_txn_begin(environment, nullptr, 0, &transaction));
        check(mdb_dbi_open(transaction, nullptr, MDB_INTEGERKEY, &database));
        change();
        check(mdb_txn_commit(transaction));
    }

    void put(int key, const void* data, std::size_t bytes)
    {
        MDB_val name = {sizeof key, &key};
        MDB_val value = {bytes, const_cast<void*>(data)}; // LMDB only reads it
        check(mdb_put(transaction, database, &name, &value, 0));
    }

    MDB_env* environment = nullptr;
    MDB_txn* transaction = nullptr;
    MDB_dbi database = 0;
};

} // namespace

StorePtr makeLmdbStore(int cells)
{
    return std::make_unique<LmdbStore>(cells);
}
