#pragma once

#include <windows.h>

namespace quorvex::support {

// Places the window above all others, or back among them, without moving or resizing it.
void SetTopMost(HWND window, bool onTop);
// True while the key is held down, whichever window has the keyboard.
bool IsKeyDown(int virtualKey);
// A left-button press and release at a point of the window's client area.
void ClickAt(HWND window, int x, int y);

} // namespace quorvex::support
