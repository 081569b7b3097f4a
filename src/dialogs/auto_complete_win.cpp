#include "dialogs/auto_complete_win.h"

#include "dialogs/window_text_win.h"
#include "support/error.h"
#include "support/log.h"
#include "support/text.h"

namespace quorvex::dialogs {
namespace {

constexpr UINT kUndefinedMessage = 9;

ComboText Read(HWND combo) {
    DWORD start = 0;
    DWORD end = 0;
    SendMessageW(combo, CB_GETEDITSEL, reinterpret_cast<WPARAM>(&start), reinterpret_cast<LPARAM>(&end));
    return {WindowText(combo), start, end - start};
}

void Write(HWND combo, const ComboText& state) {
    SetTextIfNew(combo, state.text);
    const WORD start = static_cast<WORD>(state.caret);
    const WORD end = static_cast<WORD>(state.caret + state.selected);
    SendMessageW(combo, CB_SETEDITSEL, 0, MAKELPARAM(start, end));
}

int Complete(HWND combo, int keyAscii) {
    // Opening the list puts a first match into the field: text and caret are read before.
    ComboText state = Read(combo);
    if (keyAscii >= kFirstPrintableKey) {
        SendMessageW(combo, CB_SHOWDROPDOWN, TRUE, 0);
        SetCursor(LoadCursorW(nullptr, IDC_ARROW)); // an opening list takes the pointer away
    }
    const auto findItem = [combo](const std::wstring& typed) -> std::optional<std::wstring> {
        const LRESULT found =
            SendMessageW(combo, CB_SELECTSTRING, static_cast<WPARAM>(-1), reinterpret_cast<LPARAM>(typed.c_str()));
        if (found == CB_ERR) return std::nullopt;
        return WindowText(combo);
    };
    const int result = AutoCompleteText(state, keyAscii, findItem);
    Write(combo, state);
    if (keyAscii == kKeyEnter) {
        // Without a defined meaning; kept for those who watch the combo's messages.
        LONG zero = 0;
        SendMessageW(combo, kUndefinedMessage, 0, reinterpret_cast<LPARAM>(&zero));
    }
    return result;
}

void LogFailure(const support::Platform& platform) noexcept {
    try {
        const support::Error error = support::CurrentError();
        support::LogError(platform, error, L"Failed: AutoCompleteComboBox due to : " + error.Description());
    } catch (...) { // out of memory: nothing is left to be told
    }
}

} // namespace

int AutoCompleteComboBox(const support::Platform& platform, HWND combo, int keyAscii) noexcept {
    try {
        return Complete(combo, keyAscii);
    } catch (...) {
        LogFailure(platform);
    }
    return 0;
}

} // namespace quorvex::dialogs
