#include "dialogs/modal_win.h"

#include "support/window_helpers_win.h"

#include <algorithm>

namespace quorvex::dialogs {
namespace {

constexpr UINT kHostAnswerMilliseconds = 200;

bool Answers(HWND window) {
    DWORD_PTR result = 0;
    return SendMessageTimeoutW(window, WM_NULL, 0, 0, SMTO_ABORTIFHUNG, kHostAnswerMilliseconds, &result) != 0;
}

HWND ForegroundWindowOfProcess() {
    const HWND window = GetForegroundWindow();
    DWORD process = 0;
    const DWORD thread = window == nullptr ? 0 : GetWindowThreadProcessId(window, &process);
    if (process != GetCurrentProcessId()) return nullptr;
    // Another thread may be waiting for this one: to touch its windows would then be a deadlock.
    return thread == GetCurrentThreadId() || Answers(window) ? window : nullptr;
}

bool IsAboveAll(HWND window) {
    return window != nullptr && (GetWindowLongPtrW(window, GWL_EXSTYLE) & WS_EX_TOPMOST) != 0;
}

// Enter that is held down presses one button, not all that come up one after another.
bool IsRepeatedEnter(const MSG& message) {
    return message.message == WM_KEYDOWN && message.wParam == VK_RETURN && (HIWORD(message.lParam) & KF_REPEAT) != 0;
}

BOOL CALLBACK AddWindow(HWND window, LPARAM list) {
    reinterpret_cast<std::vector<HWND>*>(list)->push_back(window);
    return TRUE;
}

} // namespace

HWND HostWindow() {
    HWND window = GetActiveWindow();
    if (window == nullptr) window = ForegroundWindowOfProcess();
    if (window != nullptr) window = GetAncestor(window, GA_ROOT);
    return window != nullptr && window != GetDesktopWindow() && IsWindowVisible(window) ? window : nullptr;
}

RECT WorkArea(HWND host) {
    HMONITOR monitor = nullptr;
    POINT pointer{};
    if (host != nullptr) {
        monitor = MonitorFromWindow(host, MONITOR_DEFAULTTONEAREST);
    } else if (GetCursorPos(&pointer)) {
        monitor = MonitorFromPoint(pointer, MONITOR_DEFAULTTOPRIMARY);
    }
    MONITORINFO info{};
    info.cbSize = sizeof info;
    if (monitor != nullptr && GetMonitorInfoW(monitor, &info)) return info.rcWork;
    return {0, 0, GetSystemMetrics(SM_CXSCREEN), GetSystemMetrics(SM_CYSCREEN)};
}

POINT CentredPosition(HWND host, SIZE size) {
    const RECT area = WorkArea(host);
    RECT around = area;
    if (host != nullptr && !IsIconic(host)) GetWindowRect(host, &around);
    const LONG x = (around.left + around.right - size.cx) / 2;
    const LONG y = (around.top + around.bottom - size.cy) / 2;
    return {std::max(area.left, std::min(x, area.right - size.cx)),
            std::max(area.top, std::min(y, area.bottom - size.cy))};
}

void BringToFront(HWND window) {
    constexpr UINT kOrderOnly = SWP_NOMOVE | SWP_NOSIZE;
    SetWindowPos(window, HWND_TOPMOST, 0, 0, 0, 0, kOrderOnly);
    // To take a window out of the topmost ones takes its owner out, too: one that the host put there must stay.
    if (!IsAboveAll(GetWindow(window, GW_OWNER))) SetWindowPos(window, HWND_NOTOPMOST, 0, 0, 0, 0, kOrderOnly);
    SetForegroundWindow(window);
}

void WakeMessageLoop() {
    PostThreadMessageW(GetCurrentThreadId(), WM_NULL, 0, 0);
}

void FinishMouseClick() {
    constexpr ULONGLONG kLongestMilliseconds = 2000; // a button that is held down longer is a click of its own
    constexpr DWORD kLookMilliseconds = 5;
    MSG message;
    const auto drop = [&message] {
        while (PeekMessageW(&message, nullptr, WM_MOUSEFIRST, WM_MOUSELAST, PM_REMOVE)) {
        }
    };
    const ULONGLONG end = GetTickCount64() + kLongestMilliseconds;
    const auto held = [] { return support::IsKeyDown(VK_LBUTTON) || support::IsKeyDown(VK_RBUTTON); }; // may be swapped
    for (drop(); held() && GetTickCount64() < end; drop()) Sleep(kLookMilliseconds);
    drop();
}

ModalSession::ModalSession(HWND dialog, HWND host) : dialog_(dialog), host_(host), focus_(GetFocus()), keys_(dialog) {
    std::vector<HWND> windows;
    EnumThreadWindows(GetCurrentThreadId(), AddWindow, reinterpret_cast<LPARAM>(&windows));
    if (host != nullptr && std::find(windows.begin(), windows.end(), host) == windows.end()) windows.push_back(host);
    for (const HWND window : windows) {
        if (window == dialog || !IsWindowVisible(window) || !IsWindowEnabled(window)) continue;
        disabled_.push_back(window);
        EnableWindow(window, FALSE);
    }
}

ModalSession::~ModalSession() {
    Release();
}

bool ModalSession::Run(const bool& done) {
    MSG message;
    while (!done) {
        const BOOL result = GetMessageW(&message, nullptr, 0, 0);
        if (result == 0) PostQuitMessage(static_cast<int>(message.wParam));
        if (result <= 0) return false;
        if (IsRepeatedEnter(message) && (message.hwnd == dialog_ || IsChild(dialog_, message.hwnd))) continue;
        if (IsDialogMessageW(dialog_, &message)) continue;
        TranslateMessage(&message);
        DispatchMessageW(&message);
    }
    return true;
}

void ModalSession::Release() {
    for (const HWND window : disabled_) {
        if (IsWindow(window)) EnableWindow(window, TRUE);
    }
    disabled_.clear();
}

void ModalSession::RestoreFocus() {
    if (host_ != nullptr && IsWindow(host_)) SetForegroundWindow(host_);
    if (focus_ != nullptr && IsWindow(focus_) && IsWindowEnabled(GetAncestor(focus_, GA_ROOT))) SetFocus(focus_);
}

} // namespace quorvex::dialogs
