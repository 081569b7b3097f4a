// Which engine the DLL reads the local data with.

#include "com/host.h"
#include "support/text.h"
#include "testing/ado_stand_in_win.h"

#include <gmock/gmock.h>

namespace quorvex::testing {
namespace {

using ::testing::ElementsAre;

class EngineTest : public ComTest {
  protected:
    // The calls of one lookup less those that read values, without the folder.
    static std::vector<std::wstring> Calls(const AdoStandIn& ado, const std::wstring& folder) {
        std::vector<std::wstring> calls;
        for (const std::wstring& call : ado.calls) {
            if (call.find(L".Fields") == std::wstring::npos) calls.push_back(support::ReplaceAll(call, folder, L""));
        }
        return calls;
    }
    // A street: those are kept without the blank.
    bool Find(_Quorvex* object) {
        VARIANT_BOOL found = VARIANT_FALSE;
        EXPECT_HRESULT_SUCCEEDED(object->GetThoroughfareAddressRecord(Text(L"PE13 4PZ").Ref(), &found));
        return found != VARIANT_FALSE;
    }
};

TEST_F(EngineTest, TheInstalledDataAccessLayerIsUsedWhereItHasTheJetProvider) {
    const LoadedDll dll;
    AdoStandIn ado;
    const auto without = dll.Create();
    UseSample(without.get());
    EXPECT_TRUE(Find(without.get()));
    EXPECT_THAT(ado.calls, ElementsAre()) << "a layer without the provider is of no use";

    ado.RegisterProvider();
    const auto with = dll.Create();
    UseSample(with.get());
    EXPECT_TRUE(Find(with.get()));
    EXPECT_THAT(Calls(ado, SampleFolder()),
                ElementsAre(L"Connection.Mode = 8",
                            L"Connection.Open(\"Provider=Microsoft.Jet.OLEDB.4.0;Data Source=\\PAF_THOURGHFARE.dat;Jet "
                            L"OLEDB:Database Password=lanternfox\", \"admin\", \"\")",
                            L"Recordset.CursorType = 3", L"Recordset.LockType = 1",
                            L"Recordset.Open(\"SELECT * From [PAF_StreetAddress] WHERE [FT_Postcode]='PE134PZ';\")",
                            L"Recordset.EOF()", L"Recordset.Close()", L"Connection.Close()"));
}

} // namespace
} // namespace quorvex::testing
