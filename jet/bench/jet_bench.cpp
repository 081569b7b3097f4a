// The embedded engine beside SQLite, LMDB and libmdb on the same 200,000 rows in one run. QUORVEX_BENCH_DATA names a
// folder with PAF_FULL.dat and PAF_POSTZON.dat to use; otherwise a folder is made for the run and removed again.

#include "jet/change_group.h"
#include "jet/text.h"

#include <benchmark/benchmark.h>
#include <lmdb.h>
// Old names of its own calls, which are another library's calls.
#undef mdb_open
#undef mdb_close
extern "C" {
#include <mdbtools.h>
}
#include <sqlite3.h>

#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <malloc.h>
#include <random>
#include <string>
#include <vector>

namespace {

constexpr std::u16string_view kPassword = u"lanternfox";
constexpr int kRows = 200000;
constexpr int kUpdates = 10000;

struct Row {
    std::string key;
    std::string address;
    std::string update;
};

std::u16string Wide(std::string_view text) {
    return std::u16string(text.begin(), text.end());
}

std::string Number(double value) {
    char buffer[40];
    return std::string(buffer, std::to_chars(buffer, buffer + sizeof buffer, value).ptr);
}

void Check(int code, const char* what) {
    if (code == 0) return;
    std::fprintf(stderr, "%s: error %d\n", what, code);
    std::exit(1);
}

void Run(sqlite3* db, const char* text) {
    Check(sqlite3_exec(db, text, nullptr, nullptr, nullptr), text);
}

// The data, once for all benchmarks.
class Data {
  public:
    Data() {
        own_ = std::filesystem::temp_directory_path() / ("jet-bench-" + std::to_string(std::random_device{}()));
        std::filesystem::create_directories(own_);
        if (const char* given = std::getenv("QUORVEX_BENCH_DATA")) {
            folder_ = given;
        } else {
            folder_ = own_;
            MakeJet();
        }
        Load();
        MakeSqlite();
        MakeLmdb();
    }
    ~Data() {
        std::error_code ignored;
        std::filesystem::remove_all(own_, ignored);
    }
    Data(const Data&) = delete;
    Data& operator=(const Data&) = delete;

    std::filesystem::path Jet(const char* name) const { return folder_ / name; }
    std::string Own(const char* name) const { return (own_ / name).string(); }
    const std::string& Key(std::size_t i) const { return keys_[i * 7919 % keys_.size()]; }
    std::size_t size() const { return keys_.size(); }
    double West(std::size_t i) const { return points_[i * 104729 % points_.size()].first - 0.091; }
    double South(std::size_t i) const { return points_[i * 104729 % points_.size()].second - 0.091; }

  private:
    void MakeJet() {
        using enum jet::ColumnType;
        std::mt19937_64 random(1);
        jet::Database full = jet::Database::Create(folder_ / "PAF_FULL.dat", kPassword);
        full.Begin();
        jet::Table table = full.CreateTable({u"PAF_FULLAddress",
                                             {{.name = u"FT_Postcode", .length = 10},
                                              {.name = u"FT_Address", .type = kMemo},
                                              {.name = u"FT_Update", .length = 8}},
                                             {{.name = u"PrimaryKey", .columns = {u"FT_Postcode"}, .primary = true}}});
        jet::Database zon = jet::Database::Create(folder_ / "PAF_POSTZON.dat", kPassword);
        zon.Begin();
        jet::Table points = zon.CreateTable({u"PAF_PostZon",
                                             {{.name = u"PZ_Postcode", .length = 10},
                                              {.name = u"PZ_OSRef", .length = 12},
                                              {.name = u"PZ_Lat", .type = kDouble},
                                              {.name = u"PZ_Long", .type = kDouble}},
                                             {{.name = u"PrimaryKey", .columns = {u"PZ_Postcode"}, .primary = true},
                                              {.name = u"PZ_Lat", .columns = {u"PZ_Lat"}},
                                              {.name = u"PZ_Long", .columns = {u"PZ_Long"}}}});
        for (int i = 0; i < kRows; ++i) {
            const std::u16string key = Wide(std::to_string(1000000 + static_cast<std::int64_t>(i) * 611953 % kRows));
            table.Insert({{jet::Assignment{0, key}, jet::Assignment{1, std::u16string(80 + random() % 300, u'A')},
                           jet::Assignment{2, u"20260131"}}});
            const double lat = 50 + static_cast<double>(random() % 8000000) / 1e6;
            const double lon = -6 + static_cast<double>(random() % 7000000) / 1e6;
            points.Insert({{jet::Assignment{0, key}, jet::Assignment{1, u"SK12345678"}, jet::Assignment{2, lat},
                            jet::Assignment{3, lon}}});
        }
    }

    void Load() {
        jet::Database full = jet::Database::Open(folder_ / "PAF_FULL.dat", kPassword);
        jet::Cursor cursor = full.OpenTable(u"PAF_FULLAddress").Rows();
        const auto text = [](const jet::Value& value) {
            const auto* found = std::get_if<std::u16string>(&value);
            return found ? jet::ToUtf8(*found) : std::string();
        };
        while (cursor.Next()) {
            rows_.push_back(
                {text(cursor.Current().Get(0)), text(cursor.Current().Get(1)), text(cursor.Current().Get(2))});
            keys_.push_back(rows_.back().key);
        }
        jet::Database zon = jet::Database::Open(folder_ / "PAF_POSTZON.dat", kPassword);
        const jet::Table table = zon.OpenTable(u"PAF_PostZon");
        const std::size_t lat = *table.FindColumn(u"PZ_Lat");
        const std::size_t lon = *table.FindColumn(u"PZ_Long");
        jet::Cursor all = table.Rows();
        while (all.Next()) {
            const jet::Value x = all.Current().Get(lon);
            const jet::Value y = all.Current().Get(lat);
            if (jet::IsNull(x) || jet::IsNull(y)) continue;
            points_.emplace_back(std::get<double>(x), std::get<double>(y));
        }
    }

    void MakeSqlite() {
        sqlite3* db = nullptr;
        Check(sqlite3_open(Own("peer.sqlite").c_str(), &db), "sqlite3_open");
        Run(db, "PRAGMA page_size=4096; CREATE TABLE full(k TEXT PRIMARY KEY COLLATE NOCASE, a TEXT, u TEXT);"
                "CREATE TABLE zon(id INTEGER PRIMARY KEY, k TEXT, r TEXT, lat REAL, lon REAL);"
                "CREATE INDEX zlat ON zon(lat); CREATE INDEX zlon ON zon(lon); BEGIN");
        sqlite3_stmt* add = nullptr;
        Check(sqlite3_prepare_v2(db, "INSERT INTO full VALUES(?,?,?)", -1, &add, nullptr), "prepare");
        for (const Row& row : rows_) {
            sqlite3_bind_text(add, 1, row.key.c_str(), -1, SQLITE_STATIC);
            sqlite3_bind_text(add, 2, row.address.c_str(), -1, SQLITE_STATIC);
            sqlite3_bind_text(add, 3, row.update.c_str(), -1, SQLITE_STATIC);
            sqlite3_step(add);
            sqlite3_reset(add);
        }
        sqlite3_finalize(add);
        Check(sqlite3_prepare_v2(db, "INSERT INTO zon(k,r,lat,lon) VALUES('AB1 2CD','SK12345678',?,?)", -1, &add,
                                 nullptr),
              "prepare");
        for (const auto& [lon, lat] : points_) {
            sqlite3_bind_double(add, 1, lat);
            sqlite3_bind_double(add, 2, lon);
            sqlite3_step(add);
            sqlite3_reset(add);
        }
        sqlite3_finalize(add);
        Run(db, "COMMIT");
        sqlite3_close(db);
    }

    void MakeLmdb() {
        std::filesystem::create_directories(Own("peer.lmdb"));
        MDB_env* environment = nullptr;
        mdb_env_create(&environment);
        mdb_env_set_mapsize(environment, std::size_t{1} << 30);
        Check(mdb_env_open(environment, Own("peer.lmdb").c_str(), 0, 0644), "mdb_env_open");
        MDB_txn* transaction = nullptr;
        mdb_txn_begin(environment, nullptr, 0, &transaction);
        MDB_dbi table = 0;
        mdb_dbi_open(transaction, nullptr, MDB_CREATE, &table);
        for (Row& row : rows_) {
            MDB_val key{row.key.size(), row.key.data()};
            MDB_val value{row.address.size(), row.address.data()};
            Check(mdb_put(transaction, table, &key, &value, 0), "mdb_put");
        }
        Check(mdb_txn_commit(transaction), "mdb_txn_commit");
        mdb_env_close(environment);
    }

    std::filesystem::path own_;
    std::filesystem::path folder_;
    std::vector<Row> rows_;
    std::vector<std::string> keys_;
    std::vector<std::pair<double, double>> points_;
};

const Data& TheData() {
    static const Data data;
    return data;
}

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
