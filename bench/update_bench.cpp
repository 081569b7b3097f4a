// Applying a package of 10,000 records to a data file of 200,000 rows, through the applier and the embedded engine,
// beside SQLite doing the same to the same rows: as one transaction, and record by record as the applier does it.
// Neither waits for the disk (SQLite: synchronous off): both survive the end of the process at any instant.

#include "localdata/jet/database.h"
#include "localdata/jet_provider.h"
#include "localdata/update_applier.h"
#include "support/files.h"
#include "support/process_state.h"
#include "support_code/fake_platform.h"

#include <benchmark/benchmark.h>
#include <sqlite3.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <random>
#include <string>

namespace {

namespace fs = std::filesystem;
namespace jet = quorvex::localdata::jet;

constexpr int kRows = 200000;
constexpr int kRecords = 10000; // half of them new
constexpr int kStride = 611953; // prime: spreads keys over the table
constexpr int kNewFrom = kRows; // numbers of the new ones
constexpr std::u16string_view kPassword = u"lanternfox";

std::u16string Wide(const std::string& text) {
    return std::u16string(text.begin(), text.end());
}

std::string KeyText(int number) {
    char text[16];
    std::snprintf(text, sizeof text, "AB%d %04d", 10 + number / 10000, number % 10000);
    return text;
}

// Lengths as real address texts have them; the package's are others than the data's.
std::string AddressText(int number, bool update) {
    const auto mixed = static_cast<unsigned>(number) * 2654435761U + (update ? 12345U : 0U);
    return std::string(80 + mixed % 300, update ? 'B' : 'A');
}

int PackageNumber(int record) {
    return record % 2 == 0 ? static_cast<int>(std::int64_t{record} * kStride % kRows) : kNewFrom + record;
}

void Check(int code, const char* what) {
    if (code == SQLITE_OK || code == SQLITE_DONE) return;
    std::fprintf(stderr, "%s: error %d\n", what, code);
    std::exit(1);
}

class Statement {
  public:
    Statement(sqlite3* db, const char* text) { Check(sqlite3_prepare_v2(db, text, -1, &statement_, nullptr), text); }
    Statement(const Statement&) = delete;
    Statement& operator=(const Statement&) = delete;
    ~Statement() { sqlite3_finalize(statement_); }

    void Run(const std::string& key, const std::string& address, const char* update) {
        sqlite3_bind_text(statement_, 1, key.c_str(), -1, SQLITE_STATIC);
        sqlite3_bind_text(statement_, 2, address.c_str(), -1, SQLITE_STATIC);
        sqlite3_bind_text(statement_, 3, update, -1, SQLITE_STATIC);
        Check(sqlite3_step(statement_), "step");
        sqlite3_reset(statement_);
    }

  private:
    sqlite3_stmt* statement_ = nullptr;
};

class Sqlite {
  public:
    explicit Sqlite(const fs::path& file) {
        Check(sqlite3_open(file.c_str(), &db_), "open");
        Run("PRAGMA synchronous=OFF");
    }
    Sqlite(const Sqlite&) = delete;
    Sqlite& operator=(const Sqlite&) = delete;
    ~Sqlite() { sqlite3_close(db_); }

    void Run(const char* text) { Check(sqlite3_exec(db_, text, nullptr, nullptr, nullptr), text); }
    sqlite3* Get() { return db_; }

  private:
    sqlite3* db_ = nullptr;
};

// The data and the package in both forms, made once.
class Files {
  public:
    Files() {
        folder_ = fs::temp_directory_path() / ("quorvex-update-bench-" + std::to_string(std::random_device{}()));
        fs::create_directories(folder_ / "run");
        jet::Database full = jet::Database::Create(folder_ / "PAF_FULL.dat", kPassword);
        full.SetBatch(2000);
        FillAddresses(full, kRows, false);
        jet::Table version = full.CreateTable({u"Version",
                                               {{.name = u"ID", .type = jet::ColumnType::kLong}, {.name = u"Text"}},
                                               {{.name = u"PrimaryKey", .columns = {u"ID"}, .primary = true}}});
        version.Insert({{jet::Assignment{0, std::int32_t{2}}, jet::Assignment{1, u"20260131"}}});
        full.Close();
        jet::Database package = jet::Database::Create(folder_ / "UPDATE_F_20260228.dat", kPassword);
        package.SetBatch(2000);
        FillAddresses(package, kRecords, true);
        package.Close();
        FillSqlite();
    }
    ~Files() { fs::remove_all(folder_); }
    Files(const Files&) = delete;
    Files& operator=(const Files&) = delete;

    fs::path Package() const { return folder_ / "UPDATE_F_20260228.dat"; }
    fs::path Run() const { return folder_ / "run"; }
    fs::path Fresh(const char* name) const {
        fs::copy_file(folder_ / name, Run() / name, fs::copy_options::overwrite_existing);
        return Run() / name;
    }

  private:
    static void FillAddresses(jet::Database& database, int count, bool update) {
        jet::Table table =
            database.CreateTable({u"PAF_FULLAddress",
                                  {{.name = u"FT_Postcode", .length = 10},
                                   {.name = u"FT_Address", .type = jet::ColumnType::kMemo},
                                   {.name = u"FT_Update", .length = 8}},
                                  {{.name = u"PrimaryKey", .columns = {u"FT_Postcode"}, .primary = true}}});
        for (int i = 0; i < count; ++i) {
            const int number = update ? PackageNumber(i) : static_cast<int>(std::int64_t{i} * kStride % kRows);
            table.Insert(
                {{jet::Assignment{0, Wide(KeyText(number))}, jet::Assignment{1, Wide(AddressText(number, update))},
                  jet::Assignment{2, std::u16string(update ? u"20260228" : u"20260131")}}});
        }
    }

    void FillSqlite() {
        Sqlite db(folder_ / "full.sqlite");
        db.Run("CREATE TABLE full (postcode TEXT COLLATE NOCASE PRIMARY KEY, address TEXT, updated TEXT)");
        db.Run("BEGIN");
        Statement insert(db.Get(), "INSERT INTO full VALUES (?, ?, ?)");
        for (int i = 0; i < kRows; ++i) {
            const int number = static_cast<int>(std::int64_t{i} * kStride % kRows);
            insert.Run(KeyText(number), AddressText(number, false), "20260131");
        }
        db.Run("COMMIT");
    }

    fs::path folder_;
};

const Files& TheFiles() {
    static const Files files;
    return files;
}

// Windows that nobody sees.
class SilentPlatform final : public quorvex::testing::FakePlatform {
  public:
    void ShowProgress(const std::wstring&, const std::wstring&) override {}
};

void BM_ApplyPackage(benchmark::State& state) {
    using namespace quorvex;
    const Files& files = TheFiles();
    SilentPlatform platform;
    localdata::JetProvider databases;
    platform.databases = &databases;
    support::Process().dataPath = support::FromPath(files.Run()); // for the log line
    for (auto _ : state) {
        state.PauseTiming();
        files.Fresh("PAF_FULL.dat");
        state.ResumeTiming();
        localdata::Progress progress(platform);
        long count = 0;
        localdata::UpdateData(platform, progress, support::FromPath(files.Run()), support::FromPath(files.Package()),
                              L'F', L"20260228", count);
        if (count != kRecords) state.SkipWithError("not all records");
    }
    state.SetItemsProcessed(state.iterations() * kRecords);
}
BENCHMARK(BM_ApplyPackage)->Unit(benchmark::kMillisecond)->UseRealTime()->MinTime(2);

void ApplyBySqlite(benchmark::State& state, bool oneTransaction) {
    const Files& files = TheFiles();
    for (auto _ : state) {
        state.PauseTiming();
        const fs::path file = files.Fresh("full.sqlite");
        state.ResumeTiming();
        Sqlite db(file);
        if (oneTransaction) db.Run("BEGIN");
        {
            Statement upsert(db.Get(), "INSERT INTO full VALUES (?, ?, ?) ON CONFLICT (postcode) DO UPDATE SET "
                                       "address = excluded.address, updated = excluded.updated");
            for (int i = 0; i < kRecords; ++i) {
                const int number = PackageNumber(i);
                upsert.Run(KeyText(number), AddressText(number, true), "20260228");
            }
        }
        if (oneTransaction) db.Run("COMMIT");
    }
    state.SetItemsProcessed(state.iterations() * kRecords);
}

void BM_SqliteOneTransaction(benchmark::State& state) {
    ApplyBySqlite(state, true);
}
BENCHMARK(BM_SqliteOneTransaction)->Unit(benchmark::kMillisecond)->UseRealTime()->MinTime(2);

void BM_SqlitePerRecord(benchmark::State& state) {
    ApplyBySqlite(state, false);
}
BENCHMARK(BM_SqlitePerRecord)->Unit(benchmark::kMillisecond)->UseRealTime()->MinTime(2);

} // namespace

BENCHMARK_MAIN();
