#include "database/jet/jet_provider.h"
#include "jet/database.h"
#include "localdata/status.h"
#include "support/error.h"
#include "support/process_state.h"
#include "support/text.h"
#include "testing/fake_platform.h"
#include "testing/sample_data.h"
#include "testing/temp_folder.h"
#include "update/update_applier.h"

#include <gtest/gtest.h>

namespace quorvex::testing {
namespace {

// Records reach the file in groups; a package that fails must look as if each had been written by itself.
class UpdateGroups : public ::testing::Test {
  protected:
    UpdateGroups() {
        platform_.databases = &databases_;
        jet::Database data = jet::Database::Create(support::ToPath(data_), kPassword);
        MakeTable(data, 10, true);
        jet::Table version = data.CreateTable({u"Version",
                                               {{.name = u"ID", .type = jet::ColumnType::kLong}, {.name = u"Text"}},
                                               {{.name = u"PrimaryKey", .columns = {u"ID"}, .primary = true}}});
        version.Insert({{jet::Assignment{0, std::int32_t{2}}, jet::Assignment{1, u"20240101"}}});
    }
    ~UpdateGroups() override { support::Process() = {}; }

    static jet::Table MakeTable(jet::Database& database, std::uint16_t keyLength, bool indexed) {
        jet::TableSpec wanted{u"PAF_FULLAddress",
                              {{.name = u"FT_PostCode", .length = keyLength},
                               {.name = u"FT_Address", .type = jet::ColumnType::kMemo},
                               {.name = u"FT_Update", .length = 8}},
                              {}};
        if (indexed) wanted.indexes = {{.name = u"PrimaryKey", .columns = {u"FT_PostCode"}, .primary = true}};
        return database.CreateTable(wanted);
    }

    // Applies a package of these keys, NULL for an empty one; the error's words.
    std::string Apply(const std::vector<std::u16string>& keys) {
        const std::wstring file = folder_.File(L"UPDATE_F_20240131.dat");
        support::DeleteFileQuietly(file);
        {
            jet::Database package = jet::Database::Create(support::ToPath(file), kPassword);
            jet::Table table = MakeTable(package, 20, false);
            for (const std::u16string& key : keys) {
                const jet::Value value = key.empty() ? jet::Value() : jet::Value(key);
                table.Insert({{jet::Assignment{0, value}, jet::Assignment{1, u"new"}}});
            }
        }
        update::Progress progress(platform_);
        long count = 0;
        try {
            update::UpdateData(object_, progress, folder_.Text(), file, L'F', L"20240131", count);
        } catch (const support::Error& error) {
            return support::ToUtf8(error.Description());
        }
        return {};
    }

    std::vector<std::wstring> Keys() const { return KeysInOrder(data_, L"PAF_FULLAddress", L"FT_PostCode"); }
    std::wstring Stamp() { return localdata::GetLastUpdateFULL(object_, folder_.Text()); }

    static constexpr std::u16string_view kPassword = u"lanternfox";
    TempFolder folder_;
    std::wstring data_ = folder_.File(L"PAF_FULL.dat");
    database::JetProvider databases_{{.time = std::chrono::hours(1), .records = 4}};
    FakePlatform platform_;
    object::Quorvex object_{platform_, databases_};
};

TEST_F(UpdateGroups, ARecordThatFailsLeavesThoseBeforeItMergedAndTheStampUnmoved) {
    // One that the data file cannot take, and one that cannot be read, each in the middle of the second group.
    const std::string tooLong = Apply({u"A1", u"A2", u"A3", u"A4", u"A5", u"A6", u"LONGER THAN 10", u"A8"});
    EXPECT_NE(tooLong.find("too long"), std::string::npos) << tooLong;
    EXPECT_EQ(support::Process().currentOperation,
              L"Update:UpdateData:AddOrUpdateRecordAddress:Stage 4 ADD LONGER THAN 10");
    EXPECT_EQ(Keys(), (std::vector<std::wstring>{L"A1", L"A2", L"A3", L"A4", L"A5", L"A6"}));
    EXPECT_EQ(Stamp(), L"20240101");
    EXPECT_NE(Apply({u"A1", u"A2", u"A3", u"A4", u"B5", u"", u"B7"}), "");
    EXPECT_EQ(Keys().size(), 7U);
    EXPECT_EQ(Keys().back(), L"B5");
    EXPECT_EQ(Stamp(), L"20240101");
    EXPECT_EQ(IntegrityErrors(data_), "");
    EXPECT_EQ(Apply({u"A1", u"C2", u"C3", u"C4", u"C5", u"C6", u"C2"}), "") << "the last one is the group's own";
    EXPECT_EQ(Keys().size(), 12U);
    EXPECT_EQ(Stamp(), L"20240131");
    EXPECT_EQ(IntegrityErrors(data_), "");
}

// A record set that is closed has everything in the file, whatever becomes of its connection.
TEST_F(UpdateGroups, ClosingTheRecordsCommits) {
    const auto connection = databases_.CreateConnection();
    connection->Open(L"Data Source=" + data_ + L";Jet OLEDB:Database Password=lanternfox", L"admin", L"");
    const auto records = databases_.CreateRecordset();
    records->SetLockType(database::LockType::Optimistic);
    records->Open(L"SELECT * From PAF_FULLAddress", *connection);
    const std::string before = support::ReadFileBytes(data_);
    records->AddNew();
    records->SetField(L"FT_PostCode", std::wstring(L"D1"));
    records->UpdateBatch();
    EXPECT_EQ(std::get<std::wstring>(records->Field(L"FT_PostCode")), L"D1") << "seen at once on the connection itself";
    EXPECT_TRUE(support::ReadFileBytes(data_) == before) << "and waits for the others of its group";
    records->Close();
    EXPECT_FALSE(support::ReadFileBytes(data_) == before);
    connection->Close();
    EXPECT_EQ(Keys(), std::vector<std::wstring>{L"D1"});
}

} // namespace
} // namespace quorvex::testing
