// The embedded engine beside SQLite, LMDB and libmdb on the same 200,000 rows in one run. QUORVEX_BENCH_DATA names a
// folder with PAF_FULL.dat and PAF_POSTZON.dat to use; otherwise a folder is made for the run and removed again.

#include "bench_data.h"

#include "jet/change_group.h"

#include <benchmark/benchmark.h>
#include <malloc.h>
// Old names of its own calls, which are another library's calls.
#undef mdb_open
#undef mdb_close
extern "C" {
#include <mdbtools.h>
}

namespace {

using namespace bench;

constexpr int kUpdates = 10000;

std::u16string QueryFor(const std::string& key) {
    std::u16string query = u"SELECT * From [PAF_FULLAddress] WHERE [FT_Postcode]='";
    return query.append(Wide(key)).append(u"';");
}

void LookUp(benchmark::State& state, jet::Database& database, const std::string& key) {
    jet::Cursor cursor = database.Select(QueryFor(key));
    if (!cursor.Next()) return state.SkipWithError("not found");
    benchmark::DoNotOptimize(cursor.Current().Get(1));
}

void JetOpenLookupClose(benchmark::State& state) {
    const Data& data = TheData();
    std::size_t i = 0;
    std::uint64_t pages = 0;
    for (auto _ : state) {
        jet::Database database = jet::Database::Open(data.Jet("PAF_FULL.dat"), kPassword);
        LookUp(state, database, data.Key(++i));
        pages = std::max(pages, database.PagesRead());
    }
    state.counters["most_pages"] = static_cast<double>(pages);
}
BENCHMARK(JetOpenLookupClose)->Unit(benchmark::kMicrosecond);

bool SqliteLookUp(sqlite3_stmt* statement, const std::string& key) {
    sqlite3_bind_text(statement, 1, key.c_str(), -1, SQLITE_STATIC);
    const bool found = sqlite3_step(statement) == SQLITE_ROW;
    if (found) benchmark::DoNotOptimize(std::string(reinterpret_cast<const char*>(sqlite3_column_text(statement, 1))));
    sqlite3_reset(statement);
    return found;
}

void SqliteOpenLookupClose(benchmark::State& state) {
    const Data& data = TheData();
    std::size_t i = 0;
    for (auto _ : state) {
        sqlite3* db = nullptr;
        sqlite3_open_v2(data.Own("peer.sqlite").c_str(), &db, SQLITE_OPEN_READONLY, nullptr);
        sqlite3_stmt* statement = nullptr;
        sqlite3_prepare_v2(db, "SELECT * FROM full WHERE k=?", -1, &statement, nullptr);
        if (!SqliteLookUp(statement, data.Key(++i))) state.SkipWithError("not found");
        sqlite3_finalize(statement);
        sqlite3_close(db);
    }
}
BENCHMARK(SqliteOpenLookupClose)->Unit(benchmark::kMicrosecond);

bool LmdbLookUp(MDB_env* environment, const std::string& key) {
    MDB_txn* transaction = nullptr;
    mdb_txn_begin(environment, nullptr, MDB_RDONLY, &transaction);
    MDB_dbi table = 0;
    mdb_dbi_open(transaction, nullptr, 0, &table);
    std::string copy = key;
    MDB_val name{copy.size(), copy.data()};
    MDB_val value{};
    const bool found = mdb_get(transaction, table, &name, &value) == 0;
    if (found) benchmark::DoNotOptimize(std::string(static_cast<const char*>(value.mv_data), value.mv_size));
    mdb_txn_abort(transaction);
    return found;
}

MDB_env* OpenLmdb(const Data& data) {
    MDB_env* environment = nullptr;
    mdb_env_create(&environment);
    mdb_env_set_mapsize(environment, std::size_t{1} << 30);
    Check(mdb_env_open(environment, data.Own("peer.lmdb").c_str(), MDB_RDONLY, 0644), "mdb_env_open");
    return environment;
}

void LmdbOpenLookupClose(benchmark::State& state) {
    const Data& data = TheData();
    std::size_t i = 0;
    for (auto _ : state) {
        MDB_env* const environment = OpenLmdb(data);
        if (!LmdbLookUp(environment, data.Key(++i))) state.SkipWithError("not found");
        mdb_env_close(environment);
    }
}
BENCHMARK(LmdbOpenLookupClose)->Unit(benchmark::kMicrosecond);

// libmdb has no look-up by key that can be relied on here: it opens the file, reads the definition and scans.
void LibmdbOpenScanClose(benchmark::State& state) {
    const Data& data = TheData();
    const std::string path = data.Jet("PAF_FULL.dat").string();
    for (auto _ : state) {
        MdbHandle* const file = mdb_open(path.c_str(), MDB_NOFLAGS);
        char name[] = "PAF_FULLAddress";
        MdbTableDef* const table = mdb_read_table_by_name(file, name, MDB_TABLE);
        if (table == nullptr) return state.SkipWithError("no table");
        mdb_read_columns(table);
        std::vector<char> key(MDB_BIND_SIZE);
        mdb_bind_column(table, 1, key.data(), nullptr);
        mdb_rewind_table(table);
        int rows = 0;
        while (rows < 1000 && mdb_fetch_row(table)) ++rows;
        benchmark::DoNotOptimize(rows);
        mdb_free_tabledef(table);
        mdb_close(file);
    }
    state.SetLabel("the first 1000 rows only");
}
BENCHMARK(LibmdbOpenScanClose)->Unit(benchmark::kMicrosecond);

void JetLookup(benchmark::State& state) {
    const Data& data = TheData();
    jet::Database database = jet::Database::Open(data.Jet("PAF_FULL.dat"), kPassword);
    const std::size_t before = mallinfo2().uordblks + mallinfo2().hblkhd;
    std::size_t i = 0;
    for (auto _ : state) LookUp(state, database, data.Key(++i));
    state.counters["memory_kB"] = static_cast<double>(mallinfo2().uordblks + mallinfo2().hblkhd - before) / 1024;
}
BENCHMARK(JetLookup)->Unit(benchmark::kMicrosecond);

void SqliteLookup(benchmark::State& state) {
    const Data& data = TheData();
    sqlite3* db = nullptr;
    sqlite3_open_v2(data.Own("peer.sqlite").c_str(), &db, SQLITE_OPEN_READONLY, nullptr);
    std::size_t i = 0;
    for (auto _ : state) {
        sqlite3_stmt* statement = nullptr;
        sqlite3_prepare_v2(db, "SELECT * FROM full WHERE k=?", -1, &statement, nullptr);
        if (!SqliteLookUp(statement, data.Key(++i))) state.SkipWithError("not found");
        sqlite3_finalize(statement);
    }
    state.counters["memory_kB"] = static_cast<double>(sqlite3_memory_used()) / 1024;
    sqlite3_close(db);
}
BENCHMARK(SqliteLookup)->Unit(benchmark::kMicrosecond);

void LmdbLookup(benchmark::State& state) {
    const Data& data = TheData();
    MDB_env* const environment = OpenLmdb(data);
    std::size_t i = 0;
    for (auto _ : state) {
        if (!LmdbLookUp(environment, data.Key(++i))) state.SkipWithError("not found");
    }
    mdb_env_close(environment);
}
BENCHMARK(LmdbLookup)->Unit(benchmark::kMicrosecond);

void JetBox(benchmark::State& state) {
    const Data& data = TheData();
    jet::Database database = jet::Database::Open(data.Jet("PAF_POSTZON.dat"), kPassword);
    std::size_t i = 0;
    std::size_t rows = 0;
    for (auto _ : state) {
        ++i;
        const std::string query = "SELECT PAF_PostZon.* FROM PAF_PostZon WHERE (((PZ_Long)>" + Number(data.West(i)) +
                                  ") and ((PZ_Long)<" + Number(data.West(i) + 0.182) + ") and ((PZ_Lat)>" +
                                  Number(data.South(i)) + ") and ((PZ_Lat)<" + Number(data.South(i) + 0.182) + "));";
        jet::Cursor cursor = database.Select(Wide(query));
        while (cursor.Next()) {
            benchmark::DoNotOptimize(cursor.Current().Get(0));
            ++rows;
        }
    }
    state.counters["rows"] = static_cast<double>(rows) / static_cast<double>(i);
}
BENCHMARK(JetBox)->Unit(benchmark::kMicrosecond);

void SqliteBox(benchmark::State& state) {
    const Data& data = TheData();
    sqlite3* db = nullptr;
    sqlite3_open_v2(data.Own("peer.sqlite").c_str(), &db, SQLITE_OPEN_READONLY, nullptr);
    std::size_t i = 0;
    std::size_t rows = 0;
    for (auto _ : state) {
        ++i;
        sqlite3_stmt* statement = nullptr;
        sqlite3_prepare_v2(db, "SELECT * FROM zon WHERE lon>? AND lon<? AND lat>? AND lat<?", -1, &statement, nullptr);
        sqlite3_bind_double(statement, 1, data.West(i));
        sqlite3_bind_double(statement, 2, data.West(i) + 0.182);
        sqlite3_bind_double(statement, 3, data.South(i));
        sqlite3_bind_double(statement, 4, data.South(i) + 0.182);
        while (sqlite3_step(statement) == SQLITE_ROW) ++rows;
        sqlite3_finalize(statement);
    }
    state.counters["rows"] = static_cast<double>(rows) / static_cast<double>(i);
    sqlite3_close(db);
}
BENCHMARK(SqliteBox)->Unit(benchmark::kMicrosecond);

std::string UpdateKey(const Data& data, int i) {
    return i % 2 == 0 ? data.Key(static_cast<std::size_t>(i)) : "ZZ" + std::to_string(10000 + i);
}

// 10,000 records, half of them for keys that are there. Range 0: records per transaction.
void JetApply(benchmark::State& state) {
    const Data& data = TheData();
    const std::filesystem::path copy = data.Own("apply.dat");
    for (auto _ : state) {
        state.PauseTiming();
        std::filesystem::copy_file(data.Jet("PAF_FULL.dat"), copy, std::filesystem::copy_options::overwrite_existing);
        state.ResumeTiming();
        jet::OpenOptions options;
        options.writable = true;
        jet::Database database = jet::Database::Open(copy, kPassword, options);
        const jet::Table table = database.OpenTable(u"PAF_FULLAddress");
        jet::ChangeGroup group(database, {.records = static_cast<std::size_t>(state.range(0))});
        const std::u16string address(250, u'N');
        for (int i = 0; i < kUpdates; ++i) {
            const std::u16string key = Wide(UpdateKey(data, i));
            const std::vector<jet::Assignment> row = {{0, key}, {1, address}, {2, u"20260228"}};
            std::u16string criterion = u"[FT_PostCode]='";
            const auto found = table.FindFirst(criterion.append(key).append(u"'"));
            if (found) {
                group.Update(table, *found, row);
            } else {
                group.Insert(table, row);
            }
        }
        group.Commit();
        database.Close();
    }
    std::filesystem::remove(copy);
}
BENCHMARK(JetApply)->Arg(1)->Arg(100)->Arg(kUpdates)->Unit(benchmark::kMillisecond);

void SqliteApply(benchmark::State& state) {
    const Data& data = TheData();
    const std::string copy = data.Own("apply.sqlite");
    for (auto _ : state) {
        state.PauseTiming();
        std::filesystem::copy_file(data.Own("peer.sqlite"), copy, std::filesystem::copy_options::overwrite_existing);
        state.ResumeTiming();
        sqlite3* db = nullptr;
        sqlite3_open(copy.c_str(), &db);
        Run(db, "BEGIN");
        sqlite3_stmt* update = nullptr;
        sqlite3_stmt* add = nullptr;
        sqlite3_prepare_v2(db, "UPDATE full SET k=?1, a=?2, u=?3 WHERE k=?1", -1, &update, nullptr);
        sqlite3_prepare_v2(db, "INSERT INTO full VALUES(?1,?2,?3)", -1, &add, nullptr);
        const std::string address(250, 'N');
        for (int i = 0; i < kUpdates; ++i) {
            const std::string key = UpdateKey(data, i);
            for (sqlite3_stmt* statement : {update, add}) {
                sqlite3_bind_text(statement, 1, key.c_str(), -1, SQLITE_STATIC);
                sqlite3_bind_text(statement, 2, address.c_str(), -1, SQLITE_STATIC);
                sqlite3_bind_text(statement, 3, "20260228", -1, SQLITE_STATIC);
            }
            sqlite3_step(update);
            if (sqlite3_changes(db) == 0) sqlite3_step(add);
            sqlite3_reset(update);
            sqlite3_reset(add);
        }
        sqlite3_finalize(update);
        sqlite3_finalize(add);
        Run(db, "COMMIT");
        sqlite3_close(db);
    }
    std::filesystem::remove(copy);
}
BENCHMARK(SqliteApply)->Unit(benchmark::kMillisecond);

} // namespace

BENCHMARK_MAIN();
