#include "fault_storage.h"
#include "jet_support.h"

#include "jet/change_group.h"
#include "jet/check.h"

#include <gtest/gtest.h>

namespace jet {
namespace {

using namespace testing;
using Fault = FaultStorage::Fault;

constexpr int kRecords = 12;
constexpr std::chrono::hours kNoTime{1}; // a slow machine must not close a group

/// A small file and a series of changes that grow it, split index pages, move rows and free long values.
class CrashTest : public ::testing::Test {
  protected:
    CrashTest() {
        MemoryStorage storage;
        OpenOptions options;
        options.storage = &storage;
        Database db = Database::Create("db", kPassword, options);
        TableSpec wanted{
            u"T",
            {{.name = u"K", .length = 200}, {.name = u"M", .type = ColumnType::kMemo}, {.name = u"N", .length = 100}},
            {{.name = u"PrimaryKey", .columns = {u"K"}, .primary = true}}};
        Table table = db.CreateTable(wanted);
        for (int i = 0; i < kRecords; i += 2) {
            table.Insert({{Assignment{0, Key(i)}, Assignment{1, std::u16string(3000, u'o')}, Assignment{2, u"old"}}});
        }
        db.Close();
        start_ = storage.Get("db");
    }

    static std::u16string Key(int i) { return std::u16string(180, u'K') + Wide(std::to_string(1000 + i)); }

    static std::vector<Assignment> NewValues(int i) {
        return {{0, Key(i)},
                {1, std::u16string(static_cast<std::size_t>(i) * 900, u'n')},
                {2, std::u16string(100, u'\u0107')}};
    }

    /// Changes record i; record i exists from the start when i is even.
    static void Change(Table& table, int i) {
        const auto found = table.FindFirst(Equals(u"K", Key(i)));
        if (found) {
            table.Update(*found, NewValues(i));
        } else {
            table.Insert(NewValues(i));
        }
    }
    static void Change(ChangeGroup& group, const Table& table, int i) {
        const auto found = table.FindFirst(Equals(u"K", Key(i)));
        if (found) {
            group.Update(table, *found, NewValues(i));
        } else {
            group.Insert(table, NewValues(i));
        }
    }

    static OpenOptions Writing(Storage& storage, unsigned batch = 1) {
        OpenOptions options;
        options.storage = &storage;
        options.writable = true;
        // Large batches are written out before their end, so that a kill meets several segments of a journal.
        if (batch > 5) options.spillPages = 3;
        return options;
    }

    /// Applies all changes until the storage gives up; returns how many calls to Change came back.
    static int Apply(Storage& storage, unsigned batch) {
        int done = 0;
        try {
            Database db = Database::Open("db", kPassword, Writing(storage, batch));
            Table table = db.OpenTable(u"T");
            for (; done < kRecords; ++done) {
                if (done % static_cast<int>(batch) == 0) db.Begin();
                Change(table, done);
                if ((done + 1) % static_cast<int>(batch) == 0) db.Commit();
            }
            db.Close();
            ++done;
        } catch (const Error&) {
            return done;
        }
        return done;
    }

    /// The same with the records in groups, each of them changed twice.
    static int ApplyInGroups(Storage& storage, unsigned most, std::size_t spillPages) {
        int done = 0;
        try {
            OpenOptions options = Writing(storage);
            options.spillPages = spillPages;
            Database db = Database::Open("db", kPassword, options);
            const Table table = db.OpenTable(u"T");
            ChangeGroup group(db, {.time = kNoTime, .records = most});
            for (; done < kRecords; ++done) {
                Change(group, table, done);
                Change(group, table, done);
            }
            group.Commit();
            db.Close();
            ++done;
        } catch (const Error&) {
            return done;
        }
        return done;
    }

    /// Reopens for reading, which repairs, and counts.
    static int CountChanged(Storage& storage) {
        Database db = OpenMemory(storage);
        return CountChanged(db);
    }

    /// How many records are changed. They must be the first ones, the others must be as at the start, and the file must
    /// be sound.
    static int CountChanged(Database& db) {
        EXPECT_EQ(ErrorsOf(CheckIntegrity(db)), "");
        const Table table = db.OpenTable(u"T");
        int changed = 0;
        for (int i = 0; i < kRecords; ++i) {
            const auto found = table.FindFirst(Equals(u"K", Key(i)));
            const std::string mark = found ? Show(table.Fetch(*found).Get(2)) : "";
            const std::size_t size = found ? Show(table.Fetch(*found).Get(1)).size() : 0;
            if (mark.size() > 3) {
                EXPECT_EQ(size, static_cast<std::size_t>(i) * 900);
                EXPECT_EQ(changed, i) << "a later record is changed, an earlier one not";
                ++changed;
            } else {
                EXPECT_EQ(found.has_value(), i % 2 == 0);
                EXPECT_EQ(size, i % 2 == 0 ? 3000U : 0U);
            }
        }
        return changed;
    }

    /// Leaves the file with `batch` changes half written, so that there is something to undo.
    void InterruptWriting(MemoryStorage& base, unsigned batch) const {
        for (std::size_t call = 0;; ++call) {
            base.Put("db", start_);
            FaultStorage storage(base);
            storage.FailAt(call, Fault::kTornKill);
            ASSERT_LE(Apply(storage, batch), kRecords) << "never half written";
            const bool begun = base.Exists("db.journal") && base.Get("db") != start_;
            const auto look = [&base] {
                return Journal::Examine(base, "db.journal", *base.Open("db", OpenMode::kReadDenyWrite));
            };
            if (begun && look() == Journal::Finding::kHot) return;
            base.Remove("db.journal");
        }
    }

    Bytes start_;
};

TEST_F(CrashTest, KilledAtAnyWritingCallEachRecordIsOldOrNew) {
    for (const Fault fault : {Fault::kKill, Fault::kTornKill}) {
        for (const unsigned batch : {1U, 5U, 7U}) {
            std::size_t killed = 0;
            for (std::size_t call = 0;; ++call) {
                MemoryStorage base;
                base.Put("db", start_);
                FaultStorage storage(base);
                storage.FailAt(call, fault);
                const int done = Apply(storage, batch);
                const int changed = CountChanged(base);
                // What came back is there, less an open batch; one more may be there that did not come back.
                const int safe = done > kRecords ? kRecords : done - done % static_cast<int>(batch);
                EXPECT_GE(changed, safe) << call;
                EXPECT_LE(changed, done + static_cast<int>(batch)) << call;
                if (::testing::Test::HasFailure()) return;
                if (storage.calls() <= call) break;
                ++killed;
            }
            EXPECT_GT(killed, 20U);
        }
    }
}

TEST_F(CrashTest, RepairMayBeKilledOrImpossible) {
    MemoryStorage base;
    InterruptWriting(base, 5);
    const Bytes data = base.Get("db");
    const Bytes journal = base.Get("db.journal");
    for (std::size_t call = 0;; ++call) {
        MemoryStorage again;
        again.Put("db", data);
        again.Put("db.journal", journal);
        FaultStorage storage(again);
        storage.FailAt(call, Fault::kTornKill);
        const auto code = CodeOf([&] { OpenMemory(storage); });
        CountChanged(again);
        if (::testing::Test::HasFailure() || !code) break;
    }
    // Where nothing can be written the opening is refused, and the next one repairs.
    FaultStorage storage(base);
    storage.readOnly = true;
    EXPECT_EQ(CodeOf([&] { OpenMemory(storage); }), ErrorCode::kRecoveryNeeded);
    storage.readOnly = false;
    EXPECT_EQ(CountChanged(storage) % 5, 0); // whole batches
}

TEST_F(CrashTest, FailedWritesLeaveTheFileAsItWasAndTheDatabaseUsable) {
    for (const Fault fault : {Fault::kDiskFull, Fault::kOneError}) {
        int failures = 0;
        for (std::size_t call = 0; call < 40; ++call) {
            MemoryStorage base;
            base.Put("db", start_);
            FaultStorage storage(base);
            Database db = Database::Open("db", kPassword, Writing(storage));
            Table table = db.OpenTable(u"T");
            storage.FailAt(call, fault);
            const int last = kRecords - 1; // the one that makes the file grow most
            const auto code = CodeOf([&] { Change(table, last); });
            storage.Heal();
            if (!code) continue;
            if (CodeOf([&] { table.CountRows(); })) {
                // The commit itself failed, and only the file knows what became of it.
                db.Close();
                EXPECT_EQ(ErrorsOf(CheckIntegrity(OpenMemory(base))), "") << call;
                continue;
            }
            EXPECT_EQ(base.Get("db"), start_) << call;
            EXPECT_EQ(table.CountRows(), static_cast<std::uint64_t>(kRecords / 2)) << call;
            EXPECT_EQ(ErrorsOf(CheckIntegrity(db)), "") << call;
            Change(table, last);
            EXPECT_TRUE(table.FindFirst(Equals(u"K", Key(last)))) << call;
            EXPECT_EQ(ErrorsOf(CheckIntegrity(db)), "") << call;
            ++failures;
        }
        EXPECT_GT(failures, 2);
    }
}

TEST_F(CrashTest, AGroupKilledAtAnyWritingCallIsThereOrNot) {
    constexpr unsigned kMost = 6; // changes, of three records
    for (const std::size_t spillPages : {std::size_t{4096}, std::size_t{3}}) {
        std::size_t killed = 0;
        for (std::size_t call = 0;; ++call) {
            MemoryStorage base;
            base.Put("db", start_);
            FaultStorage storage(base);
            storage.FailAt(call, Fault::kTornKill);
            const int done = ApplyInGroups(storage, kMost, spillPages);
            const int changed = CountChanged(base);
            EXPECT_EQ(changed % 3, 0) << call;
            EXPECT_GE(changed, std::min(done, kRecords) / 3 * 3) << call;
            if (HasFailure()) return;
            if (storage.calls() <= call) break;
            ++killed;
        }
        EXPECT_GT(killed, 15U);
    }
}

TEST_F(CrashTest, AGroupOutlivesAWriteThatFailsOnce) {
    // Some groups are written out before their end, though never with one record alone in them.
    for (const std::size_t spillPages : {std::size_t{4096}, std::size_t{12}}) {
        int refused = 0;
        for (std::size_t call = 0;; ++call) {
            MemoryStorage base;
            base.Put("db", start_);
            FaultStorage storage(base);
            storage.FailAt(call, Fault::kOneError);
            const bool whole = ApplyInGroups(storage, 10, spillPages) > kRecords;
            const int changed = CountChanged(base);
            // Where the commit itself fails the group ends there, in the file or not.
            EXPECT_TRUE(changed == kRecords || (!whole && changed % 5 == 0)) << call;
            if (!whole) ++refused;
            if (HasFailure() || storage.calls() <= call) break;
        }
        EXPECT_LE(refused, 6) << "two calls of each of three commits";
    }
}

TEST_F(CrashTest, AGroupOnAFullDiskKeepsTheRecordsBeforeTheOneThatFails) {
    int inside = 0;
    for (const std::size_t spillPages : {std::size_t{4096}, std::size_t{3}}) {
        for (std::size_t call = 0;; ++call) {
            MemoryStorage base;
            base.Put("db", start_);
            FaultStorage storage(base);
            OpenOptions options = Writing(storage);
            options.spillPages = spillPages;
            Database db = Database::Open("db", kPassword, options);
            Table table = db.OpenTable(u"T");
            std::optional<ChangeGroup> group(std::in_place, db, GroupLimits{.time = kNoTime, .records = 8});
            storage.FailAt(call, Fault::kDiskFull);
            const auto code = CodeOf([&] {
                for (int i = 0; i < kRecords; ++i) Change(*group, table, i);
                group->Commit();
            });
            if (!code) break;
            EXPECT_EQ(code, ErrorCode::kDiskFull) << call;
            const int changed = CountChanged(db);
            group.reset();
            EXPECT_EQ(CodeOf([&] { Change(table, changed); }), ErrorCode::kDiskFull)
                << call << ": it would have fitted";
            if (changed % 8 != 0) ++inside;
            storage.Heal();
            for (int i = changed; i < kRecords; ++i) Change(table, i);
            EXPECT_EQ(CountChanged(db), kRecords) << call;
            if (HasFailure()) return;
        }
    }
    EXPECT_GT(inside, 5) << "some failed in the middle of a group";
}

TEST_F(CrashTest, ABadRecordInAGroupIsTakenBackAlone) {
    MemoryStorage storage;
    storage.Put("db", start_);
    Database db = OpenMemory(storage, true);
    const Table table = db.OpenTable(u"T");
    ChangeGroup group(db, {.time = kNoTime, .records = 5});
    for (int i = 0; i < 4; ++i) Change(group, table, i);
    std::vector<Assignment> bad = NewValues(4);
    bad[2].value = std::u16string(101, u'x');
    EXPECT_EQ(CodeOf([&] { group.Update(table, *table.FindFirst(Equals(u"K", Key(4))), bad); }),
              ErrorCode::kValueTooLong);
    EXPECT_EQ(CodeOf([&] { group.Insert(table, NewValues(0)); }), ErrorCode::kDuplicateKey);
    EXPECT_EQ(storage.Get("db"), start_) << "the group is not full";
    EXPECT_EQ(CountChanged(db), 4);
    Change(group, table, 4);
    EXPECT_NE(storage.Get("db"), start_) << "now it is";
    for (int i = 5; i < 8; ++i) Change(group, table, i);
    group.Commit();
    db.Close();
    EXPECT_EQ(CountChanged(storage), 8);
}

TEST_F(CrashTest, AJournalIsPutBackOnlyIntoItsOwnFileAndState) {
    const Bytes older = start_;
    const auto afterRun = [this](unsigned batch) {
        MemoryStorage storage;
        storage.Put("db", start_);
        EXPECT_GT(Apply(storage, batch), kRecords);
        return storage.Get("db");
    };
    const Bytes another = [] {
        MemoryStorage storage;
        OpenOptions options;
        options.storage = &storage;
        Database::Create("db", kPassword, options).CreateTable({u"T", {{.name = u"K"}}, {}});
        return storage.Get("db");
    }();
    {
        MemoryStorage storage;
        storage.Put("db", start_);
        Database db = OpenMemory(storage, true);
        Table table = db.OpenTable(u"T");
        Change(table, 0);
        db.Close();
        start_ = storage.Get("db");
    }
    const Bytes newer = afterRun(5);
    MemoryStorage base;
    InterruptWriting(base, 5);
    const Bytes journal = base.Get("db.journal");
    Bytes longer = base.Get("db");
    longer.resize(longer.size() + 100 * kPageSize);
    Bytes shorter = start_;
    shorter.resize(shorter.size() - kPageSize);
    const std::pair<const char*, const Bytes*> others[] = {{"an older copy", &older},
                                                           {"a newer copy", &newer},
                                                           {"another file", &another},
                                                           {"a longer file", &longer},
                                                           {"a shorter file", &shorter}};
    for (const auto& [what, bytes] : others) {
        MemoryStorage storage;
        storage.Put("db", *bytes);
        storage.Put("db.journal", journal);
        EXPECT_EQ(CodeOf([&] { OpenMemory(storage); }), ErrorCode::kForeignJournal) << what;
        EXPECT_EQ(CodeOf([&] { OpenMemory(storage); }), std::nullopt) << what << ", the second time";
        EXPECT_TRUE(storage.Get("db") == *bytes) << what << " was changed";
        EXPECT_TRUE(storage.Get("db.journal.aside1") == journal) << what;
    }
    // The very state it was made from, and what the interrupted run left.
    for (const Bytes& own : {start_, base.Get("db")}) {
        MemoryStorage storage;
        storage.Put("db", own);
        storage.Put("db.journal", journal);
        EXPECT_EQ(CodeOf([&] { OpenMemory(storage); }), std::nullopt);
        EXPECT_TRUE(storage.Get("db") == start_);
    }
    base.Remove("db"); // the file is lost, and another one is made in its place
    OpenOptions options;
    options.storage = &base;
    Database::Create("db", kPassword, options).Close();
    EXPECT_TRUE(base.Get("db.journal.aside1") == journal);
}

} // namespace
} // namespace jet
