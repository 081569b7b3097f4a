#include "dialogs/combo_win.h"

namespace quorvex::dialogs {

HWND EditOf(HWND combo) {
    COMBOBOXINFO info{};
    info.cbSize = sizeof info;
    return GetComboBoxInfo(combo, &info) ? info.hwndItem : nullptr;
}

void FitCombo(HWND combo, int height) {
    constexpr WPARAM kClosedPart = static_cast<WPARAM>(-1);
    constexpr int kTries = 3; // the height that is set and the one that is told may differ by the borders
    int inner = static_cast<int>(SendMessageW(combo, CB_GETITEMHEIGHT, kClosedPart, 0));
    for (int tries = 0; tries < kTries; ++tries) {
        RECT box{};
        GetWindowRect(combo, &box);
        const int missing = height - static_cast<int>(box.bottom - box.top);
        if (missing == 0) return;
        inner += missing;
        SendMessageW(combo, CB_SETITEMHEIGHT, kClosedPart, inner);
    }
}

int TextTop(HWND field) {
    const HWND inner = EditOf(field);
    const HWND edit = inner != nullptr ? inner : field;
    RECT text{};
    RECT box{};
    SendMessageW(edit, EM_GETRECT, 0, reinterpret_cast<LPARAM>(&text));
    POINT top{0, text.top};
    ClientToScreen(edit, &top);
    GetWindowRect(field, &box);
    return static_cast<int>(top.y - box.top);
}

} // namespace quorvex::dialogs
