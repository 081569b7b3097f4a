#include "support/error.h"
#include "support/files.h"
#include "testing/temp_folder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>

namespace quorvex::support {
namespace {

using quorvex::testing::TempFolder;
using ::testing::UnorderedElementsAre;

TEST(Files, AnEmptyFileCountsAsAbsent) {
    const TempFolder folder;
    const std::wstring file = folder.File(L"a.txt");
    EXPECT_EQ(FileSize(file), -1);
    EXPECT_FALSE(FileExists(file));
    WriteFileBytes(file, "");
    EXPECT_EQ(FileSize(file), 0);
    EXPECT_FALSE(FileExists(file));
    WriteFileBytes(file, "x");
    EXPECT_EQ(FileSize(file), 1);
    EXPECT_TRUE(FileExists(file));
    EXPECT_EQ(FileSize(folder.Text()), -1) << "a folder is no file";
    EXPECT_EQ(FileSize(L""), -1);
}

TEST(Files, AFileOfTwoGibibytesHasNoSize) {
    const TempFolder folder;
    const std::wstring file = folder.File(L"large.dat");
    WriteFileBytes(file, "x");
    std::error_code error;
    std::filesystem::resize_file(ToPath(file), std::uintmax_t{0x7FFFFFFF}, error);
    if (error) GTEST_SKIP() << "no room for a sparse file of 2 GiB: " << error.message();
    EXPECT_EQ(FileSize(file), 0x7FFFFFFF);
    std::filesystem::resize_file(ToPath(file), std::uintmax_t{0x80000000}, error);
    EXPECT_EQ(FileSize(file), -1);
}

TEST(Files, WriteTextFileLeavesOnlyItsLine) {
    const TempFolder folder;
    const std::wstring file = folder.File(L"v\u00e9rsion \u4e2d.xml");
    WriteTextFile(file, L"a long first text");
    WriteTextFile(file, L"caf\u00e9");
    EXPECT_EQ(ReadFileBytes(file), "caf\xC3\xA9\r\n");
    EXPECT_THROW(WriteTextFile(folder.File(L"no\\such\\folder.txt"), L"x"), Error);
    EXPECT_THROW(ReadFileBytes(folder.File(L"none")), Error);
}

TEST(Files, NamesAndLists) {
    const TempFolder folder;
    EXPECT_EQ(FileNameOf(L"C:\\data\\x.dat"), L"x.dat");
    EXPECT_EQ(FileNameOf(L"x.dat"), L"x.dat");
    EXPECT_EQ(FileNameOf(L"C:\\data\\"), L"");
    for (const wchar_t* name :
         {L"UPDATE_F_1.zip", L"update_t_2.ZIP", L"UPDATE_F_3.zip.txt", L"other.zip", L"UPDATE_.zip"}) {
        WriteFileBytes(folder.File(name), "x");
    }
    std::filesystem::create_directory(ToPath(folder.File(L"UPDATE_F_4.zip")));
    EXPECT_THAT(ListFiles(folder.Text(), L"Update_", L".zip"),
                UnorderedElementsAre(L"UPDATE_F_1.zip", L"update_t_2.ZIP", L"UPDATE_.zip"));
    EXPECT_THAT(ListFiles(folder.File(L"none"), L"", L""), UnorderedElementsAre());
}

TEST(Files, RenamesReplaceAndFailuresAreQuiet) {
    const TempFolder folder;
    WriteFileBytes(folder.File(L"a"), "new");
    WriteFileBytes(folder.File(L"b"), "old");
    EXPECT_TRUE(RenameFileQuietly(folder.File(L"a"), folder.File(L"b")));
    EXPECT_EQ(ReadFileBytes(folder.File(L"b")), "new");
    EXPECT_FALSE(RenameFileQuietly(folder.File(L"a"), folder.File(L"c")));
    EXPECT_TRUE(DeleteFileQuietly(folder.File(L"b")));
    EXPECT_FALSE(DeleteFileQuietly(folder.File(L"b")));
}

TEST(Files, LongPathsWork) {
    const TempFolder folder;
    std::wstring deep = folder.Text();
    for (int i = 0; i < 12; ++i) {
        deep += L"\\" + std::wstring(30, static_cast<wchar_t>(L'a' + i));
        std::filesystem::create_directory(ToPath(deep));
    }
    const std::wstring file = deep + L"\\\\deep.txt";
    WriteFileBytes(file, "deep");
    EXPECT_EQ(FileSize(file), 4);
    EXPECT_EQ(ReadFileBytes(file), "deep");
    EXPECT_TRUE(DeleteFileQuietly(file));
    // The folder's own clean-up knows no long paths on every system.
    while (deep.size() > folder.Text().size()) {
        std::filesystem::remove(ToPath(deep));
        deep.resize(deep.rfind(L'\\'));
    }
}

TEST(Files, OneHolderAtATime) {
    const TempFolder folder;
    const std::wstring file = folder.File(L"a.log");
    EXPECT_FALSE(FileHold(file, false)) << "nothing to hold";
    {
        FileHold hold(file, true);
        ASSERT_TRUE(hold);
        EXPECT_FALSE(FileHold(file, true));
        EXPECT_TRUE(hold.Append("one"));
        EXPECT_EQ(FileSize(file), 3) << "readable meanwhile";
        ASSERT_TRUE(RenameFileQuietly(file, folder.File(L"b.log"))) << "and may be renamed";
        EXPECT_FALSE(FileHold(folder.File(L"b.log"), false));
        EXPECT_TRUE(FileHold(file, true).Append("two")) << "the name is free";
    }
    EXPECT_TRUE(FileHold(file, true).Append("three"));
    EXPECT_EQ(ReadFileBytes(file), "twothree");
    EXPECT_EQ(ReadFileBytes(folder.File(L"b.log")), "one");
}

} // namespace
} // namespace quorvex::support
