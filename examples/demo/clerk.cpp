// Plays the person at the screen for ./demo --update: presses "Download" in the update dialog, reads the messages that
// come up and presses OK, and ends with the message about the outcome.

#include <windows.h>

#include <cstdio>
#include <string>

namespace {

constexpr DWORD kLongestWaitMilliseconds = 120000;
constexpr DWORD kPollMilliseconds = 50;
constexpr wchar_t kDialogCaption[] = L"Demo:Update Postcode Address Data";
constexpr int kMessageTextId = 0xFFFF;

std::wstring TextOf(HWND window) {
    std::wstring text(static_cast<std::size_t>(GetWindowTextLengthW(window)) + 1, L'\0');
    text.resize(static_cast<std::size_t>(GetWindowTextW(window, text.data(), static_cast<int>(text.size()))));
    return text;
}

std::wstring ControlText(HWND dialog, int id) {
    const HWND control = GetDlgItem(dialog, id);
    if (control == nullptr) return {};
    wchar_t text[4096] = {};
    SendMessageW(control, WM_GETTEXT, 4096, reinterpret_cast<LPARAM>(text));
    return text;
}

struct Desk {
    HWND updateDialog = nullptr;
    HWND message = nullptr;
};

BOOL CALLBACK Look(HWND window, LPARAM desk) {
    if (!IsWindowVisible(window)) return TRUE;
    auto& seen = *reinterpret_cast<Desk*>(desk);
    if (TextOf(window) == kDialogCaption) seen.updateDialog = window;
    if (GetDlgItem(window, kMessageTextId) != nullptr && GetDlgItem(window, IDOK) != nullptr) seen.message = window;
    return TRUE;
}

} // namespace

int main() {
    bool chosen = false;
    for (DWORD waited = 0; waited < kLongestWaitMilliseconds; waited += kPollMilliseconds) {
        Desk desk;
        EnumWindows(Look, reinterpret_cast<LPARAM>(&desk));
        if (desk.message != nullptr) {
            const std::wstring text = ControlText(desk.message, kMessageTextId);
            std::printf("Message: %ls\n", text.c_str());
            PostMessageW(GetDlgItem(desk.message, IDOK), BM_CLICK, 0, 0);
            return 0;
        }
        if (desk.updateDialog != nullptr && !chosen) {
            chosen = true;
            PostMessageW(FindWindowExW(desk.updateDialog, nullptr, L"Button", nullptr), BM_CLICK, 0, 0);
        }
        Sleep(kPollMilliseconds);
    }
    std::printf("No message came up.\n");
    return 1;
}
