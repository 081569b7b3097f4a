#include "jet_support.h"

#include "jet/change_group.h"
#include "jet/memory_storage.h"

#include <gtest/gtest.h>

#include <thread>

namespace jet {
namespace {

using namespace testing;

std::optional<ErrorCode> TryOpen(const Path& path, bool writable) {
    OpenOptions options;
    options.writable = writable;
    options.wait = std::chrono::milliseconds(0);
    return CodeOf([&] { Database::Open(path, kPassword, options); });
}

TEST(ShareTest, ReadersShareAndAWriterStandsAlone) {
    Folder folder;
    const auto path = folder / "PAF_FULL.dat";
    WriteBytes(path, ReadBytes(Sample("PAF_FULL.dat")));
    {
        Database reader = Database::Open(path, kPassword);
        EXPECT_EQ(TryOpen(path, false), std::nullopt);
        EXPECT_EQ(TryOpen(path, true), ErrorCode::kInUse);
    }
    {
        OpenOptions options;
        options.writable = true;
        Database writer = Database::Open(path, kPassword, options);
        EXPECT_EQ(TryOpen(path, false), ErrorCode::kInUse);
        EXPECT_EQ(TryOpen(path, true), ErrorCode::kInUse);
        writer.OpenTable(u"Version").Insert({{Assignment{0, 3}, Assignment{1, u"three"}}});
        writer.Close();
    }
    EXPECT_FALSE(std::filesystem::exists(folder / "PAF_FULL.dat.journal"));
    Database reader = Database::Open(path, kPassword);
    Cursor cursor = reader.Select(u"SELECT * FROM Version WHERE ID=3");
    ASSERT_TRUE(cursor.Next());
    EXPECT_EQ(Show(cursor.Current().Get(1)), "three");
}

TEST(ShareTest, AGroupThatHadItsTimeLetsReadersIn) {
    Folder folder;
    const auto path = folder / "PAF_FULL.dat";
    WriteBytes(path, ReadBytes(Sample("PAF_FULL.dat")));
    OpenOptions options;
    options.writable = true;
    options.yields = true;
    Database writer = Database::Open(path, kPassword, options);
    const Table table = writer.OpenTable(u"Version");
    ChangeGroup group(writer, {.time = std::chrono::milliseconds(0)});
    for (std::int32_t id = 3; id < 5; ++id) {
        group.Insert(table, {{0, id}, {1, u"new"}});
        EXPECT_EQ(TryOpen(path, false), std::nullopt);
        EXPECT_EQ(Database::Open(path, kPassword).OpenTable(u"Version").CountRows(), static_cast<std::uint64_t>(id));
    }
    EXPECT_EQ(TryOpen(path, true), ErrorCode::kInUse) << "its turn is not over";
}

/// Files on a share: every opening takes its time, the first ones are refused, and then the share may be gone.
class FarStorage final : public Storage {
  public:
    FarStorage() { base_.Put("db", ReadBytes(Sample("PAF_FULL.dat"))); }
    std::unique_ptr<File> Open(const Path& path, OpenMode mode) override {
        std::this_thread::sleep_for(std::chrono::milliseconds(60));
        if (refusals_ > 0 && refusals_--) throw Error(ErrorCode::kInUse, "in use");
        Answer();
        return base_.Open(path, mode);
    }
    bool Exists(const Path& path) override {
        Answer();
        return base_.Exists(path);
    }
    void Remove(const Path& path) override { base_.Remove(path); }
    void Rename(const Path& from, const Path& to) override { base_.Rename(from, to); }
    void FlushNames(const Path&) override {}

    int refusals_ = 0;
    bool gone_ = false;

  private:
    void Answer() const {
        if (gone_) throw Error(ErrorCode::kIo, "the share does not answer");
    }
    MemoryStorage base_;
};

TEST(ShareTest, AShareThatAnswersLateIsWaitedForAndOneThatIsGoneIsAnError) {
    FarStorage storage;
    OpenOptions options;
    options.storage = &storage;
    options.wait = std::chrono::milliseconds(50);
    storage.refusals_ = 1; // it takes longer than the whole wait
    EXPECT_EQ(Database::Open("db", kPassword, options).OpenTable(u"Version").CountRows(), 2U);
    storage.refusals_ = 1000;
    EXPECT_EQ(CodeOf([&] { Database::Open("db", kPassword, options); }), ErrorCode::kInUse);
    storage.refusals_ = 0;
    storage.gone_ = true;
    EXPECT_EQ(CodeOf([&] { Database::Open("db", kPassword, options); }), ErrorCode::kIo);
}

TEST(ShareTest, LongPathsAndForeignLettersWork) {
    Folder folder;
    std::filesystem::path path = folder.path();
    while (path.native().size() < 280) path /= std::filesystem::path(u"Postleitzahlen \u0161\u017E \u65E5\u672C");
#ifdef _WIN32
    std::filesystem::path made = std::filesystem::path(L"\\\\?\\" + std::filesystem::absolute(path).native());
#else
    std::filesystem::path made = path;
#endif
    std::filesystem::create_directories(made);
    path /= u"d\u00E4t.dat";
    Database db = Database::Create(path, u"pass");
    db.CreateTable({u"T", {{.name = u"A"}}, {}}).Insert({{Assignment{0, u"x"}}});
    db.Close();
    EXPECT_EQ(CodeOf([&] { Database::Open(path, u"wrong"); }), ErrorCode::kWrongPassword);
    EXPECT_EQ(Database::Open(path, u"pass").OpenTable(u"t").CountRows(), 1U);
    EXPECT_EQ(CodeOf([&] { Database::Create(path, u""); }), ErrorCode::kFileExists);
    EXPECT_EQ(CodeOf([&] { Database::Open(path.parent_path() / u"none.dat", u""); }), ErrorCode::kFileNotFound);
    // One by one: the library's removal of whole trees never ends at some lengths of paths under Windows.
    EXPECT_TRUE(std::filesystem::remove(made / u"d\u00E4t.dat"));
    for (; made.filename() != folder.path().filename(); made = made.parent_path()) std::filesystem::remove(made);
}

} // namespace
} // namespace jet
