#include "localdata/status.h"

#include "support/error.h"
#include "support/files.h"
#include "support/process_state.h"
#include "testing/update_world.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace quorvex::testing {
namespace {

using localdata::GetDataStorageComputerName;
using localdata::LMGetLastUpdateDate;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

class Status : public ::testing::Test, protected UpdateWorld {
  protected:
    std::wstring Summary() {
        localdata::LastUpdateDates dates;
        return localdata::GetSummary(object, folder.Text(), dates);
    }
};

TEST_F(Status, OneFileIsEnoughToBeInPlace) {
    EXPECT_FALSE(localdata::AreDataFilesInPlace(folder.Text()));
    AddPostZon(L"20260115");
    EXPECT_TRUE(localdata::AreDataFilesInPlace(folder.Text()));
}

TEST_F(Status, DatesComeFromEachFilesVersionRow) {
    AddFull(L"20260131");
    AddStreet(L"20251231");
    EXPECT_EQ(LMGetLastUpdateDate(object, L"F"), L"20260131");
    EXPECT_EQ(LMGetLastUpdateDate(object, L"f"), L"20260131");
    EXPECT_EQ(LMGetLastUpdateDate(object, L"t"), L"20251231");
    EXPECT_EQ(LMGetLastUpdateDate(object, L"Z"), L"") << "no such file";
    for (const wchar_t* other : {L"X", L"", L"FULL", L"FT"}) EXPECT_EQ(LMGetLastUpdateDate(object, other), L"19000101");
    EXPECT_THAT(databases.calls, ::testing::Contains(L"SELECT * From [version] WHERE [id]=2; cursor 3 lock 1"));
    EXPECT_THAT(ErrorLines(), IsEmpty());
}

TEST_F(Status, ADateThatCannotBeReadIsEmptyAndLogged) {
    const auto version = [this](const std::function<void(TableData & table)>& spoil) {
        AddFull(L"20260131", [&](FileData& data) { spoil(data.tables.at(L"Version")); });
    };
    version([](TableData& table) { table.rows[1][1] = {}; });
    EXPECT_EQ(LMGetLastUpdateDate(object, L"F"), L"") << "NULL";
    version([](TableData& table) { table.rows.pop_back(); });
    EXPECT_EQ(LMGetLastUpdateDate(object, L"F"), L"") << "no row 2";
    EXPECT_THAT(ErrorLines(), IsEmpty());
    AddFull(L"20260131");
    const auto other = Hold(L"PAF_FULL.dat");
    EXPECT_EQ(LMGetLastUpdateDate(object, L"F"), L"");
    ASSERT_EQ(ErrorLines().size(), 1U);
    EXPECT_NE(ErrorLines()[0].find(L"is in use"), std::wstring::npos);
    EXPECT_THAT(platform.messages, IsEmpty());
}

TEST_F(Status, WithoutADataPathTheUserIsTold) {
    AddFull(L"20260131");
    object.LMSetDataPath(L"");
    EXPECT_EQ(LMGetLastUpdateDate(object, L"F"), L"");
    ASSERT_EQ(platform.messages.size(), 1U);
    EXPECT_EQ(platform.messages[0].text, L"Data path must be set first");
    EXPECT_EQ(platform.messages[0].title, L"Quorvex");
}

TEST_F(Status, TheComputerIsTheServersFirstLabelOrThisOne) {
    platform.computerName = L"Counter-1";
    platform.shares = {{L'P', L"\\\\depot.example.org\\paf"}};
    EXPECT_EQ(GetDataStorageComputerName(platform, L"\\\\store\\paf\\data"), L"STORE");
    EXPECT_EQ(GetDataStorageComputerName(platform, L"\\\\store.example.org\\paf"), L"STORE");
    EXPECT_EQ(GetDataStorageComputerName(platform, L"\\\\store"), L"STORE");
    EXPECT_EQ(GetDataStorageComputerName(platform, L"P:\\data"), L"DEPOT");
    EXPECT_EQ(GetDataStorageComputerName(platform, L"C:\\data"), L"COUNTER-1");
    EXPECT_EQ(GetDataStorageComputerName(platform, L"data"), L"COUNTER-1");
    EXPECT_EQ(GetDataStorageComputerName(platform, L""), L"COUNTER-1");
    EXPECT_EQ(GetDataStorageComputerName(platform, L"\\\\?\\C:\\data"), L"COUNTER-1");
    EXPECT_EQ(GetDataStorageComputerName(platform, L"\\\\?\\UNC\\store.example.org\\paf"), L"STORE");
    EXPECT_EQ(support::Process().currentOperation, L"IsRegistered:GetDriveName 1");
}

TEST_F(Status, TheSummaryNamesWhatIsThere) {
    AddPostZon(L"20260115");
    EXPECT_EQ(Summary(), L"  PostZon data present\r\n  Last updated:15 Jan 2026\r\n"
                         L"  Data is on Machine:COUNTER-1\r\n  MDAC Version:2.81.1117.0");
    AddFull(L"20260131");
    AddStreet(L"");
    platform.dataAccessVersion.clear();
    EXPECT_EQ(Summary(), L"  Full PAF data present\r\n  Last updated:31 Jan 2026\r\n"
                         L"  Thorughfare (Street) PAF data present\r\n  Last updated:\r\n"
                         L"  PostZon data present\r\n  Last updated:15 Jan 2026\r\n"
                         L"  Data is on Machine:COUNTER-1\r\n  MDAC Version:Not LOADED");
    localdata::LastUpdateDates dates;
    localdata::GetSummary(object, folder.Text(), dates);
    EXPECT_EQ(dates.full, L"20260131");
    EXPECT_EQ(dates.street, L"");
    EXPECT_EQ(dates.postZon, L"20260115");
}

TEST_F(Status, TheDetailedSummaryAddsSystemSizesAndCounts) {
    AddFull(L"20260131");
    AddPostZon(L"20260115");
    const auto other = Hold(L"PAF_POSTZON.dat");
    const auto bytes = [this](const wchar_t* name) { return std::to_wstring(support::FileSize(folder.File(name))); };
    const std::wstring text = localdata::GetDetailedSummary(object, folder.Text());
    EXPECT_TRUE(text.starts_with(L"System:\r\n  Component version:" + object::GetVersion() + L"\r\n"));
    for (const std::wstring& part : std::vector<std::wstring>{
             L"-bit\r\n", L"  Windows version:10.0\r\n", L"  Computer:COUNTER-1\r\n", L"  User:clerk\r\n",
             L"  Database engine:strict\r\nData Status:\r\n  Full PAF data present\r\n",
             L"\r\n  PAF_FULL.dat:" + bytes(L"PAF_FULL.dat") + L" bytes, 3 records\r\n",
             L"\r\n  PAF_POSTZON.dat:" + bytes(L"PAF_POSTZON.dat") + L" bytes, cannot be read"}) {
        EXPECT_NE(text.find(part), std::wstring::npos) << ::testing::PrintToString(part);
    }
    EXPECT_EQ(text.find(L"PAF_THOURGHFARE"), std::wstring::npos);
}

} // namespace
} // namespace quorvex::testing
