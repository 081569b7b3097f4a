#pragma once

// The same 200,000 rows for the embedded engine, SQLite and LMDB.

#include "jet/database.h"
#include "jet/text.h"

#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <lmdb.h>
#include <random>
#include <sqlite3.h>
#include <string>
#include <vector>

namespace bench {

inline constexpr std::u16string_view kPassword = u"lanternfox";
inline constexpr int kRows = 200000;

struct Row {
    std::string key;
    std::string address;
    std::string update;
};

inline std::u16string Wide(std::string_view text) {
    return std::u16string(text.begin(), text.end());
}

inline std::string Number(double value) {
    char buffer[40];
    return std::string(buffer, std::to_chars(buffer, buffer + sizeof buffer, value).ptr);
}

inline void Check(int code, const char* what) {
    if (code == 0) return;
    std::fprintf(stderr, "%s: error %d\n", what, code);
    std::exit(1);
}

inline void Run(sqlite3* db, const char* text) {
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

inline const Data& TheData() {
    static const Data data;
    return data;
}

} // namespace bench
