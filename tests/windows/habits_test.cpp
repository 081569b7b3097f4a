// What somebody who uses the dialogs all day relies on.

#include "windows/advanced.h"

namespace quorvex::testing {
namespace {

using namespace dialogs;

std::wstring Clipboard() {
    std::wstring text;
    if (!OpenClipboard(nullptr)) return text;
    if (const HANDLE data = GetClipboardData(CF_UNICODETEXT)) {
        text = static_cast<const wchar_t*>(GlobalLock(data));
        GlobalUnlock(data);
    }
    CloseClipboard();
    return text;
}

TEST_F(PickerTest, EnterTwiceNeitherStopsNorSelects) {
    platform.hold = true;
    Open();
    FindStarted();
    Type(Control(kInpPostcode), L"AB1 3CD");
    FocusOn(Control(kCommand2));
    PressKey(Control(kCommand2), VK_RETURN);
    ASSERT_TRUE(TextBecomes(kCommand2, L"STOP"));
    PressKey(FocusOf(dialog), VK_RETURN);
    WaitUntil([this] { return platform.stopCount > 0; }, std::chrono::milliseconds(200));
    EXPECT_EQ(platform.stopCount, 0);
    platform.hold = false;
    ASSERT_TRUE(TextBecomes(kCommand1, L"&Select"));
    constexpr LPARAM kHeld = LPARAM{1} << 30;
    PostMessageW(Control(kAddressList), WM_KEYDOWN, VK_RETURN, kHeld | 1);
    WaitUntil([this] { return platform.requests > 1; }, std::chrono::milliseconds(200));
    EXPECT_EQ(platform.requests, 1) << "Enter that is still held does not take the first address";
}

TEST_F(PickerTest, TypingANumberGoesToItAndCtrlCCopiesTheLine) {
    list = ListReply(60);
    OpenList();
    EXPECT_EQ(TextOf(Control(kAddressList)), L"Addresses: 60");
    TypeKeys(Control(kAddressList), L"15");
    EXPECT_EQ(SendMessageW(Control(kAddressList), LB_GETCURSEL, 0, 0), 14);
    TypeKeys(Control(kAddressList), L"\x03");
    EXPECT_EQ(Clipboard(), L"15 Mill Lane Wisbech");
}

TEST_F(AdvancedTest, CtrlCCopiesTheLineOfTheTree) {
    OpenFilled();
    SearchTree();
    SendMessageW(Tree(), TVM_SELECTITEM, TVGN_CARET, reinterpret_cast<LPARAM>(Item(TVGN_ROOT, nullptr)));
    TypeKeys(Tree(), L"\x03");
    EXPECT_EQ(Clipboard(), L"Street 1");
}

TEST_F(PickerTest, ALineThatIsTooLongHasATip) {
    list = ListReply(3, {}, L"A Street Whose Name Takes More Than The Width Of The Window Wisbech Cambridgeshire");
    OpenList();
    HWND tip = nullptr;
    while ((tip = FindWindowExW(nullptr, tip, TOOLTIPS_CLASSW, nullptr)) != nullptr) {
        if (GetWindow(tip, GW_OWNER) == dialog) break;
    }
    ASSERT_NE(tip, nullptr);
    const auto tipText = [&] {
        std::wstring text(512, L'\0');
        TTTOOLINFOW tool{};
        tool.cbSize = TTTOOLINFOW_V1_SIZE;
        tool.hwnd = Control(kAddressList);
        tool.lpszText = text.data();
        SendMessageW(tip, TTM_GETTEXTW, 512, reinterpret_cast<LPARAM>(&tool));
        return std::wstring(text.c_str());
    };
    POINT second{30, 0};
    RECT line{};
    SendMessageW(Control(kAddressList), LB_GETITEMRECT, 1, reinterpret_cast<LPARAM>(&line));
    second.y = (line.top + line.bottom) / 2;
    ClientToScreen(Control(kAddressList), &second);
    SetCursorPos(second.x, second.y);
    mouse_event(MOUSEEVENTF_MOVE, 1, 0, 0, 0);
    EXPECT_TRUE(WaitUntil([&] { return tipText().find(L"2 A Street") == 0; })) << "tip: " << tipText().size();
}

TEST_F(PickerTest, TheUsersSizeIsKeptForTheNextDialog) {
    const auto resize = [this](int width, int height) {
        SendMessageW(dialog, WM_ENTERSIZEMOVE, 0, 0);
        SetWindowPos(dialog, nullptr, 0, 0, width, height, SWP_NOMOVE | SWP_NOZORDER);
        SendMessageW(dialog, WM_EXITSIZEMOVE, 0, 0);
    };
    for (const int width : {600, 375}) { // the documented size at the end, for other tests
        Open();
        FindStarted();
        resize(width, 485);
        ClickId(dialog, kCommand1);
        ASSERT_TRUE(Ended(false));
        Open();
        FindStarted();
        RECT box{};
        GetWindowRect(dialog, &box);
        EXPECT_EQ(box.right - box.left, width);
        ClickId(dialog, kCommand1);
        ASSERT_TRUE(Ended(false));
    }
}

TEST_F(AdvancedTest, EveryLabelTakesToItsField) {
    OpenCriteria();
    const std::vector<std::pair<wchar_t, HWND>> fields = {
        {L'b', Control(kLines1)},   {L's', Control(kLines2)},       {L'o', Control(kLines0)},
        {L't', Edit(kInpTownComb)}, {L'u', Edit(kInpCountiesComb)}, {L'p', Edit(kInpPostcodeComb)},
    };
    for (const auto& [key, field] : fields) {
        PostMessageW(FocusOf(dialog), WM_SYSCHAR, static_cast<WPARAM>(key), LPARAM{1} << 29);
        EXPECT_TRUE(WaitUntil([&] { return FocusOf(dialog) == field; })) << static_cast<char>(key);
    }
}

} // namespace
} // namespace quorvex::testing
