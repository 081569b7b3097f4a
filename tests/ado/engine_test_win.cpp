#include "localdata/ado/provider_win.h"
#include "localdata/ado/value_win.h"
#include "support/error.h"
#include "support/text.h"
#include "support_code/ado_stand_in.h"
#include "support_code/sample_data.h"
#include "support_code/temp_folder.h"
#include "support_code/tsv.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>

namespace quorvex::localdata::ado {
namespace {

using quorvex::testing::AdoStandIn;
using quorvex::testing::DataFolder;
using quorvex::testing::ReadTsv;
using quorvex::testing::TempFolder;
using quorvex::testing::TsvRow;
using support::Error;
using support::Variant;
using ::testing::ElementsAre;

template <typename Call>
long NumberThrownBy(const Call& call) {
    try {
        call();
    } catch (const Error& error) {
        EXPECT_FALSE(error.Description().empty());
        return error.Number();
    }
    return 0;
}

class AdoEngine : public ::testing::Test {
  protected:
    AdoEngine() { quorvex::testing::CopySampleData(folder.Text()); }

    std::wstring ConnectionStringTo(const wchar_t* file, const wchar_t* password = L"lanternfox") const {
        return L"Provider=Microsoft.Jet.OLEDB.4.0;Data Source=" + folder.File(file) + L";Jet OLEDB:Database Password=" +
               password;
    }
    void Connect(const wchar_t* file = L"PAF_FULL.dat", int mode = kModeShareDenyWrite) {
        connection = provider.CreateConnection();
        if (mode != 0) connection->SetMode(mode);
        connection->Open(ConnectionStringTo(file), L"admin", L"");
    }
    void Ask(const std::wstring& query, CursorType cursor = CursorType::Static, LockType lock = LockType::ReadOnly) {
        recordset = provider.CreateRecordset();
        recordset->SetCursorType(cursor);
        recordset->SetLockType(lock);
        recordset->Open(query, *connection);
    }

    TempFolder folder;
    AdoStandIn ado;
    AdoProvider provider;
    std::unique_ptr<Connection> connection;
    std::unique_ptr<Recordset> recordset;
};

TEST_F(AdoEngine, MakesTheDocumentedCallsInTheirOrder) {
    Connect();
    Ask(L"SELECT * From [PAF_FULLAddress] WHERE [FT_Postcode]='CR2 9AA';");
    ASSERT_FALSE(recordset->AtEnd());
    EXPECT_EQ(recordset->Field(L"FT_Postcode"), Value(L"CR2 9AA"));
    recordset->MoveNext();
    EXPECT_TRUE(recordset->AtEnd());
    recordset->Close();
    connection->Close();
    EXPECT_THAT(ado.calls,
                ElementsAre(L"Connection.Mode = 8",
                            L"Connection.Open " + ConnectionStringTo(L"PAF_FULL.dat") + L"|admin|",
                            L"Recordset.CursorType = 3", L"Recordset.LockType = 1",
                            L"Recordset.Open SELECT * From [PAF_FULLAddress] WHERE [FT_Postcode]='CR2 9AA';",
                            L"Recordset.EOF", L"Recordset.Fields", L"Recordset.Fields(FT_Postcode).Value",
                            L"Recordset.MoveNext", L"Recordset.EOF", L"Recordset.Close", L"Connection.Close"));
}

TEST_F(AdoEngine, ReadsEveryRowOfTheSample) {
    Connect(L"PAF_THOURGHFARE.dat");
    Ask(L"SELECT * From [PAF_StreetAddress]");
    std::map<std::wstring, TsvRow> truth;
    for (TsvRow& row : ReadTsv(DataFolder(L"sample\\truth\\rows_street.tsv"))) truth[row[0]] = std::move(row);
    EXPECT_EQ(recordset->RecordCount(), static_cast<long>(truth.size()));
    const Value first = recordset->Field(L"FT_Postcode");
    for (std::size_t i = 0; i < truth.size(); ++i) {
        ASSERT_FALSE(recordset->AtEnd());
        const TsvRow& row = truth.at(std::get<std::wstring>(recordset->Field(L"FT_Postcode")));
        EXPECT_EQ(recordset->Field(L"ft_update"), row[1] == L"\\N" ? Value() : Value(row[1]));
        EXPECT_EQ(recordset->Field(L"FT_Address") == Value(), row[2] == L"\\N") << "NULL is NULL";
        recordset->MoveNext();
    }
    EXPECT_TRUE(recordset->AtEnd());
    recordset->MoveFirst();
    EXPECT_EQ(recordset->Field(L"FT_Postcode"), first) << "a field follows the current row";
}

TEST_F(AdoEngine, FindsRowsInABox) {
    Connect(L"PAF_POSTZON.dat");
    Ask(L"SELECT PAF_PostZon.* FROM PAF_PostZon WHERE (((PZ_Long)>-3.079) and ((PZ_Long)<-2.897) and ((PZ_Lat)>53.284) "
        L"and ((PZ_Lat)<53.466));");
    int rows = 0;
    for (; !recordset->AtEnd(); recordset->MoveNext(), ++rows) {
        const double latitude = std::get<double>(recordset->Field(L"PZ_Lat"));
        EXPECT_TRUE(latitude > 53.284 && latitude < 53.466);
    }
    EXPECT_GT(rows, 0);
}

TEST_F(AdoEngine, FindsAndUpdatesAndAdds) {
    Connect(L"PAF_FULL.dat", 0);
    Ask(L"SELECT * From PAF_FULLAddress", CursorType::Dynamic, LockType::Optimistic);
    recordset->Find(L"[FT_PostCode]='CR2 9AA'");
    ASSERT_FALSE(recordset->AtEnd());
    recordset->Update();
    recordset->SetField(L"FT_Address", std::wstring(L"NEW"));
    recordset->SetField(L"FT_Update", Value());
    recordset->UpdateBatch();
    recordset->MoveFirst();
    recordset->Find(L"[FT_PostCode]='QQ1 1QQ'");
    ASSERT_TRUE(recordset->AtEnd());
    recordset->AddNew();
    recordset->SetField(L"FT_Postcode", std::wstring(L"QQ1 1QQ"));
    recordset->UpdateBatch();
    recordset->Close();

    Ask(L"SELECT * From [PAF_FULLAddress] WHERE [FT_Postcode]='CR2 9AA';");
    EXPECT_EQ(recordset->Field(L"FT_Address"), Value(L"NEW"));
    EXPECT_EQ(recordset->Field(L"FT_Update"), Value());
    Ask(L"SELECT * From [PAF_FULLAddress] WHERE [FT_Postcode]='QQ1 1QQ';");
    EXPECT_FALSE(recordset->AtEnd());
}

TEST_F(AdoEngine, StampsTheVersionTable) {
    Connect(L"PAF_FULL.dat", 0);
    Ask(L"SELECT * From Version", CursorType::Dynamic, LockType::Optimistic);
    recordset->MoveFirst();
    recordset->Find(L"[ID]=2");
    ASSERT_FALSE(recordset->AtEnd());
    EXPECT_EQ(recordset->Field(L"ID"), Value(2));
    recordset->Update();
    recordset->SetField(L"Text", std::wstring(L"20260228"));
    recordset->UpdateBatch();
    EXPECT_EQ(recordset->Field(L"Text"), Value(L"20260228"));
}

// Each refusal of the data access layer arrives with the number and the words that the layer gave.
TEST_F(AdoEngine, PassesRefusalsOn) {
    const auto connected = [&](const std::wstring& text, const wchar_t* user = L"admin") {
        return NumberThrownBy([&] { provider.CreateConnection()->Open(text, user, L""); });
    };
    EXPECT_EQ(connected(ConnectionStringTo(L"PAF_FULL.dat", L"wrong")), -2147217843);
    EXPECT_EQ(connected(ConnectionStringTo(L"PAF_FULL.dat"), L"guest"), -2147217843);
    EXPECT_EQ(connected(ConnectionStringTo(L"PAF_NONE.dat")), support::kErrorDatabase);
    EXPECT_EQ(connected(ConnectionStringTo(L"PAF_SUBSTITUTION.txt")), support::kErrorDatabase) << "no database";
    EXPECT_EQ(connected(L"Provider=None.1;Data Source=x"), 3706);

    Connect();
    EXPECT_EQ(NumberThrownBy([&] { connection->SetMode(1); }), 3705);
    EXPECT_EQ(NumberThrownBy([&] { connection->Open(ConnectionStringTo(L"PAF_FULL.dat"), L"admin", L""); }), 3705);
    const auto asked = [&](const wchar_t* query) { return NumberThrownBy([&] { Ask(query); }); };
    EXPECT_EQ(asked(L"SELECT * From [PAF_FULLAddress] WHERE [FT_Postcode]='CR2 'AA';"), -2147217900);
    EXPECT_EQ(asked(L"SELECT * From [Nothing]"), -2147217865);
    EXPECT_EQ(asked(L"SELECT * From [PAF_FULLAddress] WHERE [FT_Post]='CR2 9AA';"), 3265);

    Ask(L"SELECT * From [PAF_FULLAddress] WHERE [FT_Postcode]='CR2 9AA';");
    EXPECT_EQ(NumberThrownBy([&] { recordset->SetLockType(LockType::Optimistic); }), 3705);
    EXPECT_EQ(NumberThrownBy([&] { recordset->Field(L"FT_Nothing"); }), 3265);
    EXPECT_EQ(NumberThrownBy([&] { recordset->SetField(L"FT_Update", std::wstring(L"1")); }), 3251);
    EXPECT_EQ(NumberThrownBy([&] { recordset->AddNew(); }), 3251);
    EXPECT_NE(NumberThrownBy([&] { recordset->Find(L"FT_Update"); }), 0);
    recordset->MoveNext();
    EXPECT_EQ(NumberThrownBy([&] { recordset->MoveNext(); }), 3021);
    EXPECT_EQ(NumberThrownBy([&] { recordset->Field(L"FT_Update"); }), 3021);
    connection->Close();
    EXPECT_EQ(NumberThrownBy([&] { recordset->AtEnd(); }), 3704) << "the connection takes its record sets along";
    EXPECT_EQ(NumberThrownBy([&] { connection->Close(); }), 3704);
    EXPECT_EQ(NumberThrownBy([&] { Ask(L"SELECT * From [PAF_FULLAddress]"); }), 3709);
    try {
        connection->Close();
    } catch (const Error& error) {
        EXPECT_EQ(error.Description(), L"Operation is not allowed when the object is closed.");
    }
}

TEST_F(AdoEngine, RefusesWhatDoesNotFitAColumn) {
    Connect(L"PAF_FULL.dat", 0);
    Ask(L"SELECT * From Version", CursorType::Dynamic, LockType::Optimistic);
    EXPECT_EQ(NumberThrownBy([&] { recordset->SetField(L"ID", std::wstring(L"two")); }), 3421);
    recordset->SetField(L"ID", std::wstring(L"7"));
    EXPECT_EQ(NumberThrownBy([&] { recordset->Close(); }), 3219) << "a row half written";
    recordset->UpdateBatch();
}

class OtherConnection : public Connection {
  public:
    void SetMode(int) override {}
    void Open(const std::wstring&, const std::wstring&, const std::wstring&) override {}
    void Close() override {}
};

TEST_F(AdoEngine, RefusesAnotherEnginesConnection) {
    OtherConnection other;
    EXPECT_EQ(NumberThrownBy([&] { provider.CreateRecordset()->Open(L"SELECT * From Version", other); }),
              support::kErrorInternal);
}

// A connection class alone proves nothing: without the Jet provider the layer is of no use.
TEST(AdoAvailability, NeedsProviderAndApartment) {
    {
        AdoStandIn ado;
        EXPECT_FALSE(AdoAvailable());
        ado.RegisterProvider();
        EXPECT_TRUE(AdoAvailable());
    }
    EXPECT_FALSE(AdoAvailable()) << "without an apartment nothing can be created";
}

TEST(AdoValues, KeepTheirKindBothWays) {
    const std::vector<std::uint8_t> bytes = {0, 255, 7};
    for (const Value& value : {Value(), Value(true), Value(-7), Value(51.5), Value(L""),
                               Value(std::wstring(L"a\0b", 3)), Value(bytes), Value(std::vector<std::uint8_t>())}) {
        EXPECT_EQ(FromVariant(ToVariant(value)), value);
    }
    VARIANT wide{};
    wide.vt = VT_I8;
    wide.llVal = 5000000000;
    Variant held;
    *held.Out() = wide;
    EXPECT_EQ(FromVariant(held), Value(5000000000.0));
    wide.llVal = 12;
    *held.Out() = wide;
    EXPECT_EQ(FromVariant(held), Value(12));
    VARIANT byte{};
    byte.vt = VT_UI1;
    byte.bVal = 200;
    *held.Out() = byte;
    EXPECT_EQ(FromVariant(held), Value(200));
    VARIANT money{};
    money.vt = VT_CY;
    money.cyVal.int64 = 12345;
    *held.Out() = money;
    EXPECT_EQ(FromVariant(held), Value(1.2345));
    EXPECT_THROW(FromVariant(Variant::Missing()), Error);
}

} // namespace
} // namespace quorvex::localdata::ado
