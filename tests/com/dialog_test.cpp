// The picker end to end: the DLL's own object, its HTTP transport against a real socket, its real windows.
#include "testing/socket_server_win.h"

#include "com/host.h"
#include "dialogs/address_controls_win.h"
#include "testing/after_win.h"
#include "testing/driver_win.h"

namespace quorvex::testing {
namespace {

using namespace dialogs;

constexpr wchar_t kCaption[] = L"Counter 3";

std::string Page(const std::string& target) {
    if (target.find("GetAddressRecord") != std::string::npos) {
        return "<x><confirm>Yes</confirm><line1>2 Caf\xc3\xa9 Row</line1><postcode>AB1 3CD</postcode></x>";
    }
    return "<x><confirm>Yes</confirm><recordcount>2</recordcount><addressdata><record><id>AB1 3CD_1_F</id><line>1 "
           "Caf\xc3\xa9 "
           "Row</line></record><record><id>AB1 3CD_2_F</id><line>2 Caf\xc3\xa9 Row</line></record></addressdata></x>";
}

// Loaded to the end: a request that was given up may still be winding down, and only COM knows when the DLL can go.
const LoadedDll& Dll() {
    static const LoadedDll* const dll = new LoadedDll;
    return *dll;
}

VARIANT_BOOL Show(_Quorvex* object, const wchar_t* postcode) {
    VARIANT_BOOL no = VARIANT_FALSE;
    VARIANT_BOOL result = VARIANT_FALSE;
    EXPECT_EQ(
        object->SearchForFullAddressWithDialogue(Text(postcode).Ref(), Text(kCaption).Ref(), &no, &no, &no, &result),
        S_OK);
    return result;
}

TEST(DialogThroughTheDll, TheUserPicksAnAddressThatTheServiceSent) {
    SocketServer server([](Connection& connection, const std::string& target) { connection.Reply(Page(target)); });
    VARIANT_BOOL result = VARIANT_FALSE;
    Text line;
    HostThread host([&] {
        const Ptr<_Quorvex> object = Dll().Create();
        object->SetServiceURL(Text(server.Url(L"")).Ref());
        result = Show(object.get(), L"AB1 3CD");
        object->get_Address_Line1(line.Out());
    });
    const HWND dialog = WaitForWindow(kCaption);
    const HWND list = GetDlgItem(dialog, kAddressList);
    ASSERT_TRUE(WaitUntil([&] { return SendMessageW(list, LB_GETCOUNT, 0, 0) == 2; }));
    ASSERT_TRUE(WaitUntil([&] { return TextOf(GetDlgItem(dialog, kCommand1)) == L"&Select"; }));
    SendMessageW(list, LB_SETCURSEL, 1, 0);
    PressKey(list, VK_RETURN);
    ASSERT_TRUE(host.WaitDone());
    EXPECT_EQ(result, VARIANT_TRUE);
    EXPECT_EQ(line.Str(), L"2 Caf\u00e9 Row");
    EXPECT_NE(server.LastHead().find("&id=AB1%203CD_2_F"), std::string::npos);
}

TEST(DialogThroughTheDll, TheHostMayDropItsLastReferenceWhileTheDialogIsOpen) {
    std::atomic<_Quorvex*> onlyReference{nullptr};
    HostThread host([&] {
        onlyReference = Dll().Create().release();
        const After drop(300, [&] { onlyReference.exchange(nullptr)->Release(); });
        EXPECT_EQ(Show(onlyReference, L""), VARIANT_FALSE);
    });
    const HWND dialog = WaitForWindow(kCaption);
    ASSERT_TRUE(WaitUntil([&] { return onlyReference == nullptr; }));
    Type(GetDlgItem(dialog, kInpPostcode), L"AB1");
    ClickId(dialog, kCommand1);
    EXPECT_TRUE(host.WaitDone());
}

} // namespace
} // namespace quorvex::testing
