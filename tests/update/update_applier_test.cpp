#include "update/update_applier.h"

#include "database/connection_string.h"
#include "support/error.h"
#include "support/process_state.h"
#include "support/text.h"
#include "testing/update_world.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace quorvex::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;

constexpr wchar_t kPackage[] = L"UPDATE_F_20240131.dat";

class UpdateApplier : public ::testing::Test, protected UpdateWorld {
  protected:
    // Applies the unpacked package; the error's words if it fails.
    std::string Apply(const std::wstring& name) {
        update::Progress progress(platform);
        progress.SetCaption(L"Apply changes");
        try {
            update::UpdateData(object, progress, folder.Text(), folder.File(name), name.at(7), name.substr(9, 8),
                               count);
            return {};
        } catch (const support::Error& error) {
            return support::ToUtf8(error.Description());
        }
    }
    std::wstring Stage() const { return support::Process().currentOperation; }
    std::wstring FullUpdateOf(const wchar_t* key) const { return UpdateOf(L"PAF_FULL.dat", L"PAF_FULLAddress", key); }

    long count = -1;
};

// Every call in its order, since the data access layer behind it answers to nothing else, and the stage it is made in.
TEST_F(UpdateApplier, ReplacesAddsAndStampsWithTheDocumentedCallsInOrder) {
    AddFull(L"20240101");
    AddUnpacked(kPackage, {L"AB1 1AB", L"ZZ9 9ZZ"});
    std::vector<std::wstring> stages;
    databases.onCall = [&](const std::wstring&) {
        if (stages.empty() || stages.back() != Stage()) stages.push_back(Stage());
    };
    ASSERT_EQ(Apply(kPackage), "");
    EXPECT_EQ(count, 2);
    const auto opened = [this](const wchar_t* name) {
        return L"Open " + database::ConnectionString(folder.File(name));
    };
    EXPECT_THAT(databases.calls,
                ElementsAre(opened(kPackage), opened(L"PAF_FULL.dat"), L"SELECT * From PAF_FULLAddress cursor 3 lock 1",
                            L"SELECT * From PAF_FULLAddress cursor 2 lock 3",                                   //
                            L"Find [FT_PostCode]='AB1 1AB'", L"Update",                                         //
                            L"Set FT_PostCode", L"Set FT_Address", L"Set FT_Update", L"UpdateBatch",            //
                            L"Find [FT_PostCode]='ZZ9 9ZZ'", L"AddNew",                                         //
                            L"Set FT_PostCode", L"Set FT_Address", L"Set FT_Update", L"UpdateBatch",            //
                            L"Recordset.Close", L"Recordset.Close",                                             //
                            L"SELECT * From [Version] cursor 2 lock 3", L"Find [ID]=2", L"Update", L"Set Text", //
                            L"UpdateBatch", L"Recordset.Close",                                                 //
                            L"Connection.Close", L"Connection.Close"));
    const std::wstring merge = L"Update:UpdateData:AddOrUpdateRecordAddress:";
    EXPECT_THAT(stages,
                ElementsAre(L"Update:UpdateData:Stage 3 Opening update file with ADO",
                            L"Update:UpdateData:Stage 4 Opening data file to update", L"Update:UpdateData:Stage 5",
                            merge + L"Stage 3", merge + L"Stage 5 UPDATE AB1 1AB", merge + L"Stage 3",
                            merge + L"Stage 4 ADD ZZ9 9ZZ", L"Update:UpdateData:Stage 6",
                            L"Update:UpdateData:Stage 7 Updating the version date", L"Update:UpdateData:Stage 8"));
    EXPECT_THAT(platform.progress,
                ElementsAre(L"", L"Opening data files", L"Processing record:1 of 2", L"Processing record:2 of 2"));
    EXPECT_EQ(FullUpdateOf(L"AB1 1AA"), L"old");
    EXPECT_EQ(FullUpdateOf(L"AB1 1AB"), L"20240131");
    EXPECT_EQ(FullUpdateOf(L"ZZ9 9ZZ"), L"20240131");
    EXPECT_EQ(std::get<std::wstring>(Rows(L"PAF_FULL.dat", L"PAF_FULLAddress")[1][1]),
              L"FT_Address of AB1 1AB 20240131");
    EXPECT_EQ(VersionOf(L"PAF_FULL.dat"), L"20240131");
    EXPECT_EQ(std::get<std::wstring>(Rows(L"PAF_FULL.dat", L"Version")[0][1]), L"Format 2");
    EXPECT_THAT(ActivityLines(), ElementsAre(L"Data files contains 2 records"));
}

TEST_F(UpdateApplier, CopiesEveryPostZonColumnUnchanged) {
    AddPostZon(L"20240101");
    AddUnpacked(L"UPDATE_Z_20240131.dat", {L"AB1 1AB", L"ZZ9 9ZZ"}, [](FileData& data) {
        auto& row = data.tables.at(L"PAF_PostZon").rows[0];
        row[5] = {};   // NULL stays NULL
        row[13] = 0.0; // and a point at zero stays there
    });
    const auto package = Rows(L"UPDATE_Z_20240131.dat", L"PAF_PostZon");
    EXPECT_EQ(Apply(L"UPDATE_Z_20240131.dat"), "");
    const auto rows = Rows(L"PAF_POSTZON.dat", L"PAF_PostZon");
    ASSERT_EQ(rows.size(), 3U);
    EXPECT_EQ(rows[1], package[0]);
    EXPECT_EQ(rows[2], package[1]);
    EXPECT_EQ(VersionOf(L"PAF_POSTZON.dat"), L"20240131");
}

TEST_F(UpdateApplier, AddsEverythingToAnEmptyTableAndChangesOnlyTheFirstOfDuplicates) {
    AddStreet(L"20240101", [](FileData& data) { data.tables.at(L"PAF_StreetAddress").rows.clear(); });
    AddUnpacked(L"UPDATE_T_20240131.dat", {L"AB1 1AB", L"AB1 1AB", L"ZZ9 9ZZ"});
    EXPECT_EQ(Apply(L"UPDATE_T_20240131.dat"), "");
    EXPECT_EQ(Rows(L"PAF_THOURGHFARE.dat", L"PAF_StreetAddress").size(), 2U) << "the second one found the first";
    AddStreet(L"20240101", [](FileData& data) {
        data.tables.at(L"PAF_StreetAddress").rows = {{L"AB1 1AB", L"first", L"old"}, {L"AB1 1AB", L"second", L"old"}};
    });
    AddUnpacked(L"UPDATE_T_20240229.dat", {L"AB1 1AB"});
    EXPECT_EQ(Apply(L"UPDATE_T_20240229.dat"), "");
    EXPECT_EQ(UpdateOf(L"PAF_THOURGHFARE.dat", L"PAF_StreetAddress", L"AB1 1AB"), L"20240229,old");
}

TEST_F(UpdateApplier, AFailureNamesItsStageAndLeavesTheStampAndWhatWasMerged) {
    AddFull(L"20240101");
    int writes = 0;
    databases.onCall = [&writes](const std::wstring& call) {
        if (call == L"UpdateBatch" && ++writes == 2) throw support::Error(support::kErrorDiskFull, L"The disk is full");
    };
    AddUnpacked(kPackage, {L"AB1 1AB", L"ZZ9 9ZZ", L"AB1 1AC"});
    EXPECT_THAT(Apply(kPackage), HasSubstr("disk is full"));
    EXPECT_EQ(Stage(), L"Update:UpdateData:AddOrUpdateRecordAddress:Stage 4 ADD ZZ9 9ZZ");
    EXPECT_EQ(FullUpdateOf(L"AB1 1AB"), L"20240131");
    EXPECT_EQ(FullUpdateOf(L"ZZ9 9ZZ"), L"");
    EXPECT_EQ(FullUpdateOf(L"AB1 1AC"), L"old");
    EXPECT_EQ(VersionOf(L"PAF_FULL.dat"), L"20240101");
    EXPECT_FALSE(platform.progressShown);
}

TEST_F(UpdateApplier, EveryKindOfBadPackageOrDataFileFails) {
    const auto in = [](const wchar_t* table, const std::function<void(TableData & table)>& spoil) {
        return [=](FileData& data) { spoil(data.tables.at(table)); };
    };
    const auto package = [&](const std::function<void(TableData & table)>& spoil) {
        return in(L"PAF_FULLAddress", spoil);
    };
    const auto version = [&](const std::function<void(TableData & table)>& spoil) { return in(L"Version", spoil); };
    const struct {
        Spoil data, package;
        const char* words;
    } cases[] = {
        {{}, package([](TableData& table) { table.rows.clear(); }), "no records"},
        {{}, [](FileData& data) { data.password = L"other"; }, "password"},
        {{}, [](FileData& data) { data.tables.clear(); }, "has no table"},
        {{}, package([](TableData& table) { table.columns[2].name = u"X"; }), "Item cannot be found"},
        {{}, package([](TableData& table) { table.rows[0][0] = {}; }), "no postcode"},
        {{}, package([](TableData& table) { table.rows[0][0] = L"O'N 1AA"; }), "yntax"}, // a quote is not escaped
        {version([](TableData& table) { table.rows.pop_back(); }), {}, "row 2"},
        {version([](TableData& table) { table.rows.clear(); }), {}, "row 2"},
        {[](FileData& data) { data.tables.erase(L"Version"); }, {}, "has no table"},
    };
    for (const auto& bad : cases) {
        AddFull(L"20240101", bad.data);
        AddUnpacked(kPackage, {L"AB1 1AB"}, bad.package);
        EXPECT_THAT(Apply(kPackage), HasSubstr(bad.words));
        if (bad.data) continue;
        EXPECT_EQ(VersionOf(L"PAF_FULL.dat"), L"20240101") << bad.words;
    }
    AddFull(L"20240101");
    const auto other = Hold(L"PAF_FULL.dat");
    EXPECT_THAT(Apply(kPackage), HasSubstr("is in use"));
}

// A stamp that is no date would compare later than every package to come.
TEST_F(UpdateApplier, NothingIsTouchedForAWrongDateOrKind) {
    AddFull(L"20240101");
    for (const wchar_t* name : {L"UPDATE_F_20241301.dat", L"UPDATE_F_2024ABCD.dat", L"UPDATE_F_20230229.dat"}) {
        AddUnpacked(name, {L"AB1 1AB"});
        EXPECT_THAT(Apply(name), HasSubstr("not a date"));
    }
    EXPECT_THAT(Apply(L"UPDATE_Q_20240131.dat"), HasSubstr("no data of this kind"));
    EXPECT_THAT(databases.calls, ::testing::IsEmpty());
}

} // namespace
} // namespace quorvex::testing
