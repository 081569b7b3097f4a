#include "jet_support.h"

#include "jet/change_group.h"
#include "jet/check.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <random>
#include <sys/wait.h>
#include <unistd.h>

namespace jet {
namespace {

using namespace testing;
using Clock = std::chrono::steady_clock;

constexpr int kReaders = 8;

std::u16string TurnKeyOf(int i) {
    return Wide(std::to_string(1000000 + i));
}

std::vector<Assignment> RecordOf(int i, int version) {
    return {{0, TurnKeyOf(i)},
            {1, std::u16string(300, static_cast<char16_t>(u'A' + version))},
            {2, static_cast<std::int32_t>(version)}};
}

/// Gives every record version 1; returns the seconds that took.
double Update(const std::filesystem::path& path, int records) {
    const Clock::time_point start = Clock::now();
    OpenOptions options;
    options.writable = true;
    options.yields = true;
    options.wait = std::chrono::seconds(30);
    Database db = Database::Open(path, kPassword, options);
    const Table table = db.OpenTable(u"T");
    ChangeGroup group(db);
    for (int i = 0; i < records; ++i) group.Update(table, *table.FindFirst(Equals(u"K", TurnKeyOf(i))), RecordOf(i, 1));
    group.Commit();
    db.Close();
    return std::chrono::duration<double>(Clock::now() - start).count();
}

/// Looks records up without a pause until the file `stop` is there; writes the times, in microseconds, to `out`.
int LookUp(const std::filesystem::path& path, int records, unsigned seed, const std::filesystem::path& stop,
           const std::filesystem::path& out) {
    std::mt19937 random(seed);
    std::ofstream times(out);
    while (!std::filesystem::exists(stop)) {
        const int i = static_cast<int>(random() % static_cast<unsigned>(records));
        const Clock::time_point start = Clock::now();
        try {
            Database db = Database::Open(path, kPassword);
            const Table table = db.OpenTable(u"T");
            const auto found = table.FindFirst(Equals(u"K", TurnKeyOf(i)));
            if (!found) return 2;
            const Row row = table.Fetch(*found);
            const int version = std::get<std::int32_t>(row.Get(2));
            if (row.Get(1) != RecordOf(i, version)[1].value) return 3;
        } catch (const Error& error) {
            return 10 + static_cast<int>(error.code());
        }
        times << std::chrono::duration_cast<std::chrono::microseconds>(Clock::now() - start).count() << '\n';
    }
    return 0;
}

/// QUORVEX_RECORDS sets the number of records, for the full measurement.
TEST(TurnTest, ReadersAndAnUpdateLiveTogether) {
    const char* const asked = std::getenv("QUORVEX_RECORDS");
    const int records = asked ? std::atoi(asked) : 4000;
    Folder folder;
    const auto path = folder / "data.dat";
    {
        Database db = Database::Create(path, kPassword);
        db.Begin();
        Table table = db.CreateTable({u"T",
                                      {{.name = u"K", .length = 10},
                                       {.name = u"M", .type = ColumnType::kMemo},
                                       {.name = u"V", .type = ColumnType::kLong}},
                                      {{.name = u"PrimaryKey", .columns = {u"K"}, .primary = true}}});
        for (int i = 0; i < records; ++i) table.Insert(RecordOf(i, 0));
        db.Close();
    }
    std::filesystem::copy_file(path, folder / "alone.dat");
    const double alone = Update(folder / "alone.dat", records);

    std::vector<pid_t> readers;
    for (int i = 0; i < kReaders; ++i) {
        const pid_t child = fork();
        if (child == 0) {
            const auto out = folder / ("times" + std::to_string(i));
            _exit(LookUp(path, records, static_cast<unsigned>(i), folder / "stop", out));
        }
        readers.push_back(child);
    }
    const double together = Update(path, records);
    std::ofstream(folder / "stop").put('.');
    std::vector<long> times;
    for (int i = 0; i < kReaders; ++i) {
        int status = 0;
        ASSERT_EQ(waitpid(readers[static_cast<std::size_t>(i)], &status, 0), readers[static_cast<std::size_t>(i)]);
        EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << "a look-up failed: " << WEXITSTATUS(status);
        std::ifstream in(folder / ("times" + std::to_string(i)));
        for (long time = 0; in >> time;) times.push_back(time);
    }
    ASSERT_GT(times.size(), 100U);
    std::sort(times.begin(), times.end());
    std::printf(
        "update alone %.2f s, with %d readers %.2f s; %zu look-ups, 99.9%% within %.1f ms, all within %.1f ms\n", alone,
        kReaders, together, times.size(), static_cast<double>(times[times.size() * 999 / 1000]) / 1000,
        static_cast<double>(times.back()) / 1000);
    Database db = Database::Open(path, kPassword);
    EXPECT_EQ(ErrorsOf(CheckIntegrity(db)), "");
    EXPECT_FALSE(std::filesystem::exists(folder / "data.dat.journal"));
}

} // namespace
} // namespace jet
