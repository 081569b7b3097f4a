#include "jet/database.h"
#include "lookups/address_list.h"
#include "lookups/address_record.h"
#include "lookups/local_fixture.h"
#include "lookups/postcode.h"
#include "lookups/postzon.h"
#include "testing/sample_data.h"

#include <random>

namespace quorvex::lookups {
namespace {

class SpoiledDataTest : public quorvex::testing::LocalTest {
  protected:
    SpoiledDataTest() {
        quorvex::testing::CopySampleData(folder.Text());
        UseFolder(folder.Text());
    }
    std::string Full() { return support::ReadFileBytes(folder.File(L"PAF_FULL.dat")); }
    void SetFull(const std::string& bytes) { support::WriteFileBytes(folder.File(L"PAF_FULL.dat"), bytes); }
    // A failed search says why, in the object and in the log.
    void ExpectFailure(const wchar_t* why) {
        EXPECT_FALSE(GetFullAddressToList(object, L"CR2 9AA")) << support::ToUtf8(why);
        EXPECT_FALSE(object.General_confirm);
        EXPECT_FALSE(object.General_errormessage.empty()) << support::ToUtf8(why);
        EXPECT_NE(ErrorLog().find("\tError:\t"), std::string::npos) << support::ToUtf8(why);
        support::DeleteFileQuietly(logs.File(L"Error1.log"));
    }

    quorvex::testing::TempFolder folder;
};

TEST_F(SpoiledDataTest, MissingFilesAreNamedAndShown) {
    for (const wchar_t* name : {L"PAF_FULL.dat", L"PAF_THOURGHFARE.dat", L"PAF_POSTZON.dat"}) {
        support::DeleteFileQuietly(folder.File(name));
    }
    const auto missing = [&](const wchar_t* name) {
        return L"Data file does not exist " + folder.Text() + L"\\" + name;
    };
    EXPECT_FALSE(GetFullAddressToList(object, L"CR2 9AA"));
    EXPECT_EQ(object.General_errormessage, missing(L"PAF_FULL.dat"));
    EXPECT_FALSE(GetThoroughfareAddressRecord(object, L"CR2 9AA"));
    EXPECT_EQ(object.General_errormessage, missing(L"PAF_THOURGHFARE.dat"));
    EXPECT_FALSE(GetPostZonAddressRecord(object, L"CR2 9AA"));
    EXPECT_EQ(object.General_errormessage, missing(L"PAF_POSTZON.dat"));
    ASSERT_EQ(platform.messages.size(), 3U);
    EXPECT_EQ(platform.messages[0].text, missing(L"PAF_FULL.dat"));
    EXPECT_EQ(platform.messages[0].style, support::kStyleCritical);
    EXPECT_EQ(platform.messages[0].title, L"Quorvex Lookup");
    // The postcode that is answered without data is no exception, and an empty file is no file.
    SetFull("");
    for (const auto& lookup :
         {+[](object::Quorvex& made) { return GetFullAddressToList(made, L"ZZ99"); },
          +[](object::Quorvex& made) { return GetFullAddressRecordByAddressID(made, L"ZZ99_1_F"); }}) {
        EXPECT_FALSE(lookup(object));
        EXPECT_EQ(object.General_errormessage, missing(L"PAF_FULL.dat"));
    }
    EXPECT_FALSE(GetThoroughfareAddressRecord(object, L"ZZ99"));
    EXPECT_EQ(object.General_errormessage, missing(L"PAF_THOURGHFARE.dat"));
    EXPECT_EQ(ErrorLog(), "") << "told, not logged";
    support::DeleteFileQuietly(folder.File(L"PAF_FULL.dat"));
    std::filesystem::create_directory(folder.Path() / "PAF_FULL.dat"); // a folder of that name is no file
    EXPECT_FALSE(GetFullAddressToList(object, L"CR2 9AA"));
    EXPECT_EQ(object.General_errormessage, missing(L"PAF_FULL.dat"));
}

TEST_F(SpoiledDataTest, FilesThatAreNoneOfOursFailClearly) {
    const std::string good = Full();
    const auto with = [&good](std::size_t at, char byte) {
        std::string other = good;
        other[at] = byte;
        return other;
    };
    const std::pair<const wchar_t*, std::string> files[] = {{L"truncated", good.substr(0, good.size() * 6 / 10)},
                                                            {L"zeroes", std::string(good.size(), '\0')},
                                                            {L"older version", with(0x14, 0)},
                                                            {L"newer version", with(0x14, 2)},
                                                            {L"another password", with(0x42, good[0x42] ^ 1)},
                                                            {L"one byte", "x"}};
    for (const auto& [why, bytes] : files) {
        SetFull(bytes);
        ExpectFailure(why);
    }
    SetFull(good);
    EXPECT_TRUE(GetFullAddressToList(object, L"CR2 9AA"));
    EXPECT_EQ(object.RecordCount, 1);
}

TEST_F(SpoiledDataTest, LockedForWritingFailsAndReadersShare) {
    jet::OpenOptions writing;
    writing.writable = true;
    const auto file = support::ToPath(folder.File(L"PAF_FULL.dat"));
    {
        const auto writer = jet::Database::Open(file, u"lanternfox", writing);
        ExpectFailure(L"somebody writes");
    }
    const auto reader = jet::Database::Open(file, u"lanternfox", {});
    EXPECT_TRUE(GetFullAddressToList(object, L"CR2 9AA"));
}

TEST_F(SpoiledDataTest, QuotesAndForeignTextInAPostcode) {
    for (const wchar_t* postcode : {L"O'HARE", L"';--", L"\u00A3\u20AC", L"\t\r\n", L"%", L"[x]"}) {
        const bool done = GetFullAddressToList(object, postcode);
        EXPECT_EQ(object.RecordCount, 0) << support::ToUtf8(postcode);
        EXPECT_EQ(done, std::wstring(postcode).find(L'\'') == std::wstring::npos) << support::ToUtf8(postcode);
    }
    EXPECT_TRUE(GetFullAddressToList(object, std::wstring(1 << 20, L'A')));
    EXPECT_EQ(object.RecordCount, 0);
}

TEST_F(SpoiledDataTest, SubstitutionTableWithABadLine) {
    support::WriteFileBytes(folder.File(L"PAF_SUBSTITUTION.txt"), "AB\nCDE\n");
    EXPECT_FALSE(GetFullAddressToList(object, L"CR2 9AA"));
    EXPECT_NE(object.General_errormessage.find(L"2"), std::wstring::npos); // the line
    support::DeleteFileQuietly(folder.File(L"PAF_SUBSTITUTION.txt"));
    EXPECT_TRUE(GetFullAddressToList(object, L"CR2 9AA"));                 // scrambled, but an answer
    support::WriteFileBytes(folder.File(L"PAF_SUBSTITUTION.txt"), "{Z\n"); // what marks the premises goes
    EXPECT_TRUE(GetFullAddressToList(object, L"CR2 9AA"));
    EXPECT_EQ(object.RecordCount, 0);
    EXPECT_NE(ErrorLog().find(" in the address file cannot be read as packed"), std::string::npos);
}

TEST(Postcode, FormsAndShapes) {
    const std::pair<const wchar_t*, const wchar_t*> forms[] = {
        {L"", L""},
        {L"AB1 3CD", L"AB1 3CD"},
        {L"AB123CD", L"AB123CD"},
        {L"AB12 3CD", L"AB123CD"},
        {L"AB12  3CD", L"AB123CD"},
        {L"AB13CD", L"AB1 3CD"},
        {L"sw1a 1aa", L"sw1a1aa"},
        {L"AB1 !CD", L"AB1 1CD"},
        {L"AB1 *CD", L"AB1 *CD"},
        {L"AB1 3", L"AB1 3"},
        {L"!\"\u00A3$%^&*()xyz", L"1234567*90xyz"},
        {L"a   b", L"a  b"}, // three blanks become two
    };
    for (const auto& [typed, formatted] : forms) {
        EXPECT_EQ(FormatPostCode(typed), formatted) << support::ToUtf8(typed);
    }
    for (const wchar_t* shape : {L"A1 1AA", L"a11aa", L"AA1 1AA", L"AA11 1AA", L"A1A 1AA", L"AA1A 1AA", L" zz99 "}) {
        EXPECT_TRUE(HasPostcodeShape(shape)) << support::ToUtf8(shape);
    }
    for (const wchar_t* shape : {L"", L"12", L"AAA1 1AA", L"A1 1A", L"A1 A1A", L"A111 1AA", L"Rose Cottage"}) {
        EXPECT_FALSE(HasPostcodeShape(shape)) << support::ToUtf8(shape);
    }
    EXPECT_EQ(SplitCommaForm(L"Rose Cottage, PE13 2QL").postcode, L"PE13 2QL");
    EXPECT_EQ(SplitCommaForm(L"PE13 2QL,8").house, L"8");
    EXPECT_EQ(SplitCommaForm(L"a,b,c").house, L"b c");             // lines hold no commas
    for (const wchar_t* typed : {L"AB! 6JR , 8", L"8, AB! 6JR"}) { // shifted digits are still a postcode
        EXPECT_EQ(SplitCommaForm(typed).postcode, L"AB! 6JR");
        EXPECT_EQ(SplitCommaForm(typed).house, L"8");
    }
    for (const wchar_t* typed : {L"FLAT 6, 5, AB1 6JR", L"AB1 6JR, FLAT 6,5"}) {
        EXPECT_EQ(SplitCommaForm(typed).postcode, L"AB1 6JR");
        EXPECT_EQ(SplitCommaForm(typed).house, L"FLAT 6 5");
    }
}

} // namespace
} // namespace quorvex::lookups
