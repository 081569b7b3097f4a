// The Windows platform, the window helpers, and the diagnostics that Shift and Ctrl bring up.
#include "testing/socket_server_win.h"
#include "transport/fixture.h"

#include "server/platform_win.h"
#include "support/window_helpers_win.h"

#include <atomic>
#include <thread>

namespace quorvex::testing {
namespace {

// Holds a key down.
class HeldKey {
  public:
    explicit HeldKey(BYTE key) : key_(key) { keybd_event(key_, 0, 0, 0); }
    ~HeldKey() { keybd_event(key_, 0, KEYEVENTF_KEYUP, 0); }
    HeldKey(const HeldKey&) = delete;
    HeldKey& operator=(const HeldKey&) = delete;

  private:
    const BYTE key_;
};

class PlatformTest : public ::testing::Test {
  protected:
    server::WindowsPlatform windows_;
    support::Platform& platform_ = windows_.Surroundings();
};

std::wstring ClipboardText() {
    if (!OpenClipboard(nullptr)) return L"(clipboard closed)";
    const HANDLE memory = GetClipboardData(CF_UNICODETEXT);
    const auto* const text = memory == nullptr ? nullptr : static_cast<const wchar_t*>(GlobalLock(memory));
    const std::wstring copy = text == nullptr ? L"(nothing)" : text;
    if (memory != nullptr) GlobalUnlock(memory);
    CloseClipboard();
    return copy;
}

using DiagnosticsTest = TransportTest;

TEST_F(DiagnosticsTest, ShiftAndCtrlTogetherShowCallAndReturn) {
    const SocketServer server([](Connection& connection, const std::string&) { connection.Reply("a &amp; b"); });
    const std::wstring url = server.Url(L"/page");
    const HeldKey shift(VK_SHIFT);
    ASSERT_TRUE(support::IsKeyDown(VK_SHIFT));
    Get(url);
    EXPECT_TRUE(platform_.messages.empty()); // one of the two is not enough
    std::wstring meanwhile = L"?";
    platform_.onMessage = [&] { meanwhile = Get(url); }; // host code that runs under the message box
    {
        const HeldKey ctrl(VK_CONTROL);
        EXPECT_EQ(Get(url), L"a & b");
    }
    EXPECT_EQ(meanwhile, L"");
    ASSERT_EQ(platform_.messages.size(), 2U);
    EXPECT_EQ(platform_.messages[0].text, L"Call:\r\n" + url);
    EXPECT_EQ(platform_.messages[0].title, L"Postcode Call (on clipboard)");
    EXPECT_EQ(platform_.messages[0].style, support::kStyleInformation);
    EXPECT_EQ(platform_.messages[1].text, L"Return:\r\na &amp; b");
    EXPECT_EQ(platform_.messages[1].title, L"Postcode Return (on clipboard)");
    EXPECT_EQ(platform_.clipboard, (std::vector<std::wstring>{url, L"a &amp; b"}));
}

TEST_F(DiagnosticsTest, ReadingTheMessageIsNotTheNetworksTime) {
    const SocketServer server([](Connection& connection, const std::string&) { connection.Reply("here"); });
    const HeldKey shift(VK_SHIFT);
    const HeldKey ctrl(VK_CONTROL);
    platform_.onMessage = [] { Sleep(700); };
    EXPECT_EQ(Get(server.Url(L"/"), kShortLimit), L"here");
}

TEST_F(PlatformTest, TheClipboardTakesAnyTextAndWaitsForItsHolder) {
    const std::wstring text = L"caf\u00E9 \u20AC \U0001F3E0\r\n" + std::wstring(100000, L'x');
    platform_.user.SetClipboardText(text);
    EXPECT_EQ(ClipboardText(), text);
    platform_.user.SetClipboardText(L"");
    EXPECT_EQ(ClipboardText(), L"");
    std::atomic<bool> held{false};
    std::thread holder([&held] {
        const HWND window = CreateWindowExW(0, L"STATIC", L"", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, nullptr, nullptr);
        EXPECT_TRUE(OpenClipboard(window));
        held = true;
        Sleep(60);
        CloseClipboard();
        DestroyWindow(window);
    });
    while (!held) Sleep(1);
    platform_.user.SetClipboardText(L"last");
    holder.join();
    EXPECT_EQ(ClipboardText(), L"last");
}

TEST_F(PlatformTest, NamesAndTimeComeFromTheSystem) {
    wchar_t name[256];
    DWORD size = 256;
    ASSERT_TRUE(GetComputerNameW(name, &size));
    EXPECT_EQ(platform_.machine.ComputerName(), name);
    size = 256;
    ASSERT_TRUE(GetUserNameW(name, &size));
    EXPECT_EQ(platform_.machine.UserName(), name);
    EXPECT_EQ(platform_.machine.DriveShareName(L'C'), L"");
    EXPECT_EQ(platform_.machine.DriveShareName(L'?'), L"");
    EXPECT_EQ(platform_.machine.SystemVersion().substr(0, 8), L"Windows ");
    EXPECT_EQ(platform_.machine.SystemVersion().find(L" 0.0"), std::wstring::npos);
    const support::LocalTime now = platform_.machine.Now();
    const double seconds = now.hour * 3600.0 + now.minute * 60.0 + now.second;
    EXPECT_NEAR(http::SecondsSinceMidnight(), seconds, 2);
}

TEST_F(PlatformTest, TheDataAccessVersionIsTheRegistrysOwn) {
    constexpr wchar_t kKey[] = L"SOFTWARE\\Microsoft\\DataAccess";
    HKEY key = nullptr;
    DWORD made = 0;
    ASSERT_EQ(RegCreateKeyExW(HKEY_LOCAL_MACHINE, kKey, 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &key, &made),
              ERROR_SUCCESS);
    RegCloseKey(key);
    if (made == REG_OPENED_EXISTING_KEY) GTEST_SKIP() << "this system has a data access layer of its own";
    EXPECT_EQ(platform_.machine.DataAccessVersion(), L"");
    constexpr wchar_t kVersion[] = L"2.81.1117.0";
    RegSetKeyValueW(HKEY_LOCAL_MACHINE, kKey, L"Version", REG_SZ, kVersion, sizeof kVersion);
    EXPECT_EQ(platform_.machine.DataAccessVersion(), kVersion);
    RegDeleteKeyW(HKEY_LOCAL_MACHINE, kKey);
}

TEST_F(PlatformTest, TheShellSaysWhetherItOpened) {
    EXPECT_LE(platform_.user.OpenWithShell(L"no such file.xyz", L""), 32);
}

TEST(WindowHelpersTest, ClickAtPressesWhatLiesThere) {
    const HINSTANCE self = GetModuleHandleW(nullptr);
    const HWND box = CreateWindowExW(0, L"BUTTON", L"", WS_POPUP | WS_VISIBLE | BS_AUTOCHECKBOX, 40, 60, 100, 30,
                                     nullptr, nullptr, self, nullptr);
    ASSERT_NE(box, nullptr);
    support::SetTopMost(box, true);
    EXPECT_NE(GetWindowLongW(box, GWL_EXSTYLE) & WS_EX_TOPMOST, 0);
    RECT place{};
    GetWindowRect(box, &place);
    EXPECT_EQ(place.left, 40);
    EXPECT_EQ(place.right - place.left, 100);
    POINT before{};
    GetCursorPos(&before);
    support::ClickAt(box, 8, 15);
    for (int i = 0; i < 100 && SendMessageW(box, BM_GETCHECK, 0, 0) != BST_CHECKED; ++i) {
        MSG message;
        while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) DispatchMessageW(&message);
        Sleep(10);
    }
    EXPECT_EQ(SendMessageW(box, BM_GETCHECK, 0, 0), BST_CHECKED);
    POINT after{};
    GetCursorPos(&after);
    EXPECT_EQ(before.x, after.x);
    EXPECT_EQ(before.y, after.y);
    support::SetTopMost(box, false);
    EXPECT_EQ(GetWindowLongW(box, GWL_EXSTYLE) & WS_EX_TOPMOST, 0);
    DestroyWindow(box);
}

} // namespace
} // namespace quorvex::testing
