#include "cut_storage.h"
#include "jet_support.h"

#include "jet/change_group.h"
#include "jet/check.h"
#include "jet/memory_storage.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdlib>
#include <map>
#include <random>

namespace jet {
namespace {

using namespace testing;
using Fate = CutStorage::Fate;

/// The rows of the table, sorted; a row written twice is seen.
using Contents = std::vector<std::string>;

enum class Manner { kSingle, kGroups, kSpilled };
constexpr std::array<const char*, 3> kMannerNames = {"single changes", "groups", "spilled groups"};
constexpr int kChanges = 14;

/// A small file: keys long enough for a tree of two levels, memos of their own pages.
const CutStorage::Image& StartImage() {
    static const CutStorage::Image image = [] {
        MemoryStorage storage;
        OpenOptions options;
        options.storage = &storage;
        Database db = Database::Create("db", kPassword, options);
        db.Begin();
        Table table = db.CreateTable({u"T",
                                      {{.name = u"K", .length = 200},
                                       {.name = u"M", .type = ColumnType::kMemo},
                                       {.name = u"V", .type = ColumnType::kLong}},
                                      {{.name = u"K", .columns = {u"K"}}}});
        for (int i = 0; i < 24; i += 2) {
            table.Insert(
                {{Assignment{0, std::u16string(150, u'K') + Wide(std::to_string(100 + i))},
                  Assignment{1, std::u16string(static_cast<std::size_t>(i) * 150 + 1, u'z')}, Assignment{2, 0}}});
        }
        db.Close();
        return CutStorage::Image{{"db", storage.Get("db")}};
    }();
    return image;
}

/// A row's key, version and memo, which is one letter many times.
std::string RowText(const std::string& key, const std::string& version, std::size_t size, char16_t letter) {
    return key + "|" + version + "|" + std::to_string(size) + static_cast<char>(letter);
}

Contents Read(Database& db) {
    Contents rows;
    const Table table = db.OpenTable(u"T");
    for (Cursor cursor = table.Rows(); cursor.Next();) {
        const Row& row = cursor.Current();
        const Value memo = row.Get(1);
        const auto& text = std::get<std::u16string>(memo);
        const bool whole = text.find_first_not_of(text.substr(0, 1)) == std::u16string::npos;
        rows.push_back(RowText(Show(row.Get(0)), Show(row.Get(2)), text.size(), whole ? text.front() : u'?'));
    }
    std::sort(rows.begin(), rows.end());
    return rows;
}

/// What the file may hold: the state that was last acknowledged, and what an unfinished transaction leads to.
class Expectation {
  public:
    explicit Expectation(Contents start) : states_{std::move(start)} {}
    void Promise(Contents state) { states_.push_back(std::move(state)); }
    void Acknowledge() {
        old_.insert(old_.end(), states_.begin(), states_.end() - 1);
        states_.erase(states_.begin(), states_.end() - 1);
    }
    /// After an error any record of the group may be the last one.
    bool MayHoldPrefix(const Contents& found) const { return Contains(states_, found); }
    bool MayHold(const Contents& found) const { return found == states_.front() || found == states_.back(); }
    bool WasBefore(const Contents& found) const { return Contains(old_, found); }

  private:
    static bool Contains(const std::vector<Contents>& states, const Contents& found) {
        return std::find(states.begin(), states.end(), found) != states.end();
    }
    std::vector<Contents> states_;
    std::vector<Contents> old_;
};

OpenOptions Options(Storage& storage, Manner manner = Manner::kSingle, bool writable = false) {
    OpenOptions options;
    options.storage = &storage;
    options.writable = writable;
    options.wait = std::chrono::milliseconds(0);
    if (manner == Manner::kSpilled) options.spillPages = 3;
    return options;
}

Contents StartContents() {
    static const Contents rows = [] {
        CutStorage storage(StartImage(), {});
        Database db = Database::Open("db", kPassword, Options(storage));
        return Read(db);
    }();
    return rows;
}

/// Changes, the same for the same seed: every kind of change, in groups or not.
class Work {
  public:
    Work(Storage& storage, Manner manner, std::uint32_t seed, Expectation& expected)
        : db_(Database::Open("db", kPassword, Options(storage, manner, true))), table_(db_.OpenTable(u"T")),
          expected_(expected), random_(seed), manner_(manner) {}

    /// Throws what the storage throws.
    void Run() {
        std::optional<ChangeGroup> group;
        GroupLimits limits;
        limits.time = std::chrono::hours(1);
        if (manner_ == Manner::kGroups) limits.records = 3; // and so it commits groups that need not last
        if (manner_ != Manner::kSingle) group.emplace(db_, limits);
        for (int i = 0; i < kChanges; ++i) {
            Change(group ? &*group : nullptr);
            if (group && random_() % 5 != 0) continue;
            if (group) group->Commit();
            expected_.Acknowledge();
        }
        if (group) group->Commit();
        group.reset();
        expected_.Acknowledge();
        db_.Close();
    }
    Database& database() { return db_; }

  private:
    void Change(ChangeGroup* group) {
        const int key = static_cast<int>(random_() % 24);
        const std::u16string name = std::u16string(150, u'K') + Wide(std::to_string(100 + key));
        const auto size = 1 + random_() % 6000;
        const auto letter = static_cast<char16_t>(u'a' + ++version_);
        const std::vector<Assignment> values = {{0, name}, {1, std::u16string(size, letter)}, {2, version_}};
        const std::string row = Show(name) + "|";
        const auto old = std::find_if(rows_.begin(), rows_.end(), [&](const auto& r) { return r.starts_with(row); });
        const bool deletes = group == nullptr && old != rows_.end() && random_() % 4 == 0;
        const auto found = table_.FindFirst(Equals(u"K", name));
        if (old != rows_.end()) rows_.erase(old);
        if (!deletes) rows_.push_back(RowText(Show(name), std::to_string(version_), size, letter));
        std::sort(rows_.begin(), rows_.end());
        expected_.Promise(rows_);
        if (deletes) {
            table_.Delete(*found);
        } else if (found && group) {
            group->Update(table_, *found, values);
        } else if (found) {
            table_.Update(*found, values);
        } else if (group) {
            group->Insert(table_, values);
        } else {
            table_.Insert(values);
        }
    }

    Database db_;
    Table table_;
    Expectation& expected_;
    std::mt19937 random_;
    Manner manner_;
    std::int32_t version_ = 0;
    Contents rows_ = StartContents(); ///< as the file should hold them
};

struct Tally {
    int runs = 0;
    int interrupted = 0;
    int damaged = 0;
    int wrong = 0;
    int lost = 0;
};

/// Looks at what a cut left, possibly cutting again while the change is rolled back.
void Check(CutStorage::Image image, const CutStorage::Habits& habits, const Expectation& expected, bool prefix,
           std::mt19937& random, Tally& tally) {
    for (int again = static_cast<int>(random() % 3); again > 0; --again) {
        CutStorage storage(image, habits);
        storage.Doom(random() % 40, random() % 2 == 0 ? Fate::kCutBefore : Fate::kCutAfter);
        try {
            Database::Open("db", kPassword, Options(storage));
        } catch (const Error&) {
            if (!storage.isCut()) ++tally.damaged;
        }
        image = storage.AfterCut(random);
    }
    CutStorage storage(image, habits);
    try {
        Database db = Database::Open("db", kPassword, Options(storage));
        if (!ErrorsOf(CheckIntegrity(db)).empty()) {
            ++tally.damaged;
            return;
        }
        const Contents found = Read(db);
        if (prefix ? expected.MayHoldPrefix(found) : expected.MayHold(found)) return;
        ++(expected.WasBefore(found) ? tally.lost : tally.wrong);
    } catch (const Error&) {
        ++tally.damaged;
    }
}

std::size_t CallsOf(Manner manner, std::uint32_t seed, const CutStorage::Habits& habits) {
    CutStorage storage(StartImage(), habits);
    Expectation expected(StartContents());
    Work(storage, manner, seed, expected).Run();
    return storage.calls();
}

void CutOnce(Manner manner, const CutStorage::Habits& habits, std::mt19937& random, Tally& tally) {
    static std::map<std::pair<Manner, std::uint32_t>, std::size_t> calls;
    const std::uint32_t seed = random() % 16;
    auto& count = calls[{manner, seed}];
    if (count == 0) count = CallsOf(manner, seed, habits);
    CutStorage storage(StartImage(), habits);
    storage.Doom(random() % count, random() % 2 == 0 ? Fate::kCutBefore : Fate::kCutAfter);
    Expectation expected(StartContents());
    ++tally.runs;
    try {
        Work(storage, manner, seed, expected).Run();
    } catch (const Error&) {
        ++tally.interrupted;
    }
    Check(storage.AfterCut(random), habits, expected, manner == Manner::kGroups, random, tally);
}

/// One call fails; the database goes on rightly or refuses to, and a cut afterwards does no harm either.
void FailOnce(Manner manner, const CutStorage::Habits& habits, std::mt19937& random, Tally& tally) {
    const std::uint32_t seed = random() % 16;
    CutStorage storage(StartImage(), habits);
    Expectation expected(StartContents());
    ++tally.runs;
    try {
        static std::map<std::pair<Manner, std::uint32_t>, std::size_t> calls;
        auto& count = calls[{manner, seed}];
        if (count == 0) count = CallsOf(manner, seed, habits);
        storage.Doom(random() % count, random() % 2 == 0 ? Fate::kErrorBefore : Fate::kErrorAfter);
        Work work(storage, manner, seed, expected);
        try {
            work.Run();
        } catch (const Error&) {
            ++tally.interrupted;
            std::optional<Contents> found;
            try {
                found = Read(work.database());
            } catch (const Error&) {
                found.reset(); // it refuses to go on
            }
            if (found && !expected.MayHoldPrefix(*found)) ++tally.wrong;
        }
    } catch (const Error&) {
        ++tally.interrupted; // the opening failed
    }
    Check(storage.AfterCut(random), habits, expected, true, random, tally);
}

/// QUORVEX_CUTS sets the number of cuts in every mode and QUORVEX_SEED other ones, for longer runs.
int Setting(const char* name, int usual) {
    const char* const asked = std::getenv(name);
    return asked ? std::atoi(asked) : usual;
}

using Once = void(Manner, const CutStorage::Habits&, std::mt19937&, Tally&);

void RunAll(const char* what, Once* once, int usual) {
    const int runs = Setting("QUORVEX_CUTS", usual);
    std::mt19937 random(static_cast<std::uint32_t>(Setting("QUORVEX_SEED", 1)));
    for (const Manner manner : {Manner::kSingle, Manner::kGroups, Manner::kSpilled}) {
        for (const bool namesDurable : {true, false}) {
            Tally tally;
            while (tally.runs < runs) {
                constexpr std::array<std::size_t, 3> kTears = {16, 512, 4096};
                once(manner, {namesDurable, kTears[random() % kTears.size()]}, random, tally);
            }
            std::printf("%s, %s, names %s: %d, damaged %d, wrong %d, lost %d\n", what,
                        kMannerNames[static_cast<std::size_t>(manner)], namesDurable ? "durable" : "not durable",
                        tally.runs, tally.damaged, tally.wrong, tally.lost);
            EXPECT_EQ(tally.damaged, 0);
            EXPECT_EQ(tally.wrong, 0);
            EXPECT_EQ(tally.lost, 0);
            EXPECT_GT(tally.interrupted, tally.runs / 8);
        }
    }
}

TEST(CutTest, APowerCutAtAnyCallLeavesACommittedState) {
    RunAll("cuts", CutOnce, 400);
}

TEST(CutTest, AnErrorBeforeOrAfterItsEffectIsNeverTakenForTheOther) {
    RunAll("errors", FailOnce, 200);
}

} // namespace
} // namespace jet
