// The index file against SQLite (a WITHOUT ROWID table in one transaction,
// no journal, no sync, prepared statements) and LMDB (one write transaction,
// no sync): random signed 64-bit keys (key type 20), pages of 4096 bytes.
// Cases: bulk insertion, point look-ups, GreaterEqual, a full ordered scan.
// NVK_BENCH_KEYS sets the number of keys (default 1000000).
#include <benchmark/benchmark.h>
#include <lmdb.h>
#include <sqlite3.h>

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "nvk/storage/index_file.h"
#include "ratio.h"

namespace {

namespace fs = std::filesystem;

struct Keys {
    std::vector<std::int64_t> stored;
    std::vector<std::int64_t> probes;  // other random keys, for GreaterEqual

    Keys() {
        const char* count = std::getenv("NVK_BENCH_KEYS");
        const long n = count != nullptr ? std::atol(count) : 1000000;
        std::mt19937_64 random(1);
        for (long i = 0; i < n; ++i) {
            stored.push_back(static_cast<std::int64_t>(random()));
            probes.push_back(static_cast<std::int64_t>(random()));
        }
    }
};

const Keys& TheKeys() {
    static const Keys keys;
    return keys;
}

fs::path Folder() {
    static const fs::path folder = [] {
        fs::path path = fs::temp_directory_path() / "nvk_bench_index_file";
        fs::remove_all(path);
        fs::create_directories(path);
        return path;
    }();
    return folder;
}

void Count(benchmark::State& state, std::size_t operations) {
    state.counters["ops/s"] =
        benchmark::Counter(static_cast<double>(operations), benchmark::Counter::kIsRate);
}

// ---- EIndexFile

std::unique_ptr<EIndexFile>& Index() {
    static std::unique_ptr<EIndexFile> index;
    return index;
}

void BuildIndex() {
    const std::string path = (Folder() / "keys.idx").string();
    Index().reset();
    fs::remove(path);
    auto index = std::make_unique<EIndexFile>();
    index->Create(path.c_str(), 4096);
    index->Open(path.c_str());
    index->CreateIndex(8, 20, 0);
    std::uint32_t value = 1;
    for (std::int64_t key : TheKeys().stored) {
        index->Insere(1, &key, value++);
    }
    Index() = std::move(index);
}

EIndexFile& TheIndex() {
    if (!Index()) {
        BuildIndex();
    }
    return *Index();
}

void IndexInsert(benchmark::State& state) {
    for (auto _ : state) {
        BuildIndex();
    }
    Count(state, TheKeys().stored.size());
}

void IndexEqual(benchmark::State& state) {
    EIndexFile& index = TheIndex();
    for (auto _ : state) {
        std::uint64_t sum = 0;
        for (std::int64_t key : TheKeys().stored) {
            sum += index.Equal(1, &key);
        }
        benchmark::DoNotOptimize(sum);
    }
    Count(state, TheKeys().stored.size());
}

void IndexGreaterEqual(benchmark::State& state) {
    EIndexFile& index = TheIndex();
    for (auto _ : state) {
        std::uint64_t sum = 0;
        for (std::int64_t key : TheKeys().probes) {
            sum += index.GreaterEqual(1, &key);
        }
        benchmark::DoNotOptimize(sum);
    }
    Count(state, TheKeys().probes.size());
}

void IndexScan(benchmark::State& state) {
    EIndexFile& index = TheIndex();
    std::size_t seen = 0;
    for (auto _ : state) {
        seen = 0;
        for (unsigned long v = index.First(1); v != 0; v = index.Next()) {
            ++seen;
        }
    }
    Count(state, seen);
}

// ---- SQLite

struct Sqlite {
    sqlite3* db = nullptr;
    ~Sqlite() { sqlite3_close(db); }
};

std::unique_ptr<Sqlite>& SqliteDb() {
    static std::unique_ptr<Sqlite> db;
    return db;
}

sqlite3_stmt* Prepare(sqlite3* db, const char* sql) {
    sqlite3_stmt* statement = nullptr;
    sqlite3_prepare_v2(db, sql, -1, &statement, nullptr);
    return statement;
}

void BuildSqlite() {
    const std::string path = (Folder() / "keys.sqlite").string();
    SqliteDb().reset();
    fs::remove(path);
    auto db = std::make_unique<Sqlite>();
    sqlite3_open(path.c_str(), &db->db);
    sqlite3_exec(db->db,
                 "PRAGMA journal_mode=OFF; PRAGMA synchronous=OFF;"
                 "CREATE TABLE t(k INTEGER NOT NULL PRIMARY KEY, v INTEGER) WITHOUT ROWID;"
                 "BEGIN",
                 nullptr, nullptr, nullptr);
    sqlite3_stmt* insert = Prepare(db->db, "INSERT INTO t VALUES(?, ?)");
    std::int64_t value = 1;
    for (std::int64_t key : TheKeys().stored) {
        sqlite3_bind_int64(insert, 1, key);
        sqlite3_bind_int64(insert, 2, value++);
        sqlite3_step(insert);
        sqlite3_reset(insert);
    }
    sqlite3_finalize(insert);
    sqlite3_exec(db->db, "COMMIT", nullptr, nullptr, nullptr);
    SqliteDb() = std::move(db);
}

sqlite3* TheSqlite() {
    if (!SqliteDb()) {
        BuildSqlite();
    }
    return SqliteDb()->db;
}

void SqliteInsert(benchmark::State& state) {
    for (auto _ : state) {
        BuildSqlite();
    }
    Count(state, TheKeys().stored.size());
}

void SqliteLookups(benchmark::State& state, const char* sql,
                   const std::vector<std::int64_t>& keys) {
    sqlite3_stmt* statement = Prepare(TheSqlite(), sql);
    for (auto _ : state) {
        std::int64_t sum = 0;
        for (std::int64_t key : keys) {
            sqlite3_bind_int64(statement, 1, key);
            if (sqlite3_step(statement) == SQLITE_ROW) {
                sum += sqlite3_column_int64(statement, 0);
            }
            sqlite3_reset(statement);
        }
        benchmark::DoNotOptimize(sum);
    }
    sqlite3_finalize(statement);
    Count(state, keys.size());
}

void SqliteEqual(benchmark::State& state) {
    SqliteLookups(state, "SELECT v FROM t WHERE k = ?", TheKeys().stored);
}

void SqliteGreaterEqual(benchmark::State& state) {
    SqliteLookups(state, "SELECT v FROM t WHERE k >= ? ORDER BY k LIMIT 1", TheKeys().probes);
}

void SqliteScan(benchmark::State& state) {
    sqlite3_stmt* statement = Prepare(TheSqlite(), "SELECT k, v FROM t ORDER BY k");
    std::size_t seen = 0;
    for (auto _ : state) {
        seen = 0;
        while (sqlite3_step(statement) == SQLITE_ROW) {
            seen += sqlite3_column_int64(statement, 1) != 0;
        }
        sqlite3_reset(statement);
    }
    sqlite3_finalize(statement);
    Count(state, seen);
}

// ---- LMDB

struct Lmdb {
    MDB_env* env = nullptr;
    MDB_dbi dbi = 0;
    ~Lmdb() { mdb_env_close(env); }
};

std::unique_ptr<Lmdb>& LmdbDb() {
    static std::unique_ptr<Lmdb> db;
    return db;
}

void BuildLmdb() {
    const std::string path = (Folder() / "keys.lmdb").string();
    LmdbDb().reset();
    fs::remove(path);
    fs::remove(path + "-lock");
    auto db = std::make_unique<Lmdb>();
    mdb_env_create(&db->env);
    mdb_env_set_mapsize(db->env, std::size_t{4} << 30);
    mdb_env_open(db->env, path.c_str(), MDB_NOSUBDIR | MDB_NOSYNC, 0644);
    MDB_txn* txn = nullptr;
    mdb_txn_begin(db->env, nullptr, 0, &txn);
    mdb_dbi_open(txn, nullptr, 0, &db->dbi);
    std::uint32_t value = 1;
    for (std::int64_t key : TheKeys().stored) {
        MDB_val k{sizeof key, &key};
        MDB_val v{sizeof value, &value};
        mdb_put(txn, db->dbi, &k, &v, 0);
        ++value;
    }
    mdb_txn_commit(txn);
    LmdbDb() = std::move(db);
}

Lmdb& TheLmdb() {
    if (!LmdbDb()) {
        BuildLmdb();
    }
    return *LmdbDb();
}

void LmdbInsert(benchmark::State& state) {
    for (auto _ : state) {
        BuildLmdb();
    }
    Count(state, TheKeys().stored.size());
}

void LmdbEqual(benchmark::State& state) {
    Lmdb& db = TheLmdb();
    for (auto _ : state) {
        MDB_txn* txn = nullptr;
        mdb_txn_begin(db.env, nullptr, MDB_RDONLY, &txn);
        std::uint64_t sum = 0;
        for (std::int64_t key : TheKeys().stored) {
            MDB_val k{sizeof key, &key};
            MDB_val v{};
            if (mdb_get(txn, db.dbi, &k, &v) == 0) {
                sum += *static_cast<const std::uint32_t*>(v.mv_data);
            }
        }
        mdb_txn_abort(txn);
        benchmark::DoNotOptimize(sum);
    }
    Count(state, TheKeys().stored.size());
}

void LmdbGreaterEqual(benchmark::State& state) {
    Lmdb& db = TheLmdb();
    for (auto _ : state) {
        MDB_txn* txn = nullptr;
        MDB_cursor* cursor = nullptr;
        mdb_txn_begin(db.env, nullptr, MDB_RDONLY, &txn);
        mdb_cursor_open(txn, db.dbi, &cursor);
        std::uint64_t sum = 0;
        for (std::int64_t key : TheKeys().probes) {
            MDB_val k{sizeof key, &key};
            MDB_val v{};
            if (mdb_cursor_get(cursor, &k, &v, MDB_SET_RANGE) == 0) {
                sum += *static_cast<const std::uint32_t*>(v.mv_data);
            }
        }
        mdb_cursor_close(cursor);
        mdb_txn_abort(txn);
        benchmark::DoNotOptimize(sum);
    }
    Count(state, TheKeys().probes.size());
}

void LmdbScan(benchmark::State& state) {
    Lmdb& db = TheLmdb();
    std::size_t seen = 0;
    for (auto _ : state) {
        MDB_txn* txn = nullptr;
        MDB_cursor* cursor = nullptr;
        mdb_txn_begin(db.env, nullptr, MDB_RDONLY, &txn);
        mdb_cursor_open(txn, db.dbi, &cursor);
        seen = 0;
        MDB_val k{};
        MDB_val v{};
        for (int rc = mdb_cursor_get(cursor, &k, &v, MDB_FIRST); rc == 0;
             rc = mdb_cursor_get(cursor, &k, &v, MDB_NEXT)) {
            ++seen;
        }
        mdb_cursor_close(cursor);
        mdb_txn_abort(txn);
    }
    Count(state, seen);
}

void Register(const char* name, void (*function)(benchmark::State&)) {
    benchmark::RegisterBenchmark(name, function)
        ->Iterations(1)
        ->UseRealTime()
        ->Unit(benchmark::kMillisecond);
}

}  // namespace

int main(int argc, char** argv) {
    Register("insert | EIndexFile", IndexInsert);
    Register("insert | SQLite", SqliteInsert);
    Register("insert | LMDB", LmdbInsert);
    Register("Equal | EIndexFile", IndexEqual);
    Register("Equal | SQLite", SqliteEqual);
    Register("Equal | LMDB", LmdbEqual);
    Register("GreaterEqual | EIndexFile", IndexGreaterEqual);
    Register("GreaterEqual | SQLite", SqliteGreaterEqual);
    Register("GreaterEqual | LMDB", LmdbGreaterEqual);
    Register("scan First/Next | EIndexFile", IndexScan);
    Register("scan First/Next | SQLite", SqliteScan);
    Register("scan First/Next | LMDB", LmdbScan);
    const int result = nvk::bench::RunWithRatios(argc, argv, "EIndexFile");
    Index().reset();
    SqliteDb().reset();
    LmdbDb().reset();
    std::filesystem::remove_all(Folder());
    return result;
}
