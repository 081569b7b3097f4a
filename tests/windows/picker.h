#pragma once

#include "dialogs/address_controls_win.h"
#include "dialogs/address_dialog.h"
#include "testing/dialog_platform_win.h"
#include "testing/driver_win.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

namespace quorvex::testing {

inline constexpr wchar_t kHostCaption[] = L"Order entry - find address";

// One picker in the hands of a test: a host that has called the method, and the user's view of the window.
class PickerTest : public ::testing::Test {
  protected:
    DialogPlatform platform;
    object::Quorvex object{platform, platform};
    std::unique_ptr<HostThread> host;
    bool result = false;
    HWND dialog = nullptr;

    PickerTest() {
        object.ServerURL = L"http://s";
        object.SetDataKey(L"W1");
        platform.onGetUrl = [this](const std::wstring& url) { return Answer(url); };
    }
    ~PickerTest() override { End(); }

    // What the service says, by page; a test changes them.
    std::wstring list = ListReply(3);
    std::wstring record = RecordReply(L"2 Mill Lane");
    std::wstring advanced = TreeReply(2, 4);
    std::wstring lists = L"<x><LookupListVersion>V1</LookupListVersion><A>AB,BA</A><T>Bath,Cambridge,Canterbury</T>"
                         L"<O>Avon,Kent</O></x>";

    std::wstring Answer(const std::wstring& url) const {
        if (url.find(L"SearchForAddressAdv") != std::wstring::npos) return advanced;
        if (url.find(L"SearchForAddress") != std::wstring::npos) return list;
        if (url.find(L"GetAddressRecord") != std::wstring::npos) return record;
        if (url.find(L"GetLookups") != std::wstring::npos) return lists;
        return L"TimeOut";
    }

    void Open(const std::wstring& postcode = {}, bool account = false, bool manage = false, bool errors = false) {
        host = std::make_unique<HostThread>([=, this] {
            result = dialogs::SearchForFullAddressWithDialogue(object, postcode, kHostCaption, account, manage, errors);
        });
    }
    void OpenAdvanced(const std::wstring& path, const std::wstring& postcode = L"ADV", bool errors = false) {
        host = std::make_unique<HostThread>([=, this] {
            result = dialogs::SearchForFullAddressWithDialogueAdv(object, postcode, kHostCaption, path, false, false,
                                                                  errors);
        });
    }
    void Find() {
        dialog = WaitForWindow(kHostCaption);
        ASSERT_NE(dialog, nullptr);
    }
    // After the window's own start, which a timer does: it sets the focus and begins a first search.
    void FindStarted() {
        Find();
        ASSERT_TRUE(WaitUntil([this] { return FocusOf(dialog) != nullptr; }));
        SendMessageW(dialog, WM_TIMER, dialogs::kTimer1, 0);
    }
    // With the addresses of a postcode on show.
    void OpenList(bool account = false, bool manage = false, bool errors = false) {
        Open(L"AB1 3CD", account, manage, errors);
        FindStarted();
        ASSERT_TRUE(TextBecomes(dialogs::kCommand1, L"&Select"));
    }
    HWND Control(int id) const { return GetDlgItem(dialog, id); }
    // True once the condition holds and the dialog, which answers between two events, is done with what brought that
    // about.
    template <typename Condition>
    bool Comes(const Condition& condition) const {
        const bool came = WaitUntil(condition);
        SendMessageW(dialog, WM_NULL, 0, 0);
        return came;
    }
    bool CaptionBecomes(const std::wstring& caption) const {
        return Comes([&] { return TextOf(dialog) == caption; });
    }
    bool TextBecomes(int id, const std::wstring& text) const {
        return Comes([&] { return TextOf(Control(id)) == text; });
    }
    bool Becomes(int id, bool shown) const {
        return Comes([&] { return IsShown(Control(id)) == shown; });
    }
    bool Enabled(int id, bool enabled) const {
        return Comes([&] { return (IsWindowEnabled(Control(id)) != FALSE) == enabled; });
    }
    // The timer that fills the place lists ticks faster than it does for users.
    bool Filled(int combo, int items) const {
        return WaitUntil([&] {
            SendMessageW(dialog, WM_TIMER, dialogs::kLoadCombos, 0);
            return SendMessageW(Control(combo), CB_GETCOUNT, 0, 0) == items;
        });
    }
    int Lines() const { return static_cast<int>(SendMessageW(Control(dialogs::kAddressList), LB_GETCOUNT, 0, 0)); }
    bool Ended(bool expected) {
        if (host == nullptr || !host->WaitDone()) return false;
        return result == expected;
    }
    // Whatever a test left open is closed as a user would.
    void End() {
        platform.hold = false;
        if (host == nullptr) return;
        while (!host->Done()) {
            if (dialog != nullptr && IsWindow(dialog)) PostMessageW(dialog, WM_CLOSE, 0, 0);
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
        }
        host.reset();
    }
};

} // namespace quorvex::testing
