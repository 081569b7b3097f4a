#include "windows/picker.h"

#include "dialogs/modal_win.h"
#include "testing/after_win.h"

#include <atomic>

namespace quorvex::testing {
namespace {

using namespace dialogs;

TEST_F(PickerTest, TheHostsWindowIsDisabledMeanwhileAndGetsTheFocusBack) {
    HWND owner = nullptr;
    HWND focusAfter = nullptr;
    HWND button = nullptr;
    bool enabledAfter = false;
    host = std::make_unique<HostThread>([&] {
        HostWindow window;
        owner = window.window;
        button = window.button;
        result = SearchForFullAddressWithDialogue(object, L"", kHostCaption, false, false, false);
        enabledAfter = IsWindowEnabled(window.window) != FALSE;
        focusAfter = GetFocus();
    });
    FindStarted();
    EXPECT_FALSE(IsWindowEnabled(owner));
    EXPECT_EQ(GetWindow(dialog, GW_OWNER), owner);
    RECT host_{};
    RECT mine{};
    GetWindowRect(owner, &host_);
    GetWindowRect(dialog, &mine);
    EXPECT_NEAR((host_.left + host_.right) / 2, (mine.left + mine.right) / 2, 2);
    EXPECT_NEAR((host_.top + host_.bottom) / 2, (mine.top + mine.bottom) / 2, 2);
    ClickId(dialog, kCommand1);
    EXPECT_TRUE(Ended(false));
    EXPECT_TRUE(enabledAfter);
    EXPECT_EQ(focusAfter, button);
}

TEST_F(PickerTest, ATopmostHostStaysTopmostAndBelowTheDialog) {
    HWND owner = nullptr;
    host = std::make_unique<HostThread>([&] {
        HostWindow window(WS_EX_TOPMOST);
        owner = window.window;
        result = SearchForFullAddressWithDialogue(object, L"", kHostCaption, false, false, false);
    });
    FindStarted();
    EXPECT_TRUE(GetWindowLongPtrW(owner, GWL_EXSTYLE) & WS_EX_TOPMOST);
    bool above = false;
    for (HWND w = GetWindow(owner, GW_HWNDPREV); w != nullptr; w = GetWindow(w, GW_HWNDPREV))
        above = above || w == dialog;
    EXPECT_TRUE(above);
}

TEST_F(PickerTest, AHostThatQuitsMeanwhileEndsTheCallAndSeesItsQuitMessage) {
    int exitCode = 0;
    host = std::make_unique<HostThread>([&] {
        result = SearchForFullAddressWithDialogue(object, L"", kHostCaption, false, false, false);
        MSG message;
        while (GetMessageW(&message, nullptr, 0, 0) > 0) {
        }
        exitCode = static_cast<int>(message.wParam);
    });
    FindStarted();
    PostThreadMessageW(host->Id(), WM_QUIT, 42, 0);
    EXPECT_TRUE(Ended(false));
    EXPECT_EQ(exitCode, 42);
}

TEST_F(PickerTest, AnOwnerThatGoesAwayTakesTheDialogWithIt) {
    HWND owner = nullptr;
    host = std::make_unique<HostThread>([&] {
        HostWindow window;
        owner = window.window;
        const After destroy(700, [&] { DestroyWindow(owner); });
        result = SearchForFullAddressWithDialogue(object, L"", kHostCaption, false, false, false);
    });
    Find();
    EXPECT_TRUE(Ended(false));
    EXPECT_FALSE(IsWindow(owner));
}

// A host timer may call in again while the first dialog is open, even while it searches.
TEST_F(PickerTest, ASecondDialogFromAHostTimerNestsAndTheFirstGoesOn) {
    object::Quorvex second(platform, platform);
    second.ServerURL = L"http://s";
    std::atomic<bool> innerResult{true};
    platform.hold = true;
    host = std::make_unique<HostThread>([&] {
        const After again(
            500, [&] { innerResult = SearchForFullAddressWithDialogue(second, L"", L"Second", false, false, false); });
        result = SearchForFullAddressWithDialogue(object, L"AB1 3CD", kHostCaption, false, false, false);
    });
    Find();
    const HWND inner = WaitForWindow(L"Second");
    EXPECT_TRUE(WaitUntil([this] { return !IsWindowEnabled(dialog); }));
    ClickId(inner, kCommand1);
    ASSERT_TRUE(WaitGone(L"Second"));
    EXPECT_TRUE(WaitUntil([&] { return !innerResult; }));
    EXPECT_TRUE(WaitUntil([this] { return IsWindowEnabled(dialog) != FALSE; }));
    platform.hold = false;
    EXPECT_TRUE(TextBecomes(kCommand2, L"&Find"));
    ClickId(dialog, kCommand1);
    EXPECT_TRUE(host->WaitDone());
}

TEST_F(PickerTest, EverythingIsReachedByTab) {
    Open();
    FindStarted();
    std::vector<HWND> order;
    for (int n = 0; n < 4; ++n) {
        const HWND before = FocusOf(dialog);
        order.push_back(before);
        PressKey(before, VK_TAB);
        ASSERT_TRUE(WaitUntil([&] { return FocusOf(dialog) != before; }));
    }
    EXPECT_EQ(order, (std::vector<HWND>{Control(kInpPostcode), Control(kCommand2), Control(kAddressList),
                                        Control(kCommand1)}));
    EXPECT_EQ(FocusOf(dialog), Control(kInpPostcode));
}

} // namespace
} // namespace quorvex::testing
