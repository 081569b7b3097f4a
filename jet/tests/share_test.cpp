#include "jet_support.h"

#include <gtest/gtest.h>

namespace jet {
namespace {

using namespace testing;

std::optional<ErrorCode> TryOpen(const std::filesystem::path& path, bool writable) {
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
