// Implements a store with SQLite: write-ahead log, synced at every commit.
// SPDX-License-Identifier: MIT
#include "benchmarks/bench_host.h"
#include "benchmarks/durable_store.h"

#include <sqlite3.h>

namespace {

class SqliteStore : public DurableStore
{
public:
    explicit SqliteStore(int cells)
    {
        for (const char* name : {"sqlite.db", "sqlite.db-wal", "sqlite.db-shm"})
            std::remove(filePath(name).constData());
        check(sqlite3_open(filePath("sqlite.db").constData(), &database));
        run("PRAGMA journal_mode=WAL");
        run("PRAGMA synchronous=FULL");
        run("CREATE TABLE cells (cell INTEGER PRIMARY KEY, value INTEGER)");
        run("CREATE TABLE images (image INTEGER PRIMARY KEY, bytes BLOB)");
        run("BEGIN");
        for (int cell = 0; cell < cells; ++cell)
            run(("INSERT INTO cells VALUES (" + std::to_string(cell) + ", 0)").c_str());
        run("COMMIT");
        prepare("UPDATE cells SET value = ?2 WHERE cell = ?1", &update);
        prepare("INSERT OR REPLACE INTO images VALUES (?1, ?2)", &replace);
    }
    ~SqliteStore() override
    {
        sqlite3_finalize(update);
        sqlite3_finalize(replace);
        sqlite3_close(database);
    }
    Q_DISABLE_COPY(SqliteStore)

    void keepCell(int cell, ushort value) override
    {
        check(sqlite3_bind_int(update, 1, cell));
        check(sqlite3_bind_int(update, 2, value));
        step(update);
    }

    void keepImages(int seed) override
    {
        run("BEGIN");
        int image = 0;
        for (const std::vector<char>& bytes : imagesToKeep(seed)) {
            check(sqlite3_bind_int(replace, 1, image++));
            check(sqlite3_bind_blob(replace, 2, bytes.data(), static_cast<int>(bytes.size()), SQLITE_STATIC));
            step(replace);
        }
        run("COMMIT");
    }

private:
    void check(int result)
    {
        if (result != SQLITE_OK && result != SQLITE_DONE)
            storeFailed("SQLite", sqlite3_errmsg(database));
    }
    void run(const char* command) { check(sqlite3_exec(database, command, nullptr, nullptr, nullptr)); }
    void prepare(const char* command, sqlite3_stmt** statement)
    {
        check(sqlite3_prepare_v2(database, command, -1, statement, nullptr));
    }
    void step(sqlite3_stmt* statement)
    {
        check(sqlite3_step(statement));
        check(sqlite3_reset(statement));
    }

    sqlite3* database = nullptr;
    sqlite3_stmt* update = nullptr;
    sqlite3_stmt* replace = nullptr;
};

} // namespace

StorePtr makeSqliteStore(int cells)
{
    return std::make_unique<SqliteStore>(cells);
}
