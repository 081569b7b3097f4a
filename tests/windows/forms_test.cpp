#include "dialogs/message_form_win.h"
#include "dialogs/progress_window_win.h"
#include "dialogs/update_choice_win.h"
#include "dialogs/zip_form_win.h"
#include "testing/dialog_platform_win.h"
#include "testing/driver_win.h"

#include <gtest/gtest.h>

namespace quorvex::testing {
namespace {

using namespace dialogs;

bool IsAbove(HWND window, HWND other) {
    for (HWND w = GetWindow(other, GW_HWNDPREV); w != nullptr; w = GetWindow(w, GW_HWNDPREV)) {
        if (w == window) return true;
    }
    return false;
}

TEST(MessageForm, TheMessageStandsAboveTheTopmostWindowOfAnother) {
    DialogPlatform platform;
    HWND foreign = nullptr;
    std::atomic<bool> end{false};
    HostThread other([&] {
        foreign = CreateWindowExW(WS_EX_TOPMOST, L"STATIC", L"In the way", WS_POPUP | WS_VISIBLE, 0, 0,
                                  GetSystemMetrics(SM_CXSCREEN), GetSystemMetrics(SM_CYSCREEN), nullptr, nullptr,
                                  nullptr, nullptr);
        SetForegroundWindow(foreign);
        PumpWhile([&] { return !end; });
        DestroyWindow(foreign);
    });
    ASSERT_TRUE(WaitUntil([&] { return foreign != nullptr && IsWindowVisible(foreign); }));
    int answer = 0;
    HostThread host(
        [&] { answer = TopMostMessageBox(platform, L"Continue?", MB_YESNO | MB_ICONQUESTION, L"Question"); });
    const HWND box = WaitForWindow(L"Question");
    EXPECT_TRUE(WaitUntil([&] { return IsAbove(box, foreign); }));
    EXPECT_TRUE(WaitUntil([&] { return GetForegroundWindow() == box; }));
    ClickId(box, IDYES);
    EXPECT_TRUE(host.WaitDone());
    EXPECT_EQ(answer, IDYES);
    end = true;
}

TEST(MessageForm, ATextOfAnySizeLeavesItsButtonOnTheScreen) {
    DialogPlatform platform;
    std::wstring lines;
    while (lines.size() < 1000000) lines += L"An error page of a server.\r\n";
    for (const std::wstring& text : {lines, std::wstring(1000000, L'x')}) {
        HostThread host([&] { TopMostMessageBox(platform, text, MB_OK, L"Long"); });
        const HWND box = WaitForWindow(L"Long");
        RECT place{};
        GetWindowRect(box, &place);
        EXPECT_LE(place.bottom, GetSystemMetrics(SM_CYSCREEN));
        EXPECT_GT(TextOf(GetDlgItem(box, 0xFFFF)).size(), 500U);
        ClickId(box, IDOK);
        ASSERT_TRUE(host.WaitDone());
        EXPECT_TRUE(WaitGone(L"Long"));
    }
}

TEST(MessageForm, InputModeGivesTheTypedTextOrNothing) {
    DialogPlatform platform;
    for (const bool confirmed : {true, false}) {
        std::optional<std::wstring> answer;
        HostThread host([&] { answer = TopMostInputBox(platform, L"Your name", L"Input", L"preset"); });
        const HWND box = WaitForWindow(L"Input");
        const HWND edit = FindWindowExW(box, nullptr, L"EDIT", nullptr);
        EXPECT_EQ(TextOf(edit), L"preset");
        Type(edit, L"typed");
        PressKey(edit, confirmed ? VK_RETURN : VK_ESCAPE);
        ASSERT_TRUE(host.WaitDone());
        EXPECT_EQ(answer, confirmed ? std::optional<std::wstring>(L"typed") : std::nullopt);
    }
}

TEST(UpdateChoice, EachButtonGivesItsChoiceAndClosingIsCancel) {
    DialogPlatform platform;
    using update::UpdateChoice;
    const std::wstring apply = L"Apply updates from files already in directory\r\nC:\\Data && more";
    const std::vector<std::pair<std::wstring, UpdateChoice>> buttons = {
        {L"&Download new updates from the internet and apply them", UpdateChoice::Download},
        {apply, UpdateChoice::ApplyFromFolder},
        {L"Cancel", UpdateChoice::Cancel},
        {L"De&tails...", UpdateChoice::ShowDetails},
        {L"&Send Logs to Support...", UpdateChoice::SendLogs},
        {L"", UpdateChoice::Cancel}};
    for (const auto& [caption, expected] : buttons) {
        UpdateChoice choice = UpdateChoice::Cancel;
        HostThread host(
            [&] { choice = AskUpdateChoice(platform, L"T:Update Postcode Address Data", L"C:\\Data & more", true); });
        const HWND dialog = WaitForWindow(L"T:Update Postcode Address Data");
        if (caption.empty()) {
            PostMessageW(dialog, WM_CLOSE, 0, 0);
        } else {
            Click(FindWindowExW(dialog, nullptr, L"BUTTON", caption.c_str()));
        }
        ASSERT_TRUE(host.WaitDone());
        EXPECT_EQ(choice, expected);
    }
}

TEST(UpdateChoice, WithoutInternetNothingCanBeDownloaded) {
    DialogPlatform platform;
    HostThread host([&] { AskUpdateChoice(platform, L"Update", L"C:\\Data", false); });
    const HWND dialog = WaitForWindow(L"Update");
    const HWND download =
        FindWindowExW(dialog, nullptr, L"BUTTON", L"&Download new updates from the internet and apply them");
    EXPECT_FALSE(IsWindowEnabled(download));
    PressKey(FocusOf(dialog), VK_ESCAPE);
    EXPECT_TRUE(host.WaitDone());
}

TEST(Progress, ShowsUpdatesCancelsOnceAndGivesTheHostItsWindowBack) {
    DialogPlatform platform;
    std::atomic<int> cancels{0};
    std::atomic<int> step{0};
    HWND window = nullptr;
    bool enabledAfter = false;
    HostThread host([&] {
        const HostWindow own;
        window = own.window;
        ProgressWindow progress(platform, [&] { ++cancels; });
        progress.Show(L"Downloading Update:x 1/2", L"Get file: x 1 of 4 Kb 25%");
        step = 1;
        PumpWhile([&] {
            progress.Show(L"Downloading Update:x 1/2", L"Get file: x 2 of 4 Kb 50%");
            return step == 1;
        });
        progress.Show(L"Downloading Update:y 2/2", L"Get file: y 0 of 4 Kb 0%");
        PumpWhile([&] { return step == 2; });
        progress.Hide();
        enabledAfter = IsWindowEnabled(window) != FALSE;
    });
    const HWND dialog = WaitForWindow(L"Downloading Update:x 1/2");
    EXPECT_FALSE(IsWindowEnabled(window));
    const HWND label = FindWindowExW(dialog, nullptr, L"STATIC", nullptr);
    EXPECT_TRUE(WaitUntil([&] { return TextOf(label) == L"Get file: x 2 of 4 Kb 50%"; }));
    const HWND cancel = FindWindowExW(dialog, nullptr, L"BUTTON", L"&Cancel");
    Click(cancel);
    EXPECT_TRUE(WaitUntil([&] { return cancels == 1 && !IsWindowEnabled(cancel); }));
    PressKey(dialog, VK_ESCAPE);
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    EXPECT_EQ(cancels, 1);
    step = 2;
    WaitForWindow(L"Downloading Update:y 2/2"); // the next file can be cancelled again
    EXPECT_TRUE(WaitUntil([&] { return IsWindowEnabled(cancel) != FALSE; }));
    step = 3;
    ASSERT_TRUE(host.WaitDone());
    EXPECT_TRUE(enabledAfter);
}

TEST(Progress, TheShareIsReadFromTheTextsEnd) {
    EXPECT_EQ(PercentOf(L"Get file: a.zip 1 of 2 Mb 50%"), 50);
    EXPECT_EQ(PercentOf(L"100% "), 100);
    EXPECT_EQ(PercentOf(L"999%"), 100);
    for (const wchar_t* none : {L"", L"%", L"50% done", L"Unziping file:x", L"12345678901%"}) {
        EXPECT_EQ(PercentOf(none), std::nullopt);
    }
}

TEST(Zip, TheStatusWindowShowsItsCaptionsAndStatus) {
    DialogPlatform platform;
    std::atomic<bool> end{false};
    HostThread host([&] {
        ZipForm form(platform);
        form.Load();
        form.SetCaptions(L"Unziping file", L"Unpacking");
        form.SetStatus(L"Opening UPDATE_F_20260331.zip");
        form.Load();
        form.SetStatus(L"Extracting UPDATE_F_20260331.zip");
        PumpWhile([&] { return !end; });
        form.Unload();
    });
    const HWND window = WaitForWindow(L"Unziping file");
    const HWND text = FindWindowExW(window, nullptr, L"STATIC", nullptr);
    EXPECT_EQ(TextOf(text), L"Unpacking");
    EXPECT_EQ(TextOf(FindWindowExW(window, text, L"STATIC", nullptr)), L"Extracting UPDATE_F_20260331.zip");
    end = true;
    EXPECT_TRUE(host.WaitDone());
    EXPECT_TRUE(WaitGone(L"Unziping file"));
}

} // namespace
} // namespace quorvex::testing
