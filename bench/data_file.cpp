// The record file against SQLite: fixed 64-byte records, inserted one by one
// and read back by number in random order, with prepared statements. Each
// insertion of the record file flushes its header to the disk, as its format
// requires, so SQLite is measured twice: in one transaction without journal
// or sync, and with a synchronous transaction per record, which is as
// durable. The disk's own floor is measured too: for each record, the two
// writes an insertion makes (the record at the end, its count at the start)
// and an fsync, the least a durable insertion can cost. NVK_BENCH_RECORDS sets
// the number of records (default 1000).
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <sqlite3.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "nvk/storage/data_file.h"
#include "ratio.h"

namespace {

namespace fs = std::filesystem;

constexpr int kRecordSize = 64;

struct Work {
    std::vector<std::uint32_t> order;  // record numbers from 1, shuffled

    Work() {
        const char* count = std::getenv("NVK_BENCH_RECORDS");
        const long n = count != nullptr ? std::atol(count) : 1000;
        for (long i = 1; i <= n; ++i) {
            order.push_back(static_cast<std::uint32_t>(i));
        }
        std::shuffle(order.begin(), order.end(), std::mt19937(1));
    }
};

const Work& TheWork() {
    static const Work work;
    return work;
}

fs::path Folder() {
    static const fs::path folder = [] {
        fs::path path = fs::temp_directory_path() / "nvk_bench_data_file";
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

void Fill(char* record, std::uint32_t number) {
    std::memset(record, static_cast<char>('a' + number % 26), kRecordSize);
    std::memcpy(record, &number, sizeof number);
}

std::unique_ptr<EDataFile>& Records() {
    static std::unique_ptr<EDataFile> records;
    return records;
}

void RecordsInsert(benchmark::State& state) {
    const std::string path = (Folder() / "records.dat").string();
    for (auto _ : state) {
        Records().reset();
        fs::remove(path);
        auto records = std::make_unique<EDataFile>();
        records->Create(path.c_str(), kRecordSize);
        auto* buffer = static_cast<char*>(records->Open(path.c_str()));
        for (std::size_t i = 1; i <= TheWork().order.size(); ++i) {
            Fill(buffer, static_cast<std::uint32_t>(i));
            records->Insere(nullptr, 0);
        }
        Records() = std::move(records);
    }
    Count(state, TheWork().order.size());
}

void RecordsRead(benchmark::State& state) {
    EDataFile& records = *Records();
    for (auto _ : state) {
        std::uint64_t sum = 0;
        for (std::uint32_t number : TheWork().order) {
            records.Read(number, nullptr);
            sum += static_cast<const unsigned char*>(records.Adresse())[0];
        }
        benchmark::DoNotOptimize(sum);
    }
    Count(state, TheWork().order.size());
}

void WriteAndSync(benchmark::State& state) {
    const std::string path = (Folder() / "records.raw").string();
    for (auto _ : state) {
        fs::remove(path);
        const int fd = ::open(path.c_str(), O_RDWR | O_CREAT | O_TRUNC, 0644);
        char record[kRecordSize];
        for (std::size_t i = 1; i <= TheWork().order.size(); ++i) {
            Fill(record, static_cast<std::uint32_t>(i));
            const auto count = static_cast<std::uint32_t>(i);
            if (::pwrite(fd, record, kRecordSize, static_cast<off_t>(i * kRecordSize)) !=
                    kRecordSize ||
                ::pwrite(fd, &count, sizeof count, 0) != sizeof count || ::fsync(fd) != 0) {
                state.SkipWithError("write or fsync failed");
                break;
            }
        }
        ::close(fd);
    }
    Count(state, TheWork().order.size());
}

struct Sqlite {
    sqlite3* db = nullptr;
    ~Sqlite() { sqlite3_close(db); }
};

std::unique_ptr<Sqlite>& SqliteDb() {
    static std::unique_ptr<Sqlite> db;
    return db;
}

void SqliteInsert(benchmark::State& state, bool durable) {
    const std::string path = (Folder() / "records.sqlite").string();
    for (auto _ : state) {
        SqliteDb().reset();
        fs::remove(path);
        auto db = std::make_unique<Sqlite>();
        sqlite3_open(path.c_str(), &db->db);
        sqlite3_exec(db->db,
                     durable ? "PRAGMA synchronous=FULL;"
                               "CREATE TABLE r(n INTEGER PRIMARY KEY, data BLOB)"
                             : "PRAGMA journal_mode=OFF; PRAGMA synchronous=OFF;"
                               "CREATE TABLE r(n INTEGER PRIMARY KEY, data BLOB); BEGIN",
                     nullptr, nullptr, nullptr);
        sqlite3_stmt* insert = nullptr;
        sqlite3_prepare_v2(db->db, "INSERT INTO r VALUES(?, ?)", -1, &insert, nullptr);
        char record[kRecordSize];
        for (std::size_t i = 1; i <= TheWork().order.size(); ++i) {
            Fill(record, static_cast<std::uint32_t>(i));
            sqlite3_bind_int64(insert, 1, static_cast<std::int64_t>(i));
            sqlite3_bind_blob(insert, 2, record, kRecordSize, SQLITE_STATIC);
            sqlite3_step(insert);
            sqlite3_reset(insert);
        }
        sqlite3_finalize(insert);
        if (!durable) {
            sqlite3_exec(db->db, "COMMIT", nullptr, nullptr, nullptr);
        }
        SqliteDb() = std::move(db);
    }
    Count(state, TheWork().order.size());
}

void SqliteBulkInsert(benchmark::State& state) {
    SqliteInsert(state, false);
}

void SqliteDurableInsert(benchmark::State& state) {
    SqliteInsert(state, true);
}

void SqliteRead(benchmark::State& state) {
    sqlite3_stmt* select = nullptr;
    sqlite3_prepare_v2(SqliteDb()->db, "SELECT data FROM r WHERE n = ?", -1, &select, nullptr);
    for (auto _ : state) {
        std::uint64_t sum = 0;
        for (std::uint32_t number : TheWork().order) {
            sqlite3_bind_int64(select, 1, number);
            if (sqlite3_step(select) == SQLITE_ROW) {
                sum += static_cast<const unsigned char*>(sqlite3_column_blob(select, 0))[0];
            }
            sqlite3_reset(select);
        }
        benchmark::DoNotOptimize(sum);
    }
    sqlite3_finalize(select);
    Count(state, TheWork().order.size());
}

void Register(const char* name, void (*function)(benchmark::State&)) {
    benchmark::RegisterBenchmark(name, function)
        ->Iterations(1)
        ->UseRealTime()
        ->Unit(benchmark::kMillisecond);
}

}  // namespace

int main(int argc, char** argv) {
    Register("insert 64-byte records | EDataFile", RecordsInsert);
    Register("insert 64-byte records | SQLite durable", SqliteDurableInsert);
    Register("insert 64-byte records | SQLite", SqliteBulkInsert);
    Register("insert 64-byte records | write+fsync", WriteAndSync);
    Register("read by number | EDataFile", RecordsRead);
    Register("read by number | SQLite", SqliteRead);
    const int result = nvk::bench::RunWithRatios(argc, argv, "EDataFile");
    Records().reset();
    SqliteDb().reset();
    std::filesystem::remove_all(Folder());
    return result;
}
