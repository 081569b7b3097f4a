#include "update/update_applier.h"

#include "database/connection_string.h"
#include "support/error.h"
#include "support/files.h"
#include "support/process_state.h"
#include "support/text.h"
#include "support_code/update_world.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace quorvex::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;

class UpdateApplier : public ::testing::Test, protected UpdateWorld {
  protected:
    // Applies the unpacked package; the error's words when it fails.
    std::string Apply(const std::wstring& name, wchar_t kind) {
        update::Progress progress(platform);
        progress.SetCaption(L"Apply changes");
        try {
            update::UpdateData(platform, progress, folder.Text(), folder.File(name), kind, name.substr(9, 8), count);
            return {};
        } catch (const support::Error& error) {
            return support::ToUtf8(error.Description());
        }
    }
    std::wstring Stage() const { return support::Process().currentOperation; }

    long count = -1;
};

TEST_F(UpdateApplier, ReplacesWhatIsThereAddsWhatIsNotAndStampsTheDate) {
    AddFull(L"20240101");
    AddUnpacked(L"UPDATE_F_20240131.dat", {L"AB1 1AB", L"ZZ9 9ZZ"});
    EXPECT_EQ(Apply(L"UPDATE_F_20240131.dat", L'F'), "");
    EXPECT_EQ(count, 2);
    const auto rows = Rows(L"PAF_FULL.dat", L"PAF_FULLAddress");
    ASSERT_EQ(rows.size(), 4U);
    EXPECT_EQ(UpdateOf(L"PAF_FULL.dat", L"PAF_FULLAddress", L"AB1 1AA"), L"old");
    EXPECT_EQ(UpdateOf(L"PAF_FULL.dat", L"PAF_FULLAddress", L"AB1 1AB"), L"20240131");
    EXPECT_EQ(std::get<std::wstring>(rows[1][1]), L"FT_Address of AB1 1AB 20240131");
    EXPECT_EQ(UpdateOf(L"PAF_FULL.dat", L"PAF_FULLAddress", L"ZZ9 9ZZ"), L"20240131");
    EXPECT_EQ(VersionOf(L"PAF_FULL.dat"), L"20240131");
    EXPECT_EQ(std::get<std::wstring>(Rows(L"PAF_FULL.dat", L"Version")[0][1]), L"Format 2");
    EXPECT_THAT(ActivityLines(), ElementsAre(L"Data files contains 2 records"));
    EXPECT_EQ(Stage(), L"Update:UpdateData:Stage 8");
    EXPECT_EQ(databases.openConnections + databases.openRecordsets, 0);
}

// Every call in its order: the data access layer behind it answers to nothing else.
TEST_F(UpdateApplier, MakesTheDocumentedCallsInOrder) {
    AddFull(L"20240101");
    AddUnpacked(L"UPDATE_F_20240131.dat", {L"AB1 1AB", L"ZZ9 9ZZ"});
    ASSERT_EQ(Apply(L"UPDATE_F_20240131.dat", L'F'), "");
    const auto opened = [this](const wchar_t* name) {
        return L"Open " + database::ConnectionString(folder.File(name));
    };
    EXPECT_THAT(databases.calls,
                ElementsAre(opened(L"UPDATE_F_20240131.dat"), opened(L"PAF_FULL.dat"),
                            L"SELECT * From PAF_FULLAddress cursor 3 lock 1",
                            L"SELECT * From PAF_FULLAddress cursor 2 lock 3",                                   //
                            L"Find [FT_PostCode]='AB1 1AB'", L"Update",                                         //
                            L"Set FT_PostCode", L"Set FT_Address", L"Set FT_Update", L"UpdateBatch",            //
                            L"Find [FT_PostCode]='ZZ9 9ZZ'", L"AddNew",                                         //
                            L"Set FT_PostCode", L"Set FT_Address", L"Set FT_Update", L"UpdateBatch",            //
                            L"Recordset.Close", L"Recordset.Close",                                             //
                            L"SELECT * From [Version] cursor 2 lock 3", L"Find [ID]=2", L"Update", L"Set Text", //
                            L"UpdateBatch", L"Recordset.Close",                                                 //
                            L"Connection.Close", L"Connection.Close"));
}

TEST_F(UpdateApplier, SaysWhatItIsDoing) {
    AddFull(L"20240101");
    AddUnpacked(L"UPDATE_F_20240131.dat", {L"AB1 1AB", L"ZZ9 9ZZ"});
    std::vector<std::wstring> stages;
    databases.onCall = [&](const std::wstring&) {
        if (stages.empty() || stages.back() != Stage()) stages.push_back(Stage());
    };
    ASSERT_EQ(Apply(L"UPDATE_F_20240131.dat", L'F'), "");
    const std::wstring merge = L"Update:UpdateData:AddOrUpdateRecordAddress:";
    EXPECT_THAT(stages,
                ElementsAre(L"Update:UpdateData:Stage 3 Opening update file with ADO",
                            L"Update:UpdateData:Stage 4 Opening data file to update", L"Update:UpdateData:Stage 5",
                            merge + L"Stage 3", merge + L"Stage 5 UPDATE AB1 1AB", merge + L"Stage 3",
                            merge + L"Stage 4 ADD ZZ9 9ZZ", L"Update:UpdateData:Stage 6",
                            L"Update:UpdateData:Stage 7 Updating the version date", L"Update:UpdateData:Stage 8"));
    std::vector<std::wstring> texts;
    for (const auto& [caption, text] : platform.windows) {
        EXPECT_EQ(caption, L"Apply changes");
        texts.push_back(text);
    }
    EXPECT_THAT(texts,
                ElementsAre(L"", L"Opening data files", L"Processing record:1 of 2", L"Processing record:2 of 2"));
}

TEST_F(UpdateApplier, CopiesEveryPostZonColumnAsItStands) {
    AddPostZon(L"20240101");
    AddUnpacked(L"UPDATE_Z_20240131.dat", {L"AB1 1AB", L"ZZ9 9ZZ"}, [](FileData& data) {
        auto& row = data.tables.at(L"PAF_PostZon").rows[0];
        row[5] = {};   // NULL stays NULL
        row[13] = 0.0; // and a point at zero stays there
    });
    const auto package = Rows(L"UPDATE_Z_20240131.dat", L"PAF_PostZon");
    EXPECT_EQ(Apply(L"UPDATE_Z_20240131.dat", L'Z'), "");
    const auto rows = Rows(L"PAF_POSTZON.dat", L"PAF_PostZon");
    ASSERT_EQ(rows.size(), 3U);
    EXPECT_EQ(rows[1], package[0]);
    EXPECT_EQ(rows[2], package[1]);
    EXPECT_THAT(databases.calls, ::testing::Contains(L"Find [PZ_Postcode]='AB1 1AB'"));
    EXPECT_EQ(VersionOf(L"PAF_POSTZON.dat"), L"20240131");
}

TEST_F(UpdateApplier, AddsEverythingToAnEmptyTableAndChangesOnlyTheFirstOfDuplicates) {
    AddStreet(L"20240101", [](FileData& data) { data.tables.at(L"PAF_StreetAddress").rows.clear(); });
    AddUnpacked(L"UPDATE_T_20240131.dat", {L"AB1 1AB", L"AB1 1AB", L"ZZ9 9ZZ"});
    EXPECT_EQ(Apply(L"UPDATE_T_20240131.dat", L'T'), "");
    EXPECT_EQ(count, 3);
    EXPECT_EQ(Rows(L"PAF_THOURGHFARE.dat", L"PAF_StreetAddress").size(), 2U) << "the second one found the first";

    AddStreet(L"20240101", [](FileData& data) {
        data.tables.at(L"PAF_StreetAddress").rows = {{L"AB1 1AB", L"first", L"old"}, {L"AB1 1AB", L"second", L"old"}};
    });
    AddUnpacked(L"UPDATE_T_20240229.dat", {L"AB1 1AB"});
    EXPECT_EQ(Apply(L"UPDATE_T_20240229.dat", L'T'), "");
    EXPECT_EQ(UpdateOf(L"PAF_THOURGHFARE.dat", L"PAF_StreetAddress", L"AB1 1AB"), L"20240229,old");
}

TEST_F(UpdateApplier, AFailureNamesItsStageAndLeavesTheStampAndWhatWasMerged) {
    AddFull(L"20240101");
    int writes = 0;
    databases.onCall = [&writes](const std::wstring& call) {
        if (call == L"UpdateBatch" && ++writes == 2) throw support::Error(support::kErrorDiskFull, L"The disk is full");
    };
    AddUnpacked(L"UPDATE_F_20240131.dat", {L"AB1 1AB", L"ZZ9 9ZZ", L"AB1 1AC"});
    EXPECT_THAT(Apply(L"UPDATE_F_20240131.dat", L'F'), HasSubstr("disk is full"));
    EXPECT_EQ(Stage(), L"Update:UpdateData:AddOrUpdateRecordAddress:Stage 4 ADD ZZ9 9ZZ");
    EXPECT_EQ(UpdateOf(L"PAF_FULL.dat", L"PAF_FULLAddress", L"AB1 1AB"), L"20240131");
    EXPECT_EQ(UpdateOf(L"PAF_FULL.dat", L"PAF_FULLAddress", L"ZZ9 9ZZ"), L"");
    EXPECT_EQ(UpdateOf(L"PAF_FULL.dat", L"PAF_FULLAddress", L"AB1 1AC"), L"old");
    EXPECT_EQ(VersionOf(L"PAF_FULL.dat"), L"20240101");
    EXPECT_EQ(databases.openConnections + databases.openRecordsets, 0) << "everything is closed";
    EXPECT_FALSE(platform.progressShown);
}

TEST_F(UpdateApplier, EveryKindOfBadPackageOrDataFileFails) {
    const std::wstring name = L"UPDATE_F_20240131.dat";
    const auto outcome = [&](const Spoil& spoilData, const Spoil& spoilPackage) {
        AddFull(L"20240101", spoilData);
        AddUnpacked(name, {L"AB1 1AB"}, spoilPackage);
        const std::string error = Apply(name, L'F');
        if (!spoilData) {
            EXPECT_EQ(VersionOf(L"PAF_FULL.dat"), L"20240101") << error;
        }
        return error;
    };
    const auto package = [&](const std::function<void(TableData & table)>& spoil) {
        return outcome({}, [&](FileData& data) { spoil(data.tables.at(L"PAF_FULLAddress")); });
    };
    const auto version = [&](const std::function<void(TableData & table)>& spoil) {
        return outcome([&](FileData& data) { spoil(data.tables.at(L"Version")); }, {});
    };
    EXPECT_THAT(package([](TableData& table) { table.rows.clear(); }), HasSubstr("no records"));
    EXPECT_THAT(outcome({}, [](FileData& data) { data.password = L"other"; }), HasSubstr("password"));
    EXPECT_THAT(outcome({}, [](FileData& data) { data.tables.clear(); }), HasSubstr("has no table"));
    EXPECT_THAT(package([](TableData& table) { table.columns[2].name = u"X"; }), HasSubstr("Item cannot be found"));
    EXPECT_THAT(package([](TableData& table) { table.rows[0][0] = {}; }), HasSubstr("no postcode"));
    EXPECT_THAT(package([](TableData& table) { table.rows[0][0] = L"O'N 1AA"; }), HasSubstr("yntax"))
        << "a quote is not escaped: the record is bad";
    EXPECT_THAT(version([](TableData& table) { table.rows.pop_back(); }), HasSubstr("row 2"));
    EXPECT_THAT(version([](TableData& table) { table.rows.clear(); }), HasSubstr("row 2"));
    EXPECT_THAT(outcome([](FileData& data) { data.tables.erase(L"Version"); }, {}), HasSubstr("has no table"));
    AddFull(L"20240101");
    const auto other = Hold(L"PAF_FULL.dat");
    EXPECT_THAT(Apply(name, L'F'), HasSubstr("is in use"));
    EXPECT_EQ(databases.openConnections + databases.openRecordsets, 0);
}

// A stamp that is no date would compare later than every package to come.
TEST_F(UpdateApplier, NothingIsTouchedForADateOrKindThatIsNone) {
    AddFull(L"20240101");
    for (const wchar_t* name : {L"UPDATE_F_20241301.dat", L"UPDATE_F_2024ABCD.dat", L"UPDATE_F_20230229.dat"}) {
        AddUnpacked(name, {L"AB1 1AB"});
        EXPECT_THAT(Apply(name, L'F'), HasSubstr("not a date"));
    }
    EXPECT_THAT(Apply(L"UPDATE_Q_20240131.dat", L'Q'), HasSubstr("no data of this kind"));
    EXPECT_THAT(databases.calls, ::testing::IsEmpty());
}

} // namespace
} // namespace quorvex::testing
