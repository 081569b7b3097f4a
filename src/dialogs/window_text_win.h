#pragma once

#include <windows.h>

#include <string>

namespace quorvex::dialogs {

// The whole text of a window or control; empty for none.
std::wstring WindowText(HWND window);

// Leaves a text that stands there already: setting it again would only flicker.
// A line of a list box.
std::wstring LineText(HWND list, int line);
void SetTextIfNew(HWND window, const std::wstring& text);

} // namespace quorvex::dialogs
