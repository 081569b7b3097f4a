#include "testing/driver_win.h"

#include "support/message_pump_win.h"

#include <gtest/gtest.h>

#include <objbase.h>

namespace quorvex::testing {

HostThread::HostThread(std::function<void()> call)
    : thread_([this, call = std::move(call)] {
          id_ = GetCurrentThreadId();
          CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
          call();
          CoUninitialize();
          done_ = true;
      }) {
    WaitUntil([this] { return id_ != 0; });
}

HostThread::~HostThread() {
    thread_.join();
}

void PumpWhile(const std::function<bool()>& condition) {
    while (condition()) {
        support::PumpPendingMessages();
        Sleep(5);
    }
}

HostWindow::HostWindow(DWORD extendedStyle)
    : window(CreateWindowExW(extendedStyle, L"#32770", L"Host", WS_OVERLAPPEDWINDOW | WS_VISIBLE, 200, 150, 900, 700,
                             nullptr, nullptr, nullptr, nullptr)),
      button(CreateWindowExW(0, L"BUTTON", L"Press", WS_CHILD | WS_VISIBLE, 10, 10, 90, 25, window, nullptr, nullptr,
                             nullptr)) {
    SetForegroundWindow(window);
    SetFocus(button);
}

HostWindow::~HostWindow() {
    DestroyWindow(window);
}

namespace {

struct Search {
    const std::wstring& caption;
    HWND found;
};

BOOL CALLBACK LookAt(HWND window, LPARAM data) {
    auto& search = *reinterpret_cast<Search*>(data);
    DWORD process = 0;
    GetWindowThreadProcessId(window, &process);
    if (process != GetCurrentProcessId() || !IsWindowVisible(window) || TextOf(window) != search.caption) return TRUE;
    wchar_t name[16]{};
    GetClassNameW(window, name, 16);
    if (std::wstring(name) != L"#32770") return TRUE; // not the window behind a message box
    search.found = window;
    return FALSE;
}

} // namespace

HWND FindVisibleWindow(const std::wstring& caption) {
    Search wanted{caption, nullptr};
    EnumWindows(LookAt, reinterpret_cast<LPARAM>(&wanted));
    return wanted.found;
}

HWND WaitForWindow(const std::wstring& caption) {
    HWND window = nullptr;
    WaitUntil([&] { return (window = FindVisibleWindow(caption)) != nullptr; });
    EXPECT_NE(window, nullptr) << "no window comes up";
    return window;
}

bool WaitGone(const std::wstring& caption) {
    return WaitUntil([&] { return FindVisibleWindow(caption) == nullptr; });
}

std::wstring TextOf(HWND window) {
    std::wstring text(4096, L'\0');
    DWORD_PTR length = 0;
    SendMessageTimeoutW(window, WM_GETTEXT, text.size(), reinterpret_cast<LPARAM>(text.data()), SMTO_NORMAL, 5000,
                        &length);
    text.resize(length);
    return text;
}

bool IsShown(HWND window) {
    return IsWindowVisible(window) != FALSE;
}

std::vector<HWND> ShownChildren(HWND window) {
    std::vector<HWND> children;
    for (HWND child = GetWindow(window, GW_CHILD); child != nullptr; child = GetWindow(child, GW_HWNDNEXT)) {
        if (GetWindowLongPtrW(child, GWL_STYLE) & WS_VISIBLE) children.push_back(child);
    }
    return children;
}

void Click(HWND button) {
    ASSERT_NE(button, nullptr);
    PostMessageW(button, BM_CLICK, 0, 0);
}

void ClickId(HWND dialog, int id) {
    Click(GetDlgItem(dialog, id));
}

void Type(HWND edit, const std::wstring& text) {
    SendMessageW(edit, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(text.c_str()));
}

void TypeKeys(HWND control, const std::wstring& keys) {
    for (const wchar_t key : keys) SendMessageW(control, WM_CHAR, key, 1);
}

void PressKey(HWND control, int virtualKey) {
    PostMessageW(control, WM_KEYDOWN, static_cast<WPARAM>(virtualKey), 1);
    PostMessageW(control, WM_KEYUP, static_cast<WPARAM>(virtualKey), static_cast<LPARAM>(0xC0000001));
}

void MouseClick(HWND control, POINT client, int times) {
    ClientToScreen(control, &client);
    SetCursorPos(client.x, client.y);
    // Each event carries its place: what the display tells of the pointer arrives later and may be older.
    constexpr LONGLONG kWholeScreen = 65536;
    const auto place = [](LONG at, int size) { return static_cast<DWORD>((at * kWholeScreen + size - 1) / size); };
    const DWORD x = place(client.x, GetSystemMetrics(SM_CXSCREEN));
    const DWORD y = place(client.y, GetSystemMetrics(SM_CYSCREEN));
    for (int n = 0; n < times; ++n) {
        for (const DWORD button : {DWORD{MOUSEEVENTF_LEFTDOWN}, DWORD{MOUSEEVENTF_LEFTUP}})
            mouse_event(MOUSEEVENTF_MOVE | MOUSEEVENTF_ABSOLUTE | button, x, y, 0, 0);
    }
}

void FocusOn(HWND control) {
    const HWND dialog = GetAncestor(control, GA_ROOT);
    SendMessageW(dialog, WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(control), TRUE);
    EXPECT_TRUE(WaitUntil([&] { return FocusOf(dialog) == control; }));
}

HWND FocusOf(HWND window) {
    GUITHREADINFO info{};
    info.cbSize = sizeof info;
    GetGUIThreadInfo(GetWindowThreadProcessId(window, nullptr), &info);
    return info.hwndFocus;
}

} // namespace quorvex::testing
