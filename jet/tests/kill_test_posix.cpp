#include "jet_support.h"

#include "jet/check.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <new>
#include <random>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

namespace jet {
namespace {

using namespace testing;

constexpr int kKeys = 600;

std::u16string KeyOf(int i) {
    return Wide(std::to_string(10000 + i * 7919 % 10000));
}

std::u16string MemoOf(int i, int version) {
    return std::u16string(static_cast<std::size_t>((i * 131 + version * 977) % 6000), u'A') +
           Wide(std::to_string(version));
}

/// The last change that a writer was told is on the disk; shared with its process.
struct Acknowledged {
    std::atomic<int> version{0};
    std::atomic<int> record{-1};
};

/// Gives every record the next version, one transaction each, without end.
[[noreturn]] void WriteWithoutEnd(const std::filesystem::path& path, int version, Acknowledged& acknowledged) {
    try {
        OpenOptions options;
        options.writable = true;
        Database db = Database::Open(path, kPassword, options);
        Table table = db.OpenTable(u"T");
        for (;; ++version) {
            for (int i = 0; i < kKeys; ++i) {
                const std::vector<Assignment> values = {
                    {0, KeyOf(i)}, {1, MemoOf(i, version)}, {2, static_cast<std::int32_t>(version)}};
                const auto found = table.FindFirst(Equals(u"K", KeyOf(i)));
                if (found) {
                    table.Update(*found, values);
                } else {
                    table.Insert(values);
                }
                if (i == 0) acknowledged.record = -1;
                acknowledged.version = version;
                acknowledged.record = i;
            }
        }
    } catch (const std::exception&) {
        _exit(3);
    }
}

struct KillTally {
    int kills = 0;
    int damaged = 0;
    int wrong = 0;
    int lost = 0;
    std::vector<int> leastVersions = std::vector<int>(kKeys); ///< of every record, as promised
};

/// Checks the file; returns the version that the writer had reached, 0 if it had not begun.
int CheckFile(const std::filesystem::path& path, int started, const Acknowledged& acknowledged, KillTally& tally) {
    Database db = Database::Open(path, kPassword);
    if (!ErrorsOf(CheckIntegrity(db)).empty()) ++tally.damaged;
    const Table table = db.OpenTable(u"T");
    int latest = 0;
    int previous = -1;
    for (int i = 0; i < kKeys; ++i) {
        const auto found = table.FindFirst(Equals(u"K", KeyOf(i)));
        int version = 0;
        if (found) {
            const Row row = table.Fetch(*found);
            version = std::get<std::int32_t>(row.Get(2));
            if (std::get<std::u16string>(row.Get(1)) != MemoOf(i, version)) ++tally.wrong;
        }
        if (i == 0) latest = version;
        // Every writer begins with the first record, so no later record can be newer than an earlier one.
        if (previous >= 0 && version > previous) ++tally.wrong;
        int& least = tally.leastVersions[static_cast<std::size_t>(i)];
        if (i <= acknowledged.record) {
            least = acknowledged.version;
        } else if (acknowledged.version > started) {
            least = acknowledged.version - 1;
        }
        if (version < least) ++tally.lost;
        least = version;
        previous = version;
    }
    return latest;
}

bool NeedsRepair(const std::filesystem::path& path) {
    const Path journal = Journal::PathFor(path);
    const auto file = SystemStorage().Open(path, OpenMode::kReadDenyWrite);
    return Journal::Examine(SystemStorage(), journal, *file) == Journal::Finding::kHot;
}

/// Several processes open the file at once; each must get in, whoever does the repair.
void OpenFromSeveralProcesses(const std::filesystem::path& path) {
    std::vector<pid_t> children;
    for (int i = 0; i < 3; ++i) {
        const pid_t child = fork();
        if (child == 0) {
            const auto code = CodeOf([&] { Database::Open(path, kPassword).OpenTable(u"T").CountRows(); });
            _exit(code ? 10 + static_cast<int>(*code) : 0);
        }
        children.push_back(child);
    }
    for (const pid_t child : children) {
        int status = 0;
        ASSERT_EQ(waitpid(child, &status, 0), child);
        EXPECT_TRUE(WIFEXITED(status));
        EXPECT_EQ(WEXITSTATUS(status), 0) << "error code + 10";
    }
}

/// QUORVEX_KILLS sets the number of kills, for a longer run.
TEST(KillTest, AKilledWriterLeavesEachRecordOldOrNew) {
    const char* const asked = std::getenv("QUORVEX_KILLS");
    const int kills = asked ? std::atoi(asked) : 20;
    Folder folder;
    const auto path = folder / "killed.dat";
    {
        Database db = Database::Create(path, kPassword);
        TableSpec wanted{
            u"T",
            {{.name = u"K", .length = 10},
             {.name = u"M", .type = ColumnType::kMemo},
             {.name = u"V", .type = ColumnType::kLong}},
            {{.name = u"PrimaryKey", .columns = {u"K"}, .primary = true}, {.name = u"V", .columns = {u"V"}}}};
        db.CreateTable(wanted);
    }
    std::mt19937 random(std::random_device{}());
    void* const shared = mmap(nullptr, sizeof(Acknowledged), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    ASSERT_NE(shared, MAP_FAILED);
    auto& acknowledged = *new (shared) Acknowledged;
    KillTally tally;
    int version = 1;
    int repaired = 0;
    for (; tally.kills < kills && tally.damaged + tally.wrong + tally.lost == 0; ++tally.kills) {
        acknowledged.record = -1;
        acknowledged.version = version;
        const pid_t child = fork();
        ASSERT_GE(child, 0);
        if (child == 0) WriteWithoutEnd(path, version, acknowledged);
        usleep(static_cast<useconds_t>(1000 + random() % 60000));
        ::kill(child, SIGKILL);
        int status = 0;
        ASSERT_EQ(waitpid(child, &status, 0), child);
        ASSERT_TRUE(WIFSIGNALED(status)) << "the writer failed by itself";
        if (NeedsRepair(path)) {
            ++repaired;
            OpenFromSeveralProcesses(path);
        }
        version = CheckFile(path, version, acknowledged, tally) + 1;
        if (HasFailure()) break;
    }
    munmap(shared, sizeof(Acknowledged));
    std::printf("%d in the middle of a change\n", repaired);
    std::printf("kills: %d, damaged %d, wrong %d, lost %d\n", tally.kills, tally.damaged, tally.wrong, tally.lost);
    EXPECT_EQ(tally.damaged, 0);
    EXPECT_EQ(tally.wrong, 0);
    EXPECT_EQ(tally.lost, 0);
}

} // namespace
} // namespace jet
