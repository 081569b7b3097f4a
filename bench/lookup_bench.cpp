// Whole lookups through the lookup object, from a postcode to its fields, beside the engine's own open, look-up and
// close and beside SQLite on the same rows in one run. QUORVEX_BENCH_DATA names a data folder as tools/make_data makes
// it; tools/benchmarks makes one of 200,000 postcodes.

#include "database/jet/jet_provider.h"
#include "jet/database.h"
#include "jet/text.h"
#include "localdata/packed_address.h"
#include "localdata/substitution.h"
#include "lookups/address_list.h"
#include "lookups/address_record.h"
#include "lookups/postzon.h"
#include "support/process_state.h"
#include "support/text.h"
#include "testing/fake_platform.h"

#include <benchmark/benchmark.h>
#include <sqlite3.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <random>
#include <string>
#include <vector>

namespace {

using namespace quorvex;

constexpr std::u16string_view kPassword = u"lanternfox";
constexpr std::size_t kKeys = 20000; // visited in an order that no cache of pages foresees

const std::filesystem::path& Folder() {
    static const std::filesystem::path folder = [] {
        const char* const given = std::getenv("QUORVEX_BENCH_DATA");
        if (given != nullptr) return std::filesystem::path(given);
        std::fputs("QUORVEX_BENCH_DATA names no data folder; tools/benchmarks makes one\n", stderr);
        std::exit(1);
    }();
    return folder;
}

struct AddressKey {
    std::wstring postcode;
    std::size_t premises = 0;
};

class Data {
  public:
    Data() {
        own_ = std::filesystem::temp_directory_path() / ("lookup-bench-" + std::to_string(std::random_device{}()));
        std::filesystem::create_directories(own_);
        const auto table = localdata::LoadSubstitution(support::FromUtf8(Folder().string()));
        sqlite3_open(Sqlite().c_str(), &peer_);
        Run("CREATE TABLE full(k TEXT PRIMARY KEY COLLATE NOCASE, a TEXT);"
            "CREATE TABLE zon(k TEXT PRIMARY KEY COLLATE NOCASE, f TEXT); BEGIN");
        jet::Database full = jet::Database::Open(Folder() / "PAF_FULL.dat", kPassword);
        for (jet::Cursor row = full.OpenTable(u"PAF_FULLAddress").Rows(); row.Next();) {
            const std::u16string key = std::get<std::u16string>(row.Current().Get(0));
            const std::u16string stored = std::get<std::u16string>(row.Current().Get(1));
            const std::wstring plain = table.Unscramble(std::wstring(stored.begin(), stored.end()));
            Insert("INSERT INTO full VALUES(?,?)", jet::ToUtf8(key), support::ToUtf8(plain));
            keys_.push_back(
                {std::wstring(key.begin(), key.end()), localdata::SplitPackedAddress(plain).premises.size()});
        }
        jet::Database zon = jet::Database::Open(Folder() / "PAF_POSTZON.dat", kPassword);
        const jet::Table points = zon.OpenTable(u"PAF_PostZon");
        for (jet::Cursor row = points.Rows(); row.Next();) {
            std::string fields;
            for (std::size_t i = 0; i < row.columnCount(); ++i) {
                const jet::Value value = row.Current().Get(i);
                if (const auto* text = std::get_if<std::u16string>(&value)) fields += jet::ToUtf8(*text);
                if (const auto* number = std::get_if<double>(&value))
                    fields += support::ToUtf8(support::NumberText(*number));
                fields += '|';
            }
            const auto key = row.Current().Get(*points.FindColumn(u"PZ_Postcode"));
            Insert("INSERT INTO zon VALUES(?,?)", jet::ToUtf8(std::get<std::u16string>(key)), fields);
        }
        Run("COMMIT");
        sqlite3_close(peer_);
    }
    ~Data() {
        std::error_code ignored;
        std::filesystem::remove_all(own_, ignored);
    }
    Data(const Data&) = delete;
    Data& operator=(const Data&) = delete;

    std::string Sqlite() const { return (own_ / "peer.sqlite").string(); }
    // i from 1; the same order for all benchmarks.
    const AddressKey& Key(std::size_t i) const { return keys_[i % kKeys * 7919 % keys_.size()]; }

  private:
    void Run(const char* text) {
        if (sqlite3_exec(peer_, text, nullptr, nullptr, nullptr) != SQLITE_OK) std::exit(1);
    }
    void Insert(const char* text, const std::string& key, const std::string& value) {
        sqlite3_stmt* add = nullptr;
        sqlite3_prepare_v2(peer_, text, -1, &add, nullptr);
        sqlite3_bind_text(add, 1, key.c_str(), -1, SQLITE_STATIC);
        sqlite3_bind_text(add, 2, value.c_str(), -1, SQLITE_STATIC);
        if (sqlite3_step(add) != SQLITE_DONE) std::exit(1);
        sqlite3_finalize(add);
    }

    std::filesystem::path own_;
    sqlite3* peer_ = nullptr;
    std::vector<AddressKey> keys_;
};

const Data& TheData() {
    static const Data data;
    return data;
}

// The lookup object in local mode.
struct Host {
    Host() {
        platform.databases = &databases;
        object.LMSetDataPath(support::FromUtf8(Folder().string()));
    }
    database::JetProvider databases;
    testing::FakePlatform platform;
    object::Quorvex object{platform, platform};
};

template <typename Lookup>
void Whole(benchmark::State& state, Lookup lookup) {
    TheData();
    Host host;
    std::size_t i = 0;
    for (auto _ : state) {
        if (!lookup(host.object, TheData().Key(++i))) return state.SkipWithError("not found");
    }
}

void WholeList(benchmark::State& state) {
    std::size_t lines = 0;
    Whole(state, [&](object::Quorvex& object, const AddressKey& key) {
        if (!lookups::GetFullAddressToList(object, key.postcode)) return false;
        while (!lookups::GetFullAddressLineForSelection(object).empty()) ++lines;
        return true;
    });
    state.counters["lines"] = benchmark::Counter(static_cast<double>(lines), benchmark::Counter::kAvgIterations);
}
BENCHMARK(WholeList)->Unit(benchmark::kMicrosecond);

void WholeRecord(benchmark::State& state) {
    Whole(state, [](object::Quorvex& object, const AddressKey& key) {
        return lookups::GetFullAddressRecordByAddressID(object, key.postcode + L"_1_F");
    });
}
BENCHMARK(WholeRecord)->Unit(benchmark::kMicrosecond);

void WholeStreet(benchmark::State& state) {
    Whole(state, [](object::Quorvex& object, const AddressKey& key) {
        return lookups::GetThoroughfareAddressRecord(object, key.postcode);
    });
}
BENCHMARK(WholeStreet)->Unit(benchmark::kMicrosecond);

void WholePostZon(benchmark::State& state) {
    Whole(state, [](object::Quorvex& object, const AddressKey& key) {
        return lookups::GetPostZonAddressRecord(object, key.postcode);
    });
}
BENCHMARK(WholePostZon)->Unit(benchmark::kMicrosecond);

void WholePostZonByPoint(benchmark::State& state) {
    TheData();
    Host host;
    std::vector<std::wstring> points;
    for (std::size_t i = 1; i <= 100; ++i) {
        lookups::GetPostZonAddressRecord(host.object, TheData().Key(i).postcode);
        points.push_back(host.object.PostZon_Longitude_wgs84 + L"|" + host.object.PostZon_Latitude_wgs84);
    }
    std::size_t i = 0;
    for (auto _ : state) {
        if (!lookups::GetPostZonAddressRecord(host.object, points[++i % points.size()]))
            return state.SkipWithError("not found");
    }
}
BENCHMARK(WholePostZonByPoint)->Unit(benchmark::kMicrosecond);

void Engine(benchmark::State& state, const char* file, std::u16string_view query) {
    TheData();
    std::size_t i = 0;
    for (auto _ : state) {
        jet::Database database = jet::Database::Open(Folder() / file, kPassword);
        const std::wstring& key = TheData().Key(++i).postcode;
        std::u16string text(query);
        text.append(key.begin(), key.end()).append(u"';");
        jet::Cursor cursor = database.Select(text);
        if (!cursor.Next()) return state.SkipWithError("not found");
        benchmark::DoNotOptimize(cursor.Current().Get(1));
    }
}
void EngineAddress(benchmark::State& state) {
    Engine(state, "PAF_FULL.dat", u"SELECT * From [PAF_FULLAddress] WHERE [FT_Postcode]='");
}
BENCHMARK(EngineAddress)->Unit(benchmark::kMicrosecond);
void EnginePostZon(benchmark::State& state) {
    Engine(state, "PAF_POSTZON.dat", u"SELECT * From [PAF_PostZon] WHERE [PZ_Postcode]='");
}
BENCHMARK(EnginePostZon)->Unit(benchmark::kMicrosecond);

// Opens, selects, closes, and cuts the row into its premises and fields.
void Sqlite(benchmark::State& state, const char* query) {
    TheData();
    std::size_t i = 0;
    for (auto _ : state) {
        sqlite3* peer = nullptr;
        sqlite3_open_v2(TheData().Sqlite().c_str(), &peer, SQLITE_OPEN_READONLY, nullptr);
        sqlite3_stmt* statement = nullptr;
        sqlite3_prepare_v2(peer, query, -1, &statement, nullptr);
        const std::string key = support::ToUtf8(TheData().Key(++i).postcode);
        sqlite3_bind_text(statement, 1, key.c_str(), -1, SQLITE_STATIC);
        if (sqlite3_step(statement) != SQLITE_ROW) return state.SkipWithError("not found");
        const std::string row(reinterpret_cast<const char*>(sqlite3_column_text(statement, 1)));
        sqlite3_finalize(statement);
        sqlite3_close(peer);
        std::vector<std::string> fields;
        for (std::size_t at = 0; at != std::string::npos;) {
            const std::size_t end = row.find_first_of("|!", at);
            fields.push_back(row.substr(at, end - at));
            at = end == std::string::npos ? end : end + 1;
        }
        benchmark::DoNotOptimize(fields.data());
    }
}
void SqliteAddress(benchmark::State& state) {
    Sqlite(state, "SELECT * FROM full WHERE k=?");
}
BENCHMARK(SqliteAddress)->Unit(benchmark::kMicrosecond);
void SqlitePostZon(benchmark::State& state) {
    Sqlite(state, "SELECT * FROM zon WHERE k=?");
}
BENCHMARK(SqlitePostZon)->Unit(benchmark::kMicrosecond);

// A list of many premises: the cost of a line must not grow with their number.
void ListOfPremises(benchmark::State& state) {
    const auto premises = state.range(0);
    std::wstring packed = L"{";
    for (std::int64_t i = 1; i <= premises; ++i) packed += L"||" + std::to_wstring(i) + L" QUARRY ROAD!";
    packed.back() = L'}';
    packed += L"|UPWICK|WISBECH|CAMBRIDGESHIRE|PE13 2QL||ENGLAND||||";
    const auto folder =
        std::filesystem::temp_directory_path() / ("lookup-bench-" + std::to_string(std::random_device{}()));
    std::filesystem::create_directories(folder);
    {
        jet::Database file = jet::Database::Create(folder / "PAF_FULL.dat", kPassword);
        jet::Table table = file.CreateTable({u"PAF_FULLAddress",
                                             {{.name = u"FT_Postcode", .length = 10},
                                              {.name = u"FT_Address", .type = jet::ColumnType::kMemo},
                                              {.name = u"FT_Update", .length = 8}},
                                             {{.name = u"PrimaryKey", .columns = {u"FT_Postcode"}, .primary = true}}});
        table.Insert({{jet::Assignment{0, u"PE132QL"}, jet::Assignment{1, std::u16string(packed.begin(), packed.end())},
                       jet::Assignment{2, u"20260131"}}});
    }
    Host host;
    host.object.LMSetDataPath(support::FromUtf8(folder.string()));
    for (auto _ : state) {
        if (!lookups::GetFullAddressToList(host.object, L"PE132QL")) state.SkipWithError("not found");
        for (int i = 0; i < 101; ++i) benchmark::DoNotOptimize(lookups::GetFullAddressLineForSelection(host.object));
    }
    state.counters["per_line"] = benchmark::Counter(
        static_cast<double>(premises), benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
    std::filesystem::remove_all(folder);
}
BENCHMARK(ListOfPremises)->Arg(1)->Arg(15)->Arg(150)->Arg(1500)->Unit(benchmark::kMicrosecond);

} // namespace

BENCHMARK_MAIN();
