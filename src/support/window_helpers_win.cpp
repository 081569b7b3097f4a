#include "support/window_helpers_win.h"

namespace quorvex::support {

void SetTopMost(HWND window, bool onTop) {
    SetWindowPos(window, onTop ? HWND_TOPMOST : HWND_NOTOPMOST, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE);
}

bool IsKeyDown(int virtualKey) {
    return GetAsyncKeyState(virtualKey) < 0;
}

void ClickAt(HWND window, int x, int y) {
    POINT before{};
    const bool known = GetCursorPos(&before) != FALSE;
    POINT target{x, y};
    if (!ClientToScreen(window, &target)) return;
    // Button events happen where the pointer stands: take it there for the click and back afterwards.
    SetCursorPos(target.x, target.y);
    mouse_event(MOUSEEVENTF_LEFTDOWN, 0, 0, 0, 0);
    mouse_event(MOUSEEVENTF_LEFTUP, 0, 0, 0, 0);
    if (known) SetCursorPos(before.x, before.y);
}

} // namespace quorvex::support
