#include "localdata/substitution.h"

#include "support/error.h"
#include "support/files.h"
#include "testing/temp_folder.h"
#include "testing/truth.h"

#include <gtest/gtest.h>

#include <chrono>
#include <fstream>

namespace quorvex::localdata {
namespace {

std::wstring ErrorOf(std::string_view bytes) {
    try {
        SubstitutionTable::Parse(bytes);
    } catch (const support::Error& error) {
        return error.Description();
    }
    return L"accepted";
}

TEST(Substitution, SampleTableTakesBackWhatItScrambles) {
    const SubstitutionTable table = LoadSubstitution(testing::DataFolder(L"sample"));
    for (const wchar_t* plain : {L"{|12!FLAT 3|THE MILL!}HIGH STREET|MARCH|CAMBS", L"O'HARE & SONS", L"\u00C9", L""}) {
        const std::wstring stored = table.Scramble(plain);
        EXPECT_EQ(table.Unscramble(stored), plain);
        EXPECT_EQ(table.Unscramble(support::UpperCase(stored)), plain);
    }
    // Lines of the table whose stored or plain character is a blank, a letter in lower case, a digit, a
    // character without a line.
    EXPECT_EQ(table.Unscramble(L"Jj 5\u0175"), L"  J5\u0175");
    EXPECT_EQ(table.Scramble(L" "), L"J");
}

TEST(Substitution, ByteOrderMarkAndLineEnds) {
    const SubstitutionTable table = SubstitutionTable::Parse("\xEF\xBB\xBF"
                                                             "AB\r\nB \r\n\xC5\xB4"
                                                             "A");
    EXPECT_EQ(table.Unscramble(L"aBx\u0174\u0175"), L"B xAA");
}

TEST(Substitution, MissingFileIsTheIdentity) {
    const SubstitutionTable table = LoadSubstitution(testing::DataFolder(L"no such folder"));
    EXPECT_EQ(table.Unscramble(L"{a|B!}"), L"{a|B!}");
    EXPECT_EQ(SubstitutionTable::Parse("").Unscramble(L"aB"), L"aB");
}

TEST(Substitution, TheSharedTableIsReadAgainWhenItsFileChanges) {
    const testing::TempFolder folder;
    const std::filesystem::path file = support::ToPath(folder.File(kSubstitutionFile));
    const auto write = [&](const char* line, std::chrono::hours age) {
        std::ofstream(file, std::ios::binary) << line;
        std::filesystem::last_write_time(file, std::filesystem::file_time_type::clock::now() - age);
    };
    const auto stored = [&] { return SharedSubstitution(folder.Text())->Unscramble(L"A"); };
    EXPECT_EQ(stored(), L"A") << "no file";
    write("AX", std::chrono::hours(5));
    EXPECT_EQ(stored(), L"X");
    EXPECT_EQ(SharedSubstitution(folder.Text()), SharedSubstitution(folder.Text())) << "read once";
    write("AY", std::chrono::hours(4));
    EXPECT_EQ(stored(), L"Y") << "of the same size";
    write("AZ", std::chrono::hours(0));
    EXPECT_EQ(stored(), L"Z");
    EXPECT_NE(SharedSubstitution(folder.Text()), SharedSubstitution(folder.Text())) << "too young to be relied on";
    std::filesystem::remove(file);
    EXPECT_EQ(stored(), L"A");
}

TEST(Substitution, MalformedLinesAreNamed) {
    const std::wstring line3 = L"PAF_SUBSTITUTION.txt, line 3: ";
    EXPECT_TRUE(ErrorOf("AB\nBA\nC\n").starts_with(line3 + L"a line holds")) << "one character";
    EXPECT_TRUE(ErrorOf("AB\nBA\n\nCD\n").starts_with(line3 + L"a line holds")) << "none";
    EXPECT_TRUE(ErrorOf("AB\nBA\nCD \n").starts_with(line3 + L"a line holds")) << "three";
    EXPECT_TRUE(ErrorOf("AB\nBA\n\xC3(\n").starts_with(line3 + L"not valid")) << "bad UTF-8";
    EXPECT_TRUE(ErrorOf("AB\nBA\naX\n").starts_with(line3 + L"the stored")) << "given twice";
    EXPECT_TRUE(ErrorOf("AB\nBA\n5A\n").starts_with(line3 + L"digits")) << "a digit";
    EXPECT_TRUE(ErrorOf("AB\nBA\n\xF0\x9F\x98\x80"
                        "A\n")
                    .starts_with(line3 + L"a line holds"))
        << "beyond 16 bits";
    EXPECT_EQ(ErrorOf("AB\nBA\n55\n"), L"accepted");
}

} // namespace
} // namespace quorvex::localdata
