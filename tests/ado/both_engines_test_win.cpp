// What the product does with the local data, over the data access layer and over the embedded engine: the answers and
// the files must be the same.

#include "database/ado/provider_win.h"
#include "lookups/address_list.h"
#include "lookups/address_record.h"
#include "lookups/nearest.h"
#include "lookups/postzon.h"
#include "object/quorvex.h"
#include "support/process_state.h"
#include "support/text.h"
#include "support_code/ado_stand_in.h"
#include "support_code/sample_data.h"
#include "support_code/temp_folder.h"
#include "support_code/tsv.h"
#include "support_code/update_platform.h"
#include "update/update_procedure.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

namespace quorvex::testing {
namespace {

using database::DatabaseProvider;
using ::testing::Contains;
using ::testing::ElementsAre;

// A lookup object over a copy of the sample data.
class Mode {
  public:
    explicit Mode(DatabaseProvider& databases) {
        CopySampleData(folder.Text());
        platform.databases = &databases;
        object.LMSetDataPath(folder.Text());
    }
    ~Mode() { support::Process() = {}; }

    void Update(const wchar_t* package) {
        CopyPackage(package, folder.Text());
        update::UpdateRequest request;
        request.dataFolder = folder.Text();
        request.unattended = true;
        int applied = 0;
        EXPECT_TRUE(update::Update(object, request, applied));
        EXPECT_EQ(applied, 1);
        for (const FakePlatform::Message& message : platform.messages) {
            EXPECT_EQ(message.style, support::kStyleInformation) << support::ToUtf8(message.text);
        }
    }

    TempFolder folder;
    UpdatePlatform platform;
    object::Quorvex object{platform};
};

class BothEngines : public ::testing::Test {
  protected:
    // The answers of one engine to a series of questions.
    using Answers = std::vector<std::wstring>;

    static void Note(Answers& answers, object::Quorvex& object, bool found) {
        answers.push_back(found ? L"found" : support::ReplaceAll(object.General_errormessage, object.DataPath(), L""));
        answers.push_back(RecordOf(object));
    }

    static Answers Ask(DatabaseProvider& databases) {
        Mode mode(databases);
        object::Quorvex& object = mode.object;
        Answers answers;
        object.SetHomePostCode(L"PE13 2QL");
        const std::vector<TsvRow> rows = ReadTsv(DataFolder(L"sample\\truth\\postzon.tsv"));
        for (std::size_t i = 0; i < rows.size(); i += 7) {
            const std::wstring& postcode = rows[i][0];
            answers.push_back(postcode);
            const bool listed = lookups::GetFullAddressToList(object, postcode);
            Note(answers, object, listed);
            for (;;) {
                const std::wstring line = lookups::GetFullAddressLineForSelection(object);
                if (line.empty()) break;
                answers.push_back(line);
            }
            Note(answers, object, lookups::GetFullAddressRecord(object, 0));
            Note(answers, object, lookups::GetThoroughfareAddressRecord(object, postcode));
            Note(answers, object, lookups::GetPostZonAddressRecord(object, postcode));
            Note(answers, object, lookups::GetPostZonAddressRecord(object, rows[i][15]));
        }
        answers.push_back(lookups::GetPostZonAddressLongLat(object, -2.99, 53.37));
        Note(answers, object, lookups::GetFullAddressToList(object, L"O'N 1AA"));
        return answers;
    }

    AdoStandIn ado;
    database::ado::AdoProvider overAdo;
    database::JetProvider embedded;
};

TEST_F(BothEngines, EveryLookupGivesTheSame) {
    const Answers answers = Ask(overAdo);
    EXPECT_GT(answers.size(), 1700U);
    const Answers others = Ask(embedded);
    const auto [one, other] = std::mismatch(answers.begin(), answers.end(), others.begin(), others.end());
    EXPECT_TRUE(one == answers.end() && other == others.end())
        << "at " << one - answers.begin() << ": " << (one == answers.end() ? "" : support::ToUtf8(*one)) << " and "
        << (other == others.end() ? "" : support::ToUtf8(*other));
    EXPECT_THAT(ado.calls, Contains(L"Connection.Mode = 8"));
    EXPECT_EQ(ado.databases.openConnections + ado.databases.openRecordsets, 0) << "each lookup closes what it opened";
}

TEST_F(BothEngines, AnUpdateLeavesTheSameRecords) {
    Mode adoMode(overAdo);
    adoMode.Update(L"UPDATE_F_20260228.zip");
    adoMode.Update(L"UPDATE_Z_20260228.zip");
    EXPECT_EQ(AddressRows(adoMode.folder.File(L"PAF_FULL.dat"), L"PAF_FULLAddress"),
              TruthRows(L"updated_rows_full_20260228.tsv"));
    EXPECT_EQ(PostZonRows(adoMode.folder.File(L"PAF_POSTZON.dat")), TruthRows(L"updated_postzon_20260228.tsv"));
    EXPECT_EQ(localdata::LMGetLastUpdateDate(adoMode.object, L"F"), L"20260228");
    EXPECT_EQ(ado.databases.openConnections + ado.databases.openRecordsets, 0);

    // One record's calls, from its search to its writing.
    const std::vector<std::wstring>& calls = ado.calls;
    const auto isFind = [](const std::wstring& call) { return call.starts_with(L"Recordset.Find [FT_PostCode]='"); };
    const auto find = std::find_if(calls.begin(), calls.end(), isFind);
    ASSERT_NE(find, calls.end());
    EXPECT_EQ(*(find - 1), L"Recordset.MoveFirst");
    EXPECT_EQ(*(find + 1), L"Recordset.EOF");
    std::vector<std::wstring> names;
    for (auto call = find + 2; call != calls.end() && names.size() < 5; ++call) {
        if (*call != L"Recordset.Fields") names.push_back(call->substr(0, call->find(L" =")));
    }
    EXPECT_THAT(names.at(0), ::testing::AnyOf(L"Recordset.Update", L"Recordset.AddNew"));
    names.erase(names.begin());
    EXPECT_THAT(names, ElementsAre(L"Recordset.Fields(FT_PostCode).Value", L"Recordset.Fields(FT_Address).Value",
                                   L"Recordset.Fields(FT_Update).Value", L"Recordset.UpdateBatch"));
}

} // namespace
} // namespace quorvex::testing
