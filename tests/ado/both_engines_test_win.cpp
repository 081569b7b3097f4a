// What the product does with the local data, over the data access layer and over the embedded engine: the answers and
// the files must be the same.

#include "database/ado/provider_win.h"
#include "localdata/status.h"
#include "lookups/address_list.h"
#include "lookups/address_record.h"
#include "lookups/nearest.h"
#include "lookups/postzon.h"
#include "object/quorvex.h"
#include "support/process_state.h"
#include "support/text.h"
#include "testing/ado_stand_in_win.h"
#include "testing/sample_data.h"
#include "testing/temp_folder.h"
#include "testing/truth.h"
#include "testing/update_platform.h"
#include "update/update_procedure.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

namespace quorvex::testing {
namespace {

using database::DatabaseProvider;
using ::testing::Contains;

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
        EXPECT_TRUE(update::Update(object, platform.UpdateSurroundings(), request, applied));
        EXPECT_EQ(applied, 1);
        for (const FakePlatform::Message& message : platform.messages) {
            EXPECT_EQ(message.style, support::kStyleInformation) << support::ToUtf8(message.text);
        }
    }

    TempFolder folder;
    UpdatePlatform platform;
    object::Quorvex object{platform, platform};
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
        for (std::size_t i = 0; i < rows.size(); i += 25) {
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
    EXPECT_GT(answers.size(), 400U);
    const Answers others = Ask(embedded);
    const auto [one, other] = std::mismatch(answers.begin(), answers.end(), others.begin(), others.end());
    EXPECT_TRUE(one == answers.end() && other == others.end())
        << "at " << one - answers.begin() << ": " << (one == answers.end() ? "" : support::ToUtf8(*one)) << " and "
        << (other == others.end() ? "" : support::ToUtf8(*other));
    EXPECT_THAT(ado.calls, Contains(L"Connection.Mode = 8"));
}

TEST_F(BothEngines, AnUpdateLeavesTheSameRecords) {
    Mode overLayer(overAdo);
    Mode overOwn(embedded);
    for (Mode* mode : {&overLayer, &overOwn}) {
        mode->Update(L"UPDATE_F_20260228.zip");
        mode->Update(L"UPDATE_Z_20260228.zip");
        EXPECT_EQ(localdata::LMGetLastUpdateDate(mode->object, L"F"), L"20260228");
    }
    const auto rows = [](const Mode& mode) {
        return AddressRows(mode.folder.File(L"PAF_FULL.dat"), L"PAF_FULLAddress");
    };
    EXPECT_EQ(rows(overLayer), rows(overOwn));
    EXPECT_EQ(PostZonRows(overLayer.folder.File(L"PAF_POSTZON.dat")),
              PostZonRows(overOwn.folder.File(L"PAF_POSTZON.dat")));
    EXPECT_THAT(ado.calls, Contains(L"Recordset.UpdateBatch()"));
}

} // namespace
} // namespace quorvex::testing
