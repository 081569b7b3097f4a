#include "dialogs/window_text_win.h"

namespace quorvex::dialogs {

std::wstring WindowText(HWND window) {
    std::wstring text(static_cast<std::size_t>(GetWindowTextLengthW(window)) + 1, L'\0');
    text.resize(static_cast<std::size_t>(GetWindowTextW(window, text.data(), static_cast<int>(text.size()))));
    return text;
}

std::wstring LineText(HWND list, int line) {
    const LRESULT length = SendMessageW(list, LB_GETTEXTLEN, static_cast<WPARAM>(line), 0);
    if (length == LB_ERR) return {};
    std::wstring text(static_cast<std::size_t>(length) + 1, L'\0');
    SendMessageW(list, LB_GETTEXT, static_cast<WPARAM>(line), reinterpret_cast<LPARAM>(text.data()));
    text.resize(static_cast<std::size_t>(length));
    return text;
}

void SetTextIfNew(HWND window, const std::wstring& text) {
    if (WindowText(window) != text) SetWindowTextW(window, text.c_str());
}

} // namespace quorvex::dialogs
