#pragma once

#include <windows.h>

namespace quorvex::dialogs {

// The field of a combo box in which one types; null for other windows.
HWND EditOf(HWND combo);

// Gives the closed combo box a height in pixels. It follows its font only as far as that goes by itself.
void FitCombo(HWND combo, int height);

// Distance in pixels from the top of a field, edit or combo box, to the text in it.
int TextTop(HWND field);

} // namespace quorvex::dialogs
