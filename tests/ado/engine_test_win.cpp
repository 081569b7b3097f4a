#include "database/ado/provider_win.h"
#include "database/ado/value_win.h"
#include "jet/database.h"
#include "support/error.h"
#include "support/files.h"
#include "support/text.h"
#include "testing/ado_stand_in_win.h"
#include "testing/sample_data.h"
#include "testing/temp_folder.h"

#include <gtest/gtest.h>

namespace quorvex::database::ado {
namespace {

using quorvex::testing::AdoStandIn;
using quorvex::testing::TempFolder;
using support::Error;
using support::Variant;

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

// The layer does not know of the journal that a killed update leaves, so the file must be whole before it is opened.
TEST_F(AdoEngine, FindsAnInterruptedUpdateRolledBack) {
    const std::wstring target = folder.File(L"PAF_FULL.dat");
    const std::string before = support::ReadFileBytes(target);
    {
        const TempFolder elsewhere;
        const auto path = support::ToPath(elsewhere.File(L"PAF_FULL.dat"));
        support::WriteFileBytes(support::FromPath(path), before);
        jet::OpenOptions options;
        options.writable = true;
        options.spillPages = 1;
        jet::Database database = jet::Database::Open(path, u"lanternfox", options);
        const jet::Table table = database.OpenTable(u"PAF_FULLAddress");
        database.Begin();
        jet::Cursor rows = table.Rows();
        for (int i = 0; i < 20 && rows.Next(); ++i) {
            jet::Table(table).Update(rows.Current().id(), {{jet::Assignment{1, u"half an update"}}});
        }
        support::WriteFileBytes(target, support::ReadFileBytes(support::FromPath(path)));
        support::WriteFileBytes(target + L".journal", support::ReadFileBytes(support::FromPath(path) + L".journal"));
        database.RollBack();
    }
    ASSERT_FALSE(support::ReadFileBytes(target) == before);
    ado.databases.onCall = [&](const std::wstring& call) {
        if (!call.starts_with(L"Open ")) return;
        EXPECT_TRUE(support::ReadFileBytes(target) == before) << "it was put back before the layer had the file";
    };
    Connect();
    connection->Close();
    EXPECT_TRUE(support::ReadFileBytes(target) == before);
    EXPECT_FALSE(support::FileExists(target + L".journal"));
}

// Each call's refusal by the data access layer arrives with the number and the words that the layer gave.
TEST_F(AdoEngine, PassesRefusalsOn) {
    const auto open = [&](const wchar_t* password) {
        connection->Open(ConnectionStringTo(L"PAF_FULL.dat", password), L"admin", L"");
    };
    connection = provider.CreateConnection();
    EXPECT_EQ(NumberThrownBy([&] { open(L"wrong"); }), -2147217843);
    Connect();
    EXPECT_EQ(NumberThrownBy([&] { connection->SetMode(1); }), 3705);
    EXPECT_EQ(NumberThrownBy([&] { open(L"lanternfox"); }), 3705);
    EXPECT_EQ(NumberThrownBy([&] { Ask(L"SELECT * From [Nothing]"); }), -2147217865);

    Ask(L"SELECT * From [PAF_FULLAddress] WHERE [FT_Postcode]='CR2 9AA';");
    EXPECT_EQ(NumberThrownBy([&] { recordset->SetLockType(LockType::Optimistic); }), 3705);
    EXPECT_EQ(NumberThrownBy([&] { recordset->Field(L"FT_Nothing"); }), 3265);
    EXPECT_EQ(NumberThrownBy([&] { recordset->SetField(L"FT_Update", std::wstring(L"1")); }), 3251);
    EXPECT_EQ(NumberThrownBy([&] { recordset->AddNew(); }), 3251);
    EXPECT_NE(NumberThrownBy([&] { recordset->Find(L"FT_Update"); }), 0);
    recordset->MoveNext();
    EXPECT_EQ(NumberThrownBy([&] { recordset->MoveNext(); }), 3021);
    recordset.reset();
    Connect(L"PAF_FULL.dat", 0);
    Ask(L"SELECT * From Version", CursorType::Dynamic, LockType::Optimistic);
    recordset->SetField(L"Text", std::wstring(L"half written"));
    EXPECT_EQ(NumberThrownBy([&] { recordset->Close(); }), 3219);
    recordset->UpdateBatch();
    connection->Close();
    EXPECT_EQ(NumberThrownBy([&] { recordset->AtEnd(); }), 3704) << "the connection takes its record sets along";
    try {
        connection->Close();
        FAIL() << "closed twice";
    } catch (const Error& error) {
        EXPECT_EQ(error.Number(), 3704);
        EXPECT_EQ(error.Description(), L"Operation is not allowed when the object is closed.");
    }
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
    const auto held = [](VARTYPE type, auto VARIANT::*member, auto number) {
        VARIANT plain{};
        plain.vt = type;
        plain.*member = number;
        Variant variant;
        *variant.Out() = plain;
        return FromVariant(variant);
    };
    EXPECT_EQ(held(VT_I8, &VARIANT::llVal, 5000000000), Value(5000000000.0));
    EXPECT_EQ(held(VT_I8, &VARIANT::llVal, 12), Value(12));
    EXPECT_EQ(held(VT_UI1, &VARIANT::bVal, std::uint8_t{200}), Value(200));
    EXPECT_EQ(held(VT_CY, &VARIANT::cyVal, CY{.int64 = 12345}), Value(1.2345));
    EXPECT_THROW(FromVariant(Variant::Missing()), Error);
}

} // namespace
} // namespace quorvex::database::ado
